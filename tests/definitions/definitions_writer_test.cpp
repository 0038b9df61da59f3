#include <random>

#include "support/library_test.h"
#include "zephcore/environment.h"
#include "zephmetadata/definitions.h"

namespace zephmetadata {
namespace {

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n";

std::string Written(const Definitions& definitions) {
    UTF8String text = "to be replaced";
    WriteDefinitionsToBuffer(definitions.first, definitions.second, text);
    return text;
}

// What a document carries of a definition, as lines to compare and print.

std::string Line(const std::vector<std::string>& members) {
    std::string line;
    for (const std::string& member : members) {
        line += "[" + member + "] ";
    }
    return line + "\n";
}

std::string Shown(const UTF16String& zString, const UTF16String& text) {
    return zephcore::UTF16to8(zString.empty() ? text : zString);
}

std::string Shown(const std::optional<double>& number) {
    return number ? std::to_string(*number) : "";
}

std::string Described(const EntryDefinition& entry, bool isStructure = false) {
    const bool defaultsToText = !entry.mElementType && !entry.mChoices.empty() && !isStructure;
    std::string lines = Line(
        {entry.mName, entry.mType.value_or(""), entry.mExtends ? PrimitiveTypeAsPrimitiveTypeId(*entry.mExtends) : "",
         Shown(entry.mLabelZString, entry.mLabel), Shown(entry.mDescriptionZString, entry.mDescription),
         defaultsToText ? kTypeText : entry.mElementType.value_or(""), entry.mPattern.value_or(""), Shown(entry.mMin),
         Shown(entry.mMax), entry.mDeprecated.value_or(false) ? "old" : ""});
    if (isStructure) {
        return lines;
    }
    for (const auto& choice : entry.mChoices) {
        lines += "  choice " + Line({choice->mRawValue, Shown(choice->mLabelZString, choice->mLabel)});
    }
    for (const auto& qualifier : entry.mQualifiers) {
        lines += "  qualifier " + Line({qualifier->mNamespace, qualifier->mPrefix}) + Described(*qualifier);
    }
    return lines;
}

std::string Described(const Definitions& definitions) {
    std::string lines;
    for (const auto& schema : definitions.first) {
        lines += "schema " + Line({schema->mNamespace, schema->mPrefix, Shown(schema->mLabelZString, schema->mLabel),
                                   Shown(schema->mDescriptionZString, schema->mDescription)});
        for (const auto& property : schema->mProperties) {
            lines += (property->mInternal ? "internal " : "external ") + Described(*property);
        }
    }
    for (const auto& type : definitions.second) {
        lines += "type " + Described(*type, !type->mFields.empty());
        for (const auto& field : type->mFields) {
            lines += "  field " + Line({field->mNamespace, field->mPrefix}) + Described(*field);
        }
    }
    return lines;
}

/// Definitions of all shapes, with texts that are hard to write.
class RandomDefinitions {
public:
    explicit RandomDefinitions(unsigned seed) : mRandom(seed) {}

    Definitions Make() {
        Definitions definitions;
        definitions.first.push_back(std::make_shared<SchemaDefinition>());  // a document of nothing cannot be read
        Fill(definitions.first, [this] {
            SchemaDefinition schema;
            schema.mNamespace = Text();
            schema.mPrefix = Text();
            Texts(schema);
            Fill(schema.mProperties, [this] {
                PropertyDefinition property;
                property.mInternal = Chance();
                Entry(property, true);
                return property;
            });
            return schema;
        });
        Fill(definitions.second, [this] {
            TypeDefinition type;
            Entry(type, true);
            Fill(type.mFields, [this] { return Namespaced<FieldDefinition>(true); });
            return type;
        });
        return definitions;
    }

private:
    bool Chance() { return Number(1) == 0; }
    int Number(int greatest) { return std::uniform_int_distribution(0, greatest)(mRandom); }

