#pragma once

#include <string_view>

#include "zephcore/xml.h"

/// Documents that the build has read already. The built-in ones are half a megabyte of XML, which every process would
/// otherwise parse anew when it starts: most of what starting cost.
///
/// A compiled document is the events of its document, but for comments and for text of white space alone, which no
/// handler of a built-in document looks at: a table of its names, then the events. Numbers are in groups of seven bits,
/// low ones first, the high bit of a byte telling that more follow. A text is its length, twice, plus one when its units
/// take two bytes each (low one first) and not one.
namespace zephcore {

enum class CompiledEvent : unsigned char { kEnd, kStartElement, kEndElement, kText, kStartMapping, kEndMapping };

/// Delivers the events of @p document to @p handler, with the lines that they stood in. @p document comes from
/// CompileDocument and is trusted.
void ReplayDocument(std::string_view document, AbstractParseHandler& handler);

}  // namespace zephcore
