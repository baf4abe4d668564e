// The common options of all commands of loggerctl, and the commands that only print.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/TemporaryFolder.h"

namespace {

typedef std::vector<std::string> Words;

ProcessResult RunLoggerctl(const Words& words) {
  Words command{LOGGERCTL};
  command.insert(command.end(), words.begin(), words.end());
  return RunProgram(command);
}

void ExpectUnusable(const std::string& errors, const ProcessResult& result) {
  EXPECT_EQ(2, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_EQ(errors, result.errors);
}

Words Commands() {
  Words names;
  std::istringstream lines(RunLoggerctl({"--help"}).output);
  bool areCommands = false;
  for (std::string line; std::getline(lines, line);) {
    if (areCommands && line.empty()) break;
    if (areCommands) names.push_back(line.substr(2, line.find(' ', 2) - 2));
    areCommands = areCommands || line == "Subcommands:";
  }
  return names;
}

TEST(LoggerctlTest, PrintsItsVersion) {
  const ProcessResult result = RunLoggerctl({"--version"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("loggerctl " PROJECT_VERSION "\n", result.output);
  EXPECT_EQ("", result.errors);
}

TEST(LoggerctlTest, HelpsWithEachCommand) {
  const Words commands = Commands();
  EXPECT_GE(commands.size(), 5U);

  for (const std::string& command : commands) {
    const ProcessResult result = RunLoggerctl({command, "--help"});

    EXPECT_EQ(0, result.exitCode) << command;
    EXPECT_EQ("", result.errors) << command;
    EXPECT_NE(std::string::npos, result.output.find("\nUsage: loggerctl " + command)) << command;
    EXPECT_NE(std::string::npos, result.output.find("\nExit code: 0 ")) << command;
  }
}

TEST(LoggerctlTest, HintsAtWhatItCanDo) {
  ExpectUnusable("loggerctl: A subcommand is required; see loggerctl --help\n", RunLoggerctl({}));
  ExpectUnusable("loggerctl: there is no command 'chekc'; did you mean 'check'?\n",
                 RunLoggerctl({"chekc"}));
  ExpectUnusable("loggerctl: there is no command 'frobnicate'; see loggerctl --help\n",
                 RunLoggerctl({"frobnicate", "--help"}));
  ExpectUnusable("loggerctl: there is no option '--bogus'; see loggerctl --help\n",
                 RunLoggerctl({"--bogus"}));
  ExpectUnusable("loggerctl: --config is required; see loggerctl write --help\n",
                 RunLoggerctl({"write"}));
  ExpectUnusable("loggerctl: FILE is required; see loggerctl check --help\n",
                 RunLoggerctl({"check"}));
  ExpectUnusable("loggerctl: there is no option '--confg'; did you mean '--config'?\n",
                 RunLoggerctl({"write", "--confg", "x"}));
  ExpectUnusable("loggerctl: there is no option '--confg'; did you mean '--config'?\n",
                 RunLoggerctl({"serve", "--port", "0", "--confg=x"}));
  ExpectUnusable("loggerctl: there is no option '--qqq'; see loggerctl show --help\n",
                 RunLoggerctl({"show", "x", "--qqq"}));
  ExpectUnusable("loggerctl: there is no option '-x'; see loggerctl keys --help\n",
                 RunLoggerctl({"keys", "-x"}));
  ExpectUnusable("loggerctl: --format: toml not in {ini,xml}; see loggerctl check --help\n",
                 RunLoggerctl({"check", "--format", "toml", "x"}));
}

TEST(LoggerctlTest, TakesAValueForNoOption) {
  const ProcessResult result = RunLoggerctl({"check", "--format", "--stric", "x"});

  EXPECT_EQ(2, result.exitCode);
  EXPECT_NE(std::string::npos, result.errors.find("--format: --stric not in")) << result.errors;
}

TEST(LoggerctlTest, HelpsByACommandToo) {
  EXPECT_EQ(RunLoggerctl({"--help"}).output, RunLoggerctl({"help"}).output);
  for (const std::string& command : Commands()) {
    const ProcessResult result = RunLoggerctl({"help", command});

    EXPECT_EQ(0, result.exitCode) << command;
    EXPECT_EQ(RunLoggerctl({command, "--help"}).output, result.output);
  }
  ExpectUnusable("loggerctl: there is no command 'wirte'; did you mean 'write'?\n",
                 RunLoggerctl({"help", "wirte"}));
  ExpectUnusable("loggerctl: there is no command 'hlep'; did you mean 'help'?\n",
                 RunLoggerctl({"hlep"}));
}

// Keys.

TEST(LoggerctlTest, PrintsTheParametersOfAKind) {
  const ProcessResult result = RunLoggerctl({"keys", "LogClientRollingFile"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ(
      "LogClientRollingFile: writes to a file that is moved to numbered backups when it has grown "
      "too large\n"
      "  filename\n"
      "      the file, relative to the working directory; its folder is not made\n"
      "      file name; without it: the client writes nothing\n"
      "  fileappend\n"
      "      whether the file keeps what it has when it is opened\n"
      "      off with \"false\", on with anything else; without it: on\n"
      "  filesize\n"
      "      bytes; an event that takes the file past it is its last\n"
      "      number; without it: 0, which rolls the file at every event\n"
      "  maxbackup\n"
      "      how many old files are kept\n"
      "      number; without it: 0, which keeps none: a full file is emptied\n",
      result.output);
  EXPECT_EQ("", result.errors);
}

TEST(LoggerctlTest, PrintsEverythingThatAConfigurationCanSay) {
  const std::string all = RunLoggerctl({"keys"}).output;

  for (const char* const part :
       {"\n  loghandler.H.level.N\n", "\n  handlerloglevel enable\n",
        "\nLogClientSocket: ", "\n  LogLayoutSimple\n      ERROR - disk full\n"}) {
    EXPECT_NE(std::string::npos, all.find(part)) << part;
  }
}

TEST(LoggerctlTest, PrintsKeysForPrograms) {
  const ProcessResult result = RunLoggerctl({"keys", "LogClientConsole", "--json"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ(
      "[\n"
      "  {\n"
      "    \"name\": \"LogClientConsole\",\n"
      "    \"meaning\": \"writes to standard output\",\n"
      "    \"layout\": true,\n"
      "    \"parameters\": []\n"
      "  }\n"
      "]\n",
      result.output);
  EXPECT_EQ(0U, RunLoggerctl({"keys", "--json"}).output.find("{\n  \"keys\": ["));
}

// The shell's completion.

/// The completions that bash would offer at the end of these words.
std::string Completed(const Words& words) {
  std::string line;
  for (const std::string& word : words) line += "'" + word + "' ";
  const ProcessResult result = RunProgram(
      {"bash", "-c",
       "source <(" LOGGERCTL " completion); compopt() { echo \"compopt $*\"; }; COMP_WORDS=(" +
           line + "); COMP_CWORD=" + std::to_string(words.size() - 1) +
           "; _loggerctl; echo \"${COMPREPLY[*]}\""});
  EXPECT_EQ("", result.errors);
  return result.output;
}

TEST(LoggerctlTest, CompletesTheCommands) {
  EXPECT_EQ("check\n", Completed({"loggerctl", "ch"}));
  EXPECT_EQ("--version\n", Completed({"loggerctl", "--v"}));
  std::string all;
  for (const std::string& command : Commands()) all += command + " ";
  EXPECT_EQ(all.substr(0, all.size() - 1) + "\n", Completed({"loggerctl", "help", ""}));
  EXPECT_EQ(all + "help --help --version\n", Completed({"loggerctl", ""}));
}

TEST(LoggerctlTest, CompletesTheOptionsOfACommand) {
  EXPECT_EQ("--strict --system\n", Completed({"loggerctl", "check", "--s"}));
  EXPECT_EQ("--config\n", Completed({"loggerctl", "write", "--c"}));
}

TEST(LoggerctlTest, CompletesValues) {
  EXPECT_EQ("ini xml\n", Completed({"loggerctl", "check", "--format", ""}));
  EXPECT_EQ("LogClientSocket\n", Completed({"loggerctl", "keys", "LogClientS"}));
  EXPECT_EQ("\n", Completed({"loggerctl", "serve", "--port", ""}));
}

TEST(LoggerctlTest, CompletesFileNamesWhereFilesAreNamed) {
  EXPECT_EQ("compopt -o default\n\n", Completed({"loggerctl", "check", "a"}));
  EXPECT_EQ("compopt -o default\n\n", Completed({"loggerctl", "write", "--config", "a"}));
}

TEST(LoggerctlTest, CompletesFileNamesAfterAnEqualsSign) {
  EXPECT_EQ("compopt -o default\n\n", Completed({"loggerctl", "write", "--config", "=", "a"}));
  EXPECT_EQ("compopt -o default\n\n", Completed({"loggerctl", "write", "--config", "="}));
  EXPECT_EQ("ini\n", Completed({"loggerctl", "check", "--format", "=", "i"}));
}

TEST(LoggerctlTest, CompletesTheLevelsAndHandlersOfTheNamedFile) {
  const TemporaryFolder folder;
  const std::string ini = folder.Path("app.ini");
  WriteFile(ini,
            "loglevel = 1 2 30\nloglevel.1.name = ERROR\nloglevel.2.name = $(touch it)\n"
            "loghandler = net disk\n");
  const auto completed = [&](const Words& words) {
    Words all{LOGGERCTL, "write"};
    all.insert(all.end(), words.begin(), words.end());
    return Completed(all);
  };

  EXPECT_EQ("ERROR \\$\\(touch\\ it\\) 30\n", completed({"--config", ini, "--level", ""}));
  EXPECT_EQ("ERROR\n", completed({"--config", "=", ini, "--level", "=", "E"}));
  EXPECT_EQ("default disk net\n", completed({"--config", ini, "--handler", ""}));
  EXPECT_EQ("disk\n", completed({"--config", "'" + ini + "'", "--handler", "di"}));
  EXPECT_EQ("\n", completed({"--level", ""}));
  EXPECT_EQ("\n", completed({"--config", folder.Path("missing.ini"), "--level", ""}));
}

}  // namespace
