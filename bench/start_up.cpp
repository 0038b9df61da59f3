// Starting and stopping the library, against starting and stopping the toolkit and parsing the same documents alone.
#include <expat.h>

#include <filesystem>
#include <vector>

#include "ratio.h"
#include "support/temp_folder.h"
#include "zephmetadata/library.h"

namespace {

std::vector<std::string> Documents() {
    std::vector<std::string> documents;
    for (const auto& entry : std::filesystem::directory_iterator(ZEPHMETADATA_SOURCE_DIR "/resources/definitions")) {
        documents.push_back(support::ReadFile(entry.path()));
    }
    bench::Require(!documents.empty(), "finding the documents");
    return documents;
}

void StartAndStop() {
    zephmetadata::Initialize();
    bench::Require(!zephmetadata::HasErrors(), "starting without errors");
    zephmetadata::Terminate();
}

struct FreeParser {
    void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
};

/// With namespaces and with handlers, as any program that uses what it parses has.
void ParseAlone(const std::string& document) {
    const std::unique_ptr<XML_ParserStruct, FreeParser> parser(XML_ParserCreateNS(nullptr, '\n'));
    std::size_t attributes = 0;
    XML_SetUserData(parser.get(), &attributes);
    XML_SetElementHandler(
        parser.get(),
        [](void* data, const XML_Char*, const XML_Char** pairs) {
            for (; *pairs != nullptr; pairs += 2) {
                ++*static_cast<std::size_t*>(data);
            }
        },
        [](void*, const XML_Char*) {});
    const auto status = XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), XML_TRUE);
    bench::Require(status == XML_STATUS_OK && attributes > 0, "parsing a document");
}

}  // namespace

bench::Comparison bench::MakeComparison() {
    return {"start-up", StartAndStop,
            [documents = Documents()] {
                Require(xmp_init(), "starting the toolkit");
                for (const std::string& document : documents) {
                    ParseAlone(document);
                }
                xmp_terminate();
            },
            3};
}
