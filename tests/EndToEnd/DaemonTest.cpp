// A program may read its configuration and then become a daemon: every kind of client goes on.

#include <gtest/gtest.h>

#include <string>

#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/ServingProgram.h"
#include "Support/TemporaryFolder.h"

namespace {

const std::string kAll =
    "parent\ndaemon 0\ndaemon 1\ndaemon 2\ndaemon 3\ndaemon 4\n"
    "daemon 5\ndaemon 6\ndaemon 7\ndaemon 8\ndaemon 9\n";

class DaemonTest : public testing::Test {
 protected:
  /// A configuration with one client of this kind and with these parameters.
  static std::string With(const std::string& kind, const std::string& parameters) {
    return "loglevel = 1\nloglevel.1.name = ERROR\nloghandler = default\nlogclient = client\n"
           "logclient.client.type = " +
           kind +
           "\nlogclient.client.handler = default\nlogclient.client.layout = LogLayoutMessage\n" +
           parameters;
  }
  static std::string Parameter(int number, const std::string& name, const std::string& value) {
    const std::string key = "logclient.client.parameter." + std::to_string(number);
    return key + ".name = " + name + "\n" + key + ".value = " + value + "\n";
  }

  /// Returns when the daemon has ended too.
  ProcessResult Run(const std::string& configuration) const {
    WriteFile(folder_.Path("app.ini"), configuration);
    const ProcessResult result = RunProgram({DAEMON_PROGRAM, folder_.Path("app.ini")});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("", result.errors);
    return result;
  }

  /// The events that a server gets from a socket client with a further parameter.
  std::string ReceivedByAServer(const std::string& parameter) const {
    const std::string file = folder_.Path("served.log");
    WriteFile(folder_.Path("serve.ini"), With("LogClientFile", Parameter(0, "filename", file)));
    ServingProgram server(LOGGERCTL, {"--config", folder_.Path("serve.ini"), "--port", "0"});
    Run(With("LogClientSocket", Parameter(0, "serverip", "127.0.0.1") +
                                    Parameter(1, "serverport", std::to_string(server.Port())) +
                                    parameter));
    EXPECT_EQ(0, server.Stop().exitCode);
    return Content(file);
  }

  TemporaryFolder folder_;
};

TEST_F(DaemonTest, GoesOnAtTheServer) { EXPECT_EQ(kAll, ReceivedByAServer("")); }

TEST_F(DaemonTest, GoesOnAtTheServerWithAQueue) {
  EXPECT_EQ(kAll, ReceivedByAServer(Parameter(2, "socketasynchron", "1")));
}

TEST_F(DaemonTest, GoesOnInTheFile) {
  Run(With("LogClientFile", Parameter(0, "filename", folder_.Path("app.log"))));

  EXPECT_EQ(kAll, Content(folder_.Path("app.log")));
}

TEST_F(DaemonTest, GoesOnRollingTheFile) {
  const std::string file = folder_.Path("app.log");
  Run(With("LogClientRollingFile", Parameter(0, "filename", file) + Parameter(1, "filesize", "30") +
                                       Parameter(2, "maxbackup", "9")));

  EXPECT_EQ(kAll, Content(file + ".2") + Content(file + ".1") + Content(file));
}

TEST_F(DaemonTest, GoesOnOnTheConsole) {
  EXPECT_EQ(kAll, Run(With("LogClientConsole", "")).output);
}

}  // namespace
