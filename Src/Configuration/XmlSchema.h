#pragma once

namespace Logger::Internal {

/// The schema of configuration documents, liblogger.xsd in this folder.
extern const char* const kXmlSchema;

}  // namespace Logger::Internal
