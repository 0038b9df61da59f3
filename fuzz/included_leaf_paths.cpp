// Documents of included leaf paths: what is read can be written and read again, what is refused changes nothing.
#include <algorithm>

#include "library_session.h"
#include "support.h"
#include "zephmetadata/library.h"
#include "zephmetadata/paths.h"

using namespace zephmetadata;

namespace {

bool SameMembers(const Path& left, const Path& right) {
    return left == right && left.mInternal == right.mInternal && left.mEntryName == right.mEntryName &&
           left.mParentId == right.mParentId;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::StartLibrary();
    const Path kept{false, "before", {}, {}, {}};
    std::set<Path> paths{kept};
    if (!ReadIncludedLeafPathsAsXMLString(paths, std::string(fuzz::Text(data, size)))) {
        fuzz::Require(paths.size() == 1 && SameMembers(*paths.begin(), kept), "a refused document changes nothing");
        return 0;
    }
    for (const Path& path : paths) {
        fuzz::Require(PathEntryDefinition(path) != nullptr && boost::empty(ChildPaths(path)), "a leaf is defined");
    }
    std::string document;
    IncludedLeafPathsAsXMLString(paths, document);
    std::set<Path> again;
    fuzz::Require(ReadIncludedLeafPathsAsXMLString(again, document), "a written document can be read");
    fuzz::Require(std::equal(paths.begin(), paths.end(), again.begin(), again.end(), SameMembers),
                  "a written document holds the same paths");
    return 0;
}
