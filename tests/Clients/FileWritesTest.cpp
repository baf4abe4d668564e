#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"

namespace {

/// Faults of the write calls to files, and a record of the calls.
struct Writes {
  bool areWatched = false;
  std::vector<std::size_t> lengths;
  std::size_t mostAtOnce = static_cast<std::size_t>(-1);
  int interruptions = 0;  ///< So many calls fail first.
};

Writes& TheWrites() {
  static Writes writes;
  return writes;
}

bool IsFile(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

class FileWritesTest : public testing::Test {
 protected:
  FileWritesTest() {
    TheWrites() = Writes();
    TheWrites().areWatched = true;
  }
  ~FileWritesTest() override { TheWrites().areWatched = false; }

  TemporaryFolder folder_;
  const std::string file_ = folder_.Path("app.log");
};

}  // namespace

// Stands before the C library's function for all of this program.
extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t length) {
  Writes& writes = TheWrites();
  if (writes.areWatched && IsFile(descriptor)) {
    writes.lengths.push_back(length);
    if (writes.interruptions > 0) {
      --writes.interruptions;
      errno = EINTR;
      return -1;
    }
    length = std::min(length, writes.mostAtOnce);
  }
  return syscall(SYS_write, descriptor, bytes, length);
}

namespace {

TEST_F(FileWritesTest, HandsEachEventToTheKernelInOneCall) {
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");

  client.Publish(EventWith("one"));
  client.Publish(EventWith(""));
  client.Publish(EventWith("three"));

  EXPECT_EQ((std::vector<std::size_t>{4, 1, 6}), TheWrites().lengths);
}

TEST_F(FileWritesTest, HandsALineOfManyPiecesToTheKernelInOneCall) {
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutExtended");

  client.Publish(EventWith("disk full"));

  EXPECT_EQ(1U, TheWrites().lengths.size());
}

TEST_F(FileWritesTest, HandsALargeEventToTheKernelInOneCall) {
  constexpr std::size_t kLength = std::size_t{10} * 1024 * 1024;
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");

  EXPECT_TRUE(client.Publish(EventWith(std::string(kLength, 'm'))));

  EXPECT_EQ(std::vector<std::size_t>{kLength + 1}, TheWrites().lengths);
}

TEST_F(FileWritesTest, WritesNothingMoreWhenAClientEnds) {
  {
    LogClientFile client(file_, true);
    client.Publish(EventWith("disk full"));
  }

  EXPECT_EQ(1U, TheWrites().lengths.size());
}

TEST_F(FileWritesTest, WritesOnceForAnEventThatRollsTheFileOver) {
  LogClientRollingFile client(file_, 0, 1);
  client.SetLayout("LogLayoutMessage");

  client.Publish(EventWith("one"));

  EXPECT_EQ(std::vector<std::size_t>{4}, TheWrites().lengths);
  EXPECT_EQ("one\n", Content(file_ + ".1"));
}

TEST_F(FileWritesTest, GoesOnWhereTheKernelTookOnlyAPart) {
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");
  TheWrites().mostAtOnce = 4;

  EXPECT_TRUE(client.Publish(EventWith("disk full")));

  EXPECT_EQ((std::vector<std::size_t>{10, 6, 2}), TheWrites().lengths);
  EXPECT_EQ("disk full\n", Content(file_));
}

TEST_F(FileWritesTest, TriesAgainWhenASignalInterrupted) {
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");
  TheWrites().interruptions = 2;

  EXPECT_TRUE(client.Publish(EventWith("one")));
  EXPECT_TRUE(client.Publish(EventWith("two")));

  EXPECT_EQ("one\ntwo\n", Content(file_));
}

}  // namespace
