#include "LibKelUtilities/MutexWrapper.h"

#include "LibKelUtilities/LockUntil.h"

namespace LibKelUtilities {

MutexWrapper::MutexWrapper() : mutex_(new pthread_mutex_t) { MakeMutex(); }

void MutexWrapper::MakeMutex() const {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(mutex_, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

MutexWrapper::~MutexWrapper() {
  pthread_mutex_destroy(mutex_);
  delete mutex_;
}

bool MutexWrapper::HoldForFork(const timespec& deadline) const {
  return LockUntil(mutex_, deadline);
}

void MutexWrapper::ReleaseInParent() const { pthread_mutex_unlock(mutex_); }

void MutexWrapper::RenewInChild(unsigned int timesHeld) const {
  MakeMutex();
  while (timesHeld-- > 0) pthread_mutex_lock(mutex_);
}

}  // namespace LibKelUtilities