    /// Never empty: an empty label comes back as the name.
    std::string Text() {
        static const char* const pieces[] = {"a",     "B c",       "\"",  "'",  "&",      "<",  ">",
                                             "&amp;", "&amp;lt;",  "]]>", "\t", "\r\n\n", "é∞", "😀",
                                             "&#65;", "$$$/k/e=y", " ",   "@0", "--"};
        std::string text;
        do {
            text += pieces[static_cast<std::size_t>(Number(static_cast<int>(std::size(pieces)) - 1))];
        } while (Number(3) != 0);
        return text;
    }
    UTF16String Text16() { return zephcore::UTF8to16(Text()); }

    template <typename Definition, typename Make>
    void Fill(std::vector<sp<Definition>>& list, const Make& make) {
        for (int count = Number(3); count > 0; --count) {
            list.push_back(std::make_shared<Definition>(make()));
        }
    }

    void Texts(LocalizedTexts& texts) {
        (Chance() ? texts.mLabelZString : texts.mLabel) = Text16();
        if (Chance()) {
            (Chance() ? texts.mDescriptionZString : texts.mDescription) = Text16();
        }
    }

    std::optional<UTF8String> Optional() { return Chance() ? std::optional(Text()) : std::nullopt; }
    std::optional<double> Bound() { return Chance() ? std::optional(Number(1 << 30) / 4.0 - (1 << 27)) : std::nullopt; }

    void Entry(EntryDefinition& entry, bool withQualifiers) {
        entry.mName = Text();
        Texts(entry);
        entry.mType = Optional();
        if (Chance()) {
            entry.mExtends = static_cast<PrimitiveType>(Number(8));
        }
        entry.mElementType = Optional();
        Fill(entry.mChoices, [this] { return ChoiceDefinition{Text(), Text16(), Chance() ? Text16() : u""}; });
        if (entry.mElementType || entry.mChoices.empty()) {
            // Else a defaulted element type follows these, and stands before them in the next document.
            entry.mPattern = Optional();
            entry.mMin = Bound();
            entry.mMax = Bound();
            entry.mDeprecated = Chance() ? std::optional(Chance()) : std::nullopt;
        }
        if (withQualifiers) {
            Fill(entry.mQualifiers, [this] { return Namespaced<QualifierDefinition>(false); });
        }
    }

    template <typename Definition>
    Definition Namespaced(bool withQualifiers) {
        Definition definition;
        definition.mNamespace = Text();
        definition.mPrefix = Text();
        Entry(definition, withQualifiers);
        return definition;
    }

    std::mt19937 mRandom;
};

class DefinitionsWriter : public support::LibraryTest {
protected:
    static Definitions Parsed(const std::string& document) { return ParseBufferForDefinitions(document, u"written"); }
};

TEST_F(DefinitionsWriter, WritesWhatIsReadAgain) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        const Definitions definitions = RandomDefinitions(seed).Make();
        const std::string document = Written(definitions);
        const Definitions read = Parsed(document);
        ASSERT_EQ(Described(read), Described(definitions)) << "seed " << seed << "\n" << document;
        ASSERT_EQ(Written(read), document) << "seed " << seed;
    }
    EXPECT_FALSE(HasErrors()) << Records().front();
}

TEST_F(DefinitionsWriter, WritesEveryBuiltInDocumentWhole) {
    std::size_t documents = 0;
    for (const UTF8String& name : zephcore::GetResourceNames(zephcore::Module::kOwn, "xml")) {
        std::string_view bytes;
        if (!name.ends_with("_definitions") ||
            !zephcore::GetBinaryFromModule(zephcore::Module::kOwn, name, "xml", bytes)) {
            continue;
        }
        const Definitions definitions = Parsed(UTF8String(bytes));
        const Definitions read = Parsed(Written(definitions));
        EXPECT_EQ(Described(read), Described(definitions)) << name;
        ++documents;
    }
    EXPECT_GT(documents, 30U);
    const auto all = RegisteredSchemaDefinitions();
    EXPECT_EQ(Described(Parsed(Written({all, {}}))), Described({all, {}})) << "as registered";
    EXPECT_FALSE(HasErrors()) << Records().front();
}

