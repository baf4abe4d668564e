#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LogEvent.h"
#include "LogHandler.h"
#include "LogHandlerClient.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/RecordingClient.h"

/// A client attached to a handler between two others. At its end it checks that these got every
/// event, whether or not the client failed.
class ClientAmongOthers {
 public:
  explicit ClientAmongOthers(LogHandlerClient& client) : witness_(client) {
    Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
    for (LogHandlerClient* const each :
         {static_cast<LogHandlerClient*>(&before_), static_cast<LogHandlerClient*>(&witness_),
          static_cast<LogHandlerClient*>(&after_)}) {
      handler_.AddLogClient(each);
    }
  }
  ~ClientAmongOthers() {
    EXPECT_EQ(logged_, before_.Messages());
    EXPECT_EQ(logged_, after_.Messages());
  }
  ClientAmongOthers(const ClientAmongOthers&) = delete;
  ClientAmongOthers& operator=(const ClientAmongOthers&) = delete;

  /// Logs a message through the handler, and returns what the client's Publish did.
  bool Log(const std::string& message) {
    logged_.push_back(message);
    EXPECT_TRUE(handler_.LogForce(1, message.c_str()));
    return witness_.answer;
  }
  /// The results of the client's Publish for each of these messages.
  std::vector<bool> LogAll(const std::vector<std::string>& messages) {
    std::vector<bool> answers;
    for (const std::string& message : messages) answers.push_back(Log(message));
    return answers;
  }

  LogHandler& Handler() { return handler_; }

 private:
  struct Witness : LogHandlerClient {
    explicit Witness(LogHandlerClient& itsClient) : client(itsClient) {}
    bool Publish(const LogEvent& event) override { return answer = client.Publish(event); }
    bool IsInitialize() override { return client.IsInitialize(); }
    bool IsLogClient() const override { return true; }

    LogHandlerClient& client;
    bool answer = false;
  };

  RecordingClient before_;
  Witness witness_;
  RecordingClient after_;
  LogHandler handler_{"among others"};
  std::vector<std::string> logged_;
};
