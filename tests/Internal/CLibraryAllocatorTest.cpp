#include "Internal/CLibraryAllocator.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

using Logger::Internal::IsAllocatorTheCLibrarys;

namespace {

void* ReallocOfATool(void*, std::size_t) { return nullptr; }

/// What a tool does that is attached to a running process: it puts its own function's address
/// where the dynamic linker left that of another.
class ReplacedReallocAddress {
 public:
  ReplacedReallocAddress() : place_(FindPlace()) {
    if (place_ != nullptr) Put(reinterpret_cast<std::uintptr_t>(&ReallocOfATool));
  }
  ~ReplacedReallocAddress() {
    if (place_ != nullptr) Put(reinterpret_cast<std::uintptr_t>(dlsym(RTLD_DEFAULT, "realloc")));
  }

  bool IsDone() const { return place_ != nullptr; }

 private:
  std::uintptr_t* place_;

  void Put(std::uintptr_t address) {
    const auto pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    void* const page =
        reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(place_) & ~(pageSize - 1));
    mprotect(page, pageSize, PROT_READ | PROT_WRITE);
    *place_ = address;
  }

  /// Looks through the relocations of the program itself.
  static std::uintptr_t* FindPlace() {
    const char* names = nullptr;
    const ElfW(Sym)* symbols = nullptr;
    const ElfW(Rela)* relocations = nullptr;
    std::size_t size = 0;
    const link_map* program = nullptr;
    dlinfo(dlopen(nullptr, RTLD_LAZY), RTLD_DI_LINKMAP, &program);
    for (const ElfW(Dyn)* entry = program->l_ld; entry->d_tag != DT_NULL; ++entry) {
      if (entry->d_tag == DT_STRTAB) names = reinterpret_cast<const char*>(entry->d_un.d_ptr);
      if (entry->d_tag == DT_SYMTAB)
        symbols = reinterpret_cast<const ElfW(Sym)*>(entry->d_un.d_ptr);
      if (entry->d_tag == DT_RELA)
        relocations = reinterpret_cast<const ElfW(Rela)*>(entry->d_un.d_ptr);
      if (entry->d_tag == DT_RELASZ) size = entry->d_un.d_val / sizeof(ElfW(Rela));
    }
    for (std::size_t i = 0; i < size; ++i) {
      const char* const name = names + symbols[ELF64_R_SYM(relocations[i].r_info)].st_name;
      if (std::strcmp(name, "realloc") == 0) {
        return reinterpret_cast<std::uintptr_t*>(program->l_addr + relocations[i].r_offset);
      }
    }
    return nullptr;
  }
};

TEST(CLibraryAllocatorTest, IsThereWhereNobodyReplacedIt) {
  EXPECT_TRUE(IsAllocatorTheCLibrarys());
}

TEST(CLibraryAllocatorTest, IsReplacedByAToolWhileTheProcessRuns) {
  const ReplacedReallocAddress replaced;

  ASSERT_TRUE(replaced.IsDone());
  EXPECT_FALSE(IsAllocatorTheCLibrarys());
}

}  // namespace
