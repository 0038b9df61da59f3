#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "support/library_test.h"
#include "zephcore/files.h"
#include "zephmetadata/zephmetadata.h"

namespace support {

/// A test over packages made by hand, in extension folders of its own.
class PackageTest : public LibraryTest {
protected:
    std::filesystem::path GlobalFolder() const { return Extensions("SYSTEM"); }
    std::filesystem::path UserFolder() const { return Extensions("GLOBAL_PREF"); }

    /// Writes a file of the machine-wide folder, making the folders on the way.
    void Write(const std::string& name, std::string_view text) const { Folder().Write(GlobalFolder() / name, text); }
    void WriteUser(const std::string& name, std::string_view text) const { Folder().Write(UserFolder() / name, text); }

    static std::string Manifest(const std::string& name, const std::string& version,
                                const std::string& attributes = {}) {
        return "<extension xmlns='http://ns.zephmetadata.org/metadata/extension/1.0/' name='" + name + "' version='" +
               version + "' " + attributes + "/>";
    }
    /// A definitions document with one schema.
    static std::string Schema(const std::string& prefix, const std::string& properties = {}) {
        return "<xmp_definitions><xmp_schema namespace='http://test/" + prefix + "/' prefix='" + prefix +
               "' label='$$$/test/" + prefix + "=Default'>" + properties + "</xmp_schema></xmp_definitions>";
    }
    /// A views document with one view, of dc:title.
    static std::string View(const std::string& name) {
        return "<views xmlns='http://ns.zephmetadata.org/metadata/ui/1.0/' xmlns:dc='http://purl.org/dc/elements/1.1/'>"
               "<view name='" +
               name + "'><property name='dc:title'/></view></views>";
    }

    /// The records so far, with the paths below the machine-wide and the user's folder as "G/..." and "U/...".
    std::vector<zephmetadata::Record> ShortRecords() const {
        std::vector<zephmetadata::Record> records = zephmetadata::Records();
        for (zephmetadata::Record& record : records) {
            record.mContext = Short(record.mContext);
        }
        return records;
    }
    std::string Short(const zephmetadata::UTF16String& path) const { return Short(zephcore::PathToNative(path)); }

private:
    std::filesystem::path Extensions(const char* base) const {
        return Folder().Path() / "base" / base / "Corvid" / "XMP" / "Metadata Extensions";
    }
    std::string Short(const std::string& path) const {
        for (const auto& [folder, letter] : {std::pair(GlobalFolder(), "G"), std::pair(UserFolder(), "U")}) {
            if (path.starts_with(folder.string())) {
                return letter + path.substr(folder.string().size());
            }
        }
        return path;
    }
};

/// The names of @p packages.
inline std::vector<std::string> Names(const std::vector<zephmetadata::ExtensionPackage>& packages) {
    std::vector<std::string> names;
    for (const zephmetadata::ExtensionPackage& package : packages) {
        names.push_back(zephcore::UTF16to8(package.name));
    }
    return names;
}

}  // namespace support
