#include "zephcore/xml.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "platform/compiled/compiled_document.h"
#include "platform/compiled/document_compiler.h"
#include "support/temp_folder.h"
#include "zephcore/environment.h"
#include "zephcore/files.h"
#include "zephcore/text.h"

namespace zephcore {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

/// Writes every event down as one line of UTF-8 text.
class RecordingHandler : public AbstractParseHandler {
public:
    explicit RecordingHandler(std::vector<std::string>& events) : mEvents(events) {}

    void StartDocument() override { Add("document"); }
    void StartElementWithNamespace(const UTF16String& name, const UTF16String& namespaceURI,
                                   const UTF16String& localName, const AttributeList& attributes) override {
        std::string text = "start " + Named(name, namespaceURI, localName);
        for (const Attribute& attribute : attributes) {
            text += " " + Named(attribute.mName, attribute.mNamespaceURI, attribute.mLocalName) + "=" +
                    UTF16to8(attribute.mValue);
        }
        Add(text);
    }
    void EndElementWithNamespace(const UTF16String& name, const UTF16String& namespaceURI,
                                 const UTF16String& localName) override {
        Add("end " + Named(name, namespaceURI, localName));
    }
    void StartCDATA() override { Add("cdata"); }
    void EndCDATA() override { Add("/cdata"); }
    void Characters(const UTF16String& text) override { Add("text " + UTF16to8(text)); }
    void Comment(const UTF16String& text) override { Add("comment " + UTF16to8(text)); }
    void EndDocument() override { Add("/document"); }
    void StartPrefixMapping(const UTF16String& prefix, const UTF16String& namespaceURI) override {
        Add("map " + UTF16to8(prefix) + "=" + UTF16to8(namespaceURI));
    }
    void EndPrefixMapping(const UTF16String& prefix) override { Add("/map " + UTF16to8(prefix)); }

private:
    static std::string Named(const UTF16String& name, const UTF16String& namespaceURI, const UTF16String& localName) {
        return UTF16to8(name + u"{" + namespaceURI + u"}" + localName);
    }
    void Add(const std::string& text) { mEvents.push_back(std::to_string(CurrentDocumentLine()) + " " + text); }

    std::vector<std::string>& mEvents;
};

struct Outcome {
    int mStatus = 0;
    std::size_t mErrorLine = 0;
    std::vector<std::string> mEvents;
};

Outcome Parse(const std::string& document) {
    Outcome outcome;
    const auto parser = GetParser(std::make_unique<RecordingHandler>(outcome.mEvents));
    outcome.mStatus = parser->ParseBuffer(document);
    outcome.mErrorLine = parser->ErrorLine();
    return outcome;
}

std::string InUTF16(const std::string& ascii, bool isBigEndian) {
    std::string bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : ascii) {
        bytes += isBigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    }
    return bytes;
}

TEST(XmlParser, DeliversEventsInDocumentOrderWithTheirLines) {
    const Outcome outcome = Parse(
        "<?xml version='1.0'?>\n"
        "<!--top-->\n"
        "<p:a xmlns:p='urn:p' xmlns='urn:d' p:x='1' y='&lt;&#65;'>\n"
        "one &amp;\n"
        "two<b/><![CDATA[<raw>]]>three<?pi x?>four\n"
        "</p:a>");
    EXPECT_EQ(outcome.mStatus, 0);
    EXPECT_EQ(outcome.mErrorLine, 0U);
    EXPECT_THAT(outcome.mEvents,
                ElementsAre("1 document", "2 comment top", "3 map p=urn:p", "3 map =urn:d",
                            "3 start p:a{urn:p}a p:x{urn:p}x=1 y{}y=<A", "3 text \none &\ntwo", "5 start b{urn:d}b",
                            "5 end b{urn:d}b", "5 cdata", "5 text <raw>", "5 /cdata", "5 text threefour\n",
                            "6 end p:a{urn:p}a", "6 /map " /* in reverse */, "6 /map p", "6 /document"));
}

TEST(XmlParser, PassesElementsOnByNameWhenNamespacesAreNotHandled) {
    struct NameHandler : AbstractParseHandler {
        explicit NameHandler(UTF16String& seen) : mSeen(seen) {}
        void StartElement(const UTF16String& name, const AttributeMap& attributes) override {
            mSeen += u"<" + name;
            for (const auto& [key, value] : attributes) {
                mSeen += u" " + key + u"=" + value;
            }
        }
        void EndElement(const UTF16String& name) override { mSeen += u">" + name; }
        UTF16String& mSeen;
    };
    UTF16String seen;
    EXPECT_EQ(GetParser(std::make_unique<NameHandler>(seen))->ParseBuffer("<p:a xmlns:p='u' z='1' p:b='2'/>"), 0);
    EXPECT_EQ(seen, u"<p:a p:b=2 z=1>p:a");
}

