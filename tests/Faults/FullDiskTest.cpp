// Disks that have no room left.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "LogClientConsole.h"
#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "SocketLogServer.h"
#include "Support/ClientAmongOthers.h"
#include "Support/Descriptors.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/SmallDisk.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlEntries.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using Answers = std::vector<bool>;
using Texts = std::vector<std::string>;

constexpr std::size_t kPages = 4;
constexpr std::size_t kRoom = kPages * SmallDisk::kPage;

/// A message that makes a line of 1,000 bytes.
std::string Kilobyte(char letter) { return std::string(999, letter); }

class FullDiskTest : public testing::TestWithParam<SmallDisk::Kind> {
 protected:
  FullDiskTest() { CaptureStderr(); }
  ~FullDiskTest() override {
    EXPECT_EQ("", GetCapturedStderr());
    EXPECT_EQ(descriptors_, OpenDescriptors());
  }

  const long descriptors_ = OpenDescriptors();
  SmallDisk disk_{GetParam(), kPages};
};

INSTANTIATE_TEST_SUITE_P(EitherKind, FullDiskTest,
                         testing::Values(SmallDisk::Kind::Mounted, SmallDisk::Kind::Imitated));

TEST_P(FullDiskTest, TakesOfAFileWhatFitsAndNothingMore) {
  LogClientFile client(disk_.Path("app.log"), true);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);
  std::string expected;
  for (int i = 0; i < 17; ++i) {
    EXPECT_TRUE(among.Log(Kilobyte('x'))) << i;  // Also the last, of which a part fits.
    expected += Kilobyte('x') + "\n";
  }

  EXPECT_EQ((Answers{false, false}), among.LogAll({"lost", "lost"}));

  EXPECT_TRUE(expected.substr(0, kRoom) == Content(disk_.Path("app.log")));
}

TEST_P(FullDiskTest, KeepsAFileClientSilentUntilItIsAskedToReopenItsFile) {
  WriteFile(disk_.Path("other"), std::string(kRoom, 'x'));
  LogClientFile client(disk_.Path("app.log"), true);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);
  EXPECT_EQ((Answers{true, false}), among.LogAll({"lost", "lost"}));

  std::filesystem::remove(disk_.Path("other"));
  EXPECT_EQ((Answers{false, false}), among.LogAll({"lost", "lost"}));
  EXPECT_EQ("", Content(disk_.Path("app.log")));

  client.ReopenAtNextEvent();
  EXPECT_EQ((Answers{true, true}), among.LogAll({"one", "two"}));
  EXPECT_EQ("one\ntwo\n", Content(disk_.Path("app.log")));
}

TEST_P(FullDiskTest, IsNeverReachedByARollingClientWhoseBackupsFit) {
  LogClientRollingFile client(disk_.Path("app.log"), 3999, 2);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);

  for (int i = 0; i < 50; ++i) EXPECT_TRUE(among.Log(Kilobyte('x'))) << i;

  const std::string full =
      Kilobyte('x') + "\n" + Kilobyte('x') + "\n" + Kilobyte('x') + "\n" + Kilobyte('x') + "\n";
  EXPECT_TRUE(full == Content(disk_.Path("app.log.1")));
  EXPECT_TRUE(full == Content(disk_.Path("app.log.2")));
  EXPECT_TRUE(full.substr(0, 2000) == Content(disk_.Path("app.log")));
}

TEST_P(FullDiskTest, SilencesARollingClientWhoseBackupsDoNotFit) {
  LogClientRollingFile client(disk_.Path("app.log"), 3999, 9);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);
  for (int i = 0; i < 17; ++i) EXPECT_TRUE(among.Log(Kilobyte('x'))) << i;  // The last is lost.

  EXPECT_EQ((Answers{false, false}), among.LogAll({"lost", "lost"}));

  for (const char* const number : {".1", ".2", ".3", ".4"}) {
    EXPECT_EQ(4000U, Content(disk_.Path("app.log") + number).size()) << number;
  }
  EXPECT_EQ("", Content(disk_.Path("app.log")));
}

