#pragma once

#include <sys/resource.h>

#include <stdexcept>

/// Sets one of the process's limits (RLIMIT_...) for a scope.
class ResourceLimit {
 public:
  ResourceLimit(int resource, rlim_t value) : resource_(resource) {
    if (getrlimit(Resource(), &former_) != 0) throw std::runtime_error("no limit");
    const rlimit limit{value, former_.rlim_max};
    if (setrlimit(Resource(), &limit) != 0) throw std::runtime_error("cannot set the limit");
  }
  ~ResourceLimit() { setrlimit(Resource(), &former_); }
  ResourceLimit(const ResourceLimit&) = delete;
  ResourceLimit& operator=(const ResourceLimit&) = delete;

 private:
  int resource_;
  rlimit former_{};

  __rlimit_resource Resource() const { return static_cast<__rlimit_resource>(resource_); }
};
