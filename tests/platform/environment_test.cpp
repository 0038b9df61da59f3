#include "zephcore/environment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

#include "support/temp_folder.h"
#include "zephcore/files.h"
#include "zephcore/text.h"

namespace zephcore {
namespace {

/// Sets environment variables, an empty text for unset; puts the old ones back at its end.
class Variables {
public:
    explicit Variables(const std::map<std::string, std::string>& values) {
        for (const auto& [name, value] : values) {
            const char* const old = std::getenv(name.c_str());
            mOld[name] = old == nullptr ? "" : old;
            Set(name, value);
        }
    }
    ~Variables() {
        for (const auto& [name, value] : mOld) {
            Set(name, value);
        }
    }
    Variables(const Variables&) = delete;
    Variables& operator=(const Variables&) = delete;

private:
    static void Set(const std::string& name, const std::string& value) {
        value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
    }
    std::map<std::string, std::string> mOld;
};

TEST(Environment, LanguageComesFromTheFirstVariableThatNamesOne) {
    struct Row {
        const char *mOwn, *mAll, *mMessages, *mLang;
        const char16_t* mLanguage;
    };
    for (const Row& row : {Row{"", "", "", "", u"en_US"}, Row{"fr_FR", "de_DE", "", "", u"fr_FR"},
                           Row{"", "de_DE.UTF-8", "it_IT", "", u"de_DE"}, Row{"", "C.UTF-8", "it", "ja_JP", u"en_US"},
                           Row{"", "", "POSIX", "ca_ES.UTF-8@valencia", u"en_US"}, Row{"", "", "", "C", u"en_US"},
                           Row{"", "", "", "de_AT@euro", u"de_AT"}, Row{".UTF-8", "", "", "sv_SE", u"sv_SE"}}) {
        const Variables set({{"ZEPHCORE_LANGUAGE", row.mOwn},
                             {"LC_ALL", row.mAll},
                             {"LC_MESSAGES", row.mMessages},
                             {"LANG", row.mLang}});
        EXPECT_EQ(Locale::ApplicationLangauge(), row.mLanguage) << row.mAll << ' ' << row.mLang;
    }
}

TEST(Environment, BaseFoldersFollowTheirVariables) {
    struct Row {
        std::map<std::string, std::string> mVariables;
        Dir (*mFolder)();
        std::string mPath;
    };
    const auto system = [] { return Dir::SystemDir(44); };
    for (const Row& row : {
             Row{{{"ZEPHCORE_PREF_DIR", "/p/"}}, Dir::PrefDir, "/p"},
             Row{{{"ZEPHCORE_PREF_DIR", ""}, {"ZEPHCORE_GLOBAL_PREF_DIR", "/g"}}, Dir::PrefDir, "/g"},
             Row{{{"ZEPHCORE_GLOBAL_PREF_DIR", ""}, {"XDG_CONFIG_HOME", "/x"}}, Dir::GlobalPrefDir, "/x/zephcore"},
             Row{{{"ZEPHCORE_GLOBAL_PREF_DIR", ""}, {"XDG_CONFIG_HOME", "relative"}, {"HOME", "/h"}},
                 Dir::GlobalPrefDir,
                 "/h/.config/zephcore"},
             Row{{{"ZEPHCORE_SYSTEM_DIR", "/s\xFF"}}, system, "/s\xFF"},
             Row{{{"ZEPHCORE_PLUGINS_DIR", "/l"}}, Dir::PluginsDir, "/l"},
             Row{{{"TMPDIR", "/t"}}, Dir::TempDir, "/t"},
             Row{{{"TMPDIR", ""}}, Dir::TempDir, "/tmp"},
         }) {
        const Variables set(row.mVariables);
        EXPECT_EQ(PathToNative(row.mFolder().FullPath()), row.mPath);
    }
    const Variables unset({{"ZEPHCORE_SYSTEM_DIR", ""},
                           {"ZEPHCORE_PLUGINS_DIR", ""},
                           {"ZEPHCORE_GLOBAL_PREF_DIR", ""},
                           {"XDG_CONFIG_HOME", ""},
                           {"HOME", ""}});
    for (const Dir& dir : {system(), Dir::PluginsDir(), Dir::GlobalPrefDir()}) {
        EXPECT_TRUE(dir.FullPath().starts_with(u"/") && dir.FullPath().ends_with(u"/zephcore"))
            << PathToNative(dir.FullPath());
    }
    EXPECT_TRUE(File(Dir::AppDir(), u"platform_test").Exists());
}

TEST(Settings, AreKeptInTheFile) {
    const support::TempFolder folder;
    DebugDatabase& settings = DebugDatabase::Instance();
    EXPECT_EQ(settings.GetEntry("key", "default"), "default");
    EXPECT_TRUE(settings.SetEntry("key", "one\n\"two\""));
    EXPECT_TRUE(settings.SetEntry("other", "\xFF"));
    EXPECT_EQ(settings.GetEntry("key", ""), "one\n\"two\"");
    EXPECT_EQ(settings.GetEntry("other", ""), "\xEF\xBF\xBD");
    EXPECT_TRUE(settings.SetEntry("key", ""));
    EXPECT_EQ(settings.GetEntry("key", "default"), "") << "empty is a value";
}

TEST(Settings, DamagedFilesReadAsEmptyAndAreReplaced) {
    const support::TempFolder folder;
    const std::filesystem::path file = std::filesystem::path(PathToNative(Dir::PrefDir().FullPath())) / "debug.json";
    const auto name = std::filesystem::relative(file, folder.Path());
    DebugDatabase& settings = DebugDatabase::Instance();
    for (const std::string& text :
         {std::string(), std::string("{\"key\": \"x\""), std::string("[\"key\"]"), std::string("\"key\""),
          std::string("{\"key\": 1}"), std::string("{\"key\":\"\xFF\"}"), std::string(500000, '['),
          std::string(2U << 20U, ' ') + "{\"key\":\"large\"}"}) {
        folder.Write(name, text);
        EXPECT_EQ(settings.GetEntry("key", "default"), "default") << text.substr(0, 20);
        EXPECT_TRUE(settings.SetEntry("key", "new"));
        EXPECT_EQ(settings.GetEntry("key", "default"), "new") << text.substr(0, 20);
    }
    std::filesystem::remove(file);
    std::filesystem::create_directories(file / "inside");
    EXPECT_EQ(settings.GetEntry("key", "default"), "default");
    EXPECT_FALSE(settings.SetEntry("key", "new")) << "a folder in its place";
}

}  // namespace
}  // namespace zephcore
