#include "batch/file_names.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <unordered_set>

#include "console.h"
#include "zephmetadata/media.h"

namespace zephmeta {

namespace {

namespace fs = std::filesystem;

/// Extensions with their dots. Sidecars are not among those of the formats: they belong to the file that they lie beside.
std::set<std::string> Extensions(const std::vector<std::string>& asked) {
    std::set<std::string> extensions;
    for (const std::string& extension : asked) {
        extensions.insert((extension.starts_with('.') ? "" : ".") + Lower(extension));
    }
    for (const auto& format : asked.empty() ? zephmetadata::MediaFormats() : std::vector<zephmetadata::MediaFormat>()) {
        for (const std::string& extension : format.mExtensions) {
            extensions.insert("." + extension);
        }
    }
    extensions.erase(asked.empty() ? ".xmp" : "");
    return extensions;
}

class Collector {
public:
    Collector(const FileRequest& request, Problems& problems)
        : mRequest(request), mProblems(problems), mExtensions(Extensions(request.mExtensions)) {}

    void Take(const std::string& name) {
        if (name == "-") {
            TakeList(std::cin);
        } else if (name.starts_with('@') && name.size() > 1) {
            std::ifstream list(name.substr(1), std::ios::binary);
            list ? TakeList(list) : mProblems.Report(name.substr(1), "cannot be read");
        } else {
            TakeNamed(name);
        }
    }

    std::vector<std::string> Names() && { return std::move(mNames); }

private:
    void TakeList(std::istream& list) {
        std::string name;
        while (std::getline(list, name, mRequest.mNulSeparated ? '\0' : '\n')) {
            if (!mRequest.mNulSeparated && name.ends_with('\r')) {
                name.pop_back();
            }
            if (!name.empty()) {
                TakeNamed(name);
            }
        }
    }

    void TakeNamed(const std::string& name) {
        std::error_code isUnknown;
        if (!fs::is_directory(name, isUnknown)) {
            Add(name);
        } else if (mRequest.mRecursive) {
            TakeFolder(name);
        } else {
            mProblems.Report(name, "is a folder; -r takes the files in it");
        }
    }

    /// Links to folders are not followed, so that none is read for ever.
    void TakeFolder(const fs::path& folder) {
        std::error_code error;
        std::vector<fs::directory_entry> entries;
        for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
            entries.push_back(*entry);
        }
        if (error) {
            mProblems.Report(folder.native(), "cannot be read (" + error.message() + ")");
        }
        std::sort(entries.begin(), entries.end(),
                  [](const auto& left, const auto& right) { return left.path().native() < right.path().native(); });
        for (const fs::directory_entry& entry : entries) {
            const std::string name = entry.path().filename().native();
            std::error_code isGone;
            const bool isFolder = entry.is_directory(isGone) && !entry.is_symlink(isGone);
            if (name.starts_with('.')) {
                continue;
            }
            if (isFolder) {
                TakeFolder(entry.path());
            } else if (mExtensions.contains(Lower(entry.path().extension().native())) && !entry.is_directory(isGone)) {
                Add(entry.path().native());
            }
        }
    }

    void Add(const std::string& name) {
        std::error_code error;
        fs::path path = fs::absolute(name, error).lexically_normal();
        if (fs::is_symlink(path, error)) {
            const fs::path target = fs::weakly_canonical(path, error);
            path = error ? path : target;
        }
        if (mSeen.insert(path.native()).second) {
            mNames.push_back(name);
        }
    }

    const FileRequest& mRequest;
    Problems& mProblems;
    std::set<std::string> mExtensions;
    std::unordered_set<std::string> mSeen;
    std::vector<std::string> mNames;
};

}  // namespace

bool NamesFiles(const std::string& argument) {
    std::error_code isUnknown;
    return argument == "-" || (argument.starts_with('@') && argument.size() > 1) || fs::exists(argument, isUnknown);
}

std::vector<std::string> FileNames(const FileRequest& request, Problems& problems) {
    Collector collector(request, problems);
    for (const std::string& name : request.mNames) {
        collector.Take(name);
    }
    return std::move(collector).Names();
}

}  // namespace zephmeta
