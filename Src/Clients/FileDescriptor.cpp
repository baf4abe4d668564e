#include "Clients/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "Internal/CancellationHold.h"

namespace Logger::Internal {

FileDescriptor::FileDescriptor() : descriptor_(-1) {}

FileDescriptor::~FileDescriptor() { static_cast<void>(Close()); }

bool FileDescriptor::Open(const std::string& fileName, int flags) {
  constexpr mode_t kReadAndWriteForAll = 0666;  // Reduced by the process's umask.
  if (IsOpen()) return false;
  do {
    descriptor_ = open(fileName.c_str(), O_CREAT | O_CLOEXEC | flags, kReadAndWriteForAll);
  } while (descriptor_ < 0 && errno == EINTR);
  return IsOpen();
}

bool FileDescriptor::Close() {
  if (!IsOpen()) return false;
  const CancellationHold
      hold;  // Also called by destructors, where there must be no cancellation point.
  const bool isClosed = close(descriptor_) == 0;
  descriptor_ = -1;
  return isClosed;
}

}  // namespace Logger::Internal
