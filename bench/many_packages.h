#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "support/temp_folder.h"
#include "zephcore/files.h"
#include "zephmetadata/zephmetadata.h"

namespace bench {

/// What a package of a benchmark is called; its prefix, too.
inline std::string PackageName(int number) {
    return "bench" + std::to_string(number);
}
inline std::string PackageNamespace(int number) {
    return "http://example.org/" + PackageName(number) + "/";
}
inline std::string PropertyName(std::size_t number) {
    return "property" + std::to_string(number);
}

/// Extension packages in the machine-wide folder, for the life of the object.
class ManyPackages {
public:
    /// Each with @p properties texts and a view that shows @p shown of @p shownNamespace; of its own for an empty one.
    ManyPackages(int packages, std::size_t properties, const std::string& shownNamespace,
                 const std::vector<std::string>& shown) {
        for (int number = 0; number < packages; ++number) {
            Write(number, "manifest.xml", Manifest(number));
            Write(number, "schema/schema.xml", Schema(number, properties));
            Write(number, "view/view.xml",
                  View(number, shownNamespace.empty() ? PackageNamespace(number) : shownNamespace, shown));
        }
    }

    zephmetadata::UTF16String Path(int number, const std::string& file) const {
        return zephcore::PathFromNative((Folder(number) / file).native());
    }

private:
    static std::string Manifest(int number) {
        return "<extension xmlns=\"" + zephmetadata::ExtensionNamespaceURI + "\" name=\"" + PackageName(number) +
               "\" version=\"1.0\"/>";
    }
    static std::string Schema(int number, std::size_t properties) {
        std::string text = "<xmp_definitions><xmp_schema namespace=\"" + PackageNamespace(number) + "\" prefix=\"" +
                           PackageName(number) + "\" label=\"$$$/bench/schema=Schema\">\n";
        for (std::size_t property = 0; property < properties; ++property) {
            text += "<xmp_property category=\"external\" name=\"" + PropertyName(property) +
                    "\" type=\"text\" label=\"$$$/bench/label=Label\" description=\"$$$/bench/text=What it means\"/>\n";
        }
        return text + "</xmp_schema></xmp_definitions>";
    }
    static std::string View(int number, const std::string& shownNamespace, const std::vector<std::string>& shown) {
        std::string text = "<views xmlns=\"" + zephmetadata::UINamespaceURI + "\" xmlns:b=\"" + shownNamespace +
                           "\"><view name=\"org.example." + PackageName(number) + "\" label=\"$$$/bench/view=View\">\n";
        for (const std::string& name : shown) {
            text += "<property name=\"b:" + name + "\"/>\n";
        }
        return text + "</view></views>";
    }
    std::filesystem::path Folder(int number) const {
        return mFolder.Path() / "base/SYSTEM/Corvid/XMP/Metadata Extensions" / PackageName(number);
    }
    void Write(int number, const std::string& file, const std::string& text) const {
        mFolder.Write(Folder(number) / file, text);
    }

    support::TempFolder mFolder;
};

}  // namespace bench
