#include "media.h"

#include <algorithm>
#include <array>

#include "zephmetadata/source_provider.h"

namespace zephpython {

using namespace zephmetadata;

namespace {

template <typename Provider>
const FileReport* ReadOf(const MetaDataProvider& provider) {
    const auto* const file = dynamic_cast<const Provider*>(&provider);
    return file == nullptr ? nullptr : &file->LastRead();
}

template <typename Provider>
const FileReport* WriteOf(const MetaDataProvider& provider) {
    const auto* const file = dynamic_cast<const Provider*>(&provider);
    return file == nullptr ? nullptr : &file->LastWrite();
}

using ReportOf = const FileReport* (*)(const MetaDataProvider&);

std::optional<FileReport> FirstOf(const sp<MetaDataProvider>& provider, const std::array<ReportOf, 3>& reports) {
    for (const ReportOf reportOf : reports) {
        const FileReport* const report = provider == nullptr ? nullptr : reportOf(*provider);
        if (report != nullptr) {
            return *report;
        }
    }
    return std::nullopt;
}

std::optional<FileReport> LastWriteOf(const sp<MetaDataProvider>& provider) {
    return FirstOf(provider, {WriteOf<MediaProvider>, WriteOf<SidecarProvider>, WriteOf<SourceProvider>});
}

bool IsSidecarName(const std::string& name) {
    constexpr std::string_view kExtension = ".xmp";
    if (name.size() <= kExtension.size()) {
        return false;
    }
    return std::equal(kExtension.begin(), kExtension.end(), name.end() - static_cast<std::ptrdiff_t>(kExtension.size()),
                      [](char wanted, char c) { return wanted == (c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c); });
}

sp<MetaDataProvider> ProviderOf(const std::string& name, SidecarPolicy policy) {
    const UTF16String path = zephcore::PathFromNative(name);
    if (IsSidecarName(name)) {
        return std::make_shared<SidecarProvider>(path);
    }
    return OpenMedia(path, policy);
}

/// Gives what has no metadata yet an empty tree in memory, so that it counts as one without values.
bool Start(MetaDataProvider& provider) {
    auto* const media = dynamic_cast<MediaProvider*>(&provider);
    return media != nullptr && media->StartMetaData();
}

/// The property that an expression leads to, or into.
std::string PropertyOf(const std::string& expression) {
    return expression.substr(0, expression.find_first_of("/["));
}

}  // namespace

Media::Media(sp<MetaDataProvider> provider) : mProvider(std::move(provider)) {
    mRead = FirstOf(mProvider, {ReadOf<MediaProvider>, ReadOf<SidecarProvider>, ReadOf<SourceProvider>})
                .value_or(FileReport{FileStatus::kFileStatus_Success, {}});
    ShowWhatWasRead();
}

void Media::ShowWhatWasRead() {
    mTree = mProvider == nullptr ? nullptr : *MetaDataReadAccess(mProvider);
    mIsCopy = false;
    mValues.reset();
    mTouched.clear();
}

std::unique_ptr<Media> Media::OpenFile(const std::string& name, SidecarPolicy policy) {
    ErrorScope scope;
    std::unique_ptr<Media> media(new Media(ProviderOf(name, policy)));
    media->mName = name;
    media->mPolicy = policy;
    media->mReadErrors = scope.Take();
    return media;
}

std::unique_ptr<Media> Media::OpenSource(sp<const ByteSource> source) {
    ErrorScope scope;
    std::unique_ptr<Media> media(new Media(std::make_shared<SourceProvider>(std::move(source))));
    media->mReadErrors = scope.Take();
    return media;
}

std::unique_ptr<Media> Media::OpenPacket(const std::string& packet) {
    std::unique_ptr<Media> media(new Media(sp<MetaDataProvider>()));
    return media->TakeEdits(packet, {}) ? std::move(media) : nullptr;
}

std::unique_ptr<Media> Media::OpenTogether(const std::vector<const Media*>& parts) {
    const auto together = std::make_shared<AggregateProvider>();
    for (const Media* part : parts) {
        if (part->mTree == nullptr && !Start(*part->mProvider)) {
            return nullptr;
        }
        together->AddProvider(part->mProvider, part == parts.back());
    }
    std::unique_ptr<Media> media(new Media(together));
    for (const Media* part : parts) {
        media->mParts.push_back(part->mProvider);
    }
    return media;
}

std::string Media::Sidecar() const {
    const auto* const media = dynamic_cast<const MediaProvider*>(mProvider.get());
    return media == nullptr ? std::string() : zephcore::PathToNative(media->SidecarPath());
}

std::optional<FileReport> Media::LastWrite() const {
    return LastWriteOf(mProvider);
}

const RawValues& Media::Values() const {
    if (!mValues) {
        mValues.emplace(mTree);
    }
    return *mValues;
}

RawValue Media::At(const std::string& expression) const {
    return Values().At(PathForExpression(expression));
}

std::vector<std::string> Media::Properties() const {
    return Values().Properties();
}

std::string Media::Display(const std::string& expression) const {
    const ErrorScope scope;
    const Path path = PathForExpression(expression);
    std::string text;
    const bool hasText = GetValue(mTree.get(), path, text) || GetConstructedValue(mTree.get(), path, text) ||
                         GetRawStringValue(mTree.get(), path, text);
    return hasText ? text : std::string();
}

ValueOrigin Media::Origin(const std::string& expression) const {
    return OriginOf(mTree.get(), PathForExpression(expression));
}

std::vector<ValidationFinding> Media::Validate() const {
    return ValidateXMP(mTree.get());
}

std::string Media::Packet() const {
    return SerializeXMPMeta(mTree.get());
}

EditReport Media::Edit(const std::vector<ValueEdit>& edits) {
    if (!mIsCopy) {
        mTree = mTree == nullptr ? CreateXMPMeta() : CloneXMPMeta(mTree.get());
        mIsCopy = true;
    }
    EditReport report = ApplyEdits(mTree.get(), edits);
    for (std::size_t i = 0; i < edits.size() && report.IsChanged(); ++i) {
        if (report.mOutcomes[i].mResult == EditResult::kEditResult_Changed) {
            mTouched.insert(PropertyOf(ExpressionForPath(edits[i].mPath)));
        }
    }
    if (report.IsChanged()) {
        mValues.reset();
    }
    return report;
}

bool Media::TakeEdits(const std::string& packet, const std::set<std::string>& touched) {
    const XMPMetaPtr tree = ParseXMPMeta(packet);
    if (tree == nullptr) {
        return false;
    }
    mTree = tree;
    mIsCopy = true;
    mValues.reset();
    mTouched = touched;
    return true;
}

std::vector<ValueEdit> Media::Changes() const {
    std::vector<ValueEdit> changes;
    for (const std::string& expression : mTouched) {
        ValueEdit change;
        change.mPath = PathForExpression(expression);
        change.mKind = HasValue(mTree.get(), change.mPath) ? EditKind::kEditKind_Copy : EditKind::kEditKind_Delete;
        change.mSource = mTree;
        changes.push_back(std::move(change));
    }
    return changes;
}

/// An aggregate does not tell how its sources were written.
void Media::TellOfParts(EditReport& report) const {
    for (const sp<MetaDataProvider>& part : mParts) {
        const std::optional<FileReport> written = LastWriteOf(part);
        if (written && written->mStatus != FileStatus::kFileStatus_Success) {
            report.mStatus = written->mStatus;
            report.mDetail = written->mDetail;
            return;
        }
    }
}

EditReport Media::Save() {
    EditReport report;
    if (mTouched.empty()) {
        return report;
    }
    if (mFailure) {
        return *mFailure;
    }
    if (mProvider == nullptr) {
        report.mStatus = FileStatus::kFileStatus_NoFile;
        return report;
    }
    const ErrorScope scope;
    report = ApplyEdits(mProvider, Changes());
    TellOfParts(report);
    const bool isFailure = report.mStatus != FileStatus::kFileStatus_Success || report.IsRefused();
    if (!isFailure) {
        ShowWhatWasRead();
    } else if (mName.empty() || report.mStatus == FileStatus::kFileStatus_Changed) {
        mFailure = report;
    } else {
        // The provider's tree has the edits, though the file has not: one without them lets them be saved again.
        mProvider = ProviderOf(mName, mPolicy);
    }
    return report;
}

}  // namespace zephpython
