// The build's own program. compile_documents INPUT OUTPUT writes an XML document in its compiled form,
// compile_documents --deflate INPUT OUTPUT any document smaller.
#include <zlib.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <span>

#include "platform/compiled/deflated_size.h"
#include "platform/compiled/document_compiler.h"

namespace {

std::optional<std::string> Deflate(const std::string& document) {
    std::string data(compressBound(document.size()), '\0');
    uLongf size = data.size();
    const auto* const bytes = reinterpret_cast<const Bytef*>(document.data());
    if (compress2(reinterpret_cast<Bytef*>(data.data()), &size, bytes, document.size(), Z_BEST_COMPRESSION) != Z_OK) {
        return std::nullopt;
    }
    return zephcore::DeflatedSizeBytes(document.size()) + data.substr(0, size);
}

}  // namespace

int main(int count, char** arguments) {
    const std::span<char*> words(arguments, static_cast<std::size_t>(count));
    const bool deflates = words.size() == 4 && words[1] == std::string("--deflate");
    if (words.size() != 3 && !deflates) {
        std::cerr << "usage: compile_documents [--deflate] INPUT OUTPUT\n";
        return 2;
    }
    const char* const name = words[words.size() - 2];
    std::ifstream input(name, std::ios::binary);
    const std::string document(std::istreambuf_iterator<char>(input), {});
    const std::optional<std::string> made = deflates ? Deflate(document) : zephcore::CompileDocument(document);
    if (!input || !made) {
        std::cerr << name << ": cannot be read, or is not well formed\n";
        return 1;
    }
    std::ofstream output(words.back(), std::ios::binary);
    output << *made << std::flush;
    return output ? 0 : 1;
}
