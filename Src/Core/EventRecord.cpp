#include "Core/EventRecord.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string_view>

#include "Core/EventAccess.h"
#include "Internal/WireFormat.h"
#include "LogEvent.h"

namespace Logger::Internal {

using namespace WireFormat;

namespace {

/// Writes a record piece by piece, as far as there is room.
class Printer {
 public:
  Printer(char* record, std::size_t size) : next_(record), end_(record + size) {}

  void Text(std::string_view text) {
    const std::size_t count = std::min(text.size(), static_cast<std::size_t>(end_ - next_));
    std::memcpy(next_, text.data(), count);
    next_ += count;
  }
  void Integer(long value) {
    IntToBuf(reinterpret_cast<unsigned char*>(next_), static_cast<int>(value));
    next_ += kIntegerSize;
  }
  void Skip(std::size_t count) { next_ += count; }

 private:
  char* next_;
  char* const end_;
};

using Texts = std::array<const logstring*, 3>;

Texts TextsOf(const LogEvent& event) {
  return {&EventAccess::Message(event), &EventAccess::HandlerName(event),
          &EventAccess::FileName(event)};
}

bool HasZeroByte(const logstring& text) {
  return std::memchr(text.data(), '\0', text.size()) != nullptr;
}

/// Writes the texts as one printf of all of them would, with a place for each integer: each is cut
/// at its first zero byte, the following ones move up, and zero bytes fill the rest.
void PrintCutTexts(const Texts& texts, char* record, std::size_t size) {
  std::memset(record, 0, size);
  Printer printer(record, size);
  printer.Text("000000");  // The mark and the level.
  for (const logstring* text : texts) {
    printer.Text("0000");
    printer.Text(text->c_str());
  }
  printer.Text("0000000000000000");
}

/// Takes integers and texts from the places of a record where they should be.
class RecordReader {
 public:
  RecordReader(const char* record, long long size) : record_(record), size_(size) {}

  /// False once a read was out of the record's bounds; its results are then meaningless.
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
  // The offsets after a text follow from its length as it was read, negative or not.
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
  std::size_t size = kSmallestRecord;
  for (const logstring* text : TextsOf(event)) size += text->size();
  return size;
}

void WriteRecord(const LogEvent& event, char* record) {
  const Texts texts = TextsOf(event);
  const std::size_t size = RecordSize(event);
  const bool areCut = std::any_of(texts.begin(), texts.end(),
                                  [](const logstring* text) { return HasZeroByte(*text); });
  if (areCut) PrintCutTexts(texts, record, size);

  Printer printer(record, size);
  printer.Text({kRecordMark, kRecordMarkSize});
  printer.Integer(event.GetLogLevel());
  for (const logstring* text : texts) {
    printer.Integer(static_cast<long>(text->size()));
    if (areCut) {
      printer.Skip(text->size());
    } else {
      printer.Text(*text);
    }
  }
  printer.Integer(event.GetLine());
  printer.Integer(event.GetTimeSec());
  printer.Integer(event.GetTimeUsec());
  printer.Integer(event.GetThreadId());
}

bool ReadRecord(const char* record, std::size_t size, LogEvent& event) {
  return Read(RecordReader(record, static_cast<long long>(size)), event);
}

void ReadTrustedRecord(const char* record, LogEvent& event) {
  static_cast<void>(Read(RecordReader(record, std::numeric_limits<long long>::max()), event));
}

}  // namespace Logger::Internal
