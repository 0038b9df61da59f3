// What a registry costs that grows from 1,000 to 100,000 properties: processor time of starting with that many, of
// finding one of them, of merging two files and of showing a panel; the table of docs/performance.md. Fails when a
// property costs more than twice as much at the start than one of the fewest, or the others, for whom a hundred times as
// much lies further away in memory, more than five times as much.
//   cmake --preset bench && cmake --build --preset bench && build/bench/bench/registry_scale
#include <sys/resource.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <random>

#include "many_packages.h"
#include "panel/panel_model.h"
#include "ratio.h"

using namespace zephmetadata;

namespace {

constexpr std::size_t kProperties = 100;  // of a package
constexpr std::size_t kShown = 20;        // in a view

class Source : public TypicalProviderImpl {
public:
    explicit Source(XMPMetaHandle tree) : TypicalProviderImpl(tree) {}

private:
    void WriteChanges(const std::vector<Path>& /*changes*/) override {}
};

std::vector<std::string> Names(std::size_t count) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < count; ++i) {
        names.push_back(bench::PropertyName(i));
    }
    return names;
}

/// Microseconds of processor time of one of @p rounds.
double Measure(int rounds, const std::function<void()>& round) {
    const std::clock_t begin = std::clock();
    for (int i = 0; i < rounds; ++i) {
        round();
    }
    return 1e6 * static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC / rounds;
}

/// A source with all properties of the last of the packages.
sp<MetaDataProvider> MakeSource(int packages, const std::string& value) {
    const XMPMetaPtr tree = CreateXMPMeta();
    for (const std::string& name : Names(kProperties)) {
        const Path path = PathForExpression(bench::PackageName(packages - 1) + ":" + name);
        bench::Require(SetValue(tree.get(), path, value), "setting a property");
    }
    return std::make_shared<Source>(tree.get());
}

void Start() {
    Initialize();
    LoadAllViewDefinitions();
}

struct Figures {
    double mStart = 0;
    double mLookup = 0;
    double mMerge = 0;
    double mPanel = 0;
};

Figures FiguresFor(int packages) {
    const bench::ManyPackages files(packages, kProperties, {}, Names(kShown));
    Figures figures;
    figures.mStart = Measure(1, Start);
    bench::Require(ExtensionPackages().size() == static_cast<std::size_t>(packages), "loading the packages");

    std::mt19937 random(1);
    figures.mLookup = Measure(20000, [&] {
        const auto number = static_cast<int>(random() % static_cast<unsigned>(packages));
        const std::string expression = bench::PackageName(number) + ":" + bench::PropertyName(random() % kProperties);
        bench::Require(PathEntryDefinition(PathForExpression(expression)) != nullptr, "finding a property");
    });
    const std::vector<sp<MetaDataProvider>> sources = {MakeSource(packages, "one"), MakeSource(packages, "other")};
    const auto merged = std::make_shared<AggregateProvider>();
    figures.mMerge = Measure(100, [&] {
        merged->ResetProviders(sources);
        bench::Require(*MetaDataReadAccess(merged) != nullptr, "merging");
    });
    const auto view = GetViewDefinitionForName("org.example." + bench::PackageName(packages - 1));
    figures.mPanel = Measure(100, [&] {
        const zephmeta::Panel panel = zephmeta::BuildPanel(view, sources.front(), zephmeta::Detail::kValues);
        bench::Require(panel.mItems.size() == kShown && panel.HasValue(), "showing a panel");
    });
    Terminate();
    return figures;
}

long PeakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

}  // namespace

void bench::Require(bool done, const char* what) {
    if (!done) {
        std::fprintf(stderr, "not done: %s\n", what);
        std::exit(2);
    }
}

int main() {
    constexpr double kMostForOne = 2;
    constexpr double kMostForAll = 5;
    std::printf("| Properties | Start, ms | Lookup, us | Merging two files, us | Panel of 20, us | Memory, MB |\n");
    std::printf("|---|---|---|---|---|---|\n");
    Figures smallest;
    bool isLinear = true;
    for (const int packages : {10, 100, 1000}) {
        const Figures figures = FiguresFor(packages);
        std::printf("| %d | %.0f | %.2f | %.0f | %.0f | %ld |\n", packages * static_cast<int>(kProperties),
                    figures.mStart / 1000, figures.mLookup, figures.mMerge, figures.mPanel, PeakMegabytes());
        smallest = packages == 10 ? figures : smallest;
        isLinear = isLinear && figures.mStart < kMostForOne * smallest.mStart * packages / 10 &&
                   figures.mLookup < kMostForAll * smallest.mLookup && figures.mMerge < kMostForAll * smallest.mMerge &&
                   figures.mPanel < kMostForAll * smallest.mPanel;
    }
    return isLinear ? 0 : 1;
}
