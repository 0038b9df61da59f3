#include <zlib.h>

#include <algorithm>
#include <map>
#include <mutex>

#include "platform/compiled/deflated_size.h"
#include "platform/resource_table.h"
#include "zephcore/environment.h"

namespace zephcore {

namespace {

std::string_view AsText(std::span<const unsigned char> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The document of which compile_documents made @p deflated; empty when that is damaged.
UTF8String Inflate(std::span<const unsigned char> deflated) {
    UTF8String document(DeflatedSize(AsText(deflated)), '\0');
    uLongf size = document.size();
    const auto data = deflated.subspan(kDeflatedSizeBytes);
    const int result = uncompress(reinterpret_cast<Bytef*>(document.data()), &size, data.data(), data.size());
    return result == Z_OK ? document : UTF8String();
}

/// Each document is inflated when it is first asked for: the library itself replays the compiled form.
std::string_view Inflated(const EmbeddedResource& resource) {
    static std::mutex mutex;
    static std::map<const EmbeddedResource*, UTF8String> documents;
    const std::lock_guard lock(mutex);
    const auto [document, isNew] = documents.try_emplace(&resource);
    if (isNew) {
        document->second = Inflate(resource.mBytes);
    }
    return document->second;
}

}  // namespace

std::vector<UTF8String> GetResourceNames(Module /*module*/, std::string_view type) {
    std::vector<UTF8String> names;
    for (const EmbeddedResource& resource : EmbeddedResources()) {
        if (resource.mType == type) {
            names.emplace_back(resource.mName);
        }
    }
    return names;
}

bool GetBinaryFromModule(Module /*module*/, std::string_view name, std::string_view type, std::string_view& bytes) {
    const auto resources = EmbeddedResources();
    const auto found = std::find_if(resources.begin(), resources.end(), [=](const EmbeddedResource& resource) {
        return resource.mName == name && resource.mType == type;
    });
    if (found == resources.end()) {
        return false;
    }
    bytes = found->mIsDeflated ? Inflated(*found) : AsText(found->mBytes);
    return true;
}

}  // namespace zephcore
