#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlschemas.h>

#include <memory>

/// Owners of libxml2's objects, which release them at the end of their scope.
namespace Logger::Internal {

template <typename Type, void (*Free)(Type*)>
struct XmlRelease {
  void operator()(Type* object) const { Free(object); }
};
template <typename Type, void (*Free)(Type*)>
using XmlHandle = std::unique_ptr<Type, XmlRelease<Type, Free>>;

using XmlDocument = XmlHandle<xmlDoc, xmlFreeDoc>;
using XmlNode = XmlHandle<xmlNode, xmlFreeNode>;  // One that is in no document.
using XmlParser = XmlHandle<xmlParserCtxt, xmlFreeParserCtxt>;
using XmlSchemaParser = XmlHandle<xmlSchemaParserCtxt, xmlSchemaFreeParserCtxt>;
using XmlSchema = XmlHandle<xmlSchema, xmlSchemaFree>;
using XmlSchemaValidator = XmlHandle<xmlSchemaValidCtxt, xmlSchemaFreeValidCtxt>;

struct XmlOutputRelease {
  void operator()(xmlOutputBuffer* output) const { xmlOutputBufferClose(output); }
};
using XmlOutput = std::unique_ptr<xmlOutputBuffer, XmlOutputRelease>;

/// Texts are freed by the allocator that the application gave libxml2.
struct XmlTextRelease {
  void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlOwnText = std::unique_ptr<xmlChar, XmlTextRelease>;

/// libxml2's type for its texts, which are UTF-8.
inline const xmlChar* XmlChars(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

}  // namespace Logger::Internal
