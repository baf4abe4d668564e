#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Support/Files.h"
#include "Support/MaskTimes.h"
#include "Support/Process.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlConfiguration.h"

namespace {

typedef std::vector<std::string> Words;

Words operator+(Words first, const Words& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

constexpr const char* kLevels =
    "loglevel = 1 2 3\n"
    "loglevel.1.name = ERROR\n"
    "loglevel.2.name = WARNING\n"
    "loglevel.3.name = INFO\n";

/// The handler "default" prints messages as they stand, "net" prints them with their level and has
/// level 3 off, "lonely" has no client.
constexpr const char* kHandlers =
    "loghandler = default net lonely\n"
    "loghandler.net.level.3 = false\n"
    "logclient = plain simple\n"
    "logclient.plain.type = LogClientConsole\n"
    "logclient.plain.handler = default\n"
    "logclient.plain.layout = LogLayoutMessage\n"
    "logclient.simple.type = LogClientConsole\n"
    "logclient.simple.handler = net\n"
    "logclient.simple.layout = LogLayoutSimple\n";

class LoggerctlWriteTest : public testing::Test {
 protected:
  LoggerctlWriteTest() : config_(File("logger.ini", std::string(kLevels) + kHandlers)) {}

  std::string File(const std::string& name, const std::string& content) const {
    const std::string path = folder_.Path(name);
    WriteFile(path, content);
    return path;
  }

  Words Command(const std::string& config) const {
    return {LOGGERCTL, "write", "--config", config};
  }

  /// Runs the command with the usual configuration.
  ProcessResult Write(const Words& words, const std::string& input = "") const {
    return RunProgram(Command(config_) + words, input);
  }

  /// Runs the command with another configuration.
  ProcessResult WriteWith(const std::string& configuration, const Words& words,
                          const std::string& input = "") const {
    return RunProgram(Command(File("own.ini", configuration)) + words, input);
  }

  TemporaryFolder folder_;
  std::string config_;
};

void ExpectWritten(const std::string& output, const ProcessResult& result) {
  EXPECT_EQ(0, result.exitCode);
  EXPECT_TRUE(output == result.output) << result.output.substr(0, 1000);
  EXPECT_EQ("", result.errors);
}

void ExpectUnusable(const std::string& errors, const ProcessResult& result) {
  EXPECT_EQ(2, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_EQ(errors, result.errors);
}

TEST_F(LoggerctlWriteTest, LogsItsWordsAsOneEvent) {
  ExpectWritten("disk 2 is full\n", Write({"--level", "1", "disk", "2", "is full"}));
}

TEST_F(LoggerctlWriteTest, JoinsWordsByOneBlank) {
  ExpectWritten(" a   b c  \n", Write({"--level", "1", " a ", " b", "c", " "}));
}

TEST_F(LoggerctlWriteTest, LogsAnEmptyWord) {
  ExpectWritten("\n", Write({"--level", "1", ""}, "not read\n"));
  ExpectWritten("a  b\n", Write({"--level", "1", "a", "", "b"}));
}

TEST_F(LoggerctlWriteTest, LogsWordsWithoutReadingStandardInput) {
  ExpectWritten("word\n", Write({"--level", "1", "word"}, "line\n"));
}

TEST_F(LoggerctlWriteTest, LogsEachLineOfStandardInput) {
  ExpectWritten("first\n second \n\nfourth\n",
                Write({"--level", "1"}, "first\n second \n\nfourth\n"));
}

TEST_F(LoggerctlWriteTest, LogsALastLineWithoutALineFeed) {
  ExpectWritten("first\nlast\n", Write({"--level", "1"}, "first\nlast"));
}

TEST_F(LoggerctlWriteTest, LogsNothingForEmptyStandardInput) {
  ExpectWritten("", Write({"--level", "1"}, ""));
}

TEST_F(LoggerctlWriteTest, LogsEachLineAsAnEventOfItsOwn) {
  ExpectWritten("WARNING - first\nWARNING - \nWARNING - last\n",
                Write({"--level", "2", "--handler", "net"}, "first\n\nlast\n"));
}

TEST_F(LoggerctlWriteTest, LogsThroughTheNamedHandler) {
  ExpectWritten("ERROR - text\n", Write({"--level", "1", "--handler", "net", "text"}));
}

TEST_F(LoggerctlWriteTest, TakesALevelByItsName) {
  ExpectWritten("WARNING - text\n", Write({"--level", "WARNING", "--handler", "net", "text"}));
}

TEST_F(LoggerctlWriteTest, TakesALevelByItsNumberWithZerosBeforeIt) {
  ExpectWritten("WARNING - text\n", Write({"--level", "002", "--handler", "net", "text"}));
}

TEST_F(LoggerctlWriteTest, TakesTheHighestLevel) {
  ExpectWritten("-1 - text\n", WriteWith("loglevel = -1\nlogclient = c\n"
                                         "logclient.c.type = LogClientConsole\n"
                                         "logclient.c.handler = default\n"
                                         "logclient.c.layout = LogLayoutSimple\n",
                                         {"--level", "4294967295", "text"}));
}

TEST_F(LoggerctlWriteTest, ReadsALevelAsANumberFirst) {
  const ProcessResult result = WriteWith(
      "loglevel = 1 2\nloglevel.1.name = 2\nloglevel.2.name = two\nlogclient = c\n"
      "logclient.c.type = LogClientConsole\nlogclient.c.handler = default\n"
      "logclient.c.layout = LogLayoutSimple\n",
      {"--level", "2", "text"});

  ExpectWritten("two - text\n", result);
}

TEST_F(LoggerctlWriteTest, TakesALevelNameOfSeveralWords) {
  const ProcessResult result = WriteWith(
      "loglevel = 1\nloglevel.1.name = 1 very [bad]\nlogclient = c\n"
      "logclient.c.type = LogClientConsole\nlogclient.c.handler = default\n"
      "logclient.c.layout = LogLayoutSimple\n",
      {"--level", "1 very [bad]", "text"});

  ExpectWritten("1 very [bad] - text\n", result);
}

TEST_F(LoggerctlWriteTest, DoesNotUseALevelNameOfTwoLevels) {
  const ProcessResult result =
      WriteWith("loglevel = 4 5 6\nloglevel.4.name = LOUD\nloglevel.6.name = LOUD\n",
                {"--level", "LOUD", "text"});

  ExpectUnusable("loggerctl: level name 'LOUD' stands for both 4 and 6; give the number\n", result);
}

TEST_F(LoggerctlWriteTest, ListsTheLevelsWhenOneIsUnknown) {
  const std::string known = "; the configuration registers 1 (ERROR), 2 (WARNING), 3 (INFO)\n";

  ExpectUnusable("loggerctl: unknown level 'LOUD'" + known, Write({"--level", "LOUD", "text"}));
  ExpectUnusable("loggerctl: unknown level 'error'" + known, Write({"--level", "error", "text"}));
  ExpectUnusable("loggerctl: unknown level '4'" + known, Write({"--level", "4", "text"}));
  ExpectUnusable("loggerctl: unknown level '0'" + known, Write({"--level", "0", "text"}));
  ExpectUnusable("loggerctl: unknown level '1x'" + known, Write({"--level", "1x", "text"}));
  ExpectUnusable("loggerctl: unknown level ''" + known, Write({"--level", "", "text"}));
  ExpectUnusable("loggerctl: unknown level '4294967297'" + known,
                 Write({"--level", "4294967297", "text"}));
}

TEST_F(LoggerctlWriteTest, SaysThatThereAreNoLevels) {
  ExpectUnusable("loggerctl: unknown level '1'; the configuration registers no levels\n",
                 WriteWith("", {"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, ListsTheHandlersWhenOneIsUnknown) {
  ExpectUnusable("loggerctl: unknown handler 'Net'; there are default, net, lonely\n",
                 Write({"--level", "1", "--handler", "Net", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotKnowTheEmptyHandler) {
  ExpectUnusable("loggerctl: unknown handler ''; there are default, net, lonely\n",
                 Write({"--level", "1", "--handler", "", "text"}));
}

TEST_F(LoggerctlWriteTest, CountsTheLinesThatAreFilteredOut) {
  const ProcessResult result = Write({"--level", "INFO", "--handler", "net"}, "one\ntwo");

  EXPECT_EQ(1, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_EQ("loggerctl write: 2 of 2 lines were filtered out: level 3 is off on handler 'net'\n",
            result.errors);
}

TEST_F(LoggerctlWriteTest, SaysThatItsWordsAreFilteredOut) {
  const ProcessResult result = Write({"--level", "3", "--handler", "net", "two", "words"});

  EXPECT_EQ(1, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_EQ("loggerctl write: 1 of 1 line was filtered out: level 3 is off on handler 'net'\n",
            result.errors);
}

TEST_F(LoggerctlWriteTest, FiltersNothingOutOfEmptyStandardInput) {
  ExpectWritten("", Write({"--level", "3", "--handler", "net"}, ""));
}

TEST_F(LoggerctlWriteTest, AcceptsWhatAHandlerFurtherDownFiltersOut) {
  const std::string tree = "loghandler.default.child = net\n";

  ExpectWritten("text\nERROR - text\n",
                WriteWith(kLevels + std::string(kHandlers) + tree, {"--level", "1", "text"}));
  ExpectWritten("text\n",
                WriteWith(kLevels + std::string(kHandlers) + tree, {"--level", "3", "text"}));
}

TEST_F(LoggerctlWriteTest, WarnsOfAHandlerThatReachesNoClient) {
  const ProcessResult result = Write({"--level", "1", "--handler", "lonely", "text"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_EQ(
      "loggerctl write: warning: handler 'lonely' reaches no client; nothing will be written\n",
      result.errors);
}

TEST_F(LoggerctlWriteTest, ReachesClientsThroughHandlersFurtherDown) {
  const std::string tree = "loghandler.lonely.child = default\n";

  ExpectWritten("text\n", WriteWith(kLevels + std::string(kHandlers) + tree,
                                    {"--level", "1", "--handler", "lonely", "text"}));
}

TEST_F(LoggerctlWriteTest, LogsPercentSignsAsTheyStand) {
  ExpectWritten("100% %s %d %n %% \\n\n", Write({"--level", "1", "100%", "%s %d %n", "%%", "\\n"}));
  ExpectWritten("%s%s%s%n 100%\n", Write({"--level", "1"}, "%s%s%s%n 100%\n"));
}

TEST_F(LoggerctlWriteTest, LogsBracketsAndBracesAsTheyStand) {
  const Words words{"{}",  "[]",  "[a,b]", "[a, b]", "[",   "]",   "]]",   "[[a],[b]]",
                    "a,b", "{a}", "x]",    "\"a\"",  "a=b", "\\]", "[a;b]"};
  for (const std::string& word : words) {
    ExpectWritten(word + "\n", Write({"--level", "1", word}));
  }
  ExpectWritten("{} [] [a,b] %s ] [x\n",
                Write({"--level", "1", "{}", "[]", "[a,b]", "%s", "]", "[x"}));
}

TEST_F(LoggerctlWriteTest, LogsTheNameOfACommand) {
  ExpectWritten("write write\n", Write({"--level", "1", "write", "write"}));
}

TEST_F(LoggerctlWriteTest, LogsWordsBehindTwoHyphens) {
  ExpectWritten("--level 2 --help -x --handler=net [a,b] - \n",
                Write({"--level", "1", "--", "--level", "2", "--help", "-x", "--handler=net",
                       "[a,b]", "-", ""}));
}

TEST_F(LoggerctlWriteTest, LogsTheWordThatIsTwoHyphens) {
  ExpectWritten("a -- b\n", Write({"--level", "1", "--", "a", "--", "b"}));
}

TEST_F(LoggerctlWriteTest, LogsASingleHyphen) {
  ExpectWritten("-\n", Write({"--level", "1", "-"}));
  ExpectWritten("- -\n", Write({"--level", "1", "--", "-", "-"}));
}

TEST_F(LoggerctlWriteTest, LogsNegativeNumbers) {
  ExpectWritten("-5 degrees\n", Write({"--level", "1", "-5", "degrees"}));
  ExpectWritten("-5\n", Write({"--level", "1", "--", "-5"}));
}

TEST_F(LoggerctlWriteTest, ReadsStandardInputWhenNothingFollowsTwoHyphens) {
  ExpectWritten("line\n", Write({"--level", "1", "--"}, "line\n"));
}

TEST_F(LoggerctlWriteTest, TakesOptionsBehindAndBetweenWords) {
  ExpectWritten("ERROR - one two\n", RunProgram({LOGGERCTL, "write", "one", "--handler", "net",
                                                 "--config", config_, "two", "--level", "1"}));
}

TEST_F(LoggerctlWriteTest, TakesOptionsWithEqualsSigns) {
  ExpectWritten("ERROR - text\n", RunProgram({LOGGERCTL, "write", "--handler=net",
                                              "--config=" + config_, "--level=ERROR", "text"}));
}

TEST_F(LoggerctlWriteTest, TakesOptionValuesWithBrackets) {
  const std::string config = File("logger.[a,b]",
                                  "loglevel = 1\nloglevel.1.name = [x,y]\n"
                                  "loghandler = [h,i]\nlogclient = c\n"
                                  "logclient.c.type = LogClientConsole\n"
                                  "logclient.c.handler = [h,i]\n"
                                  "logclient.c.layout = LogLayoutSimple\n");

  ExpectWritten(
      "[x,y] - text\n",
      RunProgram(Command(config) + Words{"--level", "[x,y]", "--handler", "[h,i]", "text"}));
}

TEST_F(LoggerctlWriteTest, PutsTheSourcePositionIntoTheEvent) {
  const std::string configuration =
      "loglevel = 1\nloglevel.1.name = ERROR\nlogclient = c\n"
      "logclient.c.type = LogClientConsole\nlogclient.c.handler = default\n"
      "logclient.c.layout = LogLayoutExtended\n";

  const ProcessResult result = WriteWith(
      configuration, {"--level", "1", "--file", "src/a[1]", "--line", "42"}, "one\n%s two\n");

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  EXPECT_EQ("TIME |ERROR| src/a[1] 42 one\nTIME |ERROR| src/a[1] 42 %s two\n",
            MaskTimes(result.output));
}

TEST_F(LoggerctlWriteTest, LeavesTheSourcePositionEmptyWithoutOne) {
  const ProcessResult result = WriteWith(
      "loglevel = 1\nloglevel.1.name = ERROR\nlogclient = c\n"
      "logclient.c.type = LogClientConsole\nlogclient.c.handler = default\n"
      "logclient.c.layout = LogLayoutExtended\n",
      {"--level", "1", "text"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("TIME |ERROR|  0 text\n", MaskTimes(result.output));
}

TEST_F(LoggerctlWriteTest, TakesASourceFileAndALineOnlyTogether) {
  for (const Words& words : {Words{"--file", "a.cpp"}, Words{"--line", "3"}}) {
    const ProcessResult result = Write(Words{"--level", "1", "text"} + words);

    EXPECT_EQ(2, result.exitCode);
    EXPECT_EQ("", result.output);
    EXPECT_NE(std::string::npos, result.errors.find("--file")) << result.errors;
    EXPECT_NE(std::string::npos, result.errors.find("--line")) << result.errors;
  }
}

TEST_F(LoggerctlWriteTest, DoesNotTakeALineThatIsNoNumber) {
  const ProcessResult result = Write({"--level", "1", "--file", "a.cpp", "--line", "x", "text"});

  EXPECT_EQ(2, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_NE(std::string::npos, result.errors.find("--line")) << result.errors;
}

TEST_F(LoggerctlWriteTest, WritesToAFile) {
  const std::string log = folder_.Path("app.log");
  const ProcessResult result = WriteWith(
      "loglevel = 1\nlogclient = c\nlogclient.c.type = LogClientFile\n"
      "logclient.c.handler = default\nlogclient.c.layout = LogLayoutMessage\n"
      "logclient.c.parameter.0.name = filename\nlogclient.c.parameter.0.value = " +
          log + "\n",
      {"--level", "1"}, "first\nlast");

  ExpectWritten("", result);
  EXPECT_EQ("first\nlast\n", Content(log));
}

TEST_F(LoggerctlWriteTest, LogsALineOfAMegabyte) {
  std::string line;
  for (int number = 0; line.size() < 1024 * 1024; ++number) line += std::to_string(number) + " ";

  ExpectWritten(line + "\nnext\n", Write({"--level", "1"}, line + "\nnext"));
}

TEST_F(LoggerctlWriteTest, LogsALongLineWithoutALineFeed) {
  const std::string line(1024 * 1024 + 1, 'x');

  ExpectWritten(line + "\n", Write({"--level", "1"}, line));
}

TEST_F(LoggerctlWriteTest, LogsManyLinesInTheirOrder) {
  std::string lines;
  for (int number = 0; number < 20000; ++number) lines += "line " + std::to_string(number) + "\n";

  ExpectWritten(lines, Write({"--level", "1"}, lines));
}

TEST_F(LoggerctlWriteTest, LogsALongWord) {
  const std::string word(100000, 'x');

  ExpectWritten(word + " end\n", Write({"--level", "1", word, "end"}));
}

/// Every byte but zero and the line feed; as UTF-8 it makes no sense.
std::string EveryByte() {
  std::string bytes;
  for (int byte = 255; byte > 0; --byte) {
    if (byte != '\n') bytes.push_back(static_cast<char>(byte));
  }
  return bytes;
}

TEST_F(LoggerctlWriteTest, LogsEveryByteOfALine) {
  ExpectWritten(EveryByte() + "\n" + EveryByte() + "\n",
                Write({"--level", "1"}, EveryByte() + "\n" + EveryByte() + "\n"));
}

TEST_F(LoggerctlWriteTest, LogsEveryByteOfAWord) {
  ExpectWritten(EveryByte() + " \n \xC3(\n", Write({"--level", "1", EveryByte(), "\n", "\xC3("}));
}

TEST_F(LoggerctlWriteTest, KeepsCarriageReturns) {
  ExpectWritten("dos\r\n\r\nlast\r\n", Write({"--level", "1"}, "dos\r\n\r\nlast\r"));
}

TEST_F(LoggerctlWriteTest, WarnsOfAZeroByte) {
  const ProcessResult result = Write({"--level", "1"}, std::string("first\nab\0cde\nlast\n", 17));

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("first\nab\nlast\n", result.output);
  EXPECT_EQ(
      "loggerctl write: warning: line 2 has a zero byte, which ends it; "
      "3 bytes behind it are left out\n",
      result.errors);
}

TEST_F(LoggerctlWriteTest, WarnsOfAZeroByteThatBeginsALine) {
  const ProcessResult result = Write({"--level", "1"}, std::string("\0abc\0d", 6));

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("\n", result.output);
  EXPECT_EQ(
      "loggerctl write: warning: line 1 has a zero byte, which ends it; "
      "5 bytes behind it are left out\n",
      result.errors);
}

TEST_F(LoggerctlWriteTest, DoesNotUseAConfigurationThatDoesNotExist) {
  const std::string missing = folder_.Path("missing.ini");

  ExpectUnusable("loggerctl: " + missing + ": No such file or directory\n",
                 RunProgram(Command(missing) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotUseAConfigurationBehindAFile) {
  const std::string behind = config_ + "/logger.ini";

  ExpectUnusable("loggerctl: " + behind + ": Not a directory\n",
                 RunProgram(Command(behind) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotUseADirectory) {
  ExpectUnusable("loggerctl: " + folder_.Path() + ": Is a directory\n",
                 RunProgram(Command(folder_.Path()) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotUseAnEmptyFileName) {
  ExpectUnusable("loggerctl: the name of the configuration file is empty\n",
                 RunProgram(Command("") + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotUseAConfigurationWithATooLongLine) {
  const std::string config =
      File("long.ini", kLevels + std::string(kHandlers) + "#" + std::string(511, '-') + "\n");

  ExpectUnusable("loggerctl: " + config +
                     ": line 14: the line has 512 bytes and may have 511; the file cannot be read "
                     "because of it; shorten it\n",
                 RunProgram(Command(config) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, UsesAConfigurationWithTheLongestLine) {
  ExpectWritten("text\n",
                WriteWith(kLevels + std::string(kHandlers) + "#" + std::string(510, '-') + "\n",
                          {"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotUseAConfigurationThatSwitchesLoggingOff) {
  const std::string config =
      File("off.ini", kLevels + std::string(kHandlers) + "logging = false\n");

  ExpectUnusable("loggerctl: " + config + ": logging is switched off there (logging = false)\n",
                 RunProgram(Command(config) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, NamesTheLineOfAnXmlConfigurationThatDoesNotFitTheSchema) {
  const std::string config =
      File("odd.xml", "<configlogger>\n<logging enable=\"true\"/>\n<nonsense/>\n</configlogger>\n");

  ExpectUnusable("loggerctl: " + config +
                     ": line 3: Element 'nonsense': "
                     "This element is not expected. Expected is ( loglevel )\n",
                 RunProgram(Command(config) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotUseAnXmlConfigurationThatSwitchesLoggingOff) {
  XmlConfiguration off;
  off.logging = "<logging enable=\"false\"/>\n";
  const std::string config = File("off.xml", off.Text());

  ExpectUnusable("loggerctl: " + config + ": logging is switched off there (enable=\"false\")\n",
                 RunProgram(Command(config) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, NeedsAConfiguration) {
  const ProcessResult result = RunProgram({LOGGERCTL, "write", "--level", "1", "text"});

  EXPECT_EQ(2, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_NE(std::string::npos, result.errors.find("--config")) << result.errors;
}

TEST_F(LoggerctlWriteTest, NeedsALevel) {
  const ProcessResult result = Write({"text"});

  EXPECT_EQ(2, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_NE(std::string::npos, result.errors.find("--level")) << result.errors;
}

TEST_F(LoggerctlWriteTest, DoesNotTakeAnUnknownOption) {
  for (const char* const option : {"--colour", "-x"}) {
    const ProcessResult result = Write({"--level", "1", "text", option});

    EXPECT_EQ(2, result.exitCode) << option;
    EXPECT_EQ("", result.output);
    EXPECT_NE(std::string::npos, result.errors.find(option)) << result.errors;
  }
}

TEST_F(LoggerctlWriteTest, NeedsACommand) {
  for (const Words& words : {Words{LOGGERCTL}, Words{LOGGERCTL, "read"}}) {
    const ProcessResult result = RunProgram(words);

    EXPECT_EQ(2, result.exitCode);
    EXPECT_EQ("", result.output);
    EXPECT_NE("", result.errors);
  }
}

TEST_F(LoggerctlWriteTest, HelpsOnStandardOutput) {
  const ProcessResult result = RunProgram({LOGGERCTL, "write", "--help"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  for (const char* const part : {"--config", "--handler", "--level", "--file", "--line", "TEXT"}) {
    EXPECT_NE(std::string::npos, result.output.find(part)) << part;
  }
}

TEST_F(LoggerctlWriteTest, IsToldOfByTheProgramsHelp) {
  const ProcessResult result = RunProgram({LOGGERCTL, "--help"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  EXPECT_NE(std::string::npos, result.output.find("write")) << result.output;
}

TEST_F(LoggerctlWriteTest, ReportsThatStandardOutputCannotBeWritten) {
  const Words redirected{"sh", "-c", "exec \"$@\" > /dev/full", "sh"};

  ExpectUnusable("loggerctl: standard output could not be written\n",
                 RunProgram(redirected + Command(config_) + Words{"--level", "1", "text"}));
  ExpectUnusable("loggerctl: standard output could not be written\n",
                 RunProgram(redirected + Command(config_) + Words{"--level", "1"}, "a\nb\n"));
}

TEST_F(LoggerctlWriteTest, ReportsThatStandardInputCannotBeRead) {
  const Words redirected{"sh", "-c", "exec \"$@\" < /", "sh"};

  ExpectUnusable("loggerctl: standard input cannot be read: Is a directory\n",
                 RunProgram(redirected + Command(config_) + Words{"--level", "1"}));
}

}  // namespace
