#include "LibKelUtilities/MutexWrapper.h"

namespace LibKelUtilities {

MutexWrapper::MutexWrapper() : mutex_(new pthread_mutex_t) {
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

}  // namespace LibKelUtilities
