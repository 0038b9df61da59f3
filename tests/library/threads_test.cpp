#include <atomic>
#include <filesystem>
#include <thread>

#include "frame/errors.h"
#include "support/library_test.h"
#include "zephcore/files.h"
#include "zephmetadata/zephmetadata.h"

#ifdef __SANITIZE_THREAD__
/// The C library has a lock there that the sanitizer does not see.
extern "C" __attribute__((visibility("default"))) const char*
__tsan_default_suppressions() {  // NOLINT(bugprone-*,cert-*)
    return "race:tzset_internal\n";
}
#endif

namespace zephmetadata {
namespace {

/// What several threads may do at once. Under ThreadSanitizer it finds races, without it what they break.
class Threads : public support::LibraryTest {
protected:
    static constexpr int kThreads = 4;
    static constexpr int kRounds = 12;

    template <typename Work>
    static void Run(const Work& work) {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([&work, thread] {
                for (int round = 0; round < kRounds; ++round) {
                    work(thread, round);
                }
            });
        }
    }

    std::string Photo(int thread) const {
        const auto photo = Folder().Path() / (std::to_string(thread) + ".jpg");
        std::filesystem::copy_file(std::filesystem::path(ZEPHMETADATA_SOURCE_DIR) / "tests/data/harbour.jpg", photo,
                                   std::filesystem::copy_options::overwrite_existing);
        return photo.string();
    }
};

TEST_F(Threads, EditProvidersOfTheirOwn) {
    std::atomic<int> written = 0;
    std::vector<std::string> photos;
    for (int thread = 0; thread < kThreads; ++thread) {
        photos.push_back(Photo(thread));
    }
    const Language german("de");
    const Language french("fr");
    Run([&](int thread, int round) {
        const auto photo = OpenMedia(zephcore::PathFromNative(photos.at(static_cast<std::size_t>(thread))));
        const auto both = std::make_shared<AggregateProvider>(
            std::vector<sp<MetaDataProvider>>{photo, std::make_shared<SidecarProvider>(u"/nowhere.xmp")});
        const LanguageScope language(thread % 2 == 0 ? german : french);
        MetaDataUpdateAccess access(photo);
        access.Set(PathForExpression("xmp:Rating"), round % 2);
        access.Set(PathForExpression("dc:title"), std::to_string(round));
        written += access.Commit().IsWritten() ? 1 : 0;
        UTF8String text;
        EXPECT_TRUE(GetValue(*access, PathForExpression("exif:ExposureTime"), text));
        EXPECT_TRUE(GetValue(*access, PathForExpression("xmp:ModifyDate"), text));
        EXPECT_EQ(Describe(kFileStatus_NoFile), thread % 2 == 0 ? "Datei nicht gefunden" : "fichier introuvable");
    });
    EXPECT_EQ(written, kThreads * kRounds);
}

TEST_F(Threads, FindSchemasInTheirTrees) {
    std::atomic<int> found = 0;
    Run([&](int thread, int round) {
        const auto name = std::to_string(thread % 2) + "x" + std::to_string(round);
        const UTF8String uri = MakeDynamicSchemaNamespace(name);
        const UTF8String packet =
            "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
            "<rdf:Description xmlns:d" +
            name + "='" + uri + "' d" + name + ":a='v'/></rdf:RDF></x:xmpmeta>";
        class Memory : public TypicalProviderImpl {
        public:
            explicit Memory(XMPMetaHandle tree) : TypicalProviderImpl(tree) {}

        private:
            void WriteChanges(const std::vector<Path>& /*changes*/) override {}
        };
        const auto provider = std::make_shared<Memory>(ParseXMPMeta(packet).get());
        const AggregateProvider aggregate(std::vector<sp<MetaDataProvider>>{provider});
        found += NamespaceDefinition(uri) ? 1 : 0;
        EXPECT_TRUE(NamespaceDefinition("http://purl.org/dc/elements/1.1/"));
    });
    EXPECT_EQ(found, kThreads * kRounds);
    EXPECT_GE(RegisteredSchemaDefinitions().size(), 2U * kRounds);
}

TEST_F(Threads, ReportErrorsToTheSameCallbacks) {
    std::atomic<int> shared = 0;
    std::atomic<int> own = 0;
    const auto counting = [](std::atomic<int>& count) {
        return std::make_shared<std::function<void(UTF16String)>>([&count](const UTF16String&) { ++count; });
    };
    const ErrorCallback all = counting(shared);
    NotifyOnError(all);
    Run([&](int thread, int round) {
        NotifyOnError(counting(own));
        std::optional<ErrorScope> scope;
        if (thread % 2 == 0) {
            scope.emplace();
        }
        SendError(ErrorKind::ErrorReadingXMP, u"x", zephcore::PathFromNative(std::to_string(round)));
        EXPECT_EQ(scope ? scope->Errors().size() : 1U, 1U);
        EXPECT_GE(GetErrorInfos().size() + CountErrors(), scope ? 0U : 2U);
    });
    EXPECT_EQ(shared, kThreads * kRounds);
    EXPECT_GE(own, kThreads * kRounds) << "each hears its own error at least";
    EXPECT_EQ(CountErrors(), static_cast<std::size_t>(kThreads / 2 * kRounds));
    for (const ErrorInfo& error : GetErrorInfos()) {
        EXPECT_TRUE(Describe(error).ends_with(": Error reading XMP data: x"));
    }
}

}  // namespace
}  // namespace zephmetadata
