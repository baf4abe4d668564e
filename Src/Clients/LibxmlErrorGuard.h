#pragma once

#include <libxml/xmlerror.h>

namespace Logger::Internal {

/// Keeps libxml2 from reporting anything on the calling thread, for the time of its scope.
/// Afterwards the application's own handlers, and the last error that it may want to look at, are
/// what they were.
class LibxmlErrorGuard {
 public:
  LibxmlErrorGuard();
  ~LibxmlErrorGuard();

  LibxmlErrorGuard(const LibxmlErrorGuard&) = delete;
  LibxmlErrorGuard& operator=(const LibxmlErrorGuard&) = delete;

  /// Whether libxml2 got no memory for something meanwhile. It then leaves out a part of what it
  /// makes, with no other sign in most of its results.
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
