#include <zephcore/environment.h>
#include <zephcore/files.h>
#include <zephcore/language_tags.h>
#include <zephcore/localizer.h>
#include <zephcore/text.h>

#include <filesystem>

#include "host.h"

using namespace zephcore;

namespace host {

namespace {

int CheckTexts() {
    TextError error = TextError::kNone;
    CHECK(UTF8to16("k\xC3\xA9", &error) == u"k\u00E9" && error == TextError::kNone);
    CHECK(UTF8to16("k\xE9", &error) == u"k\uFFFD" && error == TextError::kMalformed);
    CHECK(UTF16to8(u"k\u00E9") == "k\xC3\xA9");
    CHECK(ResolveDisplayEscapes(u"#{quot}a#{U+42}#{x}") == u"\"aB#{x}");
    CHECK(PathToNative(PathFromNative("\xFF")) == "\xFF");
    return 0;
}

int CheckEnvironment() {
    CHECK(GetSuiteClientName() == u"zephmetadata");
    SetSuiteClientName(u"Consumer 1.0");
    CHECK(GetSuiteClientName() == u"Consumer 1.0");
    CHECK(Locale::ApplicationLangauge() == u"nb_NO");
    CHECK(IsKnownLanguage("de-AT") && IsKnownLanguage("x-default") && !IsKnownLanguage("german") &&
          !IsKnownLanguage("zz"));
    return 0;
}

int CheckBaseFolders(const std::string& root) {
    CHECK(PathToNative(Dir::PrefDir().FullPath()) == root + "/PREF");
    CHECK(PathToNative(Dir::GlobalPrefDir().FullPath()) == root + "/GLOBAL_PREF");
    CHECK(PathToNative(Dir::SystemDir(44).FullPath()) == root + "/SYSTEM");
    CHECK(PathToNative(Dir::PluginsDir().FullPath()) == root + "/PLUGINS");
    CHECK(PathToNative(Dir::TempDir().FullPath()) + "/" == std::filesystem::temp_directory_path().string() + "/");
    CHECK(File(Dir::AppDir(), u"consumer").Exists());
    return 0;
}

int CheckFiles(const std::string& root) {
    const Dir parent(PathFromNative(root));
    const Dir folder(parent, u"files");
    CHECK(!folder.Exists() && folder.Create() && folder.Exists());
    CHECK(folder.GetName() == u"files" && folder.FullPath() == parent.FullPath() + u"/files");
    CHECK(Dir(folder, u"below").Create());
    const File file(folder, u"a.tar.gz");
    CHECK(!file.Exists() && file.Create() && file.Exists());
    CHECK(File(file.FullPath()).GetName() == u"a.tar.gz");
    CHECK(file.GetTitle() == u"a.tar" && file.GetExtension(true) == u".gz" && file.GetExtension(false) == u"gz");
    CHECK(file.Parent().FullPath() == folder.FullPath());
    CHECK(folder.Files().size() == 1 && folder.Files()[0].FullPath() == file.FullPath());
    CHECK(folder.Subfolders().size() == 1 && folder.Subfolders()[0].GetName() == u"below");
    CHECK(folder.Delete() && !folder.Exists() && !file.Exists());
    return 0;
}

}  // namespace

int CheckPlatform(const Arguments& arguments) {
    return CheckTexts() | CheckEnvironment() | CheckBaseFolders(arguments.mFolder) | CheckFiles(arguments.mFolder);
}

}  // namespace host
