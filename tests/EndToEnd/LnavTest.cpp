// lnav reads log files with the format that is installed for it.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/TemporaryFolder.h"

namespace {

using Words = std::vector<std::string>;

Words operator+(Words first, const Words& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

class LnavTest : public testing::Test {
 protected:
  LnavTest() {
    const ProcessResult result =
        Lnav({"-i", std::string(PROJECT_FOLDER) + "/share/liblogger/lnav/liblogger.json"});
    EXPECT_EQ(0, result.exitCode) << result.errors;
  }

  ProcessResult Lnav(const Words& words) const {
    return RunProgram(
        Words{"env", "HOME=" + folder_.Path(), "XDG_CONFIG_HOME=" + folder_.Path(), "lnav"} +
        words);
  }

  /// Logs a message into a file of this layout.
  void Log(const std::string& layout, const std::string& level, const std::string& message,
           const Words& source = {}) const {
    WriteFile(folder_.Path("log.ini"),
              "loglevel = 1 2 3 4 5 6\nloglevel.1.name = FATAL\nloglevel.2.name = ERROR\n"
              "loglevel.3.name = Warning\nloglevel.4.name = INFO\nloglevel.5.name = debug\n"
              "logclient = file\nlogclient.file.type = LogClientFile\n"
              "logclient.file.handler = default\nlogclient.file.layout = " +
                  layout +
                  "\nlogclient.file.parameter.0.name = filename\n"
                  "logclient.file.parameter.0.value = " +
                  Logged() + "\n");
    const ProcessResult result = RunProgram(
        Words{LOGGERCTL, "write", "--config", folder_.Path("log.ini"), "--level", level} + source +
        Words{"--", message});
    EXPECT_EQ(0, result.exitCode) << result.errors;
  }
  std::string Logged() const { return folder_.Path("app.log"); }

  /// lnav's result of a query on the file, without the line of headings.
  std::string Answer(const std::string& question) const {
    const ProcessResult result =
        Lnav({"-n", "-c", ";" + question, "-c", ":write-csv-to -", Logged()});
    EXPECT_EQ(0, result.exitCode) << result.errors;
    EXPECT_EQ("", result.errors);
    return result.output.substr(result.output.find('\n') + 1);
  }

  TemporaryFolder folder_;
};

TEST_F(LnavTest, TakesTheFormatWithoutAComplaint) {
  const ProcessResult result = Lnav({"-C"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.output + result.errors);
}

TEST_F(LnavTest, ReadsTheStandardLayout) {
  Log("LogLayoutStandard", "ERROR", "disk | full");
  Log("LogLayoutStandard", "INFO", "main.cpp 42 is part of the message");
  Log("LogLayoutStandard", "6", "");

  EXPECT_EQ(
      "error,ERROR,<NULL>,<NULL>,disk | full\n"
      "info,INFO,<NULL>,<NULL>,main.cpp 42 is part of the message\n"
      "info,6,<NULL>,<NULL>,\n",
      Answer("SELECT log_level, level, source_file, source_line, log_body FROM liblogger_log"));
}

TEST_F(LnavTest, ReadsTheExtendedLayout) {
  Log("LogLayoutExtended", "ERROR", "disk full", {"--file", "src/main.cpp", "--line", "42"});
  Log("LogLayoutExtended", "INFO", "no place");

  EXPECT_EQ(
      "error,ERROR,src/main.cpp,42,disk full\n"
      "info,INFO,,0,no place\n",
      Answer("SELECT log_level, level, source_file, source_line, log_body FROM liblogger_log"));
}

TEST_F(LnavTest, ReadsTheTime) {
  Log("LogLayoutStandard", "INFO", "now");

  const std::string line = Lines(Logged()).front();
  EXPECT_EQ(line.substr(0, 10) + " " + line.substr(11, 8) + ".000\n",
            Answer("SELECT log_time FROM liblogger_log"));
}

TEST_F(LnavTest, KeepsTheLinesOfAMessageTogether) {
  Log("LogLayoutStandard", "INFO", "one\ntwo");
  Log("LogLayoutStandard", "INFO", "three");

  EXPECT_EQ("\"one\ntwo\"\nthree\n", Answer("SELECT log_body FROM liblogger_log"));
}

TEST_F(LnavTest, CountsTheLinesOfEachLevel) {
  for (const char* const level : {"FATAL", "ERROR", "ERROR", "Warning", "INFO", "debug"}) {
    Log("LogLayoutStandard", level, "text");
  }

  EXPECT_EQ("debug,1\ninfo,1\nwarning,1\nerror,2\nfatal,1\n",
            Answer("SELECT log_level, count(*) FROM liblogger_log GROUP BY log_level"));
}

}  // namespace
