#include "Internal/CLibraryAllocator.h"

#include <dlfcn.h>
#include <gnu/lib-names.h>

#include <cstdlib>

namespace Logger::Internal {

namespace {

using Realloc = void* (*)(void*, std::size_t);
using Free = void (*)(void*);

/// The C library's functions, by its own table of symbols; null when there is no such library.
struct OwnFunctions {
  Realloc realloc = nullptr;
  Free free = nullptr;

  OwnFunctions() {
    void* const library = dlopen(LIBC_SO, RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr) return;
    realloc = reinterpret_cast<Realloc>(dlsym(library, "realloc"));
    free = reinterpret_cast<Free>(dlsym(library, "free"));
    dlclose(library);
  }
};

// Before it is constructed, the functions count as replaced.
OwnFunctions own;

}  // namespace

bool IsAllocatorTheCLibrarys() noexcept {
  return own.realloc == &std::realloc && own.free == &std::free;
}

}  // namespace Logger::Internal
