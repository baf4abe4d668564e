#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "LogEvent.h"
#include "LogHandlerClient.h"

/// Keeps a copy of every event, for tests to look at from any thread. It is no LogClient: the
/// client manager does not know it, and it may live on the stack.
class RecordingClient : public LogHandlerClient {
 public:
  bool Publish(const LogEvent& event) override {
    {
      const std::lock_guard<std::mutex> guard(mutex_);
      events_.push_back(event);
    }
    if (whenPublished) whenPublished(event);
    return result;
  }
  bool IsInitialize() override { return true; }
  bool IsLogClient() const override { return true; }

  std::vector<LogEvent> Events() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return events_;
  }
  std::vector<std::string> Messages() const {
    std::vector<std::string> messages;
    for (const LogEvent& event : Events()) messages.push_back(event.GetLogMessage());
    return messages;
  }
  void Clear() {
    const std::lock_guard<std::mutex> guard(mutex_);
    events_.clear();
  }

  std::function<void(const LogEvent&)> whenPublished;  ///< Called for each event, if set.
  bool result = true;                                  ///< Returned by Publish.

 private:
  mutable std::mutex mutex_;
  std::vector<LogEvent> events_;
};