TEST(XmlParser, ReadsEveryEncoding) {
    const std::string plain = "<?xml version='1.0'?><a b='c'>d</a>";
    const std::vector<std::string> expected = Parse(plain).mEvents;
    ASSERT_THAT(expected, Contains("1 start a{}a b{}b=c"));
    EXPECT_EQ(Parse("\xEF\xBB\xBF" + plain).mEvents, expected) << "byte-order mark";
    EXPECT_EQ(Parse(InUTF16(plain, true)).mEvents, expected) << "UTF-16, big endian";
    EXPECT_EQ(Parse(InUTF16(plain, false)).mEvents, expected) << "UTF-16, little endian";
    EXPECT_THAT(Parse("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>").mEvents, Contains("1 text \xC3\xA9"));
    EXPECT_THAT(Parse("<a>\xF0\x9F\x98\x80</a>").mEvents, Contains("1 text \xF0\x9F\x98\x80"));
}

struct BrokenRow {
    const char* mLabel;
    std::string mDocument;
    std::size_t mLine;
};

class BrokenDocument : public ::testing::TestWithParam<BrokenRow> {};

TEST_P(BrokenDocument, FailsAtItsLine) {
    const Outcome outcome = Parse(GetParam().mDocument);
    EXPECT_NE(outcome.mStatus, 0) << GetParam().mDocument;
    EXPECT_EQ(outcome.mErrorLine, GetParam().mLine);
    EXPECT_THAT(outcome.mEvents, ::testing::Not(Contains(::testing::EndsWith("/document"))));
}

const std::string kDeclaredEntity = "<!DOCTYPE a [<!ENTITY e 'x'>]>\n";

INSTANTIATE_TEST_SUITE_P(
    Xml, BrokenDocument,
    ::testing::Values(
        BrokenRow{"Empty", "", 1}, BrokenRow{"OnlyBlanks", " \n ", 2}, BrokenRow{"OnlyMark", "\xEF\xBB\xBF", 1},
        BrokenRow{"TwoRoots", "<a/>\n<b/>", 2}, BrokenRow{"CrossedTags", "<a>\n<b>\n</a></b>", 3},
        BrokenRow{"UnboundPrefix", "<a>\n<p:b/></a>", 2}, BrokenRow{"TwiceTheSameAttribute", "<a b='' b=''/>", 1},
        BrokenRow{"TwiceTheSameExpandedName", "<a xmlns:p='u' xmlns:q='u' p:b='' q:b=''/>", 1},
        BrokenRow{"NulInText", std::string("<a>\n\0</a>", 9), 2},
        BrokenRow{"NulInAttribute", std::string("<a b='\0'/>", 10), 1},
        BrokenRow{"InvalidUtf8", "<a>\n\xC3\x28</a>", 2}, BrokenRow{"OverlongUtf8", "<a>\xC0\xBC</a>", 1},
        BrokenRow{"EncodedSurrogate", "<a>\xED\xA0\x80</a>", 1}, BrokenRow{"LoneSurrogate", "<a>&#xD800;</a>", 1},
        BrokenRow{"ReferenceToControl", "<a>&#1;</a>", 1}, BrokenRow{"SeparatorInNamespace", "<a xmlns='u&#1;v'/>", 1},
        BrokenRow{"UnknownEncoding", "<?xml version='1.0' encoding='EBCDIC'?><a/>", 1},
        BrokenRow{"UndeclaredEntity", "<a>&e;</a>", 1}, BrokenRow{"EntityInText", kDeclaredEntity + "<a>&e;</a>", 1},
        BrokenRow{"EntityInAttribute", kDeclaredEntity + "<a b='&e;'/>", 1},
        BrokenRow{"ExternalEntity", "<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/passwd'>]>\n<a>&e;</a>", 1},
        BrokenRow{"ParameterEntity", "<!DOCTYPE a [<!ENTITY % e \"<!ENTITY f 'x'>\"> %e;]>\n<a/>", 1},
        BrokenRow{"TextEntityOfExternalSubset", "<!DOCTYPE a SYSTEM 'x.dtd'>\n<a>&e;</a>", 2},
        BrokenRow{"AttributeEntityOfExternalSubset", "<!DOCTYPE a SYSTEM 'x.dtd'>\n<a b='&lt;&e;'/>", 2},
        BrokenRow{"AttributeEntityInUtf16", InUTF16("<!DOCTYPE a SYSTEM 'x.dtd'>\n<a b='&e;'/>", true), 2},
        BrokenRow{"DefaultedAttribute", "<!DOCTYPE a [\n<!ATTLIST a b CDATA 'x'>]><a/>", 2}),
    [](const auto& row) { return row.param.mLabel; });

TEST(XmlParser, AcceptsADocumentTypeThatDeclaresNothingHarmful) {
    const Outcome outcome =
        Parse("<!DOCTYPE a SYSTEM 'x.dtd' [<!ELEMENT a ANY><!ATTLIST a b CDATA #IMPLIED>]><a b='&amp;&#65;'>&gt;</a>");
    EXPECT_EQ(outcome.mStatus, 0);
    EXPECT_THAT(outcome.mEvents, Contains("1 start a{}a b{}b=&A"));
}

