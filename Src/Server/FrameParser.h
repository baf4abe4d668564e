#pragma once

#include <cstddef>
#include <vector>

namespace Logger::Internal {

/// Finds the frames in the bytes of a connection, which may arrive in any pieces.
class FrameParser {
 public:
  /// Takes the frames and requests that the parser finds, in order.
  class Receiver {
   public:
    virtual ~Receiver();
    /// The content of an event frame, whole.
    virtual void ReceiveRecord(const char* record, std::size_t size) = 0;
    virtual void ReceiveFlushRequest() = 0;
  };

  explicit FrameParser(Receiver& receiver);

  /// Parses the next piece. Bytes that begin no frame are skipped. False at a frame that is longer
  /// than `maxFrameLength` or has a negative length: the rest of the stream cannot be parsed.
  bool Parse(const char* data, std::size_t size, int maxFrameLength);

 private:
  enum class State { FrameType, Length, Record };

  Receiver& receiver_;
  State state_;
  std::size_t missing_;          // Bytes of the length or of the record.
  std::vector<char> collected_;  // Of the length or of the record, from former pieces.

  void ParseType(char type);
  bool ParseLength(const char*& data, const char* end, int maxFrameLength);
  std::size_t ParseRecord(const char* data, std::size_t size);
  bool TakeLength(const char* bytes, int maxFrameLength);
};

}  // namespace Logger::Internal
