#pragma once

namespace Logger::Internal {

/// For the destructor of a static object: whether the library is being unloaded, rather than the
/// process coming to its end.
bool IsLibraryUnloaded() noexcept;

}  // namespace Logger::Internal
