#include "Delivery/CountingClients.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "Delivery/Unreachable.h"
#include "Internal/Decimal.h"
#include "LogClientConsole.h"
#include "LogClientFactory.h"
#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "LogProperties.h"
#include "Logger.h"

using Logger::Internal::ParseDecimal;

namespace Loggerctl {

namespace {

std::string commandOfAll;
std::string timeoutOfSockets;

constexpr const char* kNoFileName = "it has no 'filename'";

/// A client of the library's that counts.
template <typename Kind>
class Counting : public Kind, public CountingClient {
 public:
  Counting(Delivery& delivery, const LogProperties& properties)
      : Kind(properties), CountingClient(delivery), error_(errno) {}

  bool Publish(const LogEvent& event) override {
    const bool isDelivered = !IsLeftOut() && Deliver(event);
    if (isDelivered) {
      delivery_.CountDelivered();
    } else {
      CountLost();
    }
    return isDelivered;
  }

 protected:
  /// Publishes the event. False when it was lost.
  virtual bool Deliver(const LogEvent& event) {
    errno = 0;
    const bool isPublished = Kind::Publish(event);
    error_ = errno;
    return isPublished;
  }

  std::string ErrorText() const {
    return error_ == 0 ? "an event could not be written" : std::generic_category().message(error_);
  }

  int error_;  // The system's number for what failed last.
};

class CountingConsole : public Counting<LogClientConsole> {
 public:
  using Counting::Counting;

 protected:
  std::string OwnFault() override { return ""; }
};

/// The common part of file clients and rolling ones.
template <typename Kind>
class CountingFileKind : public Counting<Kind> {
 public:
  using Counting<Kind>::Counting;

 protected:
  bool Deliver(const LogEvent& event) override {
    // The result says nothing of this event's own write.
    static_cast<void>(Counting<Kind>::Deliver(event));
    return OwnFault().empty();
  }
  std::string OwnFault() override {
    if (this->Counts().Place().empty()) return kNoFileName;
    return this->HasFailed() ? this->ErrorText() : "";
  }
};

class CountingFile : public CountingFileKind<LogClientFile> {
 public:
  using CountingFileKind::CountingFileKind;
};

class CountingRollingFile : public CountingFileKind<LogClientRollingFile> {
 public:
  using CountingFileKind::CountingFileKind;

  bool Rollover() override {
    isWritten_ = true;  // Only what was written makes the file too large.
    return LogClientRollingFile::Rollover();
  }

 protected:
  bool Deliver(const LogEvent& event) override {
    isWritten_ = false;
    return CountingFileKind::Deliver(event) || isWritten_;
  }

 private:
  bool isWritten_ = false;
};

class CountingSocket : public Counting<LogClientSocket> {
 public:
  CountingSocket(Delivery& delivery, const LogProperties& properties)
      : Counting(delivery, properties),
        host_(properties.GetProperty("serverip")),
        port_(ParseDecimal(properties.GetProperty("serverport"))),
        timeout_(ParseDecimal(properties.GetProperty("timeout"))) {}

  void Finish() override {
    const bool hasSent = !IsLeftOut() && Counts().Given() > Counts().Lost();
    if (!hasSent) return;
    if (IsConnected()) SendToServer(true);
    if (IsConnected()) return;
    delivery_.ReportFault("the server did not confirm what it got");
    delivery_.SetUnconfirmed();
  }

 protected:
  bool Deliver(const LogEvent& event) override {
    // Without a connection the client would keep the event for ever.
    if (!IsConnected() || !Counting::Deliver(event)) return false;
    error_ = 0;
    delivery_.SetLost(0);  // Queued events were sent before this one.
    return true;
  }
  std::string OwnFault() override {
    if (host_.empty()) return "it has no 'serverip'";
    if (port_ == 0) return "it has no 'serverport'";
    if (!IsInitialize()) return WhyUnreachable(host_, port_, timeout_);
    if (delivery_.Lost() > 0 && error_ != 0) return ErrorText();
    return IsConnected() ? "" : "the server ended the connection";
  }

