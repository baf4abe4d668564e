#include "Core/EventRecord.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

#include "Core/EventAccess.h"
#include "Internal/WireFormat.h"
#include "LogEvent.h"

namespace Logger::Internal {

using namespace WireFormat;

namespace {

/// Lays a text down in a record, as far as there is room, and counts on.
class Printer {
 public:
  Printer(char* record, std::size_t size) : next_(record), end_(record + size) {}

  void Print(const char* text, std::size_t length) {
    const std::size_t count = std::min(length, static_cast<std::size_t>(end_ - next_));
    std::memcpy(next_, text, count);
    next_ += count;
  }
  void PrintUpToZero(const logstring& text) { Print(text.data(), std::strlen(text.c_str())); }
  void PrintPlaceholders(int count) {
    while (count-- > 0) Print("0000", kIntegerSize);
  }

 private:
  char* next_;
  char* const end_;
};

void PutInteger(char* place, long value) {
  IntToBuf(reinterpret_cast<unsigned char*>(place), static_cast<int>(value));
}

/// Takes integers and texts from the places of a record where they should be.
class RecordReader {
 public:
  RecordReader(const char* record, long long size) : record_(record), size_(size) {}

  /// False once anything was looked for outside of the record; what was found then means nothing.
  bool IsInside() const { return isInside_; }

  int Integer(long long place) {
    int value = 0;
    if (Contains(place, kIntegerSize)) {
      BufToInt(reinterpret_cast<const unsigned char*>(record_ + place), &value);
    }
    return value;
  }
  std::string_view Text(long long place, int length) {
    if (length <= 0 || !Contains(place, length)) return {};
    return {record_ + place, static_cast<std::size_t>(length)};
  }

 private:
  const char* const record_;
  const long long size_;
  bool isInside_ = true;

  bool Contains(long long place, long long length) {
    isInside_ = isInside_ && place >= 0 && place + length <= size_;
    return isInside_;
  }
};

bool Read(RecordReader reader, LogEvent& event) {
  constexpr long long kInteger = kIntegerSize;
  constexpr long long kLevel = kRecordMarkSize;
  const int level = reader.Integer(kLevel);
  long long place = kLevel + kInteger;
  // The places behind a text follow from its length as it stands, negative or not.
  const auto nextText = [&] {
    const int length = reader.Integer(place);
    const std::string_view text = reader.Text(place + kInteger, length);
    place += kInteger + length;
    return text;
  };
  const std::string_view message = nextText();
  const std::string_view handlerName = nextText();
  const std::string_view fileName = nextText();
  const int line = reader.Integer(place);
  const timeval time{reader.Integer(place + kInteger), reader.Integer(place + 2 * kInteger)};
  const int threadId = reader.Integer(place + 3 * kInteger);
  if (!reader.IsInside()) return false;
  EventAccess::SetTexts(event, message, handlerName, fileName);
  EventAccess::SetNumbers(event, static_cast<unsigned int>(level), line, time, threadId);
  return true;
}

}  // namespace

std::size_t RecordSize(const LogEvent& event) {
  return kSmallestRecord + EventAccess::Message(event).size() +
         EventAccess::HandlerName(event).size() + EventAccess::FileName(event).size();
}

void WriteRecord(const LogEvent& event, char* record) {
  const logstring& message = EventAccess::Message(event);
  const logstring& handlerName = EventAccess::HandlerName(event);
  const logstring& fileName = EventAccess::FileName(event);
  const std::size_t size = RecordSize(event);

  // As one print of all the texts, with a place for each integer, would lay it down.
  std::memset(record, 0, size);
  Printer printer(record, size);
  printer.Print(kRecordMark, kRecordMarkSize);
  printer.PrintPlaceholders(2);
  printer.PrintUpToZero(message);
  printer.PrintPlaceholders(1);
  printer.PrintUpToZero(handlerName);
  printer.PrintPlaceholders(1);
  printer.PrintUpToZero(fileName);
  printer.PrintPlaceholders(4);

  char* place = record + kRecordMarkSize;
  PutInteger(place, event.GetLogLevel());
  place += kIntegerSize;
  for (const logstring* text : {&message, &handlerName, &fileName}) {
    PutInteger(place, static_cast<long>(text->size()));
    place += kIntegerSize + text->size();
  }
  for (const long value : {static_cast<long>(event.GetLine()), event.GetTimeSec(),
                           event.GetTimeUsec(), static_cast<long>(event.GetThreadId())}) {
    PutInteger(place, value);
    place += kIntegerSize;
  }
}

bool ReadRecord(const char* record, std::size_t size, LogEvent& event) {
  return Read(RecordReader(record, static_cast<long long>(size)), event);
}

void ReadTrustedRecord(const char* record, LogEvent& event) {
  static_cast<void>(Read(RecordReader(record, std::numeric_limits<long long>::max()), event));
}

}  // namespace Logger::Internal
