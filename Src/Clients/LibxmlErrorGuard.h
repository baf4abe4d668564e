#pragma once

#include <libxml/xmlerror.h>

namespace Logger::Internal {

/// Keeps libxml2 from reporting anything on the calling thread during its scope, then restores the
/// application's own error handlers and the last error.
class LibxmlErrorGuard {
 public:
  LibxmlErrorGuard();
  ~LibxmlErrorGuard();

  LibxmlErrorGuard(const LibxmlErrorGuard&) = delete;
  LibxmlErrorGuard& operator=(const LibxmlErrorGuard&) = delete;

  /// Whether libxml2 ran out of memory since the guard was made. Most of its results are then
  /// incomplete without any other sign.
  bool RanOutOfMemory() const { return ranOutOfMemory_; }

 private:
  xmlGenericErrorFunc genericHandler_;
  void* genericContext_;
  xmlStructuredErrorFunc structuredHandler_;
  void* structuredContext_;
  xmlError lastError_;
  bool ranOutOfMemory_;
};

}  // namespace Logger::Internal
