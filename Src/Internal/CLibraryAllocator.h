#pragma once

namespace Logger::Internal {

/// Whether realloc and free, as this library calls them, are the C library's own: then nobody can
/// tell whether they were called. A program, or a tool, can have others in their place; one that
/// puts them there while the process runs is seen, too.
bool IsAllocatorTheCLibrarys() noexcept;

}  // namespace Logger::Internal
