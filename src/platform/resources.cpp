#include <algorithm>

#include "platform/resource_table.h"
#include "zephcore/environment.h"

namespace zephcore {

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
    bytes = {reinterpret_cast<const char*>(found->mBytes.data()), found->mBytes.size()};
    return true;
}

}  // namespace zephcore
