#pragma once

#include "support/library_test.h"
#include "support/path_printing.h"
#include "zephmetadata/values.h"
#include "zephmetadata/xmp_meta.h"

namespace support {

/// A test over one tree; paths are written as expressions.
class TreeTest : public LibraryTest {
protected:
    static zephmetadata::Path At(const std::string& expression) { return zephmetadata::PathForExpression(expression); }

    /// Puts an RDF description body into the tree.
    void Load(const std::string& body) {
        mTree = zephmetadata::ParseXMPMeta(
            "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
            "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/' "
            "xmlns:xmp='http://ns.adobe.com/xap/1.0/' xmlns:xmpMM='http://ns.adobe.com/xap/1.0/mm/' "
            "xmlns:xmpRights='http://ns.adobe.com/xap/1.0/rights/' xmlns:exif='http://ns.adobe.com/exif/1.0/' "
            "xmlns:aux='http://ns.adobe.com/exif/1.0/aux/' xmlns:tiff='http://ns.adobe.com/tiff/1.0/' "
            "xmlns:stEvt='http://ns.adobe.com/xap/1.0/sType/ResourceEvent#' "
            "xmlns:stRef='http://ns.adobe.com/xap/1.0/sType/ResourceRef#'>" +
            body + "</rdf:Description></rdf:RDF></x:xmpmeta>");
        ASSERT_TRUE(mTree) << body;
    }

    zephmetadata::XMPMetaHandle Tree() const { return mTree.get(); }

    /// The display text at an expression, "<none>" when there is none.
    std::string Text(const std::string& expression) const {
        std::string text;
        return zephmetadata::GetValue(Tree(), At(expression), text) ? text : "<none>";
    }
    std::string Raw(const std::string& expression) const {
        std::string text;
        return zephmetadata::GetRawStringValue(Tree(), At(expression), text) ? text : "<none>";
    }

    static zephmetadata::Record Invalid(zephmetadata::ErrorKind kind, const std::string& expression) {
        const zephmetadata::Path path = At(expression);
        const std::string prefix =
            kind == zephmetadata::ErrorKind::ErrorReadingXMP ? "Error reading XMP data: " : "Error writing XMP data: ";
        return {kind, prefix + "invalid data in #{quot}" + path.mNamespace + path.mPathDescription + "#{quot}.", ""};
    }

    zephmetadata::XMPMetaPtr mTree = zephmetadata::CreateXMPMeta();
};

}  // namespace support
