#include "support/library_test.h"
#include "zephmetadata/definitions.h"

namespace zephmetadata {
namespace {

class TypeQueries : public support::LibraryTest {};

TEST_F(TypeQueries, NameThePrimitiveKinds) {
    const char* const ids[] = {"integer", "real", "text", "boolean", "openchoice", "closedchoice", "bag", "seq", "alt"};
    for (std::int32_t value = 0; value < 9; ++value) {
        const auto type = static_cast<PrimitiveType>(value);
        EXPECT_EQ(PrimitiveTypeAsPrimitiveTypeId(type), ids[value]);
        EXPECT_EQ(PrimitiveTypeIdAsPrimitiveType(ids[value]), type);
        EXPECT_EQ(PrimitiveTypeIsSimple(type), value <= 3);
        EXPECT_EQ(PrimitiveTypeIsChoice(type), value == 4 || value == 5);
        EXPECT_EQ(PrimitiveTypeIsArray(type), value >= 6);
    }
    EXPECT_EQ(PrimitiveTypeAsPrimitiveTypeId(static_cast<PrimitiveType>(9)), "");
    EXPECT_EQ(PrimitiveTypeAsPrimitiveTypeId(static_cast<PrimitiveType>(-1)), "");
    EXPECT_FALSE(PrimitiveTypeIsSimple(static_cast<PrimitiveType>(-1)));
    for (const char* id : {"Text", "", "date"}) {
        EXPECT_FALSE(PrimitiveTypeIdAsPrimitiveType(id)) << id;
    }
}

TEST_F(TypeQueries, ClassifyTypeIds) {
    ParseBufferAndRegisterDefinitions(
        "<xmp_definitions><xmp_type name='listChoice' extends='openchoice' element_type='seq of integer'/>"
        "<xmp_type name='ping' extends='openchoice' element_type='pong'/>"
        "<xmp_type name='pong' extends='openchoice' element_type='ping'/></xmp_definitions>",
        u"", false);
    struct Row {
        const char* mId;
        std::optional<PrimitiveType> mPrimitive;
        bool mSimple;
        bool mArray;
        bool mStruct;
        const char* mElement;  // null: absent
    };
    const Row rows[] = {
        {"text", kPrimitiveType_Text, true, false, false, nullptr},
        {"boolean", kPrimitiveType_Boolean, true, false, false, nullptr},
        {"closedchoice", kPrimitiveType_ClosedChoice, true, false, false, nullptr},
        {"bag", kPrimitiveType_Bag, false, true, false, nullptr},
        {"date", kPrimitiveType_Text, true, false, false, nullptr},
        {"langalt", kPrimitiveType_Alt, false, true, false, "text"},
        {"renditionclass", kPrimitiveType_OpenChoice, true, false, false, "text"},
        {"openchoice of text", kPrimitiveType_OpenChoice, true, false, false, "text"},
        {"seq of integer", kPrimitiveType_Seq, false, true, false, "integer"},
        {"listChoice", kPrimitiveType_OpenChoice, false, false, false, "seq of integer"},
        {"ping", kPrimitiveType_OpenChoice, false, false, false, "pong"},
        {"thumbnail", std::nullopt, false, false, true, nullptr},
        {"no such type", std::nullopt, false, false, true, nullptr},
        {"", std::nullopt, false, false, true, nullptr},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(PrimitiveTypeOf(UTF8String(row.mId)), row.mPrimitive) << row.mId;
        EXPECT_EQ(IsSimpleType(UTF8String(row.mId)), row.mSimple) << row.mId;
        EXPECT_EQ(IsArrayType(UTF8String(row.mId)), row.mArray) << row.mId;
        EXPECT_EQ(IsStructType(UTF8String(row.mId)), row.mStruct) << row.mId;
        EXPECT_EQ(ElementTypeIdOf(UTF8String(row.mId)),
                  row.mElement ? std::optional<UTF8String>(row.mElement) : std::nullopt)
            << row.mId;
    }
}

TEST_F(TypeQueries, DifferBetweenIdAndDefinitionForAChoiceWithoutElementType) {
    const auto type = TypeIdDefinition("closedchoice");
    EXPECT_TRUE(IsSimpleType(UTF8String("closedchoice")));
    EXPECT_FALSE(IsSimpleType(*type));
    TypeDefinition unregistered;
    EXPECT_FALSE(PrimitiveTypeOf(unregistered));
    EXPECT_FALSE(IsStructType(unregistered));
}

TEST_F(TypeQueries, FindElementTypesOfEntries) {
    struct Row {
        const char* mType;
        const char* mElementType;
        const char* mExpected;
        const char* mPropertyType;
    };
    const Row rows[] = {
        {"seq", "integer", "integer", "integer"},
        {"seq of integer", nullptr, "integer", "integer"},
        {"bag", "dimensions", "dimensions", "dimensions"},
        {"bag", "nothing", "nothing", nullptr},
        {"bag", nullptr, nullptr, "bag"},
        {"text", "integer", nullptr, "text"},
        {nullptr, "integer", nullptr, nullptr},
        {"dimensions", nullptr, nullptr, "dimensions"},
    };
    const auto optional = [](const char* text) { return text ? std::optional<UTF8String>(text) : std::nullopt; };
    for (const Row& row : rows) {
        EntryDefinition entry;
        entry.mType = optional(row.mType);
        entry.mElementType = optional(row.mElementType);
        EXPECT_EQ(ElementTypeIdOf(entry), optional(row.mExpected)) << row.mType;
        const auto type = PropertyTypeOf(entry);
        EXPECT_EQ(type ? std::optional(type->mName) : std::nullopt, optional(row.mPropertyType)) << row.mType;
    }
}

}  // namespace
}  // namespace zephmetadata
