// The command of the service unit, with the configurations that are shown for it.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "LogClientSocket.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/TemporaryFolder.h"

namespace {

using Words = std::vector<std::string>;

/// The words of the unit's command, with another program, configuration and port.
Words UnitCommand(const std::string& configuration) {
  const std::string unit =
      Content(std::string(PROJECT_FOLDER) + "/packaging/loggerctl-serve.service.in");
  const std::string key = "\nExecStart=";
  const std::size_t start = unit.find(key) + key.size();
  std::istringstream text(unit.substr(start, unit.find('\n', start) - start));
  Words words;
  for (std::string word; text >> word;) {
    if (word == "@CMAKE_INSTALL_FULL_BINDIR@/loggerctl") word = LOGGERCTL;
    if (word == "/etc/liblogger/server.ini") word = configuration;
    if (word == "4711") word = "0";
    words.push_back(word);
  }
  return words;
}

class ServiceUnitTest : public testing::TestWithParam<const char*> {};

TEST_P(ServiceUnitTest, WritesWhatItReceivesBelowItsFolder) {
  const TemporaryFolder folder;
  Words command{"env", "-C", folder.Path()};
  for (const std::string& word :
       UnitCommand(std::string(PROJECT_FOLDER) + "/examples/" + GetParam())) {
    command.push_back(word);
  }
  RunningProgram server(command);
  const std::string greeting = server.ReadLine();
  ASSERT_EQ(0U, greeting.find("listening on 127.0.0.1 port ")) << greeting;
  {
    LogClientSocket client("127.0.0.1", std::stoi(greeting.substr(greeting.rfind(' '))), true, 0);
    client.Publish(EventWith("disk full"));
    EXPECT_TRUE(client.SendToServer(true));
  }
  server.Signal(SIGTERM);
  const ProcessResult result = server.Wait();

  EXPECT_EQ("", result.errors);
  ASSERT_TRUE(Exists(folder.Path("collected.log")));
  const std::string line = Content(folder.Path("collected.log"));
  EXPECT_EQ(" |ERROR| file.cpp 42 disk full\n", line.substr(line.find(" |")));
}

INSTANTIATE_TEST_SUITE_P(Examples, ServiceUnitTest,
                         testing::Values("server.ini", "server_logrotate.ini"));

}  // namespace
