// A file system whose time stamps stand still, as those of many do for some milliseconds.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "LogClientXml.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlEntries.h"

namespace {

int AtNoTime(int result, struct stat* status) {
  status->st_atim = status->st_mtim = status->st_ctim = timespec{};
  return result;
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int stat(const char* path, struct stat* status) noexcept {
  return AtNoTime(fstatat(AT_FDCWD, path, status, 0), status);
}

__attribute__((visibility("default"))) int fstat(int descriptor, struct stat* status) noexcept {
  return AtNoTime(fstatat(descriptor, "", status, AT_EMPTY_PATH), status);
}

}  // extern "C"

namespace {

using Texts = std::vector<std::string>;

class XmlCoarseTimeTest : public testing::Test {
 protected:
  void PutAt(std::size_t position, char character) const {
    std::fstream file(file_, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(position));
    file.put(character);
  }

  const TemporaryFolder folder_;
  const std::string file_ = folder_.Path("log.xml");
};

TEST_F(XmlCoarseTimeTest, ShowsAnotherDocumentOfTheSameSizeAllTheSame) {
  LogClientXml client(file_, "");
  client.Publish(EventWith("one"));
  client.Publish(EventWith("two"));
  std::string other = Content(file_);
  std::reverse(other.begin(), other.end());
  WriteFile(file_, other);

  client.Publish(EventWith("three"));

  EXPECT_EQ((Texts{"one", "two", "three"}), XmlLog(file_).Messages());
}

TEST_F(XmlCoarseTimeTest, ShowsEveryChangedByteOfTheLastEntry) {
  const std::string message(3000, 'x');  // It is compared in pieces.
  LogClientXml client(file_, "");
  client.Publish(EventWith("first"));
  Texts all{"first"};
  for (const std::size_t fromEnd : {1U, 14U, 15U, 1100U, 2900U, 3080U}) {
    client.Publish(EventWith(message));
    all.push_back(message);

    PutAt(Content(file_).size() - fromEnd, '?');
    client.Publish(EventWith("next"));
    all.push_back("next");

    ASSERT_EQ(all, XmlLog(file_).Messages()) << fromEnd;
  }
}

TEST_F(XmlCoarseTimeTest, LetsTheClientAddToItsOwnDocument) {
  LogClientXml client(file_, "");
  client.Publish(EventWith("one"));
  PutAt(0, '?');  // Not compared: it shows whether the whole document is written.

  client.Publish(EventWith("two"));
  client.Publish(EventWith("three"));

  EXPECT_EQ('?', Content(file_).front());
  PutAt(0, '<');
  EXPECT_EQ((Texts{"one", "two", "three"}), XmlLog(file_).Messages());
}

TEST_F(XmlCoarseTimeTest, LetsTheClientAddToAFileThatItMayNotRead) {
  LogClientXml client(file_, "");
  WriteFile(file_, "");
  const uid_t formerUser = geteuid();
  std::filesystem::permissions(folder_.Path(), std::filesystem::perms(0755));
  std::filesystem::permissions(file_, std::filesystem::perms(0222));
  if (formerUser == 0) {  // For whom everything is readable.
    ASSERT_EQ(0, seteuid(65534));
  }
  client.Publish(EventWith("one"));
  client.Publish(EventWith("two"));

  EXPECT_EQ(0, seteuid(formerUser));
  std::filesystem::permissions(file_, std::filesystem::perms(0666));
  EXPECT_EQ((Texts{"one", "two"}), XmlLog(file_).Messages());
}

}  // namespace
