// Files of a log server that logrotate rotates, with the sample that is installed for it.

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "LogClientSocket.h"
#include "Support/Events.h"
#include "Support/Eventually.h"
#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/ServingProgram.h"
#include "Support/TemporaryFolder.h"

namespace {

using Words = std::vector<std::string>;

constexpr int kRotations = 5;

/// Sends the messages 0, 1, 2, ... one by one, until it is stopped.
class SteadyClient {
 public:
  explicit SteadyClient(int port)
      : client_("127.0.0.1", port, false, 0), thread_([this] { Run(); }) {}
  ~SteadyClient() {
    if (thread_.joinable()) End();
  }
  SteadyClient(const SteadyClient&) = delete;
  SteadyClient& operator=(const SteadyClient&) = delete;

  int Sent() const { return sent_; }
  /// Returns when the server has taken everything.
  void End() {
    isEnding_ = true;
    thread_.join();
    EXPECT_TRUE(client_.SendToServer(true));
  }

 private:
  LogClientSocket client_;
  std::atomic<int> sent_{0};
  std::atomic<bool> isEnding_{false};
  std::thread thread_;

  void Run() {
    while (!isEnding_ && client_.Publish(EventWith(std::to_string(sent_)))) ++sent_;
  }
};

class LogrotateTest : public testing::Test {
 protected:
  LogrotateTest() {
    CopyWith("examples/server_logrotate.ini", " collected.log", " " + Log(), "serve.ini");
    CopyWith("share/liblogger/logrotate/loggerctl-serve", "\n/var/log/liblogger/",
             "\n" + folder_.Path() + "/", "sample");
    std::filesystem::permissions(folder_.Path("sample"), std::filesystem::perms(0644));
  }

  /// Puts a file of the project into the folder, with something else in the one place of a text.
  void CopyWith(const std::string& file, const std::string& text, const std::string& other,
                const std::string& copy) const {
    std::string content = Content(std::string(PROJECT_FOLDER) + "/" + file);
    const std::size_t place = content.find(text);
    if (place == std::string::npos) throw std::runtime_error(file + " does not say" + text);
    WriteFile(folder_.Path(copy), content.replace(place, text.size(), other));
  }

  std::string Log() const { return folder_.Path("collected.log"); }

  /// Stands in for the service manager, whose unit reloads with this signal.
  void MakeServiceManager(pid_t server) const {
    const std::string path = folder_.Path("systemctl");
    WriteFile(path,
              "#!/bin/sh\n[ \"$*\" = 'try-reload-or-restart loggerctl-serve.service' ] || exit 1\n"
              "kill -HUP " +
                  std::to_string(server) + "\n");
    std::filesystem::permissions(path, std::filesystem::perms(0755));
  }

  void Rotate() const {
    const ProcessResult result =
        RunProgram({"env", "PATH=" + folder_.Path() + ":/usr/sbin:/usr/bin:/sbin:/bin", "logrotate",
                    "--force", "--state", folder_.Path("state"), folder_.Path("sample")});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("", result.errors);
  }

  /// The messages of all files together, from the oldest one on.
  Words Logged() const {
    std::string text;
    for (int number = kRotations; number > 1; --number) {
      text += RunProgram({"gzip", "-dc", Log() + "." + std::to_string(number) + ".gz"}).output;
    }
    WriteFile(folder_.Path("all"), text + Content(Log() + ".1") + Content(Log()));
    Words messages = Lines(folder_.Path("all"));
    for (std::string& line : messages) line.erase(0, line.rfind(' ') + 1);
    return messages;
  }

  TemporaryFolder folder_;
};

TEST_F(LogrotateTest, LosesAndDoublesNoEventOfAClientThatSendsAllTheTime) {
  ServingProgram server(LOGGERCTL,
                        {"--config", folder_.Path("serve.ini"), "--handler", "collected"});
  MakeServiceManager(server.Id());
  SteadyClient client(server.Port());

  for (int count = 0; count < kRotations; ++count) {
    const int sent = client.Sent();
    ASSERT_TRUE(Eventually([&] { return client.Sent() > sent + 100; }));
    Rotate();
    ASSERT_TRUE(Eventually([&] { return Exists(Log()); })) << "the file was not reopened";
  }
  client.End();
  EXPECT_EQ(0, server.Stop().exitCode);

  Words expected;
  for (int number = 0; number < client.Sent(); ++number) {
    expected.push_back(std::to_string(number));
  }
  EXPECT_TRUE(expected == Logged());
}

}  // namespace
