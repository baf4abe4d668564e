#include "Process/LibraryEnd.h"

#include <dlfcn.h>

namespace Logger::Internal {

namespace {

/// Whether the library is in the global scope, linked by the program or loaded with RTLD_GLOBAL: it
/// then is assumed to stay until the process ends.
bool IsLibraryOfTheProgram() {
  void* const program = dlopen(nullptr, RTLD_LAZY);
  if (program == nullptr) return true;
  const void* const function = dlsym(program, "_ZN6Logger13GetLogManagerEv");
  dlclose(program);
  Dl_info found;
  Dl_info own;
  static const char ownPlace = 0;
  return function != nullptr && dladdr(function, &found) != 0 && dladdr(&ownPlace, &own) != 0 &&
         found.dli_fbase == own.dli_fbase;
}

// A library that was loaded later is finished before its static objects are destroyed when it is
// unloaded, and after them when the process ends.
bool isFinished = false;

[[gnu::destructor]] void Finish() { isFinished = true; }

}  // namespace

bool IsLibraryUnloaded() noexcept { return isFinished && !IsLibraryOfTheProgram(); }

}  // namespace Logger::Internal
