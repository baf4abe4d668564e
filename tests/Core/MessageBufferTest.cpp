#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <vector>

#include "LogFormater.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/RecordingClient.h"

namespace {

/// The calls of realloc and free of one thread, recorded while the object lives.
struct BufferRecord {
  BufferRecord() {
    constexpr std::size_t kSurelyEnough = 64;
    sizes.reserve(kSurelyEnough);
    current = this;
  }
  ~BufferRecord() { current = nullptr; }

  BufferRecord(const BufferRecord&) = delete;
  BufferRecord& operator=(const BufferRecord&) = delete;

  std::vector<std::size_t> sizes;  ///< Of all calls of realloc, in order.
  std::size_t failingPass = 0;     ///< Which of them fails, counted from 1.
  void* buffer = nullptr;          ///< The one that realloc gave last and nobody has freed.
  int freed = 0;                   ///< How many such were freed.

  static thread_local BufferRecord* current;
};

thread_local BufferRecord* BufferRecord::current = nullptr;

}  // namespace

extern "C" {

void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);

__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) noexcept {
  BufferRecord* const record = BufferRecord::current;
  if (record == nullptr) return __libc_realloc(block, size);
  record->sizes.push_back(size);
  if (record->sizes.size() == record->failingPass) {
    errno = ENOMEM;
    return nullptr;
  }
  record->buffer = __libc_realloc(block, size);
  errno = EDOM;  // It may also do so when it succeeds.
  return record->buffer;
}

__attribute__((visibility("default"))) void free(void* block) noexcept {
  BufferRecord* const record = BufferRecord::current;
  if (record != nullptr && block != nullptr && block == record->buffer) {
    record->buffer = nullptr;
    ++record->freed;
  }
  __libc_free(block);
}

}  // extern "C"

namespace {

using Sizes = std::vector<std::size_t>;
using Texts = std::vector<std::string>;

class MessageBufferTest : public testing::Test {
 protected:
  MessageBufferTest() {
    Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
    handler_.AddLogClient(&client_);
  }

  /// The sizes that a message of this length asks for.
  Sizes SizesFor(std::size_t length) {
    const std::string text(length, 'x');
    const BufferRecord record;
    handler_.Log(1, "%s", text.c_str());
    return record.sizes;
  }

