#include "xmp/packet/rdf_element.h"

#include <expat.h>

#include <memory>
#include <type_traits>
#include <vector>

#include "xmp/core/xmp_paths.h"
#include "xmp/packet/packet_text.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {
namespace {

constexpr std::string_view kAround = "adobe:ns:meta/\nxmpmeta";
constexpr std::string_view kAroundInOldFiles = "adobe:ns:meta/\nxapmeta";
constexpr char kSeparator = '\n';

// Expat is used directly here: the positions of tags in the text are needed.
class Finder {
public:
    explicit Finder(std::string_view text) : mText(text), mParser(XML_ParserCreateNS("UTF-8", kSeparator)) {
        XML_SetUserData(mParser.get(), this);
        XML_SetElementHandler(mParser.get(), &OnStart, &OnEnd);
        XML_SetStartDoctypeDeclHandler(mParser.get(), &OnDoctype);
        XML_SetCommentHandler(mParser.get(), &OnComment);
        XML_SetProcessingInstructionHandler(mParser.get(), &OnInstruction);
    }

    std::optional<RDFElement> Find() {
        const auto size = static_cast<int>(mText.size());
        const bool isRead = XML_Parse(mParser.get(), mText.data(), size, XML_TRUE) == XML_STATUS_OK;
        if (!isRead || mCount != 1) {
            return std::nullopt;
        }
        RDFElement found{mRange, {}};
        for (const TextRange& aside : mAsides) {
            found.mAsides.append(mText.substr(aside.mBegin, aside.mEnd - aside.mBegin)).append("\n");
        }
        return found;
    }

private:
    struct ParserDeleter {
        void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
    };

    static Finder& Self(void* self) { return *static_cast<Finder*>(self); }
    static void XMLCALL OnStart(void* self, const XML_Char* name, const XML_Char** /*attributes*/) {
        Self(self).Start(name);
    }
    static void XMLCALL OnEnd(void* self, const XML_Char* /*name*/) { Self(self).End(); }
    static void XMLCALL OnDoctype(void* self, const XML_Char* /*name*/, const XML_Char* /*systemId*/,
                                  const XML_Char* /*publicId*/, int /*hasInternalSubset*/) {
        XML_StopParser(Self(self).mParser.get(), XML_FALSE);
    }
    static void XMLCALL OnComment(void* self, const XML_Char* /*text*/) { Self(self).Aside(); }
    static void XMLCALL OnInstruction(void* self, const XML_Char* /*target*/, const XML_Char* /*data*/) {
        Self(self).Aside();
    }

    TextRange Here() const {
        const auto begin = static_cast<std::size_t>(XML_GetCurrentByteIndex(mParser.get()));
        return {begin, begin + static_cast<std::size_t>(XML_GetCurrentByteCount(mParser.get()))};
    }

    void Start(std::string_view name) {
        const bool isRDF =
            name.size() == kRDFNamespace.size() + 4 && name.starts_with(kRDFNamespace) && name.ends_with("\nRDF");
        if (isRDF && mOpen == 0 && (mDepth == 0 || (mMeta != 0 && mDepth == mMeta))) {
            mRange = Here();
            mOpen = mDepth + 1;
            ++mCount;
        }
        if (mMeta == 0 && (name == kAround || name == kAroundInOldFiles)) {
            mMeta = mDepth + 1;
        }
        if (++mDepth >= kMaxPacketDepth) {
            XML_StopParser(mParser.get(), XML_FALSE);
        }
    }

    void End() {
        if (mDepth == mOpen) {
            mRange.mEnd = Here().mEnd;
            mOpen = 0;
        }
        mMeta = mDepth == mMeta ? 0 : mMeta;
        --mDepth;
    }

    void Aside() {
        if (mOpen != 0) {
            mAsides.push_back(Here());
        }
    }

    std::string_view mText;
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserDeleter> mParser;
    std::vector<TextRange> mAsides;
    TextRange mRange;
    std::size_t mDepth = 0;
    std::size_t mOpen = 0;  // the depth within the rdf:RDF that is open, 0 for none
    std::size_t mCount = 0;
    std::size_t mMeta = 0;  // the same of x:xmpmeta
};

}  // namespace

std::optional<RDFElement> FindRDF(std::string_view document) {
    if (document.empty() || document.size() > kMaxPacketBytes) {
        return std::nullopt;
    }
    return Finder(document).Find();
}

}  // namespace zephmetadata::toolkit
