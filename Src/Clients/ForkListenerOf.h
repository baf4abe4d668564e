#pragma once

#include "LogForkListener.h"

namespace Logger::Internal {

/// Calls a built-in client's own ContinueInChild. A separate object, made when the client is
/// complete and deleted first: as a base class it would change the client's virtual table.
template <typename Client>
class ForkListenerOf : public LogForkListener {
 public:
  explicit ForkListenerOf(Client& client) : client_(client) { client_.SetForkListener(this); }
  ~ForkListenerOf() override { client_.SetForkListener(nullptr); }

  ForkListenerOf(const ForkListenerOf&) = delete;
  ForkListenerOf& operator=(const ForkListenerOf&) = delete;

  void ContinueInChild(bool wasBusy) override { client_.ContinueInChild(wasBusy); }

 private:
  Client& client_;
};

}  // namespace Logger::Internal
