#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "frame/errors.h"
#include "frame/xml_writer.h"
#include "zephcore/files.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"
#include "zephmetadata/definitions.h"
#include "zephmetadata/extensions.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kInvalidManifest = u"$$$/zephmetadata/ExtensionManifestParser/InvalidXML=invalid XML.";

/// The attribute of each field of a manifest.
template <typename Info>
struct FieldRow {
    std::u16string_view mAttribute;
    UTF16String Info::*mField;
};

using ExtensionInfo = ExtensionManifestParser::ManifestInfo;
constexpr auto kExtensionFields = std::to_array<FieldRow<ExtensionInfo>>({
    {u"name", &ExtensionInfo::name},
    {u"version", &ExtensionInfo::version},
    {u"locFilePrefix", &ExtensionInfo::locFilePrefix},
});

using PanelInfo = GenericPanelManifestParser::ManifestInfo;
constexpr auto kPanelFields = std::to_array<FieldRow<PanelInfo>>({
    {u"name", &PanelInfo::name},
    {u"label", &PanelInfo::label},
    {u"description", &PanelInfo::description},
    {u"type", &PanelInfo::type},
    {u"version", &PanelInfo::version},
    {u"panelLibrary", &PanelInfo::panelLibrary},
    {u"panelClass", &PanelInfo::panelClass},
    {u"propertyDescriptionFile", &PanelInfo::propertyDescriptionFile},
    {u"localizationFile", &PanelInfo::localizationFile},
    {u"modifyDate", &PanelInfo::modifyDate},
    {u"visible", &PanelInfo::visible},
});

/// Takes over the attributes that say something; of several elements the last that does holds.
template <typename Rows, typename Info>
void ReadFields(const Rows& rows, const zephcore::AttributeList& attributes, Info& info) {
    for (const zephcore::Attribute& attribute : attributes) {
        const auto row = std::find_if(rows.begin(), rows.end(), [&](const auto& candidate) {
            return candidate.mAttribute == attribute.mLocalName;
        });
        if (row != rows.end() && !attribute.mValue.empty()) {
            info.*(row->mField) = attribute.mValue;
        }
    }
}

bool IsElement(const UTF16String& namespaceURI, const UTF16String& localName, const UTF8String& wantedURI,
               std::u16string_view wantedName) {
    return localName == wantedName && namespaceURI == zephcore::UTF8to16(wantedURI);
}

/// Reads a document, the one at @p source where there is no @p buffer, with a @p Parser; one that is not well formed is
/// reported as @p kind.
template <typename Parser, typename Info>
bool ParseManifest(const UTF8String* buffer, const UTF16String& source, ErrorKind kind, std::u16string_view invalidXML,
                   Info& info) {
    auto handler = std::make_unique<Parser>();
    const Parser& reader = *handler;
    const auto parser = zephcore::GetParser(std::move(handler));
    const bool wellFormed = (buffer == nullptr ? parser->ParseFile(source) : parser->ParseBuffer(*buffer)) == 0;
    info = reader.Info();
    if (!wellFormed) {
        const zephcore::DocumentLineScope line(parser->ErrorLine());
        SendError(kind, zephcore::ZString(invalidXML), source);
    }
    return wellFormed;
}

}  // namespace

ExtensionManifestParser::~ExtensionManifestParser() = default;

void ExtensionManifestParser::StartElementWithNamespace(const UTF16String& /*name*/, const UTF16String& namespaceURI,
                                                        const UTF16String& localName,
                                                        const zephcore::AttributeList& attributes) {
    if (IsElement(namespaceURI, localName, ExtensionNamespaceURI, u"extension")) {
        ReadFields(kExtensionFields, attributes, mInfo);
    }
}

GenericPanelManifestParser::~GenericPanelManifestParser() = default;

void GenericPanelManifestParser::StartElementWithNamespace(const UTF16String& /*name*/, const UTF16String& namespaceURI,
                                                           const UTF16String& localName,
                                                           const zephcore::AttributeList& attributes) {
    if (IsElement(namespaceURI, localName, QuilletNamespaceURI, u"panel")) {
        ReadFields(kPanelFields, attributes, mInfo);
    }
}

bool ParseExtensionManifestFromDocument(const UTF16String& path, ExtensionManifestParser::ManifestInfo& info) {
    return ParseManifest<ExtensionManifestParser>(nullptr, path, ErrorKind::ExtensionManifestParsingError,
                                                  kInvalidManifest, info);
}

bool ParseExtensionManifestFromBuffer(const UTF8String& buffer, const UTF16String& source,
                                      ExtensionManifestParser::ManifestInfo& info) {
    return ParseManifest<ExtensionManifestParser>(&buffer, source, ErrorKind::ExtensionManifestParsingError,
                                                  kInvalidManifest, info);
}

bool ParseManifestFromDocument(const UTF16String& path, GenericPanelManifestParser::ManifestInfo& info) {
    return ParseManifest<GenericPanelManifestParser>(
        nullptr, path, ErrorKind::GenericPanelManifestError,
        u"$$$/zephmetadata/GenericPanelManifestParser/InvalidXML=invalid XML.", info);
}

bool WriteExtensionManifest(const GenericPanelManifestParser::ManifestInfo& info, const UTF16String& path) {
    constexpr std::string_view kElement = "extension";
    XMLWriter document;
    document.Begin(kElement);
    document.Attribute("xmlns", ExtensionNamespaceURI);
    document.Attribute("name", zephcore::UTF16to8(info.name));
    document.Attribute("version", zephcore::UTF16to8(info.version));
    document.Attribute("locFilePrefix", zephcore::UTF16to8(info.localizationFile));
    document.BeginChildren();
    document.EndChildren(kElement);
    if (!zephcore::FileUtils::EnsureDirectoryExists(zephcore::File(path).Parent().FullPath())) {
        return false;
    }
    static_cast<void>(zephcore::FileUtils::SimpleWriteStringToFile(path, document.Text()));
    return true;
}

}  // namespace zephmetadata
