// Does the frame parser find the same in the same bytes, whatever pieces they arrive in?

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Core/EventRecord.h"
#include "LogEvent.h"
#include "Server/FrameParser.h"
#include "Support/Expect.h"

using Logger::Internal::FrameParser;
using Logger::Internal::ReadRecord;

namespace {

/// Writes down what is found, and whether the stream could be understood to its end.
class Found : public FrameParser::Receiver {
 public:
  void ReceiveRecord(const char* record, std::size_t size) override {
    records.emplace_back(record, size);
    LogEvent event(0, "", "", "", 0, timeval{}, 0);
    events.push_back(ReadRecord(record, size, event) ? event.GetLogMessage() : "refused");
  }
  void ReceiveFlushRequest() override { recordsBeforeFlush.push_back(records.size()); }

  bool operator==(const Found& other) const {
    return records == other.records && events == other.events &&
           recordsBeforeFlush == other.recordsBeforeFlush && isUnderstood == other.isUnderstood;
  }

  std::vector<std::string> records;
  std::vector<std::string> events;
  std::vector<std::size_t> recordsBeforeFlush;  ///< The number of records before each request.
  bool isUnderstood = true;
};

/// Whole streams, read with all bytes at hand.
class Stream {
 public:
  explicit Stream(const std::string& bytes) : bytes_(bytes) {}

  void FindAll(int limit, Found& found) {
    while (place_ < bytes_.size()) {
      const char type = bytes_[place_++];
      if (type == 2) found.ReceiveFlushRequest();
      if (type == 1 && !FindRecord(limit, found)) return;
    }
  }

 private:
  const std::string& bytes_;
  std::size_t place_ = 0;

  /// False when the rest of the stream cannot be parsed.
  bool FindRecord(int limit, Found& found) {
    std::int32_t length = 0;
    while (length == 0) {
      if (bytes_.size() - place_ < 4) return false;
      for (int i = 0; i < 4; ++i) {
        length = static_cast<std::int32_t>(static_cast<std::uint32_t>(length) << 8 |
                                           static_cast<unsigned char>(bytes_[place_++]));
      }
    }
    found.isUnderstood = length > 0 && length <= limit;
    const auto size = static_cast<std::size_t>(length);
    if (!found.isUnderstood || bytes_.size() - place_ < size) return false;
    found.ReceiveRecord(bytes_.data() + place_, size);
    place_ += size;
    return true;
  }
};

/// The frames that a parser finds in the bytes, given in pieces of these sizes in turn. Each piece
/// is in memory that ends with it.
Found FoundInPieces(const std::string& bytes, int limit, const std::vector<std::uint8_t>& sizes) {
  Found found;
  FrameParser parser(found);
  std::size_t place = 0;
  for (std::size_t number = 0; place < bytes.size() && found.isUnderstood; ++number) {
    const std::size_t size = sizes[number % sizes.size()] + std::size_t{1};
    const std::size_t count = std::min(size, bytes.size() - place);
    const std::vector<char> piece(bytes.data() + place, bytes.data() + place + count);
    found.isUnderstood = parser.Parse(piece.data(), piece.size(), limit);
    place += count;
  }
  return found;
}

Found FoundInOne(const std::string& bytes, int limit) {
  Found found;
  FrameParser parser(found);
  found.isUnderstood = parser.Parse(bytes.data(), bytes.size(), limit);
  return found;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const int limit = input.ConsumeIntegral<std::uint16_t>();
  const std::size_t sizeCount = input.ConsumeIntegralInRange<std::size_t>(1, 8);
  std::vector<std::uint8_t> sizes(sizeCount);
  for (std::uint8_t& pieceSize : sizes) pieceSize = input.ConsumeIntegral<std::uint8_t>();
  const std::string bytes = input.ConsumeRemainingBytesAsString();

  Found expected;
  Stream(bytes).FindAll(limit, expected);

  Expect(FoundInOne(bytes, limit) == expected, "a stream in one piece is read as the format says");
  Expect(FoundInPieces(bytes, limit, {0}) == expected, "single bytes make no difference");
  Expect(FoundInPieces(bytes, limit, sizes) == expected, "pieces make no difference");
  return 0;
}
