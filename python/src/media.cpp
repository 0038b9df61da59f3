#include "media.h"

#include <algorithm>
#include <array>

#include "listing.h"
#include "providers.h"

namespace zephpython {

using namespace zephmetadata;

namespace {

template <typename Provider>
const FileReport* ReadOf(const MetaDataProvider& provider) {
    const auto* const file = dynamic_cast<const Provider*>(&provider);
    return file == nullptr ? nullptr : &file->LastRead();
}

/// How reading went; well for what is read from nowhere.
FileReport LastReadOf(const sp<MetaDataProvider>& provider) {
    constexpr std::array kReports = {ReadOf<MediaProvider>, ReadOf<SidecarProvider>, ReadOf<SourceProvider>};
    for (const auto& reportOf : kReports) {
        if (const FileReport* const report = provider == nullptr ? nullptr : reportOf(*provider)) {
            return *report;
        }
    }
    return {FileStatus::kFileStatus_Success, {}};
}

sp<MetaDataProvider> ProviderOf(const std::string& name, SidecarPolicy policy) {
    const UTF16String path = zephcore::PathFromNative(name);
    if (zephmeta::IsSidecarName(name)) {
        return std::make_shared<SidecarProvider>(path);
    }
    return OpenMedia(path, policy);
}

/// Gives what has no metadata yet an empty tree in memory, so that it counts as one without values.
bool Start(MetaDataProvider& provider) {
    auto* const media = dynamic_cast<MediaProvider*>(&provider);
    return media != nullptr && media->StartMetaData();
}

bool IsFailure(const EditReport& report) {
    return report.mStatus != FileStatus::kFileStatus_Success || report.IsRefused();
}

}  // namespace

Media::Media(sp<MetaDataProvider> provider) : mProvider(std::move(provider)) {
    mRead = LastReadOf(mProvider);
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
    std::unique_ptr<Media> media(new Media(std::make_shared<SourceProvider>(source)));
    media->mSource = std::move(source);
    media->mReadErrors = scope.Take();
    return media;
}

std::unique_ptr<Media> Media::OpenBytes(std::string bytes) {
    auto source = std::make_shared<const BufferSource>(std::move(bytes));
    std::unique_ptr<Media> media = OpenSource(source);
    media->mBytes = std::move(source);
    media->mBuffer = std::make_shared<BufferTarget>();
    dynamic_cast<SourceProvider&>(*media->mProvider).SetTarget(media->mBuffer);
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
    return std::unique_ptr<Media>(new Media(together));
}

std::string Media::Sidecar() const {
    const auto* const media = dynamic_cast<const MediaProvider*>(mProvider.get());
    return media == nullptr ? std::string() : zephcore::PathToNative(media->SidecarPath());
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

RawValue Media::AtOrMade(const std::string& expression) const {
    RawValue value = At(expression);
    const ErrorScope scope;
    if (value.mShape == RawValue::Shape::kNone &&
        GetConstructedValue(mTree.get(), PathForExpression(expression), value.mText)) {
        value.mShape = RawValue::Shape::kText;
    }
    return value;
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
            mTouched.insert(zephmeta::PropertyOf(ExpressionForPath(edits[i].mPath)));
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
    report = WriteChanges();
    if (mBuffer != nullptr && mBuffer->Committed() != nullptr) {
        mBytes = mBuffer->Committed();
        mSource = mBytes;
    }
    return report;
}

EditReport Media::WriteChanges() {
    const ErrorScope scope;
    EditReport report = ApplyEdits(mProvider, Changes());
    if (IsFailure(report)) {
        AfterFailure(report);
    } else {
        ShowWhatWasRead();
    }
    return report;
}

/// The provider's tree has the edits, though what it stands for has not: one without them lets them be saved again.
void Media::AfterFailure(const EditReport& report) {
    if (report.mStatus == FileStatus::kFileStatus_Changed || (mName.empty() && mSource == nullptr)) {
        mFailure = report;
    } else {
        mProvider = mName.empty() ? sp<MetaDataProvider>(Reopened()) : ProviderOf(mName, mPolicy);
    }
}

sp<SourceProvider> Media::Reopened() const {
    auto provider = std::make_shared<SourceProvider>(mSource);
    provider->SetTarget(mBuffer);
    return provider;
}

namespace {

/// Hands on, and knows whether it did.
class OnceTarget : public ByteTarget {
public:
    explicit OnceTarget(sp<ByteTarget> inner) : mInner(std::move(inner)) {}

    bool Start(std::uint64_t size) override {
        mIsStarted = true;
        return mInner->Start(size);
    }
    bool Append(const void* bytes, std::size_t size) override { return mInner->Append(bytes, size); }
    FileStatus Commit() override { return mInner->Commit(); }
    bool IsStarted() const { return mIsStarted; }

private:
    sp<ByteTarget> mInner;
    bool mIsStarted = false;
};

FileStatus Copy(const ByteSource& source, ByteTarget& target) {
    constexpr std::uint64_t kBlockBytes = std::uint64_t{1} << 20U;
    std::vector<char> block(static_cast<std::size_t>(std::min(source.Size(), kBlockBytes)));
    bool isGood = target.Start(source.Size());
    for (std::uint64_t done = 0; isGood && done < source.Size(); done += block.size()) {
        block.resize(static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), source.Size() - done)));
        isGood = source.ReadAt(done, block.data(), block.size()) && target.Append(block.data(), block.size());
    }
    return isGood ? target.Commit() : FileStatus::kFileStatus_NotWritten;
}

}  // namespace

EditReport Media::SaveTo(const sp<ByteTarget>& target) {
    EditReport report;
    if (mFailure) {
        return *mFailure;
    }
    if (mSource == nullptr) {
        report.mStatus = FileStatus::kFileStatus_NoFile;
        return report;
    }
    if (mBuffer != nullptr) {
        report = Save();
        report.mStatus = IsFailure(report) ? report.mStatus : Copy(*mSource, *target);
        return report;
    }
    const auto once = std::make_shared<OnceTarget>(target);
    if (!mTouched.empty()) {
        dynamic_cast<SourceProvider&>(*mProvider).SetTarget(once);
        report = WriteChanges();
    }
    if (IsFailure(report)) {
        return report;
    }
    if (once->IsStarted()) {
        mFailure.emplace();  // what was read is not what lies there now
        mFailure->mStatus = FileStatus::kFileStatus_ReadOnly;
        mFailure->mDetail = "it was written elsewhere; open that";
    } else {
        report.mStatus = Copy(*mSource, *target);
    }
    return report;
}

}  // namespace zephpython
