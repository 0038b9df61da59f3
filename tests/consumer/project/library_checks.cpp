#include <filesystem>

#include "host.h"

using namespace zephmetadata;

namespace host {

namespace {

int CheckVersions(const std::string& wanted) {
    CHECK(GetLibraryVersion() == wanted);
    CHECK(!GetXMPCoreVersion().empty());
    CHECK(!GetXMPFilesVersion().empty());
    return 0;
}

int CheckCountedStart() {
    CHECK(!TypeIdDefinition("date"));
    {
        const Library library;
        CHECK(library.IsRunning() && TypeIdDefinition("date"));
    }
    CHECK(!TypeIdDefinition("date"));
    Initialize();
    Initialize();
    Terminate();
    CHECK(TypeIdDefinition("date"));
    Terminate();
    CHECK(!TypeIdDefinition("date"));
    Terminate();
    return 0;
}

int CheckErrors() {
    const Session session;
    CHECK(!HasErrors());
    std::vector<UTF16String> heard;
    const auto listener = std::make_shared<std::function<void(UTF16String)>>(
        [&heard](UTF16String message) { heard.push_back(std::move(message)); });
    NotifyOnError(listener);
    ParseBufferForDefinitions("<xmp_definitions>", u"panel.xml");
    CHECK(HasErrors());
    const std::vector<ErrorInfo> errors = GetErrorInfos();
    CHECK(errors.size() == 1 && errors[0].kind == ErrorKind::DefinitionParsingError);
    CHECK(errors[0].context == u"panel.xml");
    CHECK(heard == std::vector<UTF16String>{errors[0].message});
    *listener = nullptr;
    ParseBufferForDefinitions("<xmp_definitions>", u"panel.xml");
    CHECK(heard.size() == 1 && GetErrorInfos().size() == 2 && CountErrors() == 2);
    {
        ErrorScope scope;
        ParseBufferForDefinitions("<xmp_definitions>", u"scoped.xml");
        CHECK(scope.Take().size() == 1 && scope.Errors().empty() && CountErrors() == 2);
    }
    ClearErrors();
    CHECK(!HasErrors() && CountErrors() == 0);
    return 0;
}

int CheckFolders(const std::string& root) {
    const Session session;
    struct Row {
        UTF16String mPath;
        const char* mBase;
        bool mCreated;
    };
    const Row rows[] = {
        {CustomDefinitionsGlobalDirectory(), "/SYSTEM/", false},
        {CustomDefinitionsUserDirectory(), "/GLOBAL_PREF/", false},
        {CustomExtensionsGlobalDirectory(), "/SYSTEM/", true},
        {CustomExtensionsUserDirectory(), "/GLOBAL_PREF/", true},
        {PanelsDefinitionsGlobalDirectory(OrbVersion::kOrbVersion_3_0), "/SYSTEM/", false},
        {PanelsDefinitionsUserDirectory(OrbVersion::kOrbVersion_2_0), "/GLOBAL_PREF/", false},
        {XMPFilesPluginsDirectory(), "/PLUGINS/", false},
    };
    for (const Row& row : rows) {
        const std::string path = zephcore::PathToNative(row.mPath);
        CHECK(path.starts_with(root + row.mBase));
        CHECK(std::filesystem::is_directory(path) == row.mCreated);
    }
    return 0;
}

int CheckSwitches() {
    const Session session;
    int calls = 0;
    const auto listener = std::make_shared<std::function<void()>>([&calls] { ++calls; });
    NotifyWhenXMPWritingChanged(listener);
    DisableXMPWriting(true);
    DisableXMPWriting(true);
    CHECK(calls == 1 && IsXMPWritingDisabled());
    DisableXMPWriting(false);
    CHECK(calls == 2 && !IsXMPWritingDisabled());

    CHECK(!IsAllMetadataForcedWritable());
    ForcedAllMetadataWritable(true);
    CHECK(IsAllMetadataForcedWritable());
    ForcedAllMetadataWritable(false);
    CHECK(!IsAllMetadataForcedWritable());
    return 0;
}

/// The number of the failure when there is one, else 0.
int FailureOfItem(int index) {
    try {
        CreatePathFromArrayItem(PathForExpression("dc:subject"), index);
        return 0;
    } catch (const XMPError& error) {
        return error.Id();
    }
}

int CheckToolkitErrors() {
    const XMPError made(-5, "made by a host");
    CHECK(made.Id() == -5 && std::string(made.what()) == "made by a host");
    const Session session;
    CHECK(FailureOfItem(1) == 0 && FailureOfItem(0) < 0);
    return 0;
}

}  // namespace

int CheckLibrary(const Arguments& arguments) {
    return CheckVersions(arguments.mVersion) | CheckCountedStart() | CheckErrors() | CheckFolders(arguments.mFolder) |
           CheckSwitches() | CheckToolkitErrors();
}

}  // namespace host
