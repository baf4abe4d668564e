#pragma once

#include <pthread.h>

namespace Logger::Internal {

/// Defers a cancellation of the thread to the end of its scope, for steps that must not be
/// separated (closing a file and opening the next).
class CancellationHold {
 public:
  CancellationHold() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &former_); }
  ~CancellationHold() { pthread_setcancelstate(former_, nullptr); }

  CancellationHold(const CancellationHold&) = delete;
  CancellationHold& operator=(const CancellationHold&) = delete;

 private:
  int former_ = PTHREAD_CANCEL_ENABLE;
};

}  // namespace Logger::Internal