TEST(XmlParser, RefusesADocumentCutAnywhere) {
    const std::string document =
        "\xEF\xBB\xBF<?xml version='1.0'?><p:a xmlns:p='u' b='&amp;'>\xC3\xA9<![CDATA[x]]><!--c--></p:a>";
    ASSERT_EQ(Parse(document).mStatus, 0);
    for (std::size_t length = 0; length < document.size(); ++length) {
        EXPECT_NE(Parse(document.substr(0, length)).mStatus, 0) << "cut at " << length;
    }
}

TEST(XmlParser, ReadsAFileInPiecesAsItReadsABuffer) {
    const support::TempFolder folder;
    std::string document = "<a>";
    for (int i = 0; i < 30000; ++i) {
        document += "<b c='" + std::to_string(i) + "'>\xE2\x82\xAC</b>\n";
    }
    document += "</a>";
    const UTF16String path = PathFromNative(folder.Write("large.xml", document).native());

    std::vector<std::string> events;
    const auto parser = GetParser(std::make_unique<RecordingHandler>(events));
    EXPECT_EQ(parser->ParseFile(path), 0);
    EXPECT_EQ(events, Parse(document).mEvents);
    EXPECT_EQ(events.size(), 4 + 4 * 30000U);

    EXPECT_NE(parser->ParseFile(path + u".missing"), 0);
    EXPECT_NE(parser->ParseFile(PathFromNative(folder.Path().native())), 0) << "a folder";
    EXPECT_NE(parser->ParseFile(path + UTF16String(1, u'\0')), 0) << "a NUL in the path";
    EXPECT_NE(parser->ParseFile(u"/dev/zero"), 0) << "a device";
}

TEST(XmlParser, LetsAHandlersExceptionThroughAndParsesAgain) {
    struct ThrowingHandler : AbstractParseHandler {
        explicit ThrowingHandler(int& events) : mEvents(events) {}
        void StartElement(const UTF16String& name, const AttributeMap&) override {
            ++mEvents;
            if (name == u"bad") {
                throw std::runtime_error("from the handler");
            }
        }
        void EndElement(const UTF16String&) override { ++mEvents; }
        int& mEvents;
    };
    int events = 0;
    const auto parser = GetParser(std::make_unique<ThrowingHandler>(events));
    EXPECT_THROW(parser->ParseBuffer("<a>\n<bad/><b/></a>"), std::runtime_error);
    EXPECT_EQ(events, 2) << "nothing is delivered after the exception";
    EXPECT_EQ(parser->ErrorLine(), 2U);
    EXPECT_EQ(parser->ParseBuffer("<a/>"), 0);
    EXPECT_EQ(parser->ErrorLine(), 0U);
}

/// Without what a compiled document leaves out, and where the document itself begins and ends.
std::vector<std::string> KeptEvents(std::vector<std::string> events) {
    std::erase_if(events, [](const std::string& event) {
        const std::string_view kind = std::string_view(event).substr(event.find(' ') + 1);
        const bool isBlank =
            kind.starts_with("text ") && kind.find_first_not_of(" \t\r\n", 5) == std::string_view::npos;
        return isBlank || kind.starts_with("comment") || kind.ends_with("cdata") || kind.ends_with("document");
    });
    return events;
}

TEST(CompiledDocuments, GiveTheEventsOfTheirDocuments) {
    std::map<std::string, std::string> documents = {
        {"wide and long", "<a b='\xE2\x82\xAC\xC3\xA9'>" + std::string(300, '\n') + "<c xmlns='u' xmlns:p='v' p:d='" +
                              std::string(200, 'x') + "'/>\n&lt;text <!-- none --> <![CDATA[&]]></a>"}};
    for (const UTF8String& name : GetResourceNames(Module::kOwn, "xml")) {
        std::string_view bytes;
        ASSERT_TRUE(GetBinaryFromModule(Module::kOwn, name, "xml", bytes));
        documents[name] = bytes;
    }
    for (const auto& [name, document] : documents) {
        const auto compiled = CompileDocument(document);
        ASSERT_TRUE(compiled) << name;
        std::vector<std::string> replayed;
        RecordingHandler handler(replayed);
        ReplayDocument(*compiled, handler);
        EXPECT_EQ(KeptEvents(replayed), KeptEvents(Parse(document).mEvents)) << name;
        std::string_view embedded;
        EXPECT_EQ(GetBinaryFromModule(Module::kOwn, name, "events", embedded), name != "wide and long") << name;
        EXPECT_TRUE(embedded.empty() || embedded == *compiled) << name;
    }
    EXPECT_FALSE(CompileDocument("<a>"));
}

}  // namespace
}  // namespace zephcore
