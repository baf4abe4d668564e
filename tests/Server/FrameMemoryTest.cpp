#include <gtest/gtest.h>
#include <malloc.h>

#include <climits>
#include <cstdlib>
#include <new>
#include <string>

#include "Server/FrameParser.h"
#include "Support/WireBytes.h"

namespace {

/// The bytes that this program has allocated by operator new and not released.
std::size_t inUse = 0;
std::size_t mostInUse = 0;

}  // namespace

void* operator new(std::size_t size) {
  void* const block = std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  inUse += malloc_usable_size(block);
  if (inUse > mostInUse) mostInUse = inUse;
  return block;
}

void operator delete(void* block) noexcept {
  inUse -= malloc_usable_size(block);
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace {

using Logger::Internal::FrameParser;

constexpr std::size_t kMegabyte = std::size_t{1024} * 1024;

class Counter : public FrameParser::Receiver {
 public:
  void ReceiveRecord(const char*, std::size_t) override { ++records; }
  void ReceiveFlushRequest() override {}

  int records = 0;
};

class FrameMemoryTest : public testing::Test {
 protected:
  FrameMemoryTest() { mostInUse = inUse; }

  bool Parse(const std::string& piece) {
    return parser_.Parse(piece.data(), piece.size(), INT_MAX);
  }

  Counter counter_;
  FrameParser parser_{counter_};
};

TEST_F(FrameMemoryTest, DoesNotGrowWithAnAnnouncedLength) {
  const std::size_t former = mostInUse;

  EXPECT_TRUE(Parse("\1" + Number(INT_MAX)));
  EXPECT_TRUE(Parse("first bytes"));

  EXPECT_LT(mostInUse - former, 4096U);
}

TEST_F(FrameMemoryTest, GrowsWithTheBytesThatArrive) {
  const std::string piece(4096, 'x');
  const std::size_t former = mostInUse;
  Parse("\1" + Number(INT_MAX));

  for (std::size_t arrived = piece.size(); arrived <= kMegabyte; arrived += piece.size()) {
    EXPECT_TRUE(Parse(piece));
    ASSERT_LE(mostInUse - former, 3 * arrived + 4096);
  }
  EXPECT_GE(inUse - former, kMegabyte);
}

TEST_F(FrameMemoryTest, IsGivenBackAfterALargeFrame) {
  const std::string frame = Frame(std::string(kMegabyte, 'x'));
  const std::size_t former = inUse;

  EXPECT_TRUE(Parse(frame.substr(0, 1000)));
  EXPECT_TRUE(Parse(frame.substr(1000)));

  EXPECT_EQ(1, counter_.records);
  EXPECT_LT(inUse, former + kMegabyte / 8);
}

TEST_F(FrameMemoryTest, DoesNotGrowWithTheNumberOfFrames) {
  const std::string frame = Frame(std::string(100, 'x'));
  for (int round = 0; round < 2; ++round) {
    Parse(frame.substr(0, 50));
    Parse(frame.substr(50));
  }
  const std::size_t former = mostInUse;

  for (int round = 0; round < 1000; ++round) {
    EXPECT_TRUE(parser_.Parse(frame.data(), 50, INT_MAX));
    EXPECT_TRUE(parser_.Parse(frame.data() + 50, frame.size() - 50, INT_MAX));
  }

  EXPECT_EQ(1002, counter_.records);
  EXPECT_EQ(former, mostInUse);
}

}  // namespace