TEST_F(DefinitionsWriter, HasOneByteForm) {
    const Definitions definitions = Parsed(
        "<xmp_definitions><xmp_schema namespace='http://a/' prefix='a' label='$$$/a=A' description='&amp;&quot;' "
        "dynamic='true'>"
        "<xmp_property name='p' type='closedchoice' max='5' min='-1.005' pattern='[&lt;]' deprecated='true' "
        "category='internal'><xmp_choice raw_value='1' label='$$$/a/1=One'/><xmp_choice raw_value='2'/>"
        "<xmp_qualifier namespace='http://q/' prefix='q' name='n'/></xmp_property>"
        "<xmp_property name='plain' type='bag' element_type='text' deprecated='no' label='Plain'/></xmp_schema>"
        "<xmp_schema namespace='http://b/'/>"
        "<xmp_type name='t' extends='seq' element_type='real'/>"
        "<xmp_type name='u'><xmp_field namespace='http://f/' prefix='f' name='g' type='date'/>"
        "</xmp_type></xmp_definitions>");
    definitions.second[1]->mChoices = definitions.first[0]->mProperties[0]->mChoices;
    definitions.first[0]->mProperties[1]->mMax = std::numeric_limits<double>::infinity();
    EXPECT_EQ(
        Written(definitions),
        kDeclaration +
            "<xmp_definitions>\n"
            "\t<xmp_schema namespace=\"http://a/\" prefix=\"a\" label=\"$$$/a=A\" description=\"&amp;&quot;\">\n"
            "\t\t<xmp_property category=\"internal\" name=\"p\" type=\"closedchoice\" label=\"p\" pattern=\"[&lt;]\" "
            "max=\"5\" min=\"-1.01\" deprecated=\"true\" element_type=\"text\">\n"
            "\t\t\t<xmp_choice raw_value=\"1\" label=\"$$$/a/1=One\" />\n"
            "\t\t\t<xmp_choice raw_value=\"2\" label=\"2\" />\n"
            "\t\t\t<xmp_qualifier namespace=\"http://q/\" prefix=\"q\" name=\"n\" label=\"n\" />\n"
            "\t\t</xmp_property>\n"
            "\t\t<xmp_property category=\"external\" name=\"plain\" type=\"bag\" label=\"Plain\" "
            "element_type=\"text\" />\n"
            "\t</xmp_schema>\n"
            "\t<xmp_schema namespace=\"http://b/\">\n"
            "\t</xmp_schema>\n"
            "\t<xmp_type name=\"t\" extends=\"seq\" label=\"t\" element_type=\"real\" />\n"
            "\t<xmp_type name=\"u\" label=\"u\">\n"
            "\t\t<xmp_field namespace=\"http://f/\" prefix=\"f\" name=\"g\" type=\"date\" label=\"g\" />\n"
            "\t</xmp_type>\n"
            "</xmp_definitions>\n");
    EXPECT_EQ(Written({}), kDeclaration);
    EXPECT_EQ(Written({{nullptr}, {}}), kDeclaration + "<xmp_definitions>\n</xmp_definitions>\n");
}

TEST_F(DefinitionsWriter, LeavesOutWhatXmlCannotCarry) {
    const auto schema = CreateNewSchema("http://a/\x01", std::string(1, '\x02'), u"", u"L", u"", u"");
    EXPECT_EQ(Written({{schema}, {}}), kDeclaration +
                                           "<xmp_definitions>\n\t<xmp_schema namespace=\"http://a/\" label=\"L\">\n"
                                           "\t</xmp_schema>\n</xmp_definitions>\n");
}

}  // namespace
}  // namespace zephmetadata
