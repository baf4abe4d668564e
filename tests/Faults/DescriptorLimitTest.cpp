// No descriptors left.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "LogClientFactory.h"
#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "LogConfiguratorIni.h"
#include "LogConfiguratorXml.h"
#include "SocketLogServer.h"
#include "Support/ClientAmongOthers.h"
#include "Support/Descriptors.h"
#include "Support/Files.h"
#include "Support/NoDescriptorsLeft.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlConfiguration.h"
#include "Support/XmlEntries.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using Answers = std::vector<bool>;
using Texts = std::vector<std::string>;

class DescriptorLimitTest : public testing::Test {
 protected:
  DescriptorLimitTest() { CaptureStderr(); }

  const TemporaryFolder folder_;
  const std::string file_ = folder_.Path("app.log");
};

TEST_F(DescriptorLimitTest, KeepsAFileFromBeingOpened) {
  std::unique_ptr<LogClientFile> client;
  {
    const NoDescriptorsLeft shortage;
    client = std::make_unique<LogClientFile>(file_, true);
  }
  ClientAmongOthers among(*client);

  EXPECT_FALSE(client->IsInitialize());
  EXPECT_EQ((Answers{false, false}), among.LogAll({"lost", "lost"}));
  EXPECT_TRUE(client->Init());
  EXPECT_TRUE(among.Log("kept"));

  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_EQ(1U, Lines(file_).size());
}

TEST_F(DescriptorLimitTest, DoesNotMatterToAFileThatIsOpen) {
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);
  {
    const NoDescriptorsLeft shortage;

    EXPECT_EQ((Answers{true, true}), among.LogAll({"one", "two"}));
  }

  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_EQ("one\ntwo\n", Content(file_));
}

TEST_F(DescriptorLimitTest, DoesNotMatterToARolloverWhichClosesOneBefore) {
  LogClientRollingFile client(file_, 0, 2);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);
  {
    const NoDescriptorsLeft shortage;

    EXPECT_EQ((Answers{true, true, true}), among.LogAll({"one", "two", "three"}));
  }

  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_EQ("three\n", Content(file_ + ".1"));
  EXPECT_EQ("two\n", Content(file_ + ".2"));
}

TEST_F(DescriptorLimitTest, PutsAnXmlFileOffUntilThereAreSome) {
  LogClientXml client(file_, "");
  ClientAmongOthers among(client);
  {
    const NoDescriptorsLeft shortage;

    EXPECT_EQ((Answers{true, true}), among.LogAll({"one", "two"}));
  }
  EXPECT_FALSE(Exists(file_));

  EXPECT_TRUE(among.Log("three"));
  {
    const NoDescriptorsLeft shortage;

    EXPECT_TRUE(among.Log("four"));  // The file is open now.
  }

  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_EQ((Texts{"one", "two", "three", "four"}), XmlLog(file_).Messages());
}

TEST_F(DescriptorLimitTest, KeepsASocketClientFromConnecting) {
  RecordingClient target;
  SocketLogServer server;
  ASSERT_TRUE(server.Start(&target, "127.0.0.1", 0, 0));
  const long descriptors = OpenDescriptors();
  std::unique_ptr<LogClientSocket> client;
  {
    const int spare = dup(STDERR_FILENO);
    const NoDescriptorsLeft shortage;
    close(spare);  // The client's own socket takes it; the connection would need another.
    client = std::make_unique<LogClientSocket>("127.0.0.1", server.GetPort(), false, 0);
  }
  EXPECT_EQ(descriptors + 1, OpenDescriptors());  // The client's own socket.
  EXPECT_EQ("LOGGER ERROR at Init [61]: 'Too many open files'\n", GetCapturedStderr());

  ClientAmongOthers among(*client);
  EXPECT_EQ((Answers{false, false}), among.LogAll({"one", "two"}));
  client->Init();
  EXPECT_TRUE(among.Log("three"));  // With those that were queued.
  EXPECT_TRUE(client->SendToServer(true));

  EXPECT_EQ((Texts{"one", "two", "three"}), target.Messages());
}

TEST_F(DescriptorLimitTest, KeepsAConfigurationFromBeingRead) {
  const std::string ini = folder_.Path("app.ini");
  const std::string xml = folder_.Path("app.xml");
  WriteFile(ini, "loglevel = 7\nloglevel.7.name = SEVEN\n");
  WriteFile(xml, XmlConfiguration().Text());
  {
    const NoDescriptorsLeft shortage;

    EXPECT_FALSE(LogConfiguratorIni().ReadConfiguration(ini));
    EXPECT_FALSE(LogConfiguratorXml().ReadConfiguration(xml));
  }
  GetCapturedStderr();  // libxml2 says why.

  EXPECT_FALSE(Logger::GetLogLevelManager()->ExistLogLevel(7));
  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("a"));
}

}  // namespace
