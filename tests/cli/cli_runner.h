#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace cli {

using Arguments = std::vector<std::string>;
using Json = nlohmann::json;

/// How a program ended and what it said. A status of -1 stands for a signal.
struct Outcome {
    int mStatus = 0;
    std::string mOutput;
    std::string mErrors;

    friend bool operator==(const Outcome&, const Outcome&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
        return out << "status " << outcome.mStatus << "\n--- output\n"
                   << outcome.mOutput << "--- errors\n"
                   << outcome.mErrors << "---";
    }
};

/// Runs a program, found by its path or in PATH, in @p folder. No shell comes between.
Outcome RunProgram(const std::filesystem::path& folder, const std::string& program, const Arguments& arguments);

/// A test in a folder of its own with copies of all sample files.
class CliTest : public ::testing::Test {
protected:
    CliTest();

    Outcome Zephmeta(const Arguments& arguments) const;
    static std::string Program() { return ZEPHMETA_PROGRAM; }
    /// The values at some paths of a file, by path.
    Json Get(const std::string& file, const Arguments& paths) const;

    std::filesystem::path At(const std::string& name) const { return mFolder.Path() / "files" / name; }
    std::string Bytes(const std::string& name) const { return support::ReadFile(At(name)); }
    /// Where the program keeps what it can undo.
    std::filesystem::path State() const { return mFolder.Path() / "state/zephmeta"; }
    void Write(const std::string& name, std::string_view bytes) const { mFolder.Write("files/" + name, bytes); }

private:
    support::TempFolder mFolder;
};

/// The problem with broken-packet.jpg.
inline const std::string kBrokenPacket = "broken-packet.jpg: its XMP is damaged and left as it is\n";

/// The bytes of a sample file as the project has it.
std::string Sample(const std::string& name);

}  // namespace cli
