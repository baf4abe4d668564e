// Does the bounded reader of records stay inside of them, and read them as the format says?

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "Core/EventRecord.h"
#include "LogEvent.h"
#include "Support/Expect.h"
#include "Support/WireBytes.h"

using Logger::Internal::ReadRecord;
using Logger::Internal::RecordSize;
using Logger::Internal::WriteRecord;

namespace {

LogEvent EmptyEvent() { return {0, "", "", "", 0, timeval{}, 0}; }

/// Reads a record from its start, as the format is documented; fails at the first step outside.
class Walk {
 public:
  Walk(const char* record, std::size_t size)
      : record_(record), size_(static_cast<long long>(size)) {}

  bool isLost = false;

  int Number() {
    std::uint32_t bits = 0;
    for (int i = 0; i < 4; ++i) bits = bits << 8 | static_cast<unsigned char>(Byte(place_++));
    return static_cast<int>(bits);
  }
  std::string Text() {
    const long long length = Number();
    std::string text;
    if (length > size_) isLost = true;
    for (long long i = 0; i < length && !isLost; ++i) text.push_back(Byte(place_ + i));
    place_ += length;  // Backwards, when it is negative.
    return text;
  }

 private:
  const char* const record_;
  const long long size_;
  long long place_ = 2;  // After the mark, which is ignored.

  char Byte(long long place) {
    if (place < 0 || place >= size_) isLost = true;
    return isLost ? '\0' : record_[place];
  }
};

/// The event of a record, if all of it is inside.
std::optional<LogEvent> EventOf(const char* record, std::size_t size) {
  Walk walk(record, size);
  const int level = walk.Number();
  const std::string message = walk.Text();
  const std::string handlerName = walk.Text();
  const std::string fileName = walk.Text();
  const int line = walk.Number();
  const long seconds = walk.Number();
  const long microseconds = walk.Number();
  const int threadId = walk.Number();
  if (walk.isLost) return std::nullopt;
  return LogEvent(static_cast<unsigned int>(level), message, handlerName, fileName, line,
                  timeval{seconds, microseconds}, threadId);
}

bool IsEqual(const LogEvent& one, const LogEvent& other) {
  return one.GetLogLevel() == other.GetLogLevel() && one.GetLogMessage() == other.GetLogMessage() &&
         one.GetLogHandlerName() == other.GetLogHandlerName() &&
         one.GetFullFileName() == other.GetFullFileName() && one.GetLine() == other.GetLine() &&
         one.GetTimeSec() == other.GetTimeSec() && one.GetTimeUsec() == other.GetTimeUsec() &&
         one.GetThreadId() == other.GetThreadId();
}

std::string Written(const LogEvent& event) {
  std::string record(RecordSize(event), 'x');
  WriteRecord(event, record.data());
  return record;
}

bool HasZeroByte(const LogEvent& event) {
  const std::string texts =
      event.GetLogMessage() + event.GetLogHandlerName() + event.GetFullFileName();
  return texts.find('\0') != std::string::npos;
}

/// The record as one print lays it down, with the integers put into their places afterwards.
std::string Printed(const LogEvent& event) {
  const std::string message = event.GetLogMessage();
  const std::string handlerName = event.GetLogHandlerName();
  const std::string fileName = event.GetFullFileName();
  std::string record(34 + message.size() + handlerName.size() + fileName.size(), '\0');
  std::snprintf(record.data(), record.size(), "01%04d%04d%s%04d%s%04d%s%04d%04d%04d%04d", 0, 0,
                message.c_str(), 0, handlerName.c_str(), 0, fileName.c_str(), 0, 0, 0, 0);
  std::size_t place = 2;
  record.replace(place, 4, Number(event.GetLogLevel()));
  place += 4;
  for (const std::string* text : {&message, &handlerName, &fileName}) {
    record.replace(place, 4, Number(static_cast<long>(text->size())));
    place += 4 + text->size();
  }
  return record.replace(place, std::string::npos,
                        Number(event.GetLine()) + Number(event.GetTimeSec()) +
                            Number(event.GetTimeUsec()) + Number(event.GetThreadId()));
}

/// Reads a record into an event, which may have the texts of others.
void Read(const char* record, std::size_t size, LogEvent& event) {
  const std::optional<LogEvent> expected = EventOf(record, size);

  const bool isRead = ReadRecord(record, size, event);

  Expect(isRead == expected.has_value(), "a record is refused when it leads outside, only then");
  if (!isRead) return;
  Expect(IsEqual(event, *expected), "each field has what the record says");
  Expect(IsEqual(event, LogEvent(const_cast<char*>(record))), "the trusting reader reads the same");

  const std::string written = Written(event);
  Expect(written == Printed(event), "a written record has the format's bytes");
  if (HasZeroByte(event)) return;  // Which the format cannot carry.
  LogEvent again = EmptyEvent();
  Expect(ReadRecord(written.data(), written.size(), again) && IsEqual(event, again),
         "a written record is read as the same event");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  LogEvent event = EmptyEvent();
  // Where it is known that one more byte would be the next object's.
  const std::vector<char> first =
      input.ConsumeBytes<char>(input.ConsumeIntegralInRange<std::size_t>(0, size));
  const std::vector<char> second = input.ConsumeRemainingBytes<char>();
  Read(first.data(), first.size(), event);
  Read(second.data(), second.size(), event);
  return 0;
}
