#include "together.h"

#include "zephmetadata/xmp_meta.h"

namespace zephmeta {

namespace {

/// Stands for a file without XMP, among others that have some.
class NoMetaData : public zephmetadata::TypicalProviderImpl {
public:
    NoMetaData() : TypicalProviderImpl(zephmetadata::CreateXMPMeta().get()) {}

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
        aggregate->AddProvider(hasTree ? provider : std::make_shared<NoMetaData>(), isLast);
    }
    return aggregate;
}

}  // namespace zephmeta
