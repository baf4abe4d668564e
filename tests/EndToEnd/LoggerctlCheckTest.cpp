#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/TemporaryFolder.h"

namespace {

typedef std::vector<std::string> Words;

constexpr const char* kGood =
    "loglevel = 1\nlogclient = c\nlogclient.c.type = LogClientConsole\n"
    "logclient.c.handler = default\n";
const std::string kWarned = std::string(kGood) + "logging = false\n";
const std::string kWrong = std::string(kGood) + "logging = False\n";

class LoggerctlCheckTest : public testing::Test {
 protected:
  LoggerctlCheckTest() {
    std::filesystem::current_path(folder_.Path());
    WriteFile("good.ini", kGood);
    WriteFile("warned.ini", kWarned);
    WriteFile("wrong.ini", kWrong);
  }
  ~LoggerctlCheckTest() override { std::filesystem::current_path("/"); }

  static ProcessResult Check(const Words& words) {
    Words command{LOGGERCTL, "check"};
    command.insert(command.end(), words.begin(), words.end());
    return RunProgram(command);
  }

  const TemporaryFolder folder_;
};

void Expect(int exitCode, const std::string& output, const std::string& errors,
            const ProcessResult& result) {
  EXPECT_EQ(exitCode, result.exitCode);
  EXPECT_EQ(output, result.output);
  EXPECT_EQ(errors, result.errors);
}

constexpr const char* kWarning =
    "warned.ini:5: warning: logging is off: nothing in the file is configured\n";
constexpr const char* kError =
    "wrong.ini:5: error: 'False' leaves logging on: only 'false' switches it off; did you mean "
    "'false'?\n";

TEST_F(LoggerctlCheckTest, PrintsNothingAboutAFileWithoutFault) {
  Expect(0, "", "", Check({"good.ini"}));
}

TEST_F(LoggerctlCheckTest, FailsForErrors) {
  Expect(1, kError, "", Check({"wrong.ini"}));
  Expect(0, kWarning, "", Check({"warned.ini"}));
}

TEST_F(LoggerctlCheckTest, FailsForWarningsWhenItIsStrict) {
  Expect(1, kWarning, "", Check({"--strict", "warned.ini"}));
  Expect(0, "", "", Check({"--strict", "good.ini"}));
}

TEST_F(LoggerctlCheckTest, ChecksSeveralFiles) {
  Expect(1, std::string(kWarning) + kError, "", Check({"warned.ini", "good.ini", "wrong.ini"}));
}

TEST_F(LoggerctlCheckTest, ReportsFilesThatCannotBeRead) {
  Expect(2, kError,
         "missing.ini: error: the file cannot be read: No such file or directory\n"
         ".: error: the file cannot be read: Is a directory\n"
         ": error: the file cannot be read: No such file or directory\n",
         Check({"missing.ini", ".", "", "wrong.ini"}));
}

TEST_F(LoggerctlCheckTest, TakesFileNamesAsTheyStand) {
  WriteFile("[a,b]", kWrong);

  EXPECT_EQ(0U, Check({"[a,b]"}).output.find("[a,b]:5: error: "));
}

TEST_F(LoggerctlCheckTest, ReadsAPipe) {
  const ProcessResult result =
      RunProgram({"bash", "-c", LOGGERCTL " check <(cat good.ini) <(cat wrong.ini)"});

  EXPECT_EQ(1, result.exitCode);
  EXPECT_NE(std::string::npos, result.output.find(":5: error: 'False' leaves logging on"));
}

TEST_F(LoggerctlCheckTest, DetectsTheFormByTheContentUnlessItIsGiven) {
  WriteFile("document", "\n<configlogger/>\n");
  const std::string asXml =
      "document:2: error: Element 'configlogger': Missing child element(s). Expected is ( logging "
      ")\n";

  Expect(1, asXml, "", Check({"document"}));
  Expect(1, asXml, "", Check({"--format", "xml", "document"}));
  Expect(
      1,
      "document:1: warning: no levels are registered: nothing is logged unless the application "
      "registers some; list their numbers in 'loglevel' (if the application registers them: "
      "--level "
      "NUMBER)\n"
      "document:1: warning: there are no clients: nothing is written; name some in 'logclient'\n"
      "document:2: error: there is no '=' in the line, which is ignored; write key = value, or # "
      "before a comment\n",
      "", Check({"--format", "ini", "document"}));
}

TEST_F(LoggerctlCheckTest, PrintsJson) {
  Expect(1,
         "[\n"
         "  {\n"
         "    \"file\": \"wrong.ini\",\n"
         "    \"line\": 5,\n"
         "    \"severity\": \"error\",\n"
         "    \"text\": \"'False' leaves logging on: only 'false' switches it off\",\n"
         "    \"suggestion\": \"did you mean 'false'?\"\n"
         "  }\n"
         "]\n",
         "", Check({"--json", "good.ini", "wrong.ini"}));
  Expect(0, "[]\n", "", Check({"--json", "good.ini"}));
  Expect(2,
         "[\n"
         "  {\n"
         "    \"file\": \"missing.ini\",\n"
         "    \"line\": null,\n"
         "    \"severity\": \"error\",\n"
         "    \"text\": \"the file cannot be read: No such file or directory\",\n"
         "    \"suggestion\": \"\"\n"
         "  }\n"
         "]\n",
         "", Check({"--json", "missing.ini"}));
}

TEST_F(LoggerctlCheckTest, PrintsJsonOfBytesThatAreNoText) {
  WriteFile("bytes.ini", std::string(kGood) + "a\xFF\"\x1B = 1\n");

  const ProcessResult result = Check({"--json", "bytes.ini"});

  EXPECT_NE(std::string::npos,
            result.output.find("\"key 'a\\\\xff\\\"\\\\x1b' is read by nothing\""))
      << result.output;
}

TEST_F(LoggerctlCheckTest, SendsNoControlCharactersToATerminal) {
  WriteFile("bytes.ini", std::string(kGood) + "a\x1B[2J = 1\n");

  Expect(1, "bytes.ini:5: error: key 'a\\x1b[2J' is read by nothing\n", "", Check({"bytes.ini"}));

  const std::string csiOfEightBits = "\xC2\x9B";
  WriteFile("bytes.ini", std::string(kGood) + "a" + csiOfEightBits + "2J = 1\n");

  Expect(1, "bytes.ini:5: error: key 'a\\xc2\\x9b2J' is read by nothing\n", "",
         Check({"bytes.ini"}));
}

TEST_F(LoggerctlCheckTest, CutsLongTextsBetweenCharacters) {
  std::string umlauts;
  for (int i = 0; i < 100; ++i) umlauts += "\xC3\xA4";
  WriteFile("long.ini", std::string(kGood) + "a" + umlauts + " = 1\n");

  Expect(1, "long.ini:5: error: key 'a" + umlauts.substr(0, 118) + "...' is read by nothing\n", "",
         Check({"long.ini"}));
}

TEST_F(LoggerctlCheckTest, KnowsWhatTheApplicationRegisters) {
  WriteFile("own.ini",
            "loglevel = 1\nlogclient = c\nlogclient.c.type = Syslog\n"
            "logclient.c.handler = default\nlogclient.c.layout = Short\n");

  Expect(0, "", "", Check({"--kind", "Syslog", "--layout", "Short", "own.ini"}));
  Expect(1,
         "own.ini:3: error: client 'c' is left out: there is no kind of client 'Syslog'; if the "
         "application registers it: --kind Syslog\n"
         "own.ini:5: error: client 'c' is not attached: there is no layout 'Short'; if the "
         "application "
         "registers it: --layout Short\n",
         "", Check({"own.ini"}));
}

TEST_F(LoggerctlCheckTest, KnowsWhatTheApplicationMakes) {
  WriteFile(
      "own.ini",
      "loglevel = 1\nloghandler = default\nloghandler.default.level.5 = false\nlogclient = c\n"
      "logclient.c.type = LogClientConsole\nlogclient.c.handler = appmade\n");

  EXPECT_EQ(
      "own.ini:2: warning: handler 'default' reaches no client: what is logged on it is "
      "written nowhere; attach a client to it or below it, or remove it\n",
      Check({"--handler", "appmade", "--level", "5", "own.ini"}).output);
  Expect(2, "", "loggerctl: --level: 'x' is not the number of a level\n",
         Check({"--level", "x", "own.ini"}));
}

// Terminals.

/// The command's output on a terminal, with the variables in its environment.
std::string OnATerminal(const Words& environment) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    unsetenv("NO_COLOR");
    setenv("TERM", "xterm", 1);
    for (const std::string& variable : environment) putenv(const_cast<char*>(variable.c_str()));
    execl(LOGGERCTL, LOGGERCTL, "check", "wrong.ini", nullptr);
    _exit(127);
  }
  std::string text;
  std::array<char, 4096> buffer{};
  for (ssize_t count; (count = read(terminal, buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  close(terminal);
  waitpid(child, nullptr, 0);
  return text;
}

TEST_F(LoggerctlCheckTest, HasColoursOnATerminalOnly) {
  const std::string plain =
      "wrong.ini:5: error: 'False' leaves logging on: only 'false' switches it off; did you mean "
      "'false'?\r\n";

  EXPECT_EQ(
      "\x1b[1mwrong.ini:5:\x1b[0m \x1b[1;31merror:\x1b[0m 'False' leaves logging on: only 'false' "
      "switches it off; did you mean 'false'?\r\n",
      OnATerminal({}));
  EXPECT_EQ(plain, OnATerminal({"NO_COLOR=1"}));
  EXPECT_EQ(plain, OnATerminal({"TERM=dumb"}));
}

TEST_F(LoggerctlCheckTest, LooksAtTheMachineWhenAsked) {
  WriteFile("system.ini",
            "loglevel = 1\nlogclient = c\nlogclient.c.handler = default\n"
            "logclient.c.type = LogClientFile\nlogclient.c.parameter.0.name = filename\n"
            "logclient.c.parameter.0.value = no/app.log\n");

  Expect(0, "", "", Check({"system.ini"}));
  Expect(1,
         "system.ini:6: error: folder 'no': No such file or directory; make it before the "
         "application starts\n",
         "", Check({"--system", "system.ini"}));
  EXPECT_FALSE(Exists("no"));
}

#ifdef STRACE_WORKS  // A sanitizer does not go together with it.
TEST_F(LoggerctlCheckTest, WritesAndConnectsNowhere) {
  const std::string client =
      "loglevel = 1\nlogclient = c\nlogclient.c.handler = default\n"
      "logclient.c.parameter.0.name = filename\n";
  WriteFile("xml.ini", client +
                           "logclient.c.type = LogClientXML\n"
                           "logclient.c.parameter.0.value = app.log\n"
                           "logclient.c.parameter.1.name = escapetext\n"
                           "logclient.c.parameter.1.value = true\n");
  WriteFile("empty.ini", client +
                             "logclient.c.type = LogClientFile\n"
                             "logclient.c.parameter.0.value = full.log\n"
                             "logclient.c.parameter.1.name = fileappend\n"
                             "logclient.c.parameter.1.value = false\n");
  WriteFile("full.log", "kept");
  WriteFile("socket.ini",
            "loglevel = 1\nlogclient = c\nlogclient.c.type = LogClientSocket\n"
            "logclient.c.handler = default\nlogclient.c.parameter.0.name = serverip\n"
            "logclient.c.parameter.0.value = localhost\nlogclient.c.parameter.1.name = serverport\n"
            "logclient.c.parameter.1.value = 4711\nlogclient.c.parameter.2.name = timeout\n"
            "logclient.c.parameter.2.value = 5000\n");

  const ProcessResult result = RunProgram(
      {"strace", "-f", "-qq", "-o", "calls", "-e",
       "trace=%network,open,openat,creat,rename,renameat,renameat2,unlink,unlinkat,mkdir,"
       "mkdirat,truncate,ftruncate,chmod,fchmod,link,linkat,symlink,symlinkat,pwrite64",
       LOGGERCTL, "check", "--system", "xml.ini", "empty.ini", "socket.ini"});

  Expect(0, "", "", result);
  EXPECT_FALSE(Lines("calls").empty());
  for (const std::string& call : Lines("calls")) {
    const bool onlyReads =
        call.find("openat(") != std::string::npos && call.find("O_RDONLY") != std::string::npos;
    EXPECT_TRUE(onlyReads) << call;
  }
  EXPECT_EQ("kept", Content("full.log"));
  EXPECT_FALSE(Exists("app.log"));
}
#endif

}  // namespace
