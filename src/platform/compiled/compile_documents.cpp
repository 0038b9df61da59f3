// The build's own program: compile_documents INPUT OUTPUT writes an XML document in its compiled form.
#include <fstream>
#include <iostream>
#include <iterator>

#include "platform/compiled/document_compiler.h"

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: compile_documents INPUT OUTPUT\n";
        return 2;
    }
    std::ifstream input(arguments[1], std::ios::binary);
    const std::string document(std::istreambuf_iterator<char>(input), {});
    const auto compiled = zephcore::CompileDocument(document);
    if (!compiled) {
        std::cerr << arguments[1] << ": cannot be read, or is not well formed\n";
        return 1;
    }
    std::ofstream output(arguments[2], std::ios::binary);
    output << *compiled << std::flush;
    return output ? 0 : 1;
}
