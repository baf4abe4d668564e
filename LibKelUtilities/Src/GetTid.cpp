#include "LibKelUtilities/GetTid.h"

#include <pthread.h>
#include <unistd.h>

namespace {

// Cached per thread: the gettid() system call is a large part of the cost of an event. 0 is no
// thread's id and means that it was not asked yet.
thread_local int cachedTid = 0;

// Only the forking thread exists in the child, with a new id.
void ForgetTid() { cachedTid = 0; }

[[maybe_unused]] const int childHandler = pthread_atfork(nullptr, nullptr, ForgetTid);

}  // namespace

int LibKelUtilities::GetTid() {
  if (cachedTid == 0) cachedTid = static_cast<int>(::gettid());
  return cachedTid;
}
