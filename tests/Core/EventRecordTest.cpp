#include "Core/EventRecord.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "LogEvent.h"
#include "Support/WireBytes.h"

namespace {

using Logger::Internal::ReadRecord;
using Logger::Internal::RecordSize;
using Logger::Internal::WriteRecord;

LogEvent OtherEvent() { return {99, "other", "one", "before", 98, timeval{97, 96}, 95}; }

/// The record that the event gives out.
std::string StreamOf(const LogEvent& event) {
  char* record = nullptr;
  int length = -1;
  event.GetLogStream(&record, length);
  const std::unique_ptr<char[]> owner(record);
  return std::string(record, static_cast<std::size_t>(length));
}

/// Reads the record as one that is trusted, at the very end of its memory.
LogEvent TrustedEventOf(const std::string& record) {
  const std::unique_ptr<char[]> copy(new char[record.size()]);
  std::memcpy(copy.get(), record.data(), record.size());
  return LogEvent(copy.get());
}

/// Reads the record at the very end of its memory. Null when it is no record.
std::unique_ptr<LogEvent> EventOf(const std::string& record) {
  const std::unique_ptr<char[]> copy(new char[record.size()]);
  std::memcpy(copy.get(), record.data(), record.size());
  auto event = std::make_unique<LogEvent>(OtherEvent());
  return ReadRecord(copy.get(), record.size(), *event) ? std::move(event) : nullptr;
}

void ExpectEqual(const LogEvent& expected, const LogEvent& event) {
  EXPECT_EQ(expected.GetLogLevel(), event.GetLogLevel());
  EXPECT_EQ(expected.GetLogMessage(), event.GetLogMessage());
  EXPECT_EQ(expected.GetLogHandlerName(), event.GetLogHandlerName());
  EXPECT_EQ(expected.GetFullFileName(), event.GetFullFileName());
  EXPECT_EQ(expected.GetLine(), event.GetLine());
  EXPECT_EQ(expected.GetTimeSec(), event.GetTimeSec());
  EXPECT_EQ(expected.GetTimeUsec(), event.GetTimeUsec());
  EXPECT_EQ(expected.GetThreadId(), event.GetThreadId());
}

/// Whether both readers find the event in the record.
void ExpectReadAs(const LogEvent& expected, const std::string& record) {
  ExpectEqual(expected, TrustedEventOf(record));
  const std::unique_ptr<LogEvent> event = EventOf(record);
  ASSERT_NE(nullptr, event);
  ExpectEqual(expected, *event);
}

std::string BytesOf(int value) {
  std::string bytes(6, '-');
  IntToBuf(reinterpret_cast<unsigned char*>(bytes.data() + 1), value);
  return bytes;
}

int IntegerOf(std::string bytes) {
  int value = 77;
  BufToInt(reinterpret_cast<unsigned char*>(bytes.data()), &value);
  return value;
}

static_assert(std::is_constructible_v<LogEvent, char*>);

TEST(EventRecordTest, HoldsIntegersInFourBytesTheMostSignificantFirst) {
  const struct {
    int value;
    std::string bytes;
  } rows[] = {{-1, "\xFF\xFF\xFF\xFF"},
              {0, std::string(4, '\0')},
              {1, std::string("\0\0\0\1", 4)},
              {0x00000080, std::string("\0\0\0\x80", 4)},
              {0x00008000, std::string("\0\0\x80\0", 4)},
              {0x00800000, std::string("\0\x80\0\0", 4)},
              {INT_MIN, std::string("\x80\0\0\0", 4)},
              {INT_MAX, "\x7F\xFF\xFF\xFF"},
              {0x12345678, "\x12\x34\x56\x78"},
              {-0x01234568, "\xFE\xDC\xBA\x98"}};
  for (const auto& row : rows) {
    EXPECT_EQ("-" + row.bytes + "-", BytesOf(row.value));
    EXPECT_EQ(row.value, IntegerOf(row.bytes));
  }
}

TEST(EventRecordTest, HoldsNumbersAndTextsInThisOrder) {
  const auto numbers = [](long level, long line, long seconds, long microseconds, long thread) {
    return "01" + Number(level) + std::string(12, '\0') + Number(line) + Number(seconds) +
           Number(microseconds) + Number(thread);
  };
  EXPECT_EQ(kSmallRecord, StreamOf(SmallEvent()));
  EXPECT_EQ(numbers(5, 6, 7, 8, 9), StreamOf(LogEvent(5, "", "", "", 6, timeval{7, 8}, 9)));
  EXPECT_EQ(numbers(UINT_MAX, -1, INT_MIN, INT_MAX, INT_MIN),
            StreamOf(LogEvent(UINT_MAX, "", "", "", -1, timeval{INT_MIN, INT_MAX}, INT_MIN)));
  // The low bits of a time that needs more.
  EXPECT_EQ(numbers(0, 0, 0x12345678, 0, 0),
            StreamOf(LogEvent(0, "", "", "", 0, timeval{0x1'1234'5678, 0}, 0)));
  // The file name has its path.
  EXPECT_EQ("src\\dir/f.cpp",
            StreamOf(LogEvent(1, "", "", "src\\dir/f.cpp", 0, timeval{}, 0)).substr(18, 13));
}

TEST(EventRecordTest, IsReadBackAsTheEventItWasWrittenFrom) {
  std::string bytes;
  for (int byte = 255; byte > 0; --byte) bytes.push_back(static_cast<char>(byte));

  ExpectReadAs(SmallEvent(), kSmallRecord);
  for (const LogEvent& event :
       {LogEvent(UINT_MAX, "a message\n%s", "net.tcp", "/src/f.cpp", -42,
                 timeval{1709647629, 999999}, -7),
        LogEvent(1, bytes, bytes + "h", bytes + "ff", 1, timeval{2, 3}, 4)}) {
    ExpectReadAs(event, StreamOf(event));
  }
}

TEST(EventRecordTest, HasNoLimitOfDigitsForALength) {
  for (const std::size_t length : {9998U, 9999U, 10000U, 10001U, 1024U * 1024U}) {
    const LogEvent event(1, std::string(length, 'm'), std::string(length + 1, 'h'),
                         std::string(length + 2, 'f'), 1, timeval{2, 3}, 4);

    const std::string record = StreamOf(event);

    EXPECT_EQ(34 + 3 * length + 3, record.size());
    ExpectReadAs(event, record);
  }
}

TEST(EventRecordTest, IsReadWhateverItsMarkIs) {
  for (const std::string& mark : {std::string("02"), std::string("00"), std::string("xy"),
                                  std::string("\xFF\xFF"), std::string(2, '\0')}) {
    ExpectReadAs(SmallEvent(), mark + kSmallRecord.substr(2));
  }
}

TEST(EventRecordTest, IsReadWithZeroBytesInItsTexts) {
  const std::string message("a\0b", 3);
  const LogEvent event(3, message, std::string(2, '\0'), "f", 42, timeval{1, 2}, 7);

  ExpectReadAs(event, "01" + Number(3) + WithLength(message) + WithLength(std::string(2, '\0')) +
                          WithLength("f") + Number(42) + Number(1) + Number(2) + Number(7));
}

TEST(EventRecordTest, IsAnArrayOfItsOwnForEachCall) {
  const LogEvent event = SmallEvent();
  char* first = nullptr;
  char* second = nullptr;
  int length = 0;

  event.GetLogStream(&first, length);
  const std::unique_ptr<char[]> firstOwner(first);
  event.GetLogStream(&second, length);
  const std::unique_ptr<char[]> secondOwner(second);

  EXPECT_NE(first, second);
  EXPECT_EQ(kSmallRecord, std::string(second, 43));
}

/// Writes the record between guards, where former content stands.
std::string WrittenOver(const LogEvent& event, char former) {
  const std::size_t size = RecordSize(event);
  std::string bytes(size + 2, former);
  WriteRecord(event, bytes.data() + 1);
  EXPECT_EQ(former, bytes.front());
  EXPECT_EQ(former, bytes.back());
  return bytes.substr(1, size);
}

TEST(EventRecordTest, MovesWhatFollowsAZeroByteUp) {
  const std::string numbers = Number(42) + Number(1) + Number(2) + Number(7);

  EXPECT_EQ("01" + Number(3) + WithLength("a00") + WithLength("0") + WithLength("0") + numbers,
            StreamOf(LogEvent(3, std::string("a\0b", 3), "h", "f", 42, timeval{1, 2}, 7)));
  // A handler name moves into the place that a longer message leaves.
  EXPECT_EQ("01" + Number(3) + WithLength("0000hand") + WithLength("0000000") + WithLength("00") +
                numbers,
            StreamOf(LogEvent(3, std::string("\0bcdefgh", 8), "handler", std::string("\0f", 2), 42,
                              timeval{1, 2}, 7)));
}

TEST(EventRecordTest, FillsUpWithZeroBytesWhatTextsLeave) {
  const LogEvent event(3, "", "", std::string(40, '\0'), 42, timeval{1, 2}, 7);

  const std::string filename = StreamOf(event).substr(18, 40);

  EXPECT_EQ(std::string(16, '0') + std::string(24, '\0'), filename);
}

TEST(EventRecordTest, DoesNotShowFormerContentOfItsMemory) {
  const std::vector<LogEvent> events{
      SmallEvent(),
      LogEvent(3, std::string(1000, '\0'), std::string("h\0h", 3), std::string(100, '\0'), 42,
               timeval{1, 2}, 7),
      LogEvent(3, std::string("\0secret", 7), std::string(50, '\0'), "f", 42, timeval{1, 2}, 7)};

  for (const LogEvent& event : events) {
    EXPECT_EQ(WrittenOver(event, 'S'), WrittenOver(event, 'T'));
    EXPECT_EQ(WrittenOver(event, 'S'), StreamOf(event));
  }
}

TEST(EventRecordTest, DoesNotSendFormerContentOfTheHeap) {
  constexpr std::size_t kSize = 34 + 500;
  const LogEvent event(3, std::string(500, '\0'), "", "", 42, timeval{1, 2}, 7);
  for (int i = 0; i < 20; ++i) {
    std::vector<std::unique_ptr<char[]>> blocks;
    for (int block = 0; block < 20; ++block) {
      blocks.emplace_back(new char[kSize]);
      std::memset(blocks.back().get(), 'S', kSize);
    }
  }

  EXPECT_EQ(std::string::npos, StreamOf(event).find('S'));
}

TEST(EventRecordTest, IsRejectedWhereverItIsCut) {
  for (std::size_t size = 0; size < kSmallRecord.size(); ++size) {
    EXPECT_EQ(nullptr, EventOf(kSmallRecord.substr(0, size))) << size;
  }
  for (const char* const more : {"", "more"}) {
    const std::unique_ptr<LogEvent> event = EventOf(kSmallRecord + more);
    ASSERT_NE(nullptr, event);
    ExpectEqual(SmallEvent(), *event);
  }
}

/// A record whose three lengths are as given, before 16 bytes of numbers.
std::string RecordWithLengths(long message, long handler, long file,
                              const std::string& texts = "") {
  return "01" + Number(3) + Number(message) + Number(handler) + Number(file) + texts + Number(42) +
         Number(1) + Number(2) + Number(7);
}

TEST(EventRecordTest, IsRejectedWhenALengthLeadsOutOfIt) {
  for (const long length :
       {1L, 4L, 16L, 17L, 1000L, 0x7FFFFFFFL, -19L, -1000L, -0x7FFFFFFFL, -0x80000000L}) {
    EXPECT_EQ(nullptr, EventOf(RecordWithLengths(length, 0, 0))) << length;
    EXPECT_EQ(nullptr, EventOf(RecordWithLengths(0, length, 0))) << length;
    EXPECT_EQ(nullptr, EventOf(RecordWithLengths(0, 0, length))) << length;
  }
  // The first lengths that lead in front of it.
  EXPECT_EQ(nullptr, EventOf(RecordWithLengths(-11, 0, 0)));
  EXPECT_EQ(nullptr, EventOf(RecordWithLengths(-12, 0, 0)));
  EXPECT_EQ(nullptr, EventOf(RecordWithLengths(0, -15, 0)));
  // The handler name's length would be in front, the rest inside again.
  EXPECT_EQ(nullptr, EventOf(RecordWithLengths(-0x80000000L, 0x7FFFFFFF, 0)));
  EXPECT_EQ(nullptr, EventOf(RecordWithLengths(0x7FFFFFFF, -0x7FFFFFFF, 0)));
  EXPECT_EQ(nullptr, EventOf(RecordWithLengths(0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF)));
  EXPECT_EQ(nullptr, EventOf(RecordWithLengths(-0x80000000L, -0x80000000L, -0x80000000L)));
}

TEST(EventRecordTest, HasAnEmptyTextForANegativeLengthAndGoesOnWhereItLeads) {
  // The file name's length leads four bytes back: the numbers begin with that length itself.
  const LogEvent fileName(3, "", "", "", -4, timeval{42, 1}, 2);
  ExpectReadAs(fileName, RecordWithLengths(0, 0, -4));

  // The message's length leads back to itself, for the handler name and once more.
  const LogEvent message(3, "", "", "", -4, timeval{0, 0}, 42);
  ExpectReadAs(message, RecordWithLengths(-4, 0, 0));
}

TEST(EventRecordTest, StaysInsideWithTheNegativeLengthThatLeadsToItsFirstByte) {
  // The handler name's length is read where the record begins, and its six bytes follow there.
  const std::string record =
      std::string("\0\0", 2) + Number(0x00060000) + Number(-10) + std::string(20, '\0');

  const std::unique_ptr<LogEvent> event = EventOf(record);

  ASSERT_NE(nullptr, event);
  EXPECT_EQ("", event->GetLogMessage());
  EXPECT_EQ(record.substr(4, 6), event->GetLogHandlerName());
}

TEST(EventRecordTest, IsReadOrRejectedWithAnyLengthsButNeverReadBeyondItsEnd) {
  const std::vector<long> lengths{-0x80000000L, -35, -18, -14,       -10, -5, -4, -1, 0, 1, 4, 8,
                                  16,           17,  40,  0x7FFFFFFF};
  int readCount = 0;
  int rejectedCount = 0;
  for (const long message : lengths) {
    for (const long handler : lengths) {
      for (const long file : lengths) {
        const std::string record = RecordWithLengths(message, handler, file, "some text");
        ++(EventOf(record) == nullptr ? rejectedCount : readCount);
      }
    }
  }

  EXPECT_GT(readCount, 0);
  EXPECT_GT(rejectedCount, 0);
}

}  // namespace
