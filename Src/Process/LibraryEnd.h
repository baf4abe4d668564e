#pragma once

namespace Logger::Internal {

/// For the destructor of a static object: whether the library is being unloaded, rather than the
/// process ending.
bool IsLibraryUnloaded() noexcept;

}  // namespace Logger::Internal
