// Runs a fuzz target over files, and over all files of folders, that are named on the command line.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <vector>

#include "support.h"
#include "support/temp_folder.h"

namespace {

std::vector<std::filesystem::path> InputsOf(const std::filesystem::path& argument) {
    if (!std::filesystem::is_directory(argument)) {
        return {argument};
    }
    std::vector<std::filesystem::path> inputs;
    for (const auto& entry : std::filesystem::directory_iterator(argument)) {
        inputs.push_back(entry.path());
    }
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const auto inputs = InputsOf(argv[i]);
        // A folder that is gone must not look like a test that passed.
        if (inputs.empty() || !std::filesystem::exists(inputs.front())) {
            std::cerr << argv[i] << ": no inputs\n";
            return 1;
        }
        for (const auto& input : inputs) {
            std::cout << input.string() << std::endl;  // flushed: it names the culprit of a crash
            const std::string bytes = support::ReadFile(input);
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        }
    }
    return argc > 1 ? 0 : 1;
}
