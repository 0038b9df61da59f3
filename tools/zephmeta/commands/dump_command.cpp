#include <algorithm>

#include "batch/batch.h"
#include "commands/commands.h"
#include "console.h"
#include "json.h"
#include "listing.h"
#include "media_file.h"

namespace zephmeta {

namespace {

/// One line of JSON, written as it goes: an object in memory for each of millions of values would be what a dump costs.
class JsonOfFile {
public:
    explicit JsonOfFile(const MediaFile& file) : mLine(JsonLine(FileObject(file.Name()))) {
        mLine.pop_back();  // the brace that closes it
        mLine += file.HasXMP() ? R"(,"hasXMP":true,"properties":[)" : R"(,"hasXMP":false,"properties":[)";
    }

    void Add(const ListedValue& value) {
        mLine += mLine.back() == '[' ? "{\"path\":" : ",{\"path\":";
        AppendJsonText(mLine, value.mExpression);
        AddText("namespace", value.mNamespace);
        AddText("label", value.mLabel);
        AddText("type", value.mType);
        AddFlag("internal", value.mInternal);
        AddFlag("defined", value.mDefined);
        AddText("origin", value.mIsNative ? "native" : "xmp");
        AddText("raw", value.mRaw);
        AddText("display", value.mDisplay);
        if (value.mShape == ListedValue::Shape::kItems) {
            mLine.append(",\"items\":").append(JsonLine(value.mItems));
        } else if (value.mShape == ListedValue::Shape::kLanguages) {
            Json languages = Json::object();
            for (const auto& [language, text] : value.mLanguages) {
                languages[language] = text;
            }
            mLine.append(",\"languages\":").append(JsonLine(languages));
        }
        mLine += '}';
    }

    std::string Line() const { return mLine + "]}"; }

private:
    void AddText(const char* name, const std::string& text) {
        mLine.append(",\"").append(name).append("\":");
        AppendJsonText(mLine, text);
    }
    void AddFlag(const char* name, bool flag) {
        mLine.append(",\"").append(name).append(flag ? "\":true" : "\":false");
    }

    std::string mLine;
};

void PrintJson(const MediaFile& file, const std::vector<ListedValue>& values, FileResult& result) {
    JsonOfFile json(file);
    for (const ListedValue& value : values) {
        json.Add(value);
    }
    result.Print(json.Line());
}

struct ColumnWidths {
    std::size_t mPath = 0;
    std::size_t mLabel = 0;
    std::size_t mType = 0;
};

ColumnWidths Measure(const std::vector<ListedValue>& values) {
    constexpr std::size_t kWidest = 44;  // a longer path pushes only its own line to the right
    ColumnWidths widths;
    for (const ListedValue& value : values) {
        widths.mPath = std::max(widths.mPath, std::min(Columns(value.mExpression), kWidest));
        widths.mLabel = std::max(widths.mLabel, std::min(Columns(value.mLabel), kWidest));
        widths.mType = std::max(widths.mType, std::min(Columns(value.mType), kWidest));
    }
    return widths;
}

/// The stored text, and the display text behind it where that says something else.
std::string ValueText(const ListedValue& value) {
    std::string text = OneLine(value.mShape == ListedValue::Shape::kItems ? value.mDisplay : value.mRaw);
    if (value.mShape == ListedValue::Shape::kSimple && value.mDisplay != value.mRaw) {
        text += "  (" + OneLine(value.mDisplay) + ")";
    }
    return text;
}

void PrintText(const MediaFile& file, const std::vector<ListedValue>& values, FileResult& result) {
    result.SetApart();
    result.Print(OneLine(file.Name()));
    if (!file.HasXMP()) {
        const std::string reason = file.WhyWithoutXMP();
        result.Print("  no XMP" + (reason.empty() ? reason : " (" + OneLine(reason) + ")"));
    }
    const ColumnWidths widths = Measure(values);
    for (const ListedValue& value : values) {
        const std::string indent = "  " + Padded(OneLine(value.mExpression), widths.mPath) + "  " +
                                   Padded(OneLine(value.mLabel), widths.mLabel) + "  " +
                                   Padded(OneLine(value.mType), widths.mType) + "  ";
        result.Print(indent + ValueText(value));
        for (const auto& [language, text] : value.mLanguages) {
            if (language != "x-default") {
                result.Print(std::string(Columns(indent), ' ') + "[" + OneLine(language) + "] " + OneLine(text));
            }
        }
    }
}

}  // namespace

int Dump(const BatchOptions& options) {
    Problems problems;
    problems.ReportCollected({});
    return Batch(options, problems).Run([&](MediaFile& file, FileResult& result) {
        const zephmetadata::MetaDataReadAccess access(file.Provider());
        zephmetadata::ErrorScope errors;
        const std::vector<ListedValue> values = ListValues(*access);
        result.Note(errors.Take());
        options.mJson ? PrintJson(file, values, result) : PrintText(file, values, result);
        if (const std::string warning = file.ReadWarning(); !warning.empty()) {
            result.Fail(warning);
        }
    });
}

}  // namespace zephmeta