 private:
  const std::string host_;
  const int port_;
  const int timeout_;
};

class CountingXml : public Counting<LogClientXml> {
 public:
  using Counting::Counting;

 protected:
  bool Deliver(const LogEvent& event) override {
    static_cast<void>(Counting::Deliver(event));  // True also when the document was not saved.
    if (HasFailed()) return false;
    delivery_.SetLost(0);  // The document has all entries.
    return true;
  }
  std::string OwnFault() override {
    if (Counts().Place().empty()) return kNoFileName;
    return Counts().Given() > 0 && HasFailed() ? ErrorText() : "";
  }
};

/// Takes the place of a client that was never made.
class LostClient : public LogClient, public CountingClient {
 public:
  using CountingClient::CountingClient;

  bool Publish(const LogEvent&) override {
    CountLost();
    return false;
  }

 protected:
  std::string OwnFault() override { return ""; }
};

Delivery& NewDelivery(const std::string& kind, const std::string& place) {
  CountedClients().push_back(
      {std::make_unique<Delivery>(kind, place, commandOfAll), nullptr, nullptr});
  return *CountedClients().back().delivery;
}

template <typename Client>
Client* Counted(Client* client) {
  CountedClients().back().client = client;
  CountedClients().back().counting = client;
  return client;
}

template <typename Client>
LogClient* Create(const std::string& kind, const LogProperties& properties) {
  Delivery& delivery = NewDelivery(kind, PlaceOf(kind, properties));
  errno = 0;
  return Counted(new Client(delivery, properties));
}

LogClient* CreateSocket(const LogProperties& properties) {
  LogProperties own;  // Without "socketasynchron".
  own.AddProperty("serverip", properties.GetProperty("serverip"));
  own.AddProperty("serverport", properties.GetProperty("serverport"));
  const logstring timeout = properties.GetProperty("timeout");
  own.AddProperty("timeout", timeout.empty() ? timeoutOfSockets : timeout);
  return Create<CountingSocket>("LogClientSocket", own);
}

void Replace(const std::string& kind, LogClientFactory::Creator creator) {
  LogClientFactory& factory = *Logger::GetLogManager()->GetLogClientFactory();
  factory.UnregisterLogClient(kind);
  factory.RegisterLogClient(kind, creator);
}

}  // namespace

CountingClient::~CountingClient() = default;

void CountingClient::Finish() {}

void CountingClient::CountLost() {
  delivery_.CountLost();
  if (!delivery_.IsFaultReported()) delivery_.ReportFault(Fault());  // Which can take long.
}

void ReplaceKinds(const std::string& command, const std::string& timeout) {
  commandOfAll = command;
  timeoutOfSockets = timeout;
  Replace("LogClientConsole", [](const LogProperties& properties) {
    return Create<CountingConsole>("LogClientConsole", properties);
  });
  Replace("LogClientFile", [](const LogProperties& properties) {
    return Create<CountingFile>("LogClientFile", properties);
  });
  Replace("LogClientRollingFile", [](const LogProperties& properties) {
    return Create<CountingRollingFile>("LogClientRollingFile", properties);
  });
  Replace("LogClientSocket", CreateSocket);
  Replace("LogClientXML", [](const LogProperties& properties) {
    return Create<CountingXml>("LogClientXML", properties);
  });
}

CountedClient& NewLostClient(const std::string& kind, const std::string& place,
                             const std::string& reason) {
  Counted(new LostClient(NewDelivery(kind, place)))->LeaveOut(reason);
  return CountedClients().back();
}

std::vector<CountedClient>& CountedClients() {
  static std::vector<CountedClient> clients;
  return clients;
}

std::string PlaceOf(const std::string& kind, const LogProperties& parameters) {
  if (kind != "LogClientSocket") return parameters.GetProperty("filename");
  const std::string host = parameters.GetProperty("serverip");
  return host.empty() ? "" : host + " port " + parameters.GetProperty("serverport");
}

}  // namespace Loggerctl
