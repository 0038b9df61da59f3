#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "zephcore/xml.h"

namespace zephcore {
namespace {

std::string Repeated(const std::string& text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

std::string Nested(std::size_t depth) {
    return Repeated("<a>", depth) + Repeated("</a>", depth);
}

std::string WithAttributes(std::size_t count) {
    std::string document = "<a";
    for (std::size_t i = 0; i < count; ++i) {
        document += " b" + std::to_string(i) + "=''";
    }
    return document + "/>";
}

/// A tag of @p length bytes that ends neither with a piece nor with the document.
std::string WithTag(std::size_t length) {
    const std::string start = "<b c='";
    const std::string end = "'/>";
    return "<a><b/>" + start + std::string(length - start.size() - end.size(), 'x') + end + Repeated("<b/>", 100000) +
           "</a>";
}

std::string WithText(std::size_t length) {
    return "<a>" + std::string(length, 'x') + "</a>";
}

std::string WithComment(std::size_t length) {
    return "<a><!--" + std::string(length - 7, 'x') + "--></a>";
}

std::string WithNamespace(std::size_t length) {
    return "<a xmlns='" + std::string(length, 'u') + "'/>";
}

/// The root, and elements of which each but the last has an attribute.
std::string WithNodes(std::size_t count) {
    return "<a>" + Repeated("<b c='d'>e</b>", (count - 2) / 2) + Repeated("<b/>", 1 + count % 2) + "</a>";
}

std::string BillionLaughs() {
    std::string document = "<!DOCTYPE a [<!ENTITY e0 'ha'>";
    for (int i = 1; i < 12; ++i) {
        document += "<!ENTITY e" + std::to_string(i) + " '" + Repeated("&e" + std::to_string(i - 1) + ";", 10) + "'>";
    }
    return document + "]><a b='&e11;'>&e11;</a>";
}

constexpr std::size_t kMebi = 1U << 20U;

struct BoundRow {
    const char* mLabel;
    std::function<std::string()> mDocument;
    bool mIsAccepted;
};

class XmlBound : public ::testing::TestWithParam<BoundRow> {};

TEST_P(XmlBound, Holds) {
    const auto parser = GetParser(std::make_unique<AbstractParseHandler>());
    EXPECT_EQ(parser->ParseBuffer(GetParam().mDocument()) == 0, GetParam().mIsAccepted);
}

INSTANTIATE_TEST_SUITE_P(
    Xml, XmlBound,
    ::testing::Values(BoundRow{"DeepestNesting", [] { return Nested(kMaxElementDepth); }, true},
                      BoundRow{"TooDeepByOne", [] { return Nested(kMaxElementDepth + 1); }, false},
                      BoundRow{"DepthCountsOpenElements",
                               [] { return "<a>" + Repeated(Nested(kMaxElementDepth - 1), 5) + "</a>"; }, true},
                      BoundRow{"MostAttributes", [] { return WithAttributes(kMaxAttributes); }, true},
                      BoundRow{"OneAttributeTooMany", [] { return WithAttributes(kMaxAttributes + 1); }, false},
                      BoundRow{"TagOfMiddlingLength", [] { return WithTag(9 * kMebi + 1); }, true},
                      BoundRow{"LongestTag", [] { return WithTag(kMaxTokenBytes); }, true},
                      BoundRow{"TagTooLongByOne", [] { return WithTag(kMaxTokenBytes + 1); }, false},
                      BoundRow{"UnterminatedTag", [] { return "<a b='" + std::string(100 * kMebi, 'x'); }, false},
                      BoundRow{"UnterminatedComment", [] { return "<!--" + std::string(50 * kMebi, 'x'); }, false},
                      BoundRow{"LongestText", [] { return WithText(kMaxTokenBytes); }, true},
                      BoundRow{"TextTooLongByOne", [] { return WithText(kMaxTokenBytes + 1); }, false},
                      BoundRow{"LongestComment", [] { return WithComment(kMaxTokenBytes); }, true},
                      BoundRow{"CommentTooLongByOne", [] { return WithComment(kMaxTokenBytes + 1); }, false},
                      BoundRow{"LongestNamespace", [] { return WithNamespace(kMaxNamespaceBytes); }, true},
                      BoundRow{"NamespaceTooLongByOne", [] { return WithNamespace(kMaxNamespaceBytes + 1); }, false},
                      BoundRow{"BillionLaughs", BillionLaughs, false},
                      BoundRow{"MostElementsAndAttributes", [] { return WithNodes(kMaxNodes); }, true},
                      BoundRow{"OneElementTooMany", [] { return WithNodes(kMaxNodes + 1); }, false}),
    [](const auto& row) { return row.param.mLabel; });

}  // namespace
}  // namespace zephcore
