#include <algorithm>
#include <charconv>
#include <filesystem>
#include <iostream>

#include "commands/commands.h"
#include "console.h"
#include "documents/document_file.h"
#include "zephcore/files.h"
#include "zephcore/text.h"
#include "zephmetadata/definitions.h"
#include "zephmetadata/library.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

UTF16String Wide(const std::string& text) {
    return zephcore::UTF8to16(text);
}

std::string Written(const Definitions& definitions) {
    std::string text;
    WriteDefinitionsToBuffer(definitions.first, definitions.second, text);
    return text;
}

/// A document that is to be changed.
class SchemaDocument {
public:
    explicit SchemaDocument(const std::string& name) : mName(name), mPath(zephcore::PathFromNative(name)) {}

    bool Exists() const { return std::filesystem::exists(mName); }

    /// Why it cannot be read, or cannot be written without losing something; empty when it can.
    std::string Read() {
        const auto text = ReadDocument(mName);
        if (!text) {
            return "cannot be read";
        }
        const std::size_t before = GetErrorInfos().size();
        mDefinitions = ParseBufferForDefinitions(*text, mPath);
        if (GetErrorInfos().size() > before) {
            return "has problems; \"zephmeta check\" lists them";
        }
        return WouldLose(*text);
    }

    Definitions& Content() { return mDefinitions; }

    /// Why it could not be written; empty when the file holds the document.
    std::string Write() const {
        const std::string text = Written(mDefinitions);
        const bool hasFolder = WriteSchemaFile(mDefinitions, zephcore::File(mPath));
        const bool isThere = hasFolder && ReadDocument(mName) == text;
        return isThere ? std::string() : "could not be written";
    }

private:
    std::string WouldLose(const std::string& text) const {
        const auto& schemas = mDefinitions.first;
        if (text.find("<!--") != std::string::npos) {
            return "holds comments, which would be lost; change it with an editor";
        }
        for (const auto& schema : schemas) {
            const auto& properties = schema->mProperties;
            const bool hasHints = std::any_of(properties.begin(), properties.end(),
                                              [](const auto& property) { return property->mUIAttributes.has_value(); });
            if (schema->mDynamic || hasHints) {
                return "holds a dynamic schema or hints for panels, which would be lost; change it with an editor";
            }
        }
        return {};
    }

    std::string mName;
    UTF16String mPath;
    Definitions mDefinitions;
};

bool IsTypeName(const std::string& name, const Definitions& document) {
    const auto& types = document.second;
    return PrimitiveTypeIdAsPrimitiveType(name) || TypeIdDefinition(name) ||
           std::any_of(types.begin(), types.end(), [&](const auto& type) { return type->mName == name; });
}

std::optional<double> Number(const std::string& text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

sp<SchemaDefinition> FindSchema(const Definitions& document, const std::string& prefix) {
    for (const auto& schema : document.first) {
        if (prefix.empty() ? document.first.size() == 1 : schema->mPrefix == prefix) {
            return schema;
        }
    }
    return nullptr;
}

/// Fills a property from the request; why that is not possible, empty when it is.
std::string FillProperty(const PropertyRequest& request, const Definitions& document, PropertyDefinition& property) {
    for (const std::string& type : {request.mType, request.mElementType}) {
        if (!type.empty() && !IsTypeName(type, document)) {
            return "no type is named \"" + type + "\"; \"zephmeta types\" lists them";
        }
    }
    property.mType = request.mType;
    property.mInternal = request.mInternal;
    if (!request.mElementType.empty()) {
        property.mElementType = request.mElementType;
    }
    if (!request.mPattern.empty()) {
        property.mPattern = request.mPattern;
    }
    for (const auto& [text, bound] :
         {std::pair(&request.mMin, &property.mMin), std::pair(&request.mMax, &property.mMax)}) {
        *bound = Number(*text);
        if (!text->empty() && !*bound) {
            return "\"" + *text + "\" is not a number";
        }
    }
    for (const std::string& choice : request.mChoices) {
        const std::size_t equals = std::min(choice.find('='), choice.size());
        const auto definition = std::make_shared<ChoiceDefinition>();
        definition->mRawValue = choice.substr(0, equals);
        definition->mLabel = Wide(equals < choice.size() ? choice.substr(equals + 1) : choice);
        property.mChoices.push_back(definition);
    }
    return {};
}

int Finish(const std::string& file, const std::string& problem, const std::string& done) {
    Problems problems;
    problems.PassOverCollected();
    if (!problem.empty()) {
        problems.Report(file, problem);
    } else {
        std::cout << OneLine(file) << ": " << done << '\n';
    }
    return problems.ExitStatus();
}

bool IsName(const std::string& name) {
    const auto isStart = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
    };
    return !name.empty() && isStart(name.front()) && std::all_of(name.begin(), name.end(), [&](char c) {
        return isStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
    });
}

}  // namespace

int NewSchema(const SchemaRequest& request) {
    SchemaDocument document(request.mFile);
    if (document.Exists()) {
        return Finish(request.mFile, "exists already", {});
    }
    if (!IsName(request.mPrefix) || request.mNamespace.empty()) {
        return Finish(request.mFile, "a schema needs a namespace, and a prefix of letters and digits", {});
    }
    const UTF16String label = Wide(request.mLabel.empty() ? request.mPrefix : request.mLabel);
    document.Content().first.push_back(
        CreateNewSchema(request.mNamespace, request.mPrefix, {}, label, {}, Wide(request.mDescription)));
    return Finish(request.mFile, document.Write(), "written");
}

int AddProperty(const PropertyRequest& request) {
    SchemaDocument document(request.mFile);
    if (const std::string problem = document.Read(); !problem.empty()) {
        return Finish(request.mFile, problem, {});
    }
    const sp<SchemaDefinition> schema = FindSchema(document.Content(), request.mPrefix);
    if (!schema) {
        return Finish(request.mFile, "which schema? name one with --prefix", {});
    }
    const auto& properties = schema->mProperties;
    if (std::any_of(properties.begin(), properties.end(),
                    [&](const auto& property) { return property->mName == request.mName; })) {
        return Finish(request.mFile, "the schema has a property " + request.mName + " already", {});
    }
    if (!IsName(request.mName)) {
        return Finish(request.mFile, "\"" + request.mName + "\" is no name of a property", {});
    }
    const sp<PropertyDefinition> property = CreateNewProperty(
        kPrimitiveType_Text, request.mName, {}, Wide(request.mLabel.empty() ? request.mName : request.mLabel), {},
        Wide(request.mDescription));
    if (const std::string problem = FillProperty(request, document.Content(), *property); !problem.empty()) {
        return Finish(request.mFile, problem, {});
    }
    schema->mProperties.push_back(property);
    return Finish(request.mFile, document.Write(), "written");
}

int ShowSchemaDocument(const std::string& file) {
    SchemaDocument document(file);
    const std::string problem = document.Read();
    if (document.Content().first.empty() && document.Content().second.empty()) {
        return Finish(file, problem.empty() ? "defines nothing" : problem, {});
    }
    std::cout << Written(document.Content());
    return 0;
}

}  // namespace zephmeta
