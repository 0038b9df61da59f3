#include "frame/xml_writer.h"

#include "zephcore/xml.h"

namespace zephmetadata {

XMLWriter::XMLWriter() : mText("<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n") {}

void XMLWriter::Begin(std::string_view element) {
    mText.append(mLevel, '\t');
    mText += '<';
    mText += element;
}

void XMLWriter::Attribute(std::string_view name, const UTF8String& value) {
    EncodedAttribute(name, zephcore::EncodeReservedCharacters(value));
}

void XMLWriter::EncodedAttribute(std::string_view name, const UTF8String& value) {
    if (value.empty()) {
        return;
    }
    mText += ' ';
    mText += name;
    mText += "=\"";
    mText += value;
    mText += '"';
}

void XMLWriter::BeginChildren() {
    mText += ">\n";
    ++mLevel;
}

void XMLWriter::EndEmpty() {
    mText += " />\n";
}

void XMLWriter::EndChildren(std::string_view element) {
    --mLevel;
    mText.append(mLevel, '\t');
    mText += "</";
    mText += element;
    mText += ">\n";
}

void XMLWriter::Empty(std::string_view element) {
    Begin(element);
    mText += "/>\n";
}

}  // namespace zephmetadata
