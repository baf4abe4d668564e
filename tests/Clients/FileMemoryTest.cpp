#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>

#include "LogClientFile.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"

namespace {

constexpr std::size_t kMegabyte = std::size_t{1024} * 1024;

/// The largest array that this program's operator new[] gives out.
std::size_t largestArray = SIZE_MAX;

}  // namespace

void* operator new[](std::size_t size) {
  void* const array = size > largestArray ? nullptr : std::malloc(size);
  if (array == nullptr) throw std::bad_alloc();
  return array;
}

void operator delete[](void* array) noexcept { std::free(array); }
void operator delete[](void* array, std::size_t) noexcept { std::free(array); }

namespace {

class FileMemoryTest : public testing::Test {
 protected:
  FileMemoryTest() : client_(file_, true) { client_.SetLayout("LogLayoutMessage"); }
  ~FileMemoryTest() override { largestArray = SIZE_MAX; }

  TemporaryFolder folder_;
  const std::string file_ = folder_.Path("app.log");
  LogClientFile client_;
};

TEST_F(FileMemoryTest, WritesAnEventForWhoseLineThereIsNoMemory) {
  const std::string large(kMegabyte, 'x');
  const LogEvent event = EventWith(large);
  client_.Publish(EventWith("before"));

  largestArray = kMegabyte;
  EXPECT_TRUE(client_.Publish(event));
  EXPECT_TRUE(client_.Publish(EventWith("after")));

  EXPECT_TRUE("before\n" + large + "\nafter\n" == Content(file_));
}

}  // namespace
