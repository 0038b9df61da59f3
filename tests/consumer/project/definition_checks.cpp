#include <algorithm>
#include <fstream>
#include <thread>

#include "host.h"

using namespace zephmetadata;

namespace host {

namespace {

constexpr const char* kDocument =
    "<xmp_definitions>"
    "<xmp_type name='berth'><xmp_field namespace='urn:host:' prefix='host' name='quay' type='text'/></xmp_type>"
    "<xmp_schema namespace='urn:host:' prefix='host'>"
    "<xmp_property name='berths' type='bag' element_type='berth'/>"
    "<xmp_property name='kind' type='closedchoice' element_type='integer'><xmp_choice raw_value='1' label='One'/>"
    "</xmp_property></xmp_schema></xmp_definitions>";

int CheckNames() {
    CHECK(kTypeText == "text" && kTypeInteger == "integer" && kTypeReal == "real");
    const UTF8String own[] = {UINamespaceURI,       ExtensionNamespaceURI, QuilletNamespaceURI, QuilletUINamespaceURI,
                              DynamicNamespaceBase, AggregateNamespaceURI, DICOMNamespaceURI,   SWFNamespaceURI};
    for (const UTF8String& uri : own) {
        CHECK(uri.starts_with("http://") && uri.ends_with("/"));
        CHECK(std::count(std::begin(own), std::end(own), uri) == 1);
    }
    return 0;
}

int CheckTypeQueries() {
    CHECK(PrimitiveTypeAsPrimitiveTypeId(kPrimitiveType_ClosedChoice) == "closedchoice");
    CHECK(PrimitiveTypeIdAsPrimitiveType("seq") == kPrimitiveType_Seq);
    CHECK(PrimitiveTypeIsSimple(kPrimitiveType_Text) && !PrimitiveTypeIsSimple(kPrimitiveType_Bag));
    CHECK(PrimitiveTypeIsChoice(kPrimitiveType_OpenChoice) && !PrimitiveTypeIsChoice(kPrimitiveType_Text));
    CHECK(PrimitiveTypeIsArray(kPrimitiveType_Alt) && !PrimitiveTypeIsArray(kPrimitiveType_Real));

    const auto date = TypeIdDefinition("date");
    const auto thumbnail = TypeIdDefinition("thumbnail");
    const auto langalt = TypeIdDefinition("langalt");
    CHECK(date && thumbnail && langalt);
    CHECK(PrimitiveTypeOf("date") == kPrimitiveType_Text && PrimitiveTypeOf(*date) == kPrimitiveType_Text);
    CHECK(!PrimitiveTypeOf(*thumbnail));
    CHECK(IsSimpleType("date") && IsSimpleType(*date) && !IsSimpleType(*langalt));
    CHECK(IsArrayType("langalt") && IsArrayType(*langalt) && !IsArrayType(*date));
    CHECK(IsStructType("thumbnail") && IsStructType(*thumbnail) && !IsStructType(*date));
    CHECK(ElementTypeIdOf("langalt") == "text" && ElementTypeIdOf(*langalt) == "text");

    EntryDefinition entry;
    entry.mType = "seq";
    entry.mElementType = "date";
    CHECK(PrimitiveTypeOf(entry) == kPrimitiveType_Seq && ElementTypeIdOf(entry) == "date");
    CHECK(PropertyTypeOf(entry) == date);
    return 0;
}

int CheckParsing(const std::string& folder) {
    const std::string name = folder + "/host.xml";
    std::ofstream(name) << kDocument;
    const UTF16String path = zephcore::PathFromNative(name);
    CHECK(ParseBufferForDefinitions(kDocument, u"").first.size() == 1);
    const Definitions parsed = ParseDocumentForDefinitions(path);
    CHECK(parsed.first.size() == 1 && parsed.second.size() == 1);
    CHECK(parsed.first[0]->mProperties[1]->mChoices[0]->mRawValue == "1");
    Definitions appended = parsed;
    CHECK(ParseDocumentForDefinitions(path, appended) && appended.first.size() == 2);
    CHECK(!NamespaceDefinition("urn:host:"));

    const Definitions registered = ParseDocumentAndRegisterDefinitions(path, false);
    CHECK(registered.first.size() == 1 && NamespaceDefinition("urn:host:") == registered.first[0]);
    CHECK(TypeIdDefinition("berth") == registered.second[0]);
    const Definitions again = ParseBufferAndRegisterDefinitions(kDocument, u"again", true);
    CHECK(again.first.empty() && again.second.empty());
    CHECK(GetErrorInfos().size() == 3 && GetErrorInfos().back().context == u"again");
    CHECK(RemoveSchemaDefinition(registered.first[0]) && RemoveTypeDefinition(registered.second[0]));
    CHECK(!NamespaceDefinition("urn:host:") && !TypeIdDefinition("berth"));
    return 0;
}

int CheckRegistration() {
    const auto type = std::make_shared<TypeDefinition>();
    type->mName = "host.level";
    type->mExtends = kPrimitiveType_Integer;
    CHECK(RegisterTypeDefinition(type, u"") && !RegisterTypeDefinition(type, u""));

    const auto schema = std::make_shared<SchemaDefinition>();
    schema->mNamespace = "urn:host:made:";
    schema->mPrefix = "made";
    schema->mProperties.push_back(
        CreateNewProperty(kPrimitiveType_Integer, "level", u"$$$/l=Level", u"Level", u"", u""));
    CHECK(schema->mProperties[0]->mType == "integer" && schema->mProperties[0]->mLabel == u"Level");
    CHECK(!IsSchemaDefinitionAlreadyRegistered(schema));
    CHECK(RegisterSchemaDefinition(schema, u"", false) && IsSchemaDefinitionAlreadyRegistered(schema));
    CHECK(NamespaceForPrefix("made") == "urn:host:made:");

    const std::size_t before = GetErrorInfos().size();
    CHECK(CheckPropertyTypes({schema}, u"") && CheckFieldTypes({type}, u"") && GetErrorInfos().size() == before);
    schema->mProperties[0]->mType = "nowhere";
    CHECK(CheckPropertyTypes({schema}, u"made.xml") && GetErrorInfos().size() == before + 1);
    const auto field = std::make_shared<FieldDefinition>();
    field->mType = "nowhere";
    type->mFields.push_back(field);
    CHECK(CheckFieldTypes({type}, u"made.xml") && GetErrorInfos().size() == before + 2);
    return 0;
}

int CheckSchemaFiles(const std::string& folder) {
    const auto schema = CreateNewSchema("urn:host:edited:", "edited", u"$$$/e=Edited", u"Edited", u"", u"");
    schema->mProperties.push_back(CreateNewProperty(kPrimitiveType_Bag, "tags", u"", u"Tags", u"", u""));
    UTF8String document;
    WriteDefinitionsToBuffer(std::vector{schema}, std::vector<sp<TypeDefinition>>(), document);
    CHECK(ParseBufferForDefinitions(document, u"").first[0]->mProperties[0]->mLabel == u"Tags");

    const zephcore::File file(zephcore::PathFromNative(folder + "/edited/schema.xml"));
    CHECK(WriteSchemaFile({{schema}, {}}, file) && ParseDocumentForDefinitions(file.FullPath()).first.size() == 1);
    CHECK(filePathForSchema(schema).empty());
    SetFilePathForSchema(file.FullPath(), schema);
    CHECK(filePathForSchema(schema) == file.FullPath());
    CHECK(allSchemasFromSourceFile(file.FullPath()) == std::vector{schema});
    CHECK(allTypesFromSourceFile(file.FullPath()).empty());
    schema->mPrefix = "renamed";
    RewriteSchemaFile(schema);
    CHECK(ParseDocumentForDefinitions(file.FullPath()).first[0]->mPrefix == "renamed");

    const UTF8String dynamic = MakeDynamicSchemaNamespace("/host/");
    CHECK(dynamic == DynamicNamespaceBase + "host/1.0/" && IsDynamicNamespace(dynamic));
    CHECK(!IsDynamicNamespace("urn:host:edited:"));
    return 0;
}

int CheckLanguages() {
    const Path path = PathForExpression("exif:ExposureProgram");
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    const Language german("de-AT");
    const Language french("fr");
    {
        const LanguageScope scope(german);
        CHECK(LabelOf(*entry) == u"Belichtungsprogramm" && ViewItem(path).GetLabel() == u"Belichtungsprogramm");
        CHECK(LabelOf(*entry->mChoices[0]) != entry->mChoices[0]->mLabel);
        CHECK(DescriptionOf(*entry) == entry->mDescription);  // stays English
        UTF16String elsewhere;
        std::thread([&] { elsewhere = LabelOf(*entry); }).join();
        CHECK(elsewhere == entry->mLabel);
        {
            const LanguageScope inner(french);
            CHECK(LabelOf(*entry) == u"Programme d\u2019exposition" &&
                  FormatDate("2024-05-18T12:00:00") == "18/05/2024 12:00:00");
        }
        CHECK(FormatDate("2024-05-18T12:00:00") == "18.05.24 12:00:00");
    }
    CHECK(LabelOf(*entry) == entry->mLabel);
    const Language none("../../fr");
    const LanguageScope scope(none);
    CHECK(LabelOf(*entry) == u"Exposure Program");
    return 0;
}

int CheckLists() {
    const auto common = CommonSchemaDefinitions();
    const auto dynamic = DynamicSchemaDefinitions();
    const auto all = RegisteredSchemaDefinitions();
    const auto isDynamic = [](const sp<SchemaDefinition>& schema) { return schema->mDynamic; };
    CHECK(std::distance(common.begin(), common.end()) > 20 && std::none_of(common.begin(), common.end(), isDynamic));
    CHECK(!dynamic.empty() && std::all_of(dynamic.begin(), dynamic.end(), isDynamic));
    CHECK(std::is_sorted(all.begin(), all.end(),
                         [](const auto& left, const auto& right) { return left->mPrefix < right->mPrefix; }));
    CHECK(RegisteredTypeDefinitions().size() > 50);
    CHECK(NamespaceDefinition(StandardSchemaNamespace(kStandardSchema_DC))->mPrefix == "dc");
    CHECK(StandardSchemaNamespace(static_cast<StandardSchema>(99)).empty());
    return 0;
}

}  // namespace

int CheckDefinitions(const Arguments& arguments) {
    const Session session;
    return CheckNames() | CheckTypeQueries() | CheckParsing(arguments.mFolder) | CheckRegistration() |
           CheckSchemaFiles(arguments.mFolder) | CheckLanguages() | CheckLists();
}

}  // namespace host
