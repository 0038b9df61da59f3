#include <algorithm>
#include <atomic>
#include <iostream>

#include "arguments.h"
#include "batch/batch.h"
#include "commands/commands.h"
#include "json.h"
#include "listing.h"
#include "panel/panel_output.h"
#include "suggestions.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

using zephmetadata::XMPMetaHandle;

struct Wanted {
    std::string mExpression;
    Target mTarget;
};

/// What stands at a path: the stored value, and the text that is shown for it.
struct FoundValue {
    bool mIsMixed = false;
    bool mIsThere = false;
    bool mIsList = false;
    std::vector<std::string> mStored;  ///< the items of a list, else one text
    std::string mText;

    Json AsJson() const {
        if (mIsMixed) {
            return {{"state", "mixed"}};
        }
        return !mIsThere ? Json() : mIsList ? Json(mStored) : Json(mStored.front());
    }
};

bool ReadText(XMPMetaHandle tree, const Target& target, bool raw, std::string& text) {
    if (!target.mLanguage.empty()) {
        const std::vector<std::string> texts = TextsAt(tree, target);
        text = texts.empty() ? std::string() : texts.front();
        return !texts.empty();
    }
    return raw ? RawText(tree, target.mPath, text) : DisplayText(tree, target.mPath, text);
}

FoundValue Find(XMPMetaHandle tree, const Target& target, bool raw) {
    FoundValue found;
    if (!target.mProblem.empty()) {
        return found;
    }
    if (zephmetadata::IsMixed(tree, target.mPath)) {
        found.mIsMixed = true;
        found.mText = "(" + Localized(kMixed) + ")";
        return found;
    }
    std::string stored;
    if (!ReadText(tree, target, raw, found.mText)) {
        return found;
    }
    found.mIsThere = true;
    found.mIsList = target.mLanguage.empty() && zephmetadata::IsPathAnArray(target.mPath, true);
    if (found.mIsList) {
        found.mStored = zephmetadata::GetItems(tree, target.mPath);
    } else {
        found.mStored.push_back(ReadText(tree, target, true, stored) ? stored : found.mText);
    }
    return found;
}

/// A field of a table with commas (RFC 4180).
std::string CSVField(const std::string& text) {
    return text.find_first_of(",\"\r\n") == std::string::npos ? text : InDoubleQuotes(text);
}

class GetCommand {
public:
    GetCommand(const GetRequest& request, std::vector<Wanted> wanted, bool isTable)
        : mRequest(request), mWanted(std::move(wanted)), mWasFound(mWanted.size()), mIsTable(isTable) {}

    void ReadFile(XMPMetaHandle tree, const std::string& name, FileResult& result) const {
        std::vector<FoundValue> values;
        for (const Wanted& wanted : mWanted) {
            values.push_back(Find(tree, wanted.mTarget, mRequest.mRaw));
            if (values.back().mIsThere) {
                mWasFound[values.size() - 1] = true;
            }
        }
        if (mRequest.mBatch.mJson) {
            result.Print(JsonLine(AsJson(name, values)));
        } else if (mRequest.mCSV || mRequest.mTSV) {
            result.Print(Row(name, values));
        } else if (mIsTable) {
            result.Print(Line(name, values));
        } else {
            std::for_each(values.begin(), values.end(),
                          [&](const FoundValue& value) { result.Print(Printable(value.mText)); });
        }
        for (std::size_t i = 0; i < values.size() && !mIsTable; ++i) {
            if (!values[i].mIsThere && !values[i].mIsMixed) {
                result.Fail(WhyNothing(mWanted[i]));
            }
        }
    }

    /// Once for many files, what no file has and was probably mistyped.
    void ReportUnknown(Problems& problems) const {
        for (std::size_t i = 0; i < mWanted.size(); ++i) {
            const std::string unknown =
                mWasFound[i] ? std::string() : WhyUnknown(mWanted[i].mExpression, mWanted[i].mTarget);
            if (!unknown.empty()) {
                problems.Report({}, unknown);
            }
        }
    }

