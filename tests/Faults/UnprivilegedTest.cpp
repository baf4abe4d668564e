// A user who may not do with a file or its folder what a client would.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientXml.h"
#include "Support/ClientAmongOthers.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/Unprivileged.h"
#include "Support/XmlEntries.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using Answers = std::vector<bool>;
using Texts = std::vector<std::string>;
using std::filesystem::permissions;
using std::filesystem::perms;

/// Files in a folder in which the user may neither make nor move one.
class UnprivilegedTest : public testing::Test {
 protected:
  ~UnprivilegedTest() override { permissions(folder_.Path(), perms(0755)); }

  /// Makes the file with these rights.
  void MakeFile(const std::string& name, int rights, const std::string& content = "") {
    WriteFile(folder_.Path(name), content);
    permissions(folder_.Path(name), perms(rights));
  }
  void ForbidChanges() { permissions(folder_.Path(), perms(0555)); }
  void AllowChanges() { permissions(folder_.Path(), perms(0777)); }

  const TemporaryFolder folder_;
  const std::string file_ = folder_.Path("app.log");
};

TEST_F(UnprivilegedTest, CannotMakeAFile) {
  ForbidChanges();
  CaptureStderr();
  {
    const Unprivileged user;
    LogClientFile client(file_, true);
    ClientAmongOthers among(client);

    EXPECT_FALSE(client.IsInitialize());
    EXPECT_EQ((Answers{false, false}), among.LogAll({"lost", "lost"}));
  }

  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_FALSE(Exists(file_));
}

TEST_F(UnprivilegedTest, CannotOpenAFileThatOnlyMayBeRead) {
  MakeFile("app.log", 0444, "former\n");
  ForbidChanges();
  CaptureStderr();
  {
    const Unprivileged user;
    LogClientFile appending(file_, true);
    LogClientFile emptying(file_, false);
    LogClientRollingFile rolling(file_, 0, 1);

    EXPECT_FALSE(appending.IsInitialize());
    EXPECT_FALSE(emptying.IsInitialize());
    EXPECT_FALSE(rolling.IsInitialize());
    EXPECT_EQ((Answers{false, false}), ClientAmongOthers(appending).LogAll({"lost", "lost"}));
    EXPECT_EQ((Answers{false, false}), ClientAmongOthers(rolling).LogAll({"lost", "lost"}));
  }

  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_EQ("former\n", Content(file_));
}

TEST_F(UnprivilegedTest, GoesOnInTheLargeFileUntilItMayBeMoved) {
  MakeFile("app.log", 0666);
  MakeFile("app.log.1", 0666, "backup\n");
  ForbidChanges();
  CaptureStderr();
  {
    LogClientRollingFile client(file_, 3, 2);
    client.SetLayout("LogLayoutMessage");
    ClientAmongOthers among(client);
    {
      const Unprivileged user;

      EXPECT_EQ((Answers{false, false}), among.LogAll({"one", "two"}));
    }
    EXPECT_EQ("one\ntwo\n", Content(file_));
    EXPECT_EQ("backup\n", Content(file_ + ".1"));
    AllowChanges();
    const Unprivileged user;

    EXPECT_EQ((Answers{true, true}), among.LogAll({"six", "in"}));
  }

  EXPECT_EQ(
      "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n"
      "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n"
      "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n"
      "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n"
      "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n"
      "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n",
      GetCapturedStderr());
  EXPECT_EQ("in\n", Content(file_));
  EXPECT_EQ("one\ntwo\nsix\n", Content(file_ + ".1"));
  EXPECT_EQ("backup\n", Content(file_ + ".2"));
}

TEST_F(UnprivilegedTest, WritesAnXmlFileThatMayBeWritten) {
  MakeFile("app.log", 0666);
  ForbidChanges();
  CaptureStderr();
  {
    const Unprivileged user;
    LogClientXml client(file_, "");

    EXPECT_EQ((Answers{true, true}), ClientAmongOthers(client).LogAll({"one", "two"}));
    EXPECT_EQ((Texts{"one", "two"}), XmlLog(file_).Messages());
  }

  EXPECT_EQ("", GetCapturedStderr());
}

TEST_F(UnprivilegedTest, LeavesAnXmlFileAloneThatMayNotBeWritten) {
  MakeFile("app.log", 0444, "former\n");
  CaptureStderr();
  {
    const Unprivileged user;
    LogClientXml client(file_, "");

    EXPECT_EQ((Answers{true, true}), ClientAmongOthers(client).LogAll({"one", "two"}));
  }

  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_EQ("former\n", Content(file_));
}

}  // namespace
