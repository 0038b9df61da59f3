// Runs both sides of a comparison several times in turns within one process, so that what disturbs the machine disturbs
// both, and prints the medians and their quotient.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <vector>

#include "ratio.h"
#include "support/temp_folder.h"

namespace {

constexpr int kRepetitions = 15;
constexpr const char* kOurs = "ours";
constexpr const char* kReference = "reference";

/// Keeps the time of each repetition by the name of the side. Processor time, as a busy machine falsifies the other.
class Collector : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override {
        PrintBasicContext(&GetErrorStream(), context);
        return true;
    }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                mTimes[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
            }
        }
    }

    double Median(const std::string& side) {
        std::vector<double>& times = mTimes[side];
        if (times.empty()) {
            return 0;
        }
        const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
        std::nth_element(times.begin(), middle, times.end());
        return *middle;
    }

private:
    std::map<std::string, std::vector<double>> mTimes;
};

void Register(const char* side, const std::function<void()>& round) {
    benchmark::RegisterBenchmark(side,
                                 [&round](benchmark::State& state) {
                                     for ([[maybe_unused]] auto each : state) {
                                         round();
                                     }
                                 })
        ->Unit(benchmark::kMicrosecond)
        ->Repetitions(kRepetitions)
        ->ReportAggregatesOnly(false);
}

}  // namespace

void bench::Require(bool done, const char* what) {
    if (!done) {
        std::fprintf(stderr, "not done: %s\n", what);
        std::exit(2);
    }
}

int main(int argc, char** argv) {
    const support::TempFolder folder;
    const bench::Comparison comparison = bench::MakeComparison();

    // Defaults of ours, which the command line can replace.
    std::vector<std::string> texts = {argv[0], "--benchmark_enable_random_interleaving=true",
                                      "--benchmark_min_time=0.2"};
    texts.insert(texts.end(), argv + 1, argv + argc);
    std::vector<char*> arguments;
    for (std::string& text : texts) {
        arguments.push_back(text.data());
    }
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 2;
    }
    Register(kOurs, comparison.mOurs);
    Register(kReference, comparison.mReference);
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);

    const double ours = collector.Median(kOurs);
    const double reference = collector.Median(kReference);
    bench::Require(ours > 0 && reference > 0, "both sides were measured");
    const double ratio = ours / reference;
    std::printf("\n%-12s %12s %12s %8s %8s\n", "name", "ours us", "reference us", "ratio", "target");
    std::printf("%-12s %12.3f %12.3f %8.2f %8.2f%s\n", comparison.mName.c_str(), ours, reference, ratio,
                comparison.mTarget, ratio > comparison.mTarget ? "  MISSED" : "");
    return ratio > comparison.mTarget ? 1 : 0;
}
