#include "edits/edit_arguments.h"

#include <algorithm>
#include <array>
#include <regex>

#include "console.h"
#include "edits/dates.h"
#include "edits/typed_values.h"
#include "listing.h"
#include "suggestions.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

/// A field of a template: "{exif:Model}", "{exif:DateTimeOriginal:%Y-%m}".
const std::regex& FieldPattern() {
    static const std::regex pattern(R"(\{([A-Za-z_][\w.-]*:[^{}:%]+)(?::(%[^{}]*))?\})");
    return pattern;
}

constexpr std::size_t kLongestTemplate = 4096;  // the matcher recurses

/// What a field of a template names. Tags of TIFF are known by the Exif standard as well, which lists them among its own
/// (CIPA DC-008, section 4.6.4).
Target ResolveField(const std::string& expression) {
    constexpr std::string_view kExif = "exif:";
    Target target = ResolveTarget(expression);
    if (expression.starts_with(kExif) && !PathEntryDefinition(target.mPath)) {
        Target inTIFF = ResolveTarget("tiff:" + expression.substr(kExif.size()));
        if (PathEntryDefinition(inTIFF.mPath)) {
            return inTIFF;
        }
    }
    return target;
}

/// Whether a value has fields to fill in; braces around what is no path stand for themselves.
bool IsTemplate(const std::string& value) {
    std::smatch match;
    return value.size() <= kLongestTemplate && std::regex_search(value, match, FieldPattern()) &&
           ResolveTarget(match[1]).mProblem.empty();
}

std::string FirstText(XMPMetaHandle tree, const Target& target) {
    const std::vector<std::string> texts = TextsAt(tree, target);
    std::string all;
    for (const std::string& text : PrimitiveTypeOfPath(target.mPath) == kPrimitiveType_Alt && !texts.empty()
                                       ? std::vector<std::string>{texts.front()}
                                       : texts) {
        all.append(all.empty() ? "" : ", ").append(text);
    }
    return all;
}

std::string FieldText(XMPMetaHandle tree, const Target& target, const std::string& dateForm) {
    if (!dateForm.empty()) {
        return FormattedDate(FirstText(tree, target), dateForm);
    }
    std::string text;
    const bool isSimple = target.mLanguage.empty() && TextsAt(tree, target).size() == 1;
    return isSimple && DisplayText(tree, target.mPath, text) ? text : FirstText(tree, target);
}

/// The value with its fields filled in; absent when one of them has no value in the file.
std::optional<std::string> Filled(const std::string& value, XMPMetaHandle tree, std::string& problem) {
    std::string filled;
    auto rest = value.cbegin();
    std::smatch match;
    while (std::regex_search(rest, value.cend(), match, FieldPattern())) {
        const Target target = ResolveField(match[1]);
        const std::string text = target.mProblem.empty() ? FieldText(tree, target, match[2]) : match[0].str();
        if (text.empty()) {
            problem = match[1].str() + ": no value to fill in";
            return std::nullopt;
        }
        filled.append(rest, match[0].first).append(text);
        rest = match[0].second;
    }
    return filled.append(rest, value.cend());
}

/// The dates that say when a picture was taken or made.
constexpr auto kCaptureDates =
    std::to_array<const char*>({"exif:DateTimeOriginal", "xmp:CreateDate", "photoshop:DateCreated"});

class OptionReader {
public:
    EditReading Read(const EditOptions& options) && {
        Each(options.mAssignments, &OptionReader::ReadAssignment);
        Each(options.mCopies, &OptionReader::ReadCopy);
        Each(options.mAdditions, &OptionReader::ReadAddition);
        Each(options.mRemovals, &OptionReader::ReadRemoval);
        Each(options.mRenames, &OptionReader::ReadRename);
        Each(options.mDeletions, &OptionReader::ReadDeletion);
        if (!options.mPosition.empty()) {
            ReadPosition(options.mPosition);
        }
        Each(options.mShifts, &OptionReader::ReadShift);
        if (!options.mZone.empty()) {
            ReadZone(options.mZone);
        }
        return std::move(mReading);
    }

private:
    using Reader = void (OptionReader::*)(const std::string&);

    void Each(const std::vector<std::string>& arguments, Reader reader) {
        for (const std::string& argument : arguments) {
            (this->*reader)(argument);
        }
    }

    void Refuse(const std::string& problem) { mReading.mProblems.push_back(problem); }

    void RefuseForm(const std::string& option, const std::string& form, const std::string& argument) {
        mReading.mIsWrongUsage = true;
        Refuse(option + " wants " + form + ", not \"" + argument + "\"");
    }

