#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "raw_values.h"
#include "zephmetadata/byte_target.h"
#include "zephmetadata/edits.h"
#include "zephmetadata/library.h"
#include "zephmetadata/providers.h"
#include "zephmetadata/source_provider.h"
#include "zephmetadata/values.h"

namespace zephpython {

/// The metadata of a file, of a source or of a packet: what was read, a copy of it that edits go to, and the way back.
/// One thread at a time. Nothing here needs Python.
class Media {
public:
    static std::unique_ptr<Media> OpenFile(const std::string& name, zephmetadata::SidecarPolicy policy);
    static std::unique_ptr<Media> OpenSource(zephmetadata::sp<const zephmetadata::ByteSource> source);
    /// Bytes in memory, which Save makes anew.
    static std::unique_ptr<Media> OpenBytes(std::string bytes);
    /// Null when the bytes are no packet.
    static std::unique_ptr<Media> OpenPacket(const std::string& packet);
    /// The files as one. Their own objects are not to be used any more. Null when one of them has no
    /// metadata and can be given none.
    static std::unique_ptr<Media> OpenTogether(const std::vector<const Media*>& parts);

    /// How the reading went.
    const zephmetadata::FileReport& LastRead() const { return mRead; }
    const std::vector<zephmetadata::ErrorInfo>& ReadErrors() const { return mReadErrors; }
    /// Where changes go when it is not into the file; empty when they go into the file.
    std::string Sidecar() const;

    /// Of a file; else empty.
    const std::string& Name() const { return mName; }
    /// What is shown, with edits; null when there is no metadata.
    const zephmetadata::XMPMetaPtr& Tree() const { return mTree; }

    RawValue At(const std::string& expression) const;
    /// The same, and where there is no value but one for display that is made of others, that.
    RawValue AtOrMade(const std::string& expression) const;
    std::vector<std::string> Properties() const;
    std::string Display(const std::string& expression) const;
    zephmetadata::ValueOrigin Origin(const std::string& expression) const;
    std::vector<zephmetadata::ValidationFinding> Validate() const;
    /// Empty when there is no metadata or no packet can hold it.
    std::string Packet() const;

    /// Changes the copy alone.
    zephmetadata::EditReport Edit(const std::vector<zephmetadata::ValueEdit>& edits);
    /// Takes the properties that edits touched over into what was read, and writes them where they differ.
    zephmetadata::EditReport Save();
    /// Gives @p target all of the source as it is to be, also when nothing changed.
    zephmetadata::EditReport SaveTo(const zephmetadata::sp<zephmetadata::ByteTarget>& target);
    /// What was opened by OpenBytes, as it was saved last; null for anything else.
    const zephmetadata::sp<const zephmetadata::BufferSource>& Bytes() const { return mBytes; }
    bool IsTouched() const { return !mTouched.empty(); }
    const std::set<std::string>& Touched() const { return mTouched; }
    /// Shows @p packet, of which the properties @p touched are to be saved. False when it is none.
    bool TakeEdits(const std::string& packet, const std::set<std::string>& touched);

private:
    explicit Media(zephmetadata::sp<zephmetadata::MetaDataProvider> provider);
    void ShowWhatWasRead();
    const RawValues& Values() const;
    std::vector<zephmetadata::ValueEdit> Changes() const;
    zephmetadata::EditReport WriteChanges();
    void AfterFailure(const zephmetadata::EditReport& report);
    zephmetadata::sp<zephmetadata::SourceProvider> Reopened() const;

    zephmetadata::sp<zephmetadata::MetaDataProvider> mProvider;  // none for a packet
    zephmetadata::XMPMetaPtr mTree;            // what is shown: the provider's own until the first edit
    bool mIsCopy = false;                      // then a copy
    mutable std::optional<RawValues> mValues;  // of mTree as it is now
    std::set<std::string> mTouched;            // expressions of properties
    std::string mName;                         // of a file
    zephmetadata::SidecarPolicy mPolicy = zephmetadata::SidecarPolicy::kSidecarPolicy_Automatic;
    zephmetadata::sp<const zephmetadata::ByteSource> mSource;   // of what is no file
    zephmetadata::sp<const zephmetadata::BufferSource> mBytes;  // the same, where it is in memory
    zephmetadata::sp<zephmetadata::BufferTarget> mBuffer;       // where those go
    std::optional<zephmetadata::EditReport> mFailure;           // for good: what is saved later fails alike
    zephmetadata::FileReport mRead;
    std::vector<zephmetadata::ErrorInfo> mReadErrors;
};

}  // namespace zephpython
