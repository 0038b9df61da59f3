#include "providers.h"

#include "text.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmeta {

namespace {

class MemoryProvider : public zephmetadata::TypicalProviderImpl {
public:
    explicit MemoryProvider(zephmetadata::XMPMetaHandle tree) : TypicalProviderImpl(tree) {}

    /// Nothing is saved, so there is no history of it.
    bool WritesOwnChangeList() override { return true; }

private:
    void WriteChanges(const std::vector<zephmetadata::Path>& /*changes*/) override {}
};

}  // namespace

zephmetadata::sp<zephmetadata::MetaDataProvider> Together(
    const std::vector<zephmetadata::sp<zephmetadata::MetaDataProvider>>& providers) {
    if (providers.size() == 1) {
        return providers.front();
    }
    const auto aggregate = std::make_shared<zephmetadata::AggregateProvider>();
    for (const auto& provider : providers) {
        const bool isLast = &provider == &providers.back();
        const bool hasTree = *zephmetadata::MetaDataReadAccess(provider) != nullptr;
        aggregate->AddProvider(hasTree ? provider : InMemory(zephmetadata::CreateXMPMeta()), isLast);
    }
    return aggregate;
}

zephmetadata::sp<zephmetadata::MetaDataProvider> InMemory(const zephmetadata::XMPMetaPtr& tree) {
    return std::make_shared<MemoryProvider>(tree.get());
}

bool IsSidecarName(std::string_view name) {
    constexpr std::string_view kExtension = ".xmp";
    return name.size() > kExtension.size() && Lower(name).ends_with(kExtension);
}

}  // namespace zephmeta