    /// An edit of the path; null when there is no such path, which is a problem.
    RequestedEdit* Begin(EditKind kind, const std::string& expression) {
        const Target target = ResolveTarget(expression);
        const std::string problem = WhyUnknown(expression, target);
        if (!problem.empty()) {
            Refuse(problem);
            return nullptr;
        }
        RequestedEdit requested;
        requested.mExpression = expression;
        requested.mEdit.mKind = kind;
        requested.mEdit.mPath = target.mPath;
        requested.mEdit.mLanguage = target.mLanguage;
        return &mReading.mEdits.emplace_back(std::move(requested));
    }

    /// What makes no sense anywhere is refused before the first file.
    void Check() {
        const RequestedEdit& requested = mReading.mEdits.back();
        const UTF16String reason = requested.mSource == RequestedEdit::Source::kValue ? WhyRefused(requested.mEdit)
                                   : PathEntryDefinition(requested.mEdit.mPath)       ? UTF16String()
                                                                                      : WhyRefused(requested.mEdit);
        if (!reason.empty()) {
            Refuse(requested.mExpression + ": " + Shown(reason));
        }
    }

    std::optional<Assignment> Split(const std::string& argument, const char* option, const char* form) {
        std::optional<Assignment> assignment = ParseAssignment(argument);
        if (!assignment) {
            RefuseForm(option, form, argument);
        }
        return assignment;
    }

    void ReadAssignment(const std::string& argument) {
        const auto assignment = Split(argument, "set", "PATH=VALUE");
        RequestedEdit* const edit = assignment ? Begin(kEditKind_Set, assignment->mExpression) : nullptr;
        if (edit == nullptr) {
            return;
        }
        edit->mSource =
            IsTemplate(assignment->mValue) ? RequestedEdit::Source::kTemplate : RequestedEdit::Source::kValue;
        edit->mEdit.mValue = AsStored(edit->mEdit.mPath, assignment->mValue);
        if (edit->mSource == RequestedEdit::Source::kTemplate) {
            CheckFields(assignment->mValue);
        }
        Check();
    }

    void CheckFields(const std::string& value) {
        const std::sregex_iterator end;
        for (std::sregex_iterator match(value.begin(), value.end(), FieldPattern()); match != end; ++match) {
            const std::string field = (*match)[1];
            const Target target = ResolveField(field);
            const std::string problem = target.mProblem.empty() ? WhyUnreadable(field, target) : std::string();
            if (!problem.empty()) {
                Refuse(problem);
            }
        }
    }

    void ReadAddition(const std::string& argument) { ReadItem(kEditKind_Add, argument, "--add"); }
    void ReadRemoval(const std::string& argument) { ReadItem(kEditKind_Remove, argument, "--remove"); }

    void ReadItem(EditKind kind, const std::string& argument, const char* option) {
        const auto assignment = Split(argument, option, "PATH=VALUE");
        if (RequestedEdit* const edit = assignment ? Begin(kind, assignment->mExpression) : nullptr) {
            edit->mEdit.mValue = AsStored(CreatePathFromArrayItem(edit->mEdit.mPath, -1), assignment->mValue);
            Check();
        }
    }

    void ReadRename(const std::string& argument) {
        const auto assignment = Split(argument, "--rename", "PATH=OLD=NEW");
        const std::size_t middle = assignment ? assignment->mValue.find('=') : std::string::npos;
        if (assignment && middle == std::string::npos) {
            RefuseForm("--rename", "PATH=OLD=NEW", argument);
        } else if (RequestedEdit* const edit =
                       assignment ? Begin(kEditKind_Rename, assignment->mExpression) : nullptr) {
            edit->mEdit.mValue = assignment->mValue.substr(0, middle);
            edit->mEdit.mNewValue = assignment->mValue.substr(middle + 1);
            Check();
        }
    }

    void ReadDeletion(const std::string& expression) {
        if (Begin(kEditKind_Delete, expression) != nullptr) {
            Check();
        }
    }

    void ReadCopy(const std::string& argument) {
        const auto assignment = Split(argument, "--copy", "TO=FROM");
        const Target from = assignment ? ResolveTarget(assignment->mValue) : Target();
        const std::string problem = assignment ? WhyUnreadable(assignment->mValue, from) : std::string();
        if (!problem.empty()) {
            Refuse(problem);
        } else if (RequestedEdit* const edit = assignment ? Begin(kEditKind_Set, assignment->mExpression) : nullptr) {
            edit->mSource = RequestedEdit::Source::kCopy;
            edit->mFrom = from.mPath;
            Check();
        }
    }

