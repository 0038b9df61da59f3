// Path expressions: each is refused, or is written back as it was; none hurts the tree that it is used on.
#include "library_session.h"
#include "support.h"
#include "zephmetadata/zephmetadata.h"

using namespace zephmetadata;

namespace {

const char* const kPacket =
    "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
    "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/' dc:source='s'>"
    "<dc:title><rdf:Alt><rdf:li xml:lang='x-default'>t</rdf:li></rdf:Alt></dc:title>"
    "<dc:subject><rdf:Bag><rdf:li>a</rdf:li><rdf:li>b</rdf:li></rdf:Bag></dc:subject>"
    "</rdf:Description></rdf:RDF></x:xmpmeta>";

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::StartLibrary();
    const std::string expression(fuzz::Text(data, size));
    const Path path = PathForExpression(expression);
    if (path.mNamespace.empty()) {
        fuzz::Require(path.mPathDescription.empty(), "a refused expression has no path");
        return 0;
    }
    fuzz::Require(ExpressionForPath(path) == expression, "an expression comes back");
    TypeEntryDefinition(path);
    PrimitiveTypeOfPath(path);

    const XMPMetaPtr tree = ParseXMPMeta(kPacket);
    std::string text;
    GetValue(tree.get(), path, text);
    GetItems(tree.get(), path);
    GetLanguages(tree.get(), path);
    AddArrayItem(tree.get(), path, 0);
    if (SetValue(tree.get(), path, "1")) {
        fuzz::Require(HasValue(tree.get(), path), "what was set is there");
    }
    DeleteValue(tree.get(), path);
    fuzz::Require(ParseXMPMeta(SerializeXMPMeta(tree.get())) != nullptr, "the changed tree can be written and read");
    return 0;
}