TEST_P(FullDiskTest, LeavesAnXmlFileWholeAndHasAllOfItWhenThereIsRoomAgain) {
  WriteFile(disk_.Path("other"), std::string(kRoom - SmallDisk::kPage, 'x'));
  LogClientXml client(disk_.Path("log.xml"), "");
  ClientAmongOthers among(client);
  const Texts messages{Kilobyte('a'), Kilobyte('b'), Kilobyte('c'), Kilobyte('d')};
  EXPECT_EQ((Answers{true, true, true, true}), among.LogAll(messages));

  EXPECT_EQ(Texts(messages.begin(), messages.begin() + 3),
            XmlLog(disk_.Path("log.xml")).Messages());
  std::filesystem::remove(disk_.Path("other"));
  EXPECT_TRUE(among.Log("e"));

  EXPECT_EQ((Texts{messages[0], messages[1], messages[2], messages[3], "e"}),
            XmlLog(disk_.Path("log.xml")).Messages());
}

/// The effect of a disk without any room on each kind of client.
class DevFullTest : public testing::Test {
 protected:
  DevFullTest() {
    std::filesystem::create_symlink("/dev/full", folder_.Path("app.log"));
    CaptureStderr();
  }
  ~DevFullTest() override { EXPECT_EQ("", GetCapturedStderr()); }

  const TemporaryFolder folder_;
};

TEST_F(DevFullTest, SilencesAFileClientAfterTheFirstEvent) {
  LogClientFile client(folder_.Path("app.log"), true);

  EXPECT_EQ((Answers{true, false, false}), ClientAmongOthers(client).LogAll({"a", "b", "c"}));
}

TEST_F(DevFullTest, SilencesARollingClientAfterTheFirstEvent) {
  LogClientRollingFile client(folder_.Path("app.log"), 0, 3);

  EXPECT_EQ((Answers{true, false, false}), ClientAmongOthers(client).LogAll({"a", "b", "c"}));

  EXPECT_FALSE(Exists(folder_.Path("app.log.1")));
}

TEST_F(DevFullTest, IsNotReportedByAnXmlClient) {
  LogClientXml client(folder_.Path("app.log"), "");

  EXPECT_EQ((Answers{true, true, true}), ClientAmongOthers(client).LogAll({"a", "b", "c"}));
}

TEST_F(DevFullTest, IsNotReportedByAConsoleClient) {
  LogClientConsole client;
  Answers answers;
  {
    std::cout.flush();
    const int former = dup(STDOUT_FILENO);
    const int full = open("/dev/full", O_WRONLY);
    dup2(full, STDOUT_FILENO);
    close(full);
    answers = ClientAmongOthers(client).LogAll({"a", "b", "c"});
    std::cout.clear();
    dup2(former, STDOUT_FILENO);
    close(former);
  }

  EXPECT_EQ((Answers{true, true, true}), answers);
}

TEST_F(DevFullTest, DoesNotKeepALogServerFromServing) {
  LogClientFile full(folder_.Path("app.log"), true);
  ClientAmongOthers among(full);
  RecordingClient served;
  among.Handler().AddLogClient(&served);
  SocketLogServer server;
  ASSERT_TRUE(server.Start(&among.Handler(), "127.0.0.1", 0, 0));
  among.Handler().RemoveLogClientAt(2);  // These compare with what is logged here.
  among.Handler().RemoveLogClientAt(0);
  LogClientSocket sender("127.0.0.1", server.GetPort(), true, 0);
  for (const char* const text : {"a", "b", "c"}) sender.Publish(EventWith(text));

  EXPECT_TRUE(sender.SendToServer(true));

  EXPECT_EQ((Texts{"a", "b", "c"}), served.Messages());
  server.Stop();
  EXPECT_EQ(3U, server.GetEventCount());
}

}  // namespace
