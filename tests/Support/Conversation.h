#pragma once

#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Support/Sockets.h"

enum class Side { Client, Server };

/// The bytes that the two sides of a connection send, in turn.
class Conversation {
 public:
  struct Turn {
    Side side;
    std::string bytes;
  };

  void Add(Side side, const std::string& bytes) {
    if (turns_.empty() || turns_.back().side != side) turns_.push_back({side, ""});
    turns_.back().bytes += bytes;
  }
  const std::vector<Turn>& Turns() const { return turns_; }

 private:
  std::vector<Turn> turns_;
};

/// Stands between one client and a server, passes everything on, and records it.
class RecordingRelay {
 public:
  explicit RecordingRelay(int serverPort)
      : server_(PlainConnection::To(serverPort)), thread_([this] { Run(); }) {}
  ~RecordingRelay() {
    if (thread_.joinable()) thread_.join();
  }
  RecordingRelay(const RecordingRelay&) = delete;
  RecordingRelay& operator=(const RecordingRelay&) = delete;

  int Port() const { return listener_.Port(); }
  /// Everything, once both sides have ended.
  Conversation Recorded() {
    thread_.join();
    return said_;
  }

 private:
  PlainListener listener_;
  PlainConnection client_{-1};
  PlainConnection server_;
  std::mutex mutex_;
  Conversation said_;
  std::thread thread_;

  void Run() {
    client_ = listener_.Accept();
    std::thread answers([this] { Pass(server_, Side::Server, client_); });
    Pass(client_, Side::Client, server_);
    answers.join();
  }

  void Pass(PlainConnection& from, Side side, PlainConnection& to) {
    for (std::string bytes; !(bytes = from.ReceiveSome()).empty();) {
      const std::lock_guard<std::mutex> guard(mutex_);
      said_.Add(side, bytes);
      to.TrySend(bytes);
    }
    to.EndSending();
  }
};
