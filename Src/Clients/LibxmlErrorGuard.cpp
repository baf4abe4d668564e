#include "Clients/LibxmlErrorGuard.h"

#include <libxml/xmlversion.h>
#if LIBXML_VERSION < 21200
#include <libxml/globals.h>
#endif

namespace Logger::Internal {

namespace {

void Ignore(void*, const char*, ...) {}

}  // namespace

LibxmlErrorGuard::LibxmlErrorGuard()
    : genericHandler_(xmlGenericError),
      genericContext_(xmlGenericErrorContext),
      structuredHandler_(xmlStructuredError),
      structuredContext_(xmlStructuredErrorContext),
      lastError_(),
      ranOutOfMemory_(false) {
  xmlSetGenericErrorFunc(nullptr, Ignore);
  xmlSetStructuredErrorFunc(&ranOutOfMemory_, [](void* ranOutOfMemory, auto* error) {
    if (error->code == XML_ERR_NO_MEMORY) *static_cast<bool*>(ranOutOfMemory) = true;
  });
#if LIBXML_VERSION < 21200    // Later releases cannot restore an error.
  lastError_ = xmlLastError;  // With the texts that it owns.
  xmlLastError = xmlError{};
#endif
}

LibxmlErrorGuard::~LibxmlErrorGuard() {
#if LIBXML_VERSION < 21200
  xmlResetError(&xmlLastError);
  xmlLastError = lastError_;
#endif
  xmlSetGenericErrorFunc(genericContext_, genericHandler_);
  xmlSetStructuredErrorFunc(structuredContext_, structuredHandler_);
}

}  // namespace Logger::Internal
