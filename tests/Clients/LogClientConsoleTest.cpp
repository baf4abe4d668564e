#include "LogClientConsole.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <iomanip>
#include <iostream>
#include <stdexcept>
#include <string>

#include "LogProperties.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/Layouts.h"
#include "Support/TemporaryFolder.h"
#include "Support/TimeZone.h"

namespace {

/// Sends standard output's descriptor to a file for a scope.
class StandardOutputTo {
 public:
  explicit StandardOutputTo(const std::string& path) {
    FlushAll();
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (former_ < 0 || dup2(file, STDOUT_FILENO) < 0) throw std::runtime_error("cannot redirect");
    close(file);
  }
  ~StandardOutputTo() {
    FlushAll();
    dup2(former_, STDOUT_FILENO);
    close(former_);
  }
  StandardOutputTo(const StandardOutputTo&) = delete;
  StandardOutputTo& operator=(const StandardOutputTo&) = delete;

 private:
  const int former_ = dup(STDOUT_FILENO);

  static void FlushAll() {
    std::cout.flush();
    std::fflush(stdout);
  }
};

/// The bytes that have arrived on standard output's descriptor when the function returns.
std::string OutputOf(const std::function<void()>& act) {
  const TemporaryFolder folder;
  const StandardOutputTo redirection(folder.Path("output"));
  act();
  return Content(folder.Path("output"));
}

/// Lets std::cout write to another buffer for a scope, with a state and settings of its own.
class CoutTo {
 public:
  explicit CoutTo(std::streambuf& buffer) : settings_(nullptr), former_(std::cout.rdbuf(&buffer)) {
    settings_.copyfmt(std::cout);
  }
  ~CoutTo() {
    std::cout.rdbuf(former_);
    std::cout.copyfmt(settings_);
  }
  CoutTo(const CoutTo&) = delete;
  CoutTo& operator=(const CoutTo&) = delete;

 private:
  std::ios settings_;
  std::streambuf* former_;
};

class LogClientConsoleTest : public testing::Test {
 protected:
  LogClientConsoleTest() { SetTimeZone("UTC0"); }

  FlushCounter buffer_;
};

TEST_F(LogClientConsoleTest, WritesToStandardOutputAtOnceWhateverItsProperties) {
  LogProperties properties;
  properties.AddProperty("filename", "/nowhere/app.log");
  properties.AddProperty("layout", "LogLayoutMessage");
  LogClientConsole plain;
  LogClientConsole configured(properties);

  for (LogClientConsole* const client : {&plain, &configured}) {
    EXPECT_TRUE(client->IsInitialize());
    EXPECT_EQ("2024-03-05T14:07:09 || disk full\n",
              OutputOf([&] { EXPECT_TRUE(client->Publish(EventWith("disk full", 99))); }));
    client->SetLayout(
        new FunctionLayout([](std::ostream& out, const LogEvent&) { out << "half"; }));
    EXPECT_EQ("half", OutputOf([&] { client->Publish(EventWith("x")); }));
  }
}

TEST_F(LogClientConsoleTest, FlushesOnceAfterEachEvent) {
  LogClientConsole client;
  client.SetLayout("LogLayoutMessage");
  const CoutTo redirection(buffer_);

  EXPECT_TRUE(client.Publish(EventWith("one")));
  EXPECT_EQ(1, buffer_.flushes);
  EXPECT_TRUE(client.Publish(EventWith("two")));

  EXPECT_EQ(2, buffer_.flushes);
  EXPECT_EQ("one\ntwo\n", buffer_.str());
}

TEST_F(LogClientConsoleTest, WritesNothingWithoutALayout) {
  LogClientConsole client;
  const CoutTo redirection(buffer_);

  EXPECT_TRUE(client.SetLayout(nullptr));
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  EXPECT_FALSE(client.SetLayout("LogLayoutmessage"));
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  EXPECT_EQ(0, buffer_.flushes);
  EXPECT_TRUE(client.SetLayout("LogLayoutMessage"));
  EXPECT_TRUE(client.Publish(EventWith("disk full")));

  EXPECT_EQ("disk full\n", buffer_.str());
}

TEST_F(LogClientConsoleTest, KeepsTheNumberBaseOfStandardOutput) {
  LogClientConsole client;
  client.SetLayout("LogLayoutExtended");
  const CoutTo redirection(buffer_);
  std::cout << std::hex << std::showbase;

  client.Publish(EventWith("disk full", 99));
  client.Publish(EventWith("again", 99));

  EXPECT_EQ(
      "2024-03-05T14:07:09 || file.cpp 0x2a disk full\n"
      "2024-03-05T14:07:09 || file.cpp 0x2a again\n",
      buffer_.str());
}

TEST_F(LogClientConsoleTest, AppliesTheWidthOfStandardOutputToTheFirstPiece) {
  LogClientConsole client;
  client.SetLayout("LogLayoutMessage");
  const CoutTo redirection(buffer_);
  std::cout << std::setw(12) << std::setfill('.');

  client.Publish(EventWith("disk full"));
  client.Publish(EventWith("again"));

  EXPECT_EQ("...disk full\nagain\n", buffer_.str());
}

TEST_F(LogClientConsoleTest, LeavesAFailedStandardOutputAsItIs) {
  LogClientConsole client;
  const CoutTo redirection(buffer_);
  std::cout.setstate(std::ios_base::failbit);

  EXPECT_TRUE(client.Publish(EventWith("lost")));

  EXPECT_EQ(std::ios_base::failbit, std::cout.rdstate());
  EXPECT_EQ("", buffer_.str());
}

TEST_F(LogClientConsoleTest, LetsALayoutsExceptionPass) {
  LogClientConsole client;
  client.SetLayout(new FunctionLayout([](std::ostream& out, const LogEvent& event) {
    out << event.GetLogMessage();
    throw std::runtime_error("no");
  }));
  const CoutTo redirection(buffer_);

  EXPECT_THROW(client.Publish(EventWith("half")), std::runtime_error);

  EXPECT_EQ("half", buffer_.str());
}

TEST_F(LogClientConsoleTest, DropsEventsWhileNotInitialised) {
  LogClientConsole client;
  client.SetLayout(nullptr);
  client.Init();
  const CoutTo redirection(buffer_);

  EXPECT_FALSE(client.Publish(EventWith("lost")));

  EXPECT_EQ("", buffer_.str());
}

}  // namespace
