#include <gtest/gtest.h>

#include <algorithm>

#include "support/temp_folder.h"
#include "zephcore/environment.h"
#include "zephcore/xml.h"

namespace zephcore {
namespace {

TEST(Resources, AreTheDocumentsOfTheSourceTree) {
    std::vector<std::string> names;
    for (const char* folder : {"definitions", "views"}) {
        const auto path = std::filesystem::path(ZEPHMETADATA_SOURCE_DIR) / "resources" / folder;
        std::error_code missing;
        for (const auto& entry : std::filesystem::directory_iterator(path, missing)) {
            names.push_back(entry.path().stem());
            std::string_view bytes;
            ASSERT_TRUE(GetBinaryFromModule(Module::kOwn, names.back(), "xml", bytes)) << names.back();
            EXPECT_EQ(bytes, support::ReadFile(entry.path())) << names.back();
            const auto parser = GetParser(std::make_unique<AbstractParseHandler>());
            EXPECT_EQ(parser->ParseBuffer(UTF8String(bytes)), 0) << names.back() << ':' << parser->ErrorLine();
        }
    }
    std::sort(names.begin(), names.end());
    ASSERT_FALSE(names.empty());
    std::vector<UTF8String> documents = GetResourceNames(Module::kOwn, "xml");
    std::erase_if(documents, [](const UTF8String& name) { return name.find('/') != UTF8String::npos; });
    EXPECT_EQ(documents, names);
}

TEST(Resources, OfPackagesHaveTheirFoldersInTheirNames) {
    const auto packages = std::filesystem::path(ZEPHMETADATA_SOURCE_DIR) / "resources/packages";
    for (const char* name : {"iptc-photo-metadata/manifest", "iptc-photo-metadata/schema/photoshop"}) {
        std::string_view bytes;
        ASSERT_TRUE(GetBinaryFromModule(Module::kOwn, name, "xml", bytes)) << name;
        EXPECT_EQ(bytes, support::ReadFile(packages / (std::string(name) + ".xml")));
    }
}

TEST(Resources, OfOtherNamesAndTypesAreAbsent) {
    std::string_view bytes = "untouched";
    const std::string known = GetResourceNames(Module::kOwn, "xml").at(0);
    EXPECT_FALSE(GetBinaryFromModule(Module::kOwn, known, "dat", bytes));
    EXPECT_FALSE(GetBinaryFromModule(Module::kOwn, known, "", bytes));
    EXPECT_FALSE(GetBinaryFromModule(Module::kOwn, known + ".xml", "xml", bytes));
    EXPECT_FALSE(GetBinaryFromModule(Module::kOwn, "", "xml", bytes));
    EXPECT_EQ(bytes, "untouched");
    EXPECT_TRUE(GetResourceNames(Module::kOwn, "txt").empty());
}

}  // namespace
}  // namespace zephcore
