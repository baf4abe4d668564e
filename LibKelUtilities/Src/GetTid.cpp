#include "LibKelUtilities/GetTid.h"

#include <pthread.h>
#include <unistd.h>

namespace {

// A thread's id never changes, and asking the kernel for it is a large part of what an event costs.
// 0 is no thread's id: not asked yet.
thread_local int cachedTid = 0;

// Only the forking thread lives on in the child, under a new id.
void ForgetTid() { cachedTid = 0; }

[[maybe_unused]] const int childHandler = pthread_atfork(nullptr, nullptr, ForgetTid);

}  // namespace

int LibKelUtilities::GetTid() {
  if (cachedTid == 0) cachedTid = static_cast<int>(::gettid());
  return cachedTid;
}
