#pragma once

#include <functional>
#include <set>
#include <vector>

#include "zephmetadata/providers.h"

namespace support {

/// A provider over a tree in memory that records what it is asked to write.
class TestProvider : public zephmetadata::TypicalProviderImpl {
public:
    explicit TestProvider(zephmetadata::XMPMetaHandle tree) : TypicalProviderImpl(tree) {}
    using TypicalProviderImpl::MetaDataChanged;
    using TypicalProviderImpl::ResetMetaData;
    using TypicalProviderImpl::ResetToEmptyMetaData;

    bool WritesOwnChangeList() override { return mOwnChangeList; }
    bool QueryPathStatus(const zephmetadata::Path& path, zephmetadata::PathStatus status) const override {
        return TypicalProviderImpl::QueryPathStatus(path, status) &&
               (status != zephmetadata::kPathWritable || !mReadOnlyNamespaces.contains(path.mNamespace));
    }

    bool mOwnChangeList = false;
    std::set<std::string> mReadOnlyNamespaces;
    std::vector<std::vector<zephmetadata::Path>> mWrites;
    std::function<void()> mDuringWrite;

private:
    void WriteChanges(const std::vector<zephmetadata::Path>& changes) override {
        mWrites.push_back(changes);
        if (mDuringWrite) {
            mDuringWrite();
        }
    }
};

inline zephmetadata::MetaDataCallback Callback(std::function<void(zephmetadata::XMPMetaHandle)> function) {
    return std::make_shared<std::function<void(zephmetadata::XMPMetaHandle)>>(std::move(function));
}

}  // namespace support