  RecordingClient client_;
  LogHandler handler_{"net"};
};

TEST_F(MessageBufferTest, TakesOnePassUpTo4094Characters) {
  EXPECT_EQ(Sizes{4096}, SizesFor(0));
  EXPECT_EQ(Sizes{4096}, SizesFor(4093));
  EXPECT_EQ(Sizes{4096}, SizesFor(4094));
}

TEST_F(MessageBufferTest, DoublesForATextThatFillsItExactly) {
  EXPECT_EQ((Sizes{4096, 8192}), SizesFor(4095));
  EXPECT_EQ((Sizes{4096, 8192}), SizesFor(4096));
}

TEST_F(MessageBufferTest, GrowsToWhatALongerTextNeeds) {
  EXPECT_EQ((Sizes{4096, 4099}), SizesFor(4097));
  EXPECT_EQ((Sizes{4096, 10002}), SizesFor(10000));
  EXPECT_EQ((Sizes{4096, 1000002}), SizesFor(1000000));
}

TEST_F(MessageBufferTest, IsAllocatedAfreshForEachMessage) {
  EXPECT_EQ((Sizes{4096, 10002}), SizesFor(10000));
  EXPECT_EQ((Sizes{4096, 10002}), SizesFor(10000));
  EXPECT_EQ(Sizes{4096}, SizesFor(10));
}

TEST_F(MessageBufferTest, LeavesTheCallersErrnoForTheFormat) {
  // Standard C++ does not know %m: the compiler must not check the format.
  bool (LogHandler::*const log)(unsigned int, const char*, ...) = &LogHandler::Log;
  const std::string text(10000, 'x');
  const BufferRecord record;
  errno = ENOENT;

  (handler_.*log)(1, "%s: %m", text.c_str());

  EXPECT_EQ(ENOENT, errno);
  EXPECT_EQ(Texts{text + ": No such file or directory"}, client_.Messages());
}

TEST_F(MessageBufferTest, IsFreedOnce) {
  const std::string text(10000, 'x');
  const BufferRecord record;

  handler_.Log(1, "%s", text.c_str());

  EXPECT_EQ((Sizes{4096, 10002}), record.sizes);
  EXPECT_EQ(nullptr, record.buffer);
  EXPECT_EQ(1, record.freed);
}

TEST_F(MessageBufferTest, IsFreedWhenAReceiverThrows) {
  client_.whenPublished = [](const LogEvent&) { throw 1; };
  const BufferRecord record;

  EXPECT_THROW(handler_.Log(1, "text"), int);

  EXPECT_EQ(Sizes{4096}, record.sizes);
  EXPECT_EQ(1, record.freed);
}

TEST_F(MessageBufferTest, IsUsedByDebugLogAsWell) {
  const std::string text(10000, 'x');
  const BufferRecord record;

  handler_.DebugLog(1, "a.cpp", 7, "%s", text.c_str());

  EXPECT_EQ((Sizes{4096, 10002}), record.sizes);
  EXPECT_EQ(1, record.freed);
}

TEST_F(MessageBufferTest, IsUsedByTheFormaterAsWell) {
  const std::string text(10000, 'x');
  LogFormater formater(1, "a.cpp", 7);
  const BufferRecord record;

  formater.Log(&handler_, "%s", text.c_str());

  EXPECT_EQ((Sizes{4096, 10002}), record.sizes);
  EXPECT_EQ(1, record.freed);
}

TEST_F(MessageBufferTest, IsNotUsedForATextThatIsTakenAsItStands) {
  const std::string text(10000, 'x');
  const BufferRecord record;

  handler_.LogForce(1, text.c_str());
  handler_.DebugLogForce(1, "a.cpp", 7, text.c_str());

  EXPECT_EQ(Sizes{}, record.sizes);
  EXPECT_EQ(2U, client_.Events().size());
}

TEST_F(MessageBufferTest, IsNotUsedForAMessageThatIsFilteredOut) {
  handler_.SetLogLevel(1, false);
  const BufferRecord record;

  EXPECT_FALSE(handler_.Log(1, "text"));
  EXPECT_FALSE(handler_.DebugLog(1, "a.cpp", 7, "text"));

  EXPECT_EQ(Sizes{}, record.sizes);
}

/// A message that cannot be logged, which is not reported.
class LostMessageTest : public MessageBufferTest {
 protected:
  LostMessageTest() {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
  }
  ~LostMessageTest() override {
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_TRUE(client_.Events().empty());
  }
};

TEST_F(LostMessageTest, IsTakenForLoggedWhenThereIsNoMemoryAtAll) {
  BufferRecord record;
  record.failingPass = 1;

  EXPECT_TRUE(handler_.Log(1, "text"));

  EXPECT_EQ(Sizes{4096}, record.sizes);
}

TEST_F(LostMessageTest, IsTakenForLoggedWhenThereIsNoMemoryToGrow) {
  const std::string text(10000, 'x');
  BufferRecord record;
  record.failingPass = 2;

  EXPECT_TRUE(handler_.Log(1, "%s", text.c_str()));

  EXPECT_EQ((Sizes{4096, 10002}), record.sizes);
  EXPECT_EQ(nullptr, record.buffer);
  EXPECT_EQ(1, record.freed);
}

TEST_F(LostMessageTest, IsTakenForLoggedByDebugLogAsWell) {
  BufferRecord record;
  record.failingPass = 1;

  EXPECT_TRUE(handler_.DebugLog(1, "a.cpp", 7, "text"));

  EXPECT_EQ(Sizes{4096}, record.sizes);
}

TEST_F(LostMessageTest, IsDroppedByTheFormaterAsWell) {
  const std::string text(10000, 'x');
  LogFormater formater(1, "a.cpp", 7);
  BufferRecord record;
  record.failingPass = 2;

  formater.Log(&handler_, "%s", text.c_str());

  EXPECT_EQ((Sizes{4096, 10002}), record.sizes);
  EXPECT_EQ(1, record.freed);
}

TEST_F(LostMessageTest, LeavesErrnoAsItWas) {
  BufferRecord record;
  record.failingPass = 1;
  errno = EINTR;

  EXPECT_TRUE(handler_.Log(1, "text"));

  EXPECT_EQ(EINTR, errno);
}

TEST_F(LostMessageTest, LeavesErrnoAsItWasAfterTheFormaterToo) {
  LogFormater formater(1, "a.cpp", 7);
  BufferRecord record;
  record.failingPass = 1;
  errno = EINTR;

  formater.Log(&handler_, "text");

  EXPECT_EQ(EINTR, errno);
}

// No buffer is ever large enough for these.
const Sizes kUpToOneGibibyte{4096,      8192,      16384,     32768,     65536,
                             131072,    262144,    524288,    1048576,   2097152,
                             4194304,   8388608,   16777216,  33554432,  67108864,
                             134217728, 268435456, 536870912, 1073741824};

TEST_F(LostMessageTest, MayHoldACharacterThatCannotBeConverted) {
  const BufferRecord record;

  EXPECT_TRUE(handler_.Log(1, "%ls", L"\u20ac"));

  EXPECT_EQ(kUpToOneGibibyte, record.sizes);
  EXPECT_EQ(1, record.freed);
}

// The declaration's promise of a checked format would be in the way of these.
bool (LogHandler::*const kLog)(unsigned int, const char*, ...) = &LogHandler::Log;

TEST_F(LostMessageTest, MayHaveNoFormat) {
  const BufferRecord record;

  EXPECT_TRUE((handler_.*kLog)(1, nullptr));

  EXPECT_EQ(kUpToOneGibibyte, record.sizes);
  EXPECT_EQ(1, record.freed);
}

TEST_F(LostMessageTest, MayHaveAFormatThatPrintfRefuses) {
  for (const std::string format : {"100%", "a %2147483648d", "a %99999999999999999999d"}) {
    const BufferRecord record;

    EXPECT_TRUE((handler_.*kLog)(1, format.c_str(), 7));

    EXPECT_EQ(kUpToOneGibibyte, record.sizes) << format;
    EXPECT_EQ(1, record.freed) << format;
  }
}

TEST_F(LostMessageTest, DoesNotKeepTheNextFromBeingLogged) {
  {
    BufferRecord record;
    record.failingPass = 1;
    EXPECT_TRUE(handler_.Log(1, "lost"));
  }
  RecordingClient other;
  handler_.RemoveLogClient(&client_);
  handler_.AddLogClient(&other);

  EXPECT_TRUE(handler_.Log(1, "kept"));

  EXPECT_EQ(Texts{"kept"}, other.Messages());
}

}  // namespace