    std::string Header() const {
        std::string header = "file";
        for (const Wanted& wanted : mWanted) {
            header.append(1, Separator()).append(Field(wanted.mExpression));
        }
        return header;
    }

private:
    static std::string WhyNothing(const Wanted& wanted) {
        const std::string unknown = WhyUnknown(wanted.mExpression, wanted.mTarget);
        return unknown.empty() ? wanted.mExpression + ": no value" : unknown;
    }

    char Separator() const { return mRequest.mCSV ? ',' : '\t'; }
    std::string Field(const std::string& text) const { return mRequest.mCSV ? CSVField(text) : OneLine(text); }

    std::string Row(const std::string& name, const std::vector<FoundValue>& values) const {
        std::string row = Field(name);
        for (const FoundValue& value : values) {
            row.append(1, Separator()).append(Field(value.mText));
        }
        return row;
    }

    static std::string Line(const std::string& name, const std::vector<FoundValue>& values) {
        std::string line = OneLine(name) + ":";
        for (const FoundValue& value : values) {
            line.append(&value == &values.front() ? " " : "\t").append(OneLine(value.mText));
        }
        return line;
    }

    Json AsJson(const std::string& name, const std::vector<FoundValue>& values) const {
        Json json = mIsTable ? FileObject(name) : Json::object();
        Json shown = Json::object();
        for (std::size_t i = 0; i < values.size(); ++i) {
            const std::string& expression = mWanted[i].mExpression;
            json[expression] = values[i].AsJson();
            if (values[i].mIsThere && (values[i].mIsList || values[i].mStored.front() != values[i].mText)) {
                shown[expression] = values[i].mText;
            }
        }
        if (!shown.empty()) {
            json["display"] = std::move(shown);
        }
        return json;
    }

    const GetRequest& mRequest;
    std::vector<Wanted> mWanted;
    mutable std::vector<std::atomic<bool>> mWasFound;  // by several workers
    bool mIsTable;
};

/// What is there as a file is one; what else reads as a path is a path.
std::vector<Wanted> Sort(GetRequest& request) {
    std::vector<Wanted> wanted;
    for (const std::string& argument : request.mArguments) {
        Target target = ResolveTarget(argument);
        const bool isPath = argument.find(':') != std::string::npos && !NamesFiles(argument);
        if (isPath) {
            wanted.push_back({argument, std::move(target)});
        } else {
            request.mBatch.mFiles.mNames.push_back(argument);
        }
    }
    return wanted;
}

}  // namespace

int Get(GetRequest request) {
    const std::vector<Wanted> wanted = Sort(request);
    Problems problems;
    if (wanted.empty() || request.mBatch.mFiles.mNames.empty()) {
        problems.Report({},
                        std::string(wanted.empty() ? "no path" : "no file") + " to read; see \"zephmeta get --help\"");
        return 2;
    }
    problems.ReportCollected({});
    if (request.mTogether) {
        const std::optional<std::vector<MediaFile>> files = OpenTogether(request.mBatch, problems);
        if (!files || files->empty()) {
            return files ? problems.ExitStatus() : 2;
        }
        // Several files have no name in common that a problem could begin with.
        FileResult result(files->size() == 1 ? files->front().Name() : "zephmeta");
        const auto provider = AsOne(*files);
        GetCommand(request, wanted, false).ReadFile(*zephmetadata::MetaDataReadAccess(provider), {}, result);
        return result.Tell(problems.ExitStatus());
    }
    const bool isSingle = request.mBatch.mFiles.mNames.size() == 1 && !request.mBatch.mFiles.mRecursive &&
                          request.mBatch.mFiles.mNames.front().find_first_of("@-") != 0;
    const bool isTable = !isSingle || request.mCSV || request.mTSV;
    const GetCommand command(request, wanted, isTable);
    if ((request.mCSV || request.mTSV) && !request.mBatch.mJson) {
        std::cout << command.Header() << '\n';
    }
    const int status = Batch(request.mBatch, problems).Run([&](const MediaFile& file, FileResult& result) {
        command.ReadFile(*zephmetadata::MetaDataReadAccess(file.Provider()), file.Name(), result);
    });
    if (isTable) {
        command.ReportUnknown(problems);
    }
    return status == 0 ? problems.ExitStatus() : status;
}

}  // namespace zephmeta
