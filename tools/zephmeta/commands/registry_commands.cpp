#include <algorithm>
#include <iostream>

#include "commands/commands.h"
#include "console.h"
#include "documents/definition_json.h"
#include "zephmetadata/definitions.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

/// A type as people say it: "bag of text".
std::string TypeText(const EntryDefinition& entry) {
    const std::string type = entry.mType.value_or(std::string());
    return entry.mElementType && PrimitiveTypeIdAsPrimitiveType(type) ? type + " of " + *entry.mElementType : type;
}

struct Row {
    std::string mName;
    std::string mType;
    std::string mNote;
    std::string mLabel;
};

void PrintRows(std::vector<Row> rows) {
    std::size_t names = 0;
    std::size_t types = 0;
    std::size_t notes = 0;
    for (Row& row : rows) {
        for (std::string* const cell : {&row.mName, &row.mType, &row.mNote, &row.mLabel}) {
            *cell = OneLine(*cell);  // they come from documents of strangers
        }
        names = std::max(names, Columns(row.mName));
        types = std::max(types, Columns(row.mType));
        notes = std::max(notes, Columns(row.mNote));
    }
    for (const Row& row : rows) {
        std::cout << "  " << Padded(row.mName, names) << "  " << Padded(row.mType, types) << "  "
                  << (notes > 0 ? Padded(row.mNote, notes) + "  " : "") << row.mLabel << '\n';
    }
}

void PrintSchemaList(const std::vector<sp<SchemaDefinition>>& schemas) {
    std::vector<Row> rows;
    for (const auto& schema : schemas) {
        const std::size_t number = schema->mProperties.size();
        const std::string count =
            schema->mDynamic ? "dynamic" : std::to_string(number) + (number == 1 ? " property" : " properties");
        rows.push_back({schema->mPrefix, count, schema->mNamespace, Shown(schema->mLabel)});
    }
    PrintRows(std::move(rows));
}

void PrintSchema(const SchemaDefinition& schema) {
    std::cout << OneLine(schema.mPrefix) << "  " << OneLine(Shown(schema.mLabel)) << "  " << OneLine(schema.mNamespace)
              << '\n';
    std::vector<Row> rows;
    for (const auto& property : schema.mProperties) {
        rows.push_back(
            {property->mName, TypeText(*property), property->mInternal ? "internal" : "", Shown(property->mLabel)});
    }
    PrintRows(std::move(rows));
}

void PrintType(const TypeDefinition& type) {
    std::cout << OneLine(type.mName) << "  " << OneLine(Shown(type.mLabel)) << '\n';
    if (!type.mDescription.empty()) {
        std::cout << "  " << OneLine(Shown(type.mDescription)) << '\n';
    }
    std::vector<Row> rows;
    for (const auto& field : type.mFields) {
        rows.push_back({field->mPrefix + ":" + field->mName, TypeText(*field), "", Shown(field->mLabel)});
    }
    for (const auto& choice : type.mChoices) {
        rows.push_back({"\"" + choice->mRawValue + "\"", "choice", "", Shown(choice->mLabel)});
    }
    PrintRows(std::move(rows));
}

std::string BuiltOn(const TypeDefinition& type) {
    if (!type.mFields.empty()) {
        return "structure";
    }
    if (!type.mExtends) {
        return "primitive";
    }
    const std::string kind = PrimitiveTypeAsPrimitiveTypeId(*type.mExtends);
    return type.mElementType ? kind + " of " + *type.mElementType : kind;
}

template <typename Definition>
void PrintJson(const std::vector<sp<Definition>>& definitions) {
    Json list = Json::array();
    for (const auto& definition : definitions) {
        list.push_back(ToJson(*definition));
    }
    std::cout << JsonPage(list) << '\n';
}

void PrintTypeList(const std::vector<sp<TypeDefinition>>& types) {
    std::vector<Row> rows;
    rows.reserve(types.size());
    for (const auto& type : types) {
        rows.push_back({type->mName, BuiltOn(*type), "", Shown(type->mLabel)});
    }
    PrintRows(std::move(rows));
}

/// What a command that lists definitions, or shows one of them, differs by.
template <typename Definition>
struct ListForm {
    UTF8String Definition::*mKey;
    const char* mNone;  ///< of a key that nothing has
    const char* mHint;
    void (*mPrintAll)(const std::vector<sp<Definition>>& definitions);
    void (*mPrintOne)(const Definition& definition);
};

template <typename Definition>
int Show(std::vector<sp<Definition>> definitions, const std::string& key, bool json, const ListForm<Definition>& form) {
    Problems problems;
    problems.ReportCollected({});
    if (!key.empty()) {
        std::erase_if(definitions, [&](const auto& definition) { return (*definition).*form.mKey != key; });
        if (definitions.empty()) {
            problems.Report({}, std::string(form.mNone) + " \"" + key + "\"; " + form.mHint);
            return problems.ExitStatus();
        }
    }
    if (json) {
        PrintJson(definitions);
    } else if (key.empty()) {
        form.mPrintAll(definitions);
    } else {
        std::for_each(definitions.begin(), definitions.end(), [&](const auto& one) { form.mPrintOne(*one); });
    }
    return problems.ExitStatus();
}

}  // namespace

int ShowSchemas(const std::string& prefix, bool json) {
    return Show<SchemaDefinition>(RegisteredSchemaDefinitions(), prefix, json,
                                  {&SchemaDefinition::mPrefix, "no schema has the prefix",
                                   "\"zephmeta schemas\" lists them", PrintSchemaList, PrintSchema});
}

int ShowTypes(const std::string& id, bool json) {
    return Show<TypeDefinition>(
        RegisteredTypeDefinitions(), id, json,
        {&TypeDefinition::mName, "no type is named", "\"zephmeta types\" lists them", PrintTypeList, PrintType});
}

}  // namespace zephmeta
