#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "Support/Conversation.h"
#include "Support/Files.h"

/// A file of captured packets, as of a network over which conversations went in TCP segments. Times
/// and checksums are left 0.
class Capture {
 public:
  explicit Capture(unsigned int serverPort = 4711) : serverPort_(serverPort) {}

  /// The client's port is 50000 for the first connection, 50001 for the second, ... A segment has
  /// at most so many bytes, and bytes of one turn only.
  void Add(const Conversation& conversation, std::size_t segmentSize = 60000) {
    Begin();
    Send(Side::Client, kSynchronise);
    Send(Side::Server, kSynchronise | kAcknowledge);
    Send(Side::Client, kAcknowledge);
    AddData(conversation, segmentSize);
  }
  /// The same for a connection that was opened before the capture began.
  void AddWithoutOpening(const Conversation& conversation, std::size_t segmentSize = 60000) {
    Begin();
    AddData(conversation, segmentSize);
  }

  void Write(const std::string& path) const {
    const std::string rawPackets = Big(101, 4);
    WriteFile(path, Big(0xA1B2C3D4, 4) + Big(2, 2) + Big(4, 2) + Big(0, 8) + Big(65535, 4) +
                        rawPackets + packets_);
  }

 private:
  static constexpr unsigned int kSynchronise = 0x02;
  static constexpr unsigned int kAcknowledge = 0x10;

  const unsigned int serverPort_;
  std::string packets_;
  unsigned int clientPort_ = 49999;
  std::uint32_t clientSent_ = 0;
  std::uint32_t serverSent_ = 0;

  /// The lowest bytes of a number, the most significant first.
  static std::string Big(std::uint32_t number, int count) {
    std::string bytes;
    while (count-- > 0) {
      bytes.push_back(count < 4 ? static_cast<char>(number >> 8 * count & 0xFF) : '\0');
    }
    return bytes;
  }

  void Begin() {
    ++clientPort_;
    clientSent_ = 1000;
    serverSent_ = 2000;
  }

  void AddData(const Conversation& conversation, std::size_t segmentSize) {
    for (const Conversation::Turn& turn : conversation.Turns()) {
      for (std::size_t start = 0; start < turn.bytes.size(); start += segmentSize) {
        Send(turn.side, kAcknowledge, turn.bytes.substr(start, segmentSize));
      }
    }
  }

  void Send(Side side, unsigned int flags, const std::string& data = "") {
    const bool isClient = side == Side::Client;
    std::uint32_t& sent = isClient ? clientSent_ : serverSent_;
    const std::uint32_t received = isClient ? serverSent_ : clientSent_;
    const std::string ports = isClient ? Big(clientPort_, 2) + Big(serverPort_, 2)
                                       : Big(serverPort_, 2) + Big(clientPort_, 2);
    const std::string segment = ports + Big(sent, 4) + Big(received, 4) + Big(0x50, 1) +
                                Big(flags, 1) + Big(65535, 2) + Big(0, 4) + data;
    const std::string address = Big(0x7F000001, 4);
    const auto size = static_cast<std::uint32_t>(20 + segment.size());
    const std::string packet = Big(0x4500, 2) + Big(size, 2) + Big(0, 4) + Big(0x40060000, 4) +
                               address + address + segment;
    packets_ += Big(0, 8) + Big(size, 4) + Big(size, 4) + packet;
    sent += static_cast<std::uint32_t>(data.size()) + ((flags & kSynchronise) != 0 ? 1 : 0);
  }
};
