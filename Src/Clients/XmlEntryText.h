#pragma once

#include <libxml/tree.h>

#include <string>

#include "Clients/XmlEntry.h"
#include "Internal/XmlHandles.h"

namespace Logger::Internal {

/// What an ampersand in the texts of an entry is: the start of a reference, or an ampersand.
enum class XmlReferences { AreRead, AreText };

/// Appends an entry as libxml2 saves it, for texts of which that is known without asking it: ASCII,
/// with nothing that it takes for a reference. False, with anything appended, for others.
bool AppendSimply(std::string& document, const XmlEntry& entry, XmlReferences references);

/// Appends an entry as libxml2 saves it in the document, to which it is not added. False, with
/// nothing appended, when there is no memory.
bool AppendByLibxml(std::string& text, xmlDoc& document, const XmlTexts& entry,
                    XmlReferences references);

/// The element of an entry, for the document, to which it is not added. Null when there is no
/// memory: an entry that lacks a part is none.
XmlNode NewEntry(xmlDoc& document, const XmlTexts& entry, XmlReferences references);

}  // namespace Logger::Internal