    void ReadShift(const std::string& argument) {
        const std::size_t sign = argument.find_first_of("+-", argument.find(':') + 1);
        const auto seconds = sign == std::string::npos ? std::nullopt : ParseDuration(argument.substr(sign));
        if (!seconds) {
            RefuseForm("--shift", "PATH+DURATION such as exif:DateTimeOriginal+1h30m", argument);
        } else if (RequestedEdit* const edit = Begin(kEditKind_Set, argument.substr(0, sign))) {
            edit->mSource = RequestedEdit::Source::kShift;
            edit->mSeconds = *seconds;
            Check();
        }
    }

    void ReadZone(const std::string& zone) {
        if (!ZonedDate("2000-01-01T00:00", zone)) {
            RefuseForm("--zone", "Z or a difference such as +02:00", zone);
            return;
        }
        for (const char* const expression : kCaptureDates) {
            if (RequestedEdit* const edit = Begin(kEditKind_Set, expression)) {
                edit->mSource = RequestedEdit::Source::kZone;
                edit->mZone = zone;
            }
        }
    }

    void ReadPosition(const std::string& text) {
        static const std::regex form(
            R"(([+-]?\d{1,3}(?:\.\d{1,12})?), ?([+-]?\d{1,3}(?:\.\d{1,12})?)(?:, ?(-?)(\d{1,5}(?:\.\d{1,6})?)m?)?)");
        std::smatch match;
        const bool isRead = text.size() < 100 && std::regex_match(text, match, form);
        const auto latitude = isRead ? Coordinate(std::stod(match[1]), true) : std::nullopt;
        const auto longitude = isRead ? Coordinate(std::stod(match[2]), false) : std::nullopt;
        if (!latitude || !longitude) {
            RefuseForm("--gps", "LATITUDE,LONGITUDE[,ALTITUDE] in degrees and metres, such as 53.5461,9.9661,12m",
                       text);
            return;
        }
        SetTo("exif:GPSLatitude", *latitude);
        SetTo("exif:GPSLongitude", *longitude);
        if (match[4].length() > 0) {
            SetTo("exif:GPSAltitude", Rational(match[4]).value_or(match[4]));
            SetTo("exif:GPSAltitudeRef", match[3].length() > 0 ? "1" : "0");  // below, above sea level
        }
    }

    void SetTo(const char* expression, const std::string& value) {
        if (RequestedEdit* const edit = Begin(kEditKind_Set, expression)) {
            edit->mEdit.mValue = value;
            Check();
        }
    }

    EditReading mReading;
};

/// The value of an edit that depends on the file; empty when there is nothing to do to it.
std::optional<std::string> ValueFor(const RequestedEdit& requested, XMPMetaHandle tree, std::string& problem) {
    const Target here{requested.mEdit.mPath, requested.mEdit.mLanguage, {}};
    const Target from{requested.mFrom, {}, {}};
    switch (requested.mSource) {
        case RequestedEdit::Source::kTemplate:
            return Filled(requested.mEdit.mValue, tree, problem);
        case RequestedEdit::Source::kCopy:
            return FirstText(tree, from);
        case RequestedEdit::Source::kZone:
            return ZonedDate(FirstText(tree, here), requested.mZone).value_or(std::string());
        default:
            break;
    }
    const std::string date = FirstText(tree, here);
    const auto shifted = ShiftedDate(date, requested.mSeconds);
    if (!date.empty() && !shifted) {
        problem = requested.mExpression + ": \"" + date + "\" cannot be moved by that";
        return std::nullopt;
    }
    return shifted.value_or(std::string());
}

}  // namespace

bool EditOptions::IsEmpty() const {
    return mAssignments.empty() && mAdditions.empty() && mRemovals.empty() && mRenames.empty() && mDeletions.empty() &&
           mCopies.empty() && mShifts.empty() && mZone.empty() && mPosition.empty();
}

EditReading ReadEdits(const EditOptions& options) {
    return OptionReader().Read(options);
}

void FileEdits::Add(ValueEdit edit, std::string expression) {
    mEdits.push_back(std::move(edit));
    mExpressions.push_back(std::move(expression));
}

FileEdits EditsFor(const std::vector<RequestedEdit>& requested, XMPMetaHandle tree) {
    FileEdits edits;
    for (const RequestedEdit& one : requested) {
        ValueEdit edit = one.mEdit;
        const bool isFixed = one.mSource == RequestedEdit::Source::kValue;
        if (!isFixed) {
            std::optional<std::string> value = ValueFor(one, tree, edits.mProblem);
            if (!value) {
                return edits;
            }
            edit.mValue = *std::move(value);
        }
        if (isFixed || !edit.mValue.empty()) {
            edits.Add(std::move(edit), one.mExpression);
        }
    }
    return edits;
}

}  // namespace zephmeta
