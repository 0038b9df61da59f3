#pragma once

#include <filesystem>
#include <string>
#include <utility>

#include "support/library_test.h"
#include "zephcore/files.h"
#include "zephmetadata/zephmetadata.h"

namespace support {

/// A test over panels made by hand, in folders of its own.
class PanelTest : public LibraryTest {
protected:
    using Generation = zephmetadata::OrbVersion;

    std::filesystem::path Panels(const std::string& base = "GLOBAL_PREF", const std::string& generation = "4.0") const {
        return Base(base) / "Custom Quillet Panels" / generation / "panels";
    }
    std::filesystem::path Extensions(const std::string& base = "GLOBAL_PREF") const {
        return Base(base) / "Metadata Extensions";
    }

    static std::string Manifest(const std::string& attributes) {
        return "<panel xmlns='http://ns.zephmetadata.org/xmp/quillet/' " + attributes + "/>";
    }
    /// Of a panel for the newest hosts, with its definitions in p.xml.
    static std::string Manifest() { return Manifest("name='P' type='generic' propertyDescriptionFile='p.xml'"); }
    /// A definitions document with one schema.
    static std::string Schema(const std::string& uri, const std::string& prefix, const std::string& properties) {
        return "<xmp_schema namespace='" + uri + "' prefix='" + prefix + "'>" + properties + "</xmp_schema>";
    }
    static std::string Document(const std::string& schemas) {
        return "<xmp_definitions>" + schemas + "</xmp_definitions>";
    }
    /// Of a panel that shows dc:title, which is registered.
    static std::string TitleDocument() {
        return Document(Schema("http://purl.org/dc/elements/1.1/", "dc", "<xmp_property name='title'/>"));
    }
    /// Of one that brings a property.
    static std::string NewDocument() {
        return Document(Schema("http://test/n/", "tstn", "<xmp_property name='new'/>"));
    }

    /// Writes a file below the user's panels folder for the newest hosts.
    void WritePanel(const std::string& name, std::string_view bytes) const { Folder().Write(Panels() / name, bytes); }
    void WritePanel(const std::string& folder, std::string_view manifest, std::string_view document) const {
        WritePanel(folder + "/manifest.xml", manifest);
        WritePanel(folder + "/p.xml", document);
    }

    /// The log of a conversion, with the full paths of the four folders as PANELS, EXTENSIONS and, for the machine-wide
    /// ones, SYSTEM-PANELS and SYSTEM-EXTENSIONS.
    std::string Convert(Generation generation = Generation::kOrbVersion_4_0, const std::string& folder = "4.0") const {
        zephmetadata::UTF16String log = u"before|";
        zephmetadata::utility::LoadAndConvertGenericPanels(generation, log);
        std::string text = zephcore::PathToNative(log);
        EXPECT_TRUE(text.starts_with("before|")) << "the log is only appended to";
        text.erase(0, text.find('|') + 1);
        for (const auto& [path, name] :
             {std::pair(Panels("GLOBAL_PREF", folder), "PANELS"), std::pair(Extensions(), "EXTENSIONS"),
              std::pair(Panels("SYSTEM", folder), "SYSTEM-PANELS"),
              std::pair(Extensions("SYSTEM"), "SYSTEM-EXTENSIONS")}) {
            for (std::size_t at = text.find(path.string()); at != std::string::npos; at = text.find(path.string())) {
                text.replace(at, path.string().size(), name);
            }
        }
        return text;
    }

    /// The entry for the machine-wide folder, in which most tests have no panel.
    inline static const std::string kNoneForAll =
        "INFO - No Generic Panels found in folder 'SYSTEM-PANELS' to convert.\n\n";
    inline static const std::string kConverted = "SUCCESS - Converted 'PANELS/p' to 'EXTENSIONS/p'\n\n";
    inline static const std::string kNone = "INFO - No Generic Panels found in folder 'PANELS' to convert.\n\n";

    std::string Package(const std::string& name) const { return ReadFile(Extensions() / "p" / name); }
    bool HasPackage(const std::string& name = {}) const { return std::filesystem::exists(Extensions() / "p" / name); }

private:
    std::filesystem::path Base(const std::string& base) const {
        return Folder().Path() / "base" / base / "Corvid" / "XMP";
    }
};

}  // namespace support
