// Building one tree of BENCH_SOURCES sources with 100 properties each, against building trees of 50 until as many
// sources are merged: the time for a source must not grow with their number.
#include <vector>

#include "ratio.h"
#include "zephmetadata/zephmetadata.h"

namespace {

using namespace zephmetadata;

constexpr std::size_t kProperties = 100;

class Source : public TypicalProviderImpl {
public:
    explicit Source(XMPMetaHandle tree) : TypicalProviderImpl(tree) {}

private:
    void WriteChanges(const std::vector<Path>& /*changes*/) override {}
};

/// A schema of a host's own with the properties that all sources have; half of the values differ.
std::vector<sp<MetaDataProvider>> MakeSources(std::size_t count) {
    const UTF8String schema = MakeDynamicSchemaNamespace("bench");
    std::vector<sp<MetaDataProvider>> sources;
    for (std::size_t source = 0; source < count; ++source) {
        std::string properties;
        for (std::size_t i = 0; i < kProperties; ++i) {
            const std::string name = "b:p" + std::to_string(i);
            const std::string value = i % 2 == 0 ? "same" : std::to_string(source);
            properties.append("<").append(name).append(">").append(value).append("</").append(name).append(">");
        }
        const XMPMetaPtr tree = ParseXMPMeta(
            "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
            "<rdf:Description rdf:about='' xmlns:b='" +
            schema + "'>" + properties + "</rdf:Description></rdf:RDF></x:xmpmeta>");
        bench::Require(tree != nullptr, "making a source");
        sources.push_back(std::make_shared<Source>(tree.get()));
    }
    return sources;
}

/// Rebuilds an aggregate of @p count sources so often that as many sources are merged, whatever their number.
std::function<void()> Rebuilding(std::size_t count, std::size_t times) {
    return [count, times, aggregate = std::make_shared<AggregateProvider>(), sources = MakeSources(count)] {
        for (std::size_t i = 0; i < times; ++i) {
            aggregate->ResetProviders(sources);
            bench::Require(*MetaDataReadAccess(aggregate) != nullptr, "merging");
        }
    };
}

}  // namespace

bench::Comparison bench::MakeComparison() {
    constexpr std::size_t kFew = 50;
    Initialize();
    return {"aggregate of " + std::to_string(BENCH_SOURCES), Rebuilding(BENCH_SOURCES, 1),
            Rebuilding(kFew, BENCH_SOURCES / kFew), 1.5};
}
