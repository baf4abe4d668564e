#include "LogConfiguratorIni.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "LogClient.h"
#include "LogClientConsole.h"
#include "LogClientFactory.h"
#include "LogHandler.h"
#include "LogLayout.h"
#include "LogLevelManager.h"
#include "LogProperties.h"
#include "Logger.h"
#include "Support/ConfiguredClient.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/Timeless.h"

namespace {

typedef std::map<std::string, std::string> Parameters;
typedef std::vector<std::pair<unsigned int, std::string>> Levels;

static_assert(std::has_virtual_destructor_v<LogConfiguratorIni>);

class LogConfiguratorIniTest : public testing::Test {
 protected:
  LogConfiguratorIniTest() { ConfiguredClient::Register(); }

  std::string File(const std::string& text) const {
    const std::string path = folder_.Path("logger.ini");
    WriteFile(path, text);
    return path;
  }

  /// Reads the text as a whole configuration.
  bool Configure(const std::string& text) const {
    LogConfiguratorIni configurator;
    return configurator.ReadConfiguration(File(text));
  }

  /// Only loads the text.
  void Open(LogConfiguratorIni& configurator, const std::string& text) const {
    ASSERT_TRUE(configurator.OpenFile(File(text)));
  }

  /// Whether logging is enabled by the text.
  bool EnablesLogging(const std::string& text) const {
    LogConfiguratorIni configurator;
    Open(configurator, text);
    return configurator.IsLoggingEnable();
  }

  static void AddLevels(unsigned int last) {
    for (unsigned int level = 1; level <= last; ++level) {
      Logger::GetLogLevelManager()->AddLogLevel(level, "level " + std::to_string(level));
    }
  }

  static Levels RegisteredLevels() {
    Levels levels;
    unsigned int level = 0;
    for (int index = 0; Logger::GetLogLevelManager()->GetLogLevel(index, level); ++index) {
      levels.emplace_back(level, Logger::GetLogLevelManager()->GetLogLevelName(level));
    }
    return levels;
  }

  static std::vector<logstring> Handlers() { return Logger::GetLogManager()->GetLogHandlerNames(); }

  static std::vector<LogHandlerClient*> Receivers(const logstring& handler) {
    std::vector<LogHandlerClient*> receivers;
    LogHandler* const parent = Logger::GetExistingLogHandler(handler);
    for (unsigned int index = 0; index < parent->GetLogClientCount(); ++index) {
      receivers.push_back(parent->GetLogClientAt(index));
    }
    return receivers;
  }

  TemporaryFolder folder_;
};

TEST_F(LogConfiguratorIniTest, RegistersTheListedLevelsInOrder) {
  EXPECT_TRUE(
      Configure("loglevel = 3 1 2\n"
                "loglevel.1.name = ERROR\n"
                "loglevel.2.name = WARNING\n"
                "loglevel.3.name = INFO\n"
                "loglevel.4.name = DEBUG\n"));

  EXPECT_EQ((Levels{{3, "INFO"}, {1, "ERROR"}, {2, "WARNING"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, NamesALevelByItsItemWhenItHasNoName) {
  EXPECT_TRUE(Configure("loglevel = 7 8\nloglevel.8.name =\n"));

  EXPECT_EQ((Levels{{7, "7"}, {8, "8"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, RegistersNoLevelWithoutAList) {
  EXPECT_TRUE(Configure("loglevel.1.name = ERROR\n"));

  EXPECT_EQ(Levels(), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, RegistersNoLevelWithAnEmptyList) {
  EXPECT_TRUE(Configure("loglevel =\nloglevel.1.name = ERROR\n"));

  EXPECT_EQ(Levels(), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, SkipsLevelsThatConvertToZero) {
  EXPECT_TRUE(Configure("loglevel = 0 abc 5\nloglevel.0.name = ZERO\nloglevel.abc.name = ABC\n"));

  EXPECT_EQ((Levels{{5, "5"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, LooksUpALevelsNameByItsItem) {
  EXPECT_TRUE(
      Configure("loglevel = 05 06\nloglevel.5.name = not read\nloglevel.06.name = SIX\n"
                "loglevel.6.name = not read\n"));

  EXPECT_EQ((Levels{{5, "05"}, {6, "SIX"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, ConvertsALevelUpToItsFirstOtherCharacter) {
  EXPECT_TRUE(Configure("loglevel = 3rd +4 0x10 \t6 7,8\nloglevel.3rd.name = THIRD\n"));

  EXPECT_EQ((Levels{{3, "THIRD"}, {4, "+4"}, {6, "\t6"}, {7, "7,8"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, LimitsLevelsToTheRangeOfASignedNumber) {
  EXPECT_TRUE(Configure("loglevel = 99999999999 -1\n"));

  EXPECT_EQ((Levels{{2147483647, "99999999999"}, {4294967295, "-1"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, LimitsLevelsBelowTheRangeOfASignedNumber) {
  EXPECT_TRUE(Configure("loglevel = -99999999999\n"));

  EXPECT_EQ((Levels{{2147483648, "-99999999999"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, KeepsTheFirstNameOfALevelThatIsListedTwice) {
  EXPECT_TRUE(Configure("loglevel = 5 05 6\nloglevel.5.name = FIRST\nloglevel.05.name = SECOND\n"));

  EXPECT_EQ((Levels{{5, "FIRST"}, {6, "6"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, KeepsTheNameOfALevelThatTheApplicationRegistered) {
  Logger::GetLogLevelManager()->AddLogLevel(2, "application");

  EXPECT_TRUE(Configure("loglevel = 1 2\nloglevel.2.name = file\n"));

  EXPECT_EQ((Levels{{2, "application"}, {1, "1"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, SplitsListsAtSingleBlanksOnly) {
  EXPECT_TRUE(Configure("loghandler = a\tb,c;d e\n"));

  EXPECT_EQ((std::vector<logstring>{"default", "a\tb,c;d", "e"}), Handlers());
}

TEST_F(LogConfiguratorIniTest, TakesTheEmptyItemBetweenTwoBlanks) {
  EXPECT_TRUE(Configure("loghandler = a  b\n"));

  EXPECT_EQ((std::vector<logstring>{"default", "a", "", "b"}), Handlers());
}

TEST_F(LogConfiguratorIniTest, TakesTheEmptyItemsAtTheEndsOfAQuotedList) {
  EXPECT_TRUE(Configure("loglevel = 1\nloghandler = \" a \"\nloghandler..level.1 = false\n"));

  EXPECT_EQ((std::vector<logstring>{"default", "", "a"}), Handlers());
  EXPECT_FALSE(Logger::GetExistingLogHandler("")->GetLogLevel(1));
}

TEST_F(LogConfiguratorIniTest, MakesTheListedHandlers) {
  EXPECT_TRUE(Configure("loghandler = net disk\n"));

  EXPECT_EQ((std::vector<logstring>{"default", "net", "disk"}), Handlers());
}

TEST_F(LogConfiguratorIniTest, SetsUpAHandlerThatExistsAlready) {
  LogHandler* const net = Logger::GetLogHandler("net");

  EXPECT_TRUE(Configure("loglevel = 1\nloghandler = net\nloghandler.net.level.1 = false\n"));

  EXPECT_EQ(net, Logger::GetExistingLogHandler("net"));
  EXPECT_FALSE(net->GetLogLevel(1));
}

TEST_F(LogConfiguratorIniTest, SetsUpTheDefaultHandlerWhenItIsListed) {
  EXPECT_TRUE(
      Configure("loglevel = 1 2\nloghandler = default\nloghandler.default.level.2 = false\n"));

  EXPECT_TRUE(Logger::GetDefaultLogHandler()->GetLogLevel(1));
  EXPECT_FALSE(Logger::GetDefaultLogHandler()->GetLogLevel(2));
}

TEST_F(LogConfiguratorIniTest, SetsUpTheDefaultHandlerWhenOthersAreListed) {
  EXPECT_TRUE(Configure("loglevel = 1 2\nloghandler = a\nloghandler.default.level.2 = false\n"));

  EXPECT_FALSE(Logger::GetDefaultLogHandler()->GetLogLevel(2));
}

TEST_F(LogConfiguratorIniTest, LeavesTheDefaultHandlerAloneWithoutAListOfHandlers) {
  EXPECT_TRUE(Configure("loglevel = 1 2\nloghandler.default.level.2 = false\n"));

  EXPECT_TRUE(Logger::GetDefaultLogHandler()->GetLogLevel(2));
  EXPECT_EQ((std::vector<logstring>{"default"}), Handlers());
}

TEST_F(LogConfiguratorIniTest, LeavesTheDefaultHandlerAloneWithAnEmptyListOfHandlers) {
  EXPECT_TRUE(Configure("loglevel = 1 2\nloghandler =\nloghandler.default.level.2 = false\n"));

  EXPECT_TRUE(Logger::GetDefaultLogHandler()->GetLogLevel(2));
}

TEST_F(LogConfiguratorIniTest, SwitchesALevelOffForAnythingButTrue) {
  EXPECT_TRUE(
      Configure("loglevel = 1 2 3 4 5 6 7 8\n"
                "loghandler = a\n"
                "loghandler.a.level.1 = true\n"
                "loghandler.a.level.2 = false\n"
                "loghandler.a.level.3 = yes\n"
                "loghandler.a.level.4 = TRUE\n"
                "loghandler.a.level.5 = 1\n"
                "loghandler.a.level.6 = no\n"
                "loghandler.a.level.7 = \" true\"\n"
                "loghandler.a.level.8 = \"true\"\n"));

  LogHandler& handler = *Logger::GetExistingLogHandler("a");
  std::vector<unsigned int> enabled;
  for (unsigned int level = 1; level <= 8; ++level) {
    if (handler.GetLogLevel(level)) enabled.push_back(level);
  }
  EXPECT_EQ((std::vector<unsigned int>{1, 8}), enabled);
}

TEST_F(LogConfiguratorIniTest, SwitchesALevelOnAgain) {
  AddLevels(1);
  Logger::GetLogHandler("a")->SetLogLevel(1, false);

  EXPECT_TRUE(Configure("loghandler = a\nloghandler.a.level.1 = true\n"));

  EXPECT_TRUE(Logger::GetLogHandler("a")->GetLogLevel(1));
}

TEST_F(LogConfiguratorIniTest, LeavesALevelAsItIsWithoutASwitch) {
  AddLevels(3);
  Logger::GetLogHandler("a")->SetLogLevel(1, false);
  Logger::GetLogHandler("a")->SetLogLevel(2, false);

  EXPECT_TRUE(Configure("loghandler = a\nloghandler.a.level.2 =\n"));

  EXPECT_FALSE(Logger::GetLogHandler("a")->GetLogLevel(1));
  EXPECT_FALSE(Logger::GetLogHandler("a")->GetLogLevel(2));
  EXPECT_TRUE(Logger::GetLogHandler("a")->GetLogLevel(3));
}

TEST_F(LogConfiguratorIniTest, SwitchesLevelsOnTheNamedHandlerOnly) {
  EXPECT_TRUE(Configure("loglevel = 1\nloghandler = a b\nloghandler.b.level.1 = false\n"));

  EXPECT_TRUE(Logger::GetLogHandler("a")->GetLogLevel(1));
  EXPECT_FALSE(Logger::GetLogHandler("b")->GetLogLevel(1));
  EXPECT_TRUE(Logger::GetDefaultLogHandler()->GetLogLevel(1));
}

TEST_F(LogConfiguratorIniTest, SwitchesLevelsThatTheApplicationRegistered) {
  AddLevels(2);

  EXPECT_TRUE(Configure("loghandler = a\nloghandler.a.level.2 = false\n"));

  EXPECT_FALSE(Logger::GetLogHandler("a")->GetLogLevel(2));
}

TEST_F(LogConfiguratorIniTest, IgnoresSwitchesOfLevelsThatAreNotRegistered) {
  EXPECT_TRUE(Configure("loglevel = 1\nloghandler = a\nloghandler.a.level.2 = false\n"));

  AddLevels(2);
  EXPECT_TRUE(Logger::GetLogHandler("a")->GetLogLevel(2));
}

TEST_F(LogConfiguratorIniTest, LooksUpSwitchesByTheLevelsNumber) {
  EXPECT_TRUE(
      Configure("loglevel = 05 06 -1\n"
                "loghandler = a\n"
                "loghandler.a.level.5 = false\n"
                "loghandler.a.level.06 = false\n"
                "loghandler.a.level.4294967295 = false\n"));

  EXPECT_FALSE(Logger::GetLogHandler("a")->GetLogLevel(5));
  EXPECT_TRUE(Logger::GetLogHandler("a")->GetLogLevel(6));
  EXPECT_FALSE(Logger::GetLogHandler("a")->GetLogLevel(4294967295));
}

TEST_F(LogConfiguratorIniTest, ReadsKeysInTheirExactCaseOnly) {
  EXPECT_TRUE(
      Configure("LogLevel = 1\nLoghandler = a\nLOGCLIENT = c\nLogging = false\n"
                "logclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"));

  EXPECT_EQ(Levels(), RegisteredLevels());
  EXPECT_EQ((std::vector<logstring>{"default"}), Handlers());
  EXPECT_EQ(0U, ConfiguredClient::Made().size());
}

TEST_F(LogConfiguratorIniTest, SetsUpAHandlerThatIsNotListedWhenAsked) {
  AddLevels(1);
  LogHandler handler("own");
  LogConfiguratorIni configurator;
  Open(configurator, "loghandler.own.level.1 = false\n");

  EXPECT_TRUE(configurator.SetLogHandler(&handler));

  EXPECT_FALSE(handler.GetLogLevel(1));
}

TEST_F(LogConfiguratorIniTest, MakesAClientAndAttachesIt) {
  EXPECT_TRUE(
      Configure("loglevel = 1\n"
                "loghandler = net\n"
                "logclient = c\n"
                "logclient.c.type = ConfiguredClient\n"
                "logclient.c.handler = net\n"));

  ASSERT_EQ(1U, ConfiguredClient::Made().size());
  EXPECT_EQ((std::vector<LogHandlerClient*>{ConfiguredClient::Made()[0]}), Receivers("net"));
  EXPECT_TRUE(Logger::GetLogHandler("net")->Log(1, "text"));
  EXPECT_EQ((std::vector<std::string>{"text\n"}), ConfiguredClient::Made()[0]->lines);
}

TEST_F(LogConfiguratorIniTest, AttachesClientsInTheOrderOfTheirList) {
  EXPECT_TRUE(
      Configure("logclient = one two three\n"
                "logclient.three.type = ConfiguredClient\nlogclient.three.handler = default\n"
                "logclient.two.type = LogClientConsole\nlogclient.two.handler = default\n"
                "logclient.one.type = ConfiguredClient\nlogclient.one.handler = default\n"));

  const auto receivers = Receivers("default");
  ASSERT_EQ(2U, ConfiguredClient::Made().size());
  ASSERT_EQ(3U, receivers.size());
  EXPECT_EQ(ConfiguredClient::Made()[0], receivers[0]);
  EXPECT_NE(nullptr, dynamic_cast<LogClientConsole*>(receivers[1]));
  EXPECT_EQ(ConfiguredClient::Made()[1], receivers[2]);
}

TEST_F(LogConfiguratorIniTest, MakesAClientForEachTimeItIsListed) {
  EXPECT_TRUE(Configure(
      "logclient = c c\nlogclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"));

  EXPECT_EQ(2U, ConfiguredClient::Made().size());
  EXPECT_EQ(2U, Receivers("default").size());
}

TEST_F(LogConfiguratorIniTest, MakesTheClientWithTheEmptyName) {
  EXPECT_TRUE(Configure(
      "logclient = a  b\nlogclient..type = ConfiguredClient\nlogclient..handler = default\n"));

  EXPECT_EQ(1U, ConfiguredClient::Made().size());
}

TEST_F(LogConfiguratorIniTest, MakesNoClientWithoutAList) {
  EXPECT_TRUE(Configure("logclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"));

  EXPECT_EQ(0U, ConfiguredClient::Made().size());
}

TEST_F(LogConfiguratorIniTest, SkipsAClientWithoutAType) {
  EXPECT_TRUE(
      Configure("logclient = c d\nlogclient.c.handler = default\n"
                "logclient.d.type = ConfiguredClient\nlogclient.d.handler = default\n"));

  EXPECT_EQ(1U, Receivers("default").size());
}

TEST_F(LogConfiguratorIniTest, SkipsAClientWithoutAHandler) {
  EXPECT_TRUE(
      Configure("logclient = c d\nlogclient.c.type = ConfiguredClient\n"
                "logclient.d.type = ConfiguredClient\nlogclient.d.handler = default\n"));

  EXPECT_EQ(1U, ConfiguredClient::Made().size());
  EXPECT_EQ(1U, Receivers("default").size());
}

TEST_F(LogConfiguratorIniTest, SkipsAClientOfAnUnknownType) {
  EXPECT_TRUE(
      Configure("logclient = c d\nlogclient.c.type = testclient\nlogclient.c.handler = default\n"
                "logclient.d.type = ConfiguredClient\nlogclient.d.handler = default\n"));

  EXPECT_EQ((std::vector<LogHandlerClient*>{ConfiguredClient::Made().at(0)}), Receivers("default"));
}

TEST_F(LogConfiguratorIniTest, MakesNoClientForAHandlerThatDoesNotExist) {
  EXPECT_TRUE(
      Configure("loghandler = a\nlogclient = c\nlogclient.c.type = ConfiguredClient\n"
                "logclient.c.handler = missing\n"));

  EXPECT_EQ(0U, ConfiguredClient::Made().size());
  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("missing"));
}

TEST_F(LogConfiguratorIniTest, AttachesAClientToAHandlerThatTheApplicationMade) {
  Logger::GetLogHandler("own");

  EXPECT_TRUE(
      Configure("logclient = c\nlogclient.c.type = ConfiguredClient\nlogclient.c.handler = own\n"));

  EXPECT_EQ((std::vector<LogHandlerClient*>{ConfiguredClient::Made().at(0)}), Receivers("own"));
}

TEST_F(LogConfiguratorIniTest, LeavesAClientUnattachedThatIsNotInitialised) {
  EXPECT_TRUE(Configure(
      "logclient = c\nlogclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"
      "logclient.c.parameter.0.name = broken\nlogclient.c.parameter.0.value = yes\n"));

  EXPECT_EQ(1U, ConfiguredClient::Made().size());
  EXPECT_EQ(0U, Receivers("default").size());
}

TEST_F(LogConfiguratorIniTest, TellsWhetherItSetUpOneClient) {
  LogConfiguratorIni configurator;
  Open(configurator,
       "logclient.good.type = ConfiguredClient\nlogclient.good.handler = default\n"
       "logclient.typeless.handler = default\n"
       "logclient.homeless.type = ConfiguredClient\n"
       "logclient.lost.type = ConfiguredClient\nlogclient.lost.handler = missing\n"
       "logclient.unknown.type = Unknown\nlogclient.unknown.handler = default\n"
       "logclient.broken.type = ConfiguredClient\nlogclient.broken.handler = default\n"
       "logclient.broken.parameter.0.name = broken\nlogclient.broken.parameter.0.value = yes\n"
       "logclient.bare.type = ConfiguredClient\nlogclient.bare.handler = default\n"
       "logclient.bare.layout = Unknown\n");

  EXPECT_TRUE(configurator.SetLogClient("good"));
  EXPECT_FALSE(configurator.SetLogClient("typeless"));
  EXPECT_FALSE(configurator.SetLogClient("homeless"));
  EXPECT_FALSE(configurator.SetLogClient("lost"));
  EXPECT_FALSE(configurator.SetLogClient("unknown"));
  EXPECT_FALSE(configurator.SetLogClient("broken"));
  EXPECT_FALSE(configurator.SetLogClient("bare"));
  EXPECT_FALSE(configurator.SetLogClient("not there at all"));
  EXPECT_EQ((std::vector<LogHandlerClient*>{ConfiguredClient::Made().at(0)}), Receivers("default"));
}

TEST_F(LogConfiguratorIniTest, PassesParameters) {
  EXPECT_TRUE(Configure(
      "logclient = c\nlogclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"
      "logclient.c.parameter.0.name = a\n"
      "logclient.c.parameter.0.value = 1   # comment after a value\n"
      "logclient.c.parameter.1.name = b\n"
      "logclient.c.parameter.1.value = \"  two  words \"\n"));

  EXPECT_EQ((Parameters{{"a", "1"}, {"b", "  two  words "}}),
            ConfiguredClient::Made().at(0)->parameters);
}

TEST_F(LogConfiguratorIniTest, PassesNoParametersOfOtherClients) {
  EXPECT_TRUE(
      Configure("logclient = c d\n"
                "logclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"
                "logclient.c.parameter.0.name = a\nlogclient.c.parameter.0.value = 1\n"
                "logclient.d.type = ConfiguredClient\nlogclient.d.handler = default\n"
                "logclient.d.parameter.0.name = b\nlogclient.d.parameter.0.value = 2\n"));

  EXPECT_EQ((Parameters{{"a", "1"}}), ConfiguredClient::Made().at(0)->parameters);
  EXPECT_EQ((Parameters{{"b", "2"}}), ConfiguredClient::Made().at(1)->parameters);
}

TEST_F(LogConfiguratorIniTest, EndsParametersAtAGap) {
  EXPECT_TRUE(Configure(
      "logclient = c\nlogclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"
      "logclient.c.parameter.0.name = a\nlogclient.c.parameter.0.value = 1\n"
      "logclient.c.parameter.1.name = b\nlogclient.c.parameter.1.value = 2\n"
      "logclient.c.parameter.3.name = d\nlogclient.c.parameter.3.value = 4\n"));

  EXPECT_EQ((Parameters{{"a", "1"}, {"b", "2"}}), ConfiguredClient::Made().at(0)->parameters);
}

TEST_F(LogConfiguratorIniTest, PassesNoParametersThatBeginBehindZero) {
  EXPECT_TRUE(Configure(
      "logclient = c\nlogclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"
      "logclient.c.parameter.1.name = a\nlogclient.c.parameter.1.value = 1\n"));

  EXPECT_EQ(Parameters(), ConfiguredClient::Made().at(0)->parameters);
}

TEST_F(LogConfiguratorIniTest, EndsParametersAtAnEmptyValue) {
  EXPECT_TRUE(Configure(
      "logclient = c\nlogclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"
      "logclient.c.parameter.0.name = a\nlogclient.c.parameter.0.value = \"\"\n"
      "logclient.c.parameter.1.name = b\nlogclient.c.parameter.1.value = 2\n"));

  EXPECT_EQ(Parameters(), ConfiguredClient::Made().at(0)->parameters);
}

TEST_F(LogConfiguratorIniTest, EndsParametersAtAMissingName) {
  EXPECT_TRUE(Configure(
      "logclient = c\nlogclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"
      "logclient.c.parameter.0.name = a\nlogclient.c.parameter.0.value = 1\n"
      "logclient.c.parameter.1.value = 2\n"
      "logclient.c.parameter.2.name = c\nlogclient.c.parameter.2.value = 3\n"));

  EXPECT_EQ((Parameters{{"a", "1"}}), ConfiguredClient::Made().at(0)->parameters);
}

TEST_F(LogConfiguratorIniTest, KeepsTheFirstValueOfAParameterThatIsGivenTwice) {
  EXPECT_TRUE(Configure(
      "logclient = c\nlogclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"
      "logclient.c.parameter.0.name = a\nlogclient.c.parameter.0.value = first\n"
      "logclient.c.parameter.1.name = a\nlogclient.c.parameter.1.value = second\n"
      "logclient.c.parameter.2.name = b\nlogclient.c.parameter.2.value = 2\n"));

  EXPECT_EQ((Parameters{{"a", "first"}, {"b", "2"}}), ConfiguredClient::Made().at(0)->parameters);
}

TEST_F(LogConfiguratorIniTest, NumbersParametersInDecimal) {
  std::string text =
      "logclient = c\nlogclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n";
  for (int number = 0; number < 12; ++number) {
    const std::string key = "logclient.c.parameter." + std::to_string(number);
    text += key + ".name = p" + std::to_string(number) + "\n" + key + ".value = v\n";
  }

  EXPECT_TRUE(Configure(text));

  EXPECT_EQ((Parameters{{"p9", "v"}, {"p10", "v"}, {"p11", "v"}}),
            ConfiguredClient::Made().at(0)->parameters);
}

TEST_F(LogConfiguratorIniTest, LeavesAClientItsOwnLayout) {
  EXPECT_TRUE(
      Configure("loglevel = 1\nlogclient = c\nlogclient.c.type = ConfiguredClient\n"
                "logclient.c.handler = default\nlogclient.c.layout =\n"));

  Logger::GetDefaultLogHandler()->Log(1, "text");
  EXPECT_EQ((std::vector<std::string>{"text\n"}), ConfiguredClient::Made().at(0)->lines);
}

TEST_F(LogConfiguratorIniTest, GivesAClientTheNamedLayout) {
  EXPECT_TRUE(
      Configure("loglevel = 1\nloglevel.1.name = ERROR\nlogclient = c\n"
                "logclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"
                "logclient.c.layout = LogLayoutSimple\n"));

  Logger::GetDefaultLogHandler()->Log(1, "text");
  EXPECT_EQ((std::vector<std::string>{"ERROR - text\n"}), ConfiguredClient::Made().at(0)->lines);
}

TEST_F(LogConfiguratorIniTest, LeavesAClientUnattachedWhoseLayoutIsUnknown) {
  EXPECT_TRUE(
      Configure("loglevel = 1\nlogclient = c d\n"
                "logclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"
                "logclient.c.layout = loglayoutsimple\n"
                "logclient.d.type = ConfiguredClient\nlogclient.d.handler = default\n"));

  Logger::GetDefaultLogHandler()->Log(1, "text");
  ASSERT_EQ(2U, ConfiguredClient::Made().size());
  EXPECT_EQ((std::vector<LogHandlerClient*>{ConfiguredClient::Made()[1]}), Receivers("default"));
  EXPECT_EQ(std::vector<std::string>(), ConfiguredClient::Made()[0]->lines);
}

TEST_F(LogConfiguratorIniTest, AttachesChildrenInTheOrderOfTheirList) {
  EXPECT_TRUE(Configure("loghandler = a b c\nloghandler.a.child = c b\n"));

  EXPECT_EQ((std::vector<LogHandlerClient*>{Logger::GetExistingLogHandler("c"),
                                            Logger::GetExistingLogHandler("b")}),
            Receivers("a"));
  EXPECT_EQ(0U, Receivers("b").size());
  EXPECT_EQ(0U, Receivers("c").size());
  EXPECT_EQ(0U, Receivers("default").size());
}

TEST_F(LogConfiguratorIniTest, AttachesChildrenBehindClients) {
  EXPECT_TRUE(
      Configure("loghandler = a b\nloghandler.a.child = b\n"
                "logclient = c\nlogclient.c.type = ConfiguredClient\nlogclient.c.handler = a\n"));

  EXPECT_EQ((std::vector<LogHandlerClient*>{ConfiguredClient::Made().at(0),
                                            Logger::GetExistingLogHandler("b")}),
            Receivers("a"));
}

TEST_F(LogConfiguratorIniTest, AttachesAChildOnce) {
  EXPECT_TRUE(Configure("loghandler = a b a\nloghandler.a.child = b b\n"));

  EXPECT_EQ((std::vector<LogHandlerClient*>{Logger::GetExistingLogHandler("b")}), Receivers("a"));
}

TEST_F(LogConfiguratorIniTest, BuildsATreeOfSeveralStoreys) {
  EXPECT_TRUE(Configure(
      "loglevel = 1\nloghandler = bottom middle default\n"
      "loghandler.default.child = middle\nloghandler.middle.child = bottom\n"
      "logclient = c\nlogclient.c.type = ConfiguredClient\nlogclient.c.handler = bottom\n"));

  EXPECT_TRUE(Logger::GetDefaultLogHandler()->Log(1, "text"));
  EXPECT_EQ((std::vector<std::string>{"text\n"}), ConfiguredClient::Made().at(0)->lines);
}

TEST_F(LogConfiguratorIniTest, SkipsAChildThatDoesNotExist) {
  EXPECT_TRUE(Configure("loghandler = a b\nloghandler.a.child = missing b\n"));

  EXPECT_EQ((std::vector<LogHandlerClient*>{Logger::GetExistingLogHandler("b")}), Receivers("a"));
  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("missing"));
}

TEST_F(LogConfiguratorIniTest, AttachesAChildThatTheApplicationMade) {
  LogHandler* const own = Logger::GetLogHandler("own");

  EXPECT_TRUE(Configure("loghandler = a\nloghandler.a.child = own\n"));

  EXPECT_EQ((std::vector<LogHandlerClient*>{own}), Receivers("a"));
}

TEST_F(LogConfiguratorIniTest, NeverReadsTheChildrenOfAnUnlistedHandler) {
  Logger::GetLogHandler("unlisted");

  EXPECT_TRUE(
      Configure("loghandler = a\nloghandler.unlisted.child = a\nloghandler.default.child = a\n"));

  EXPECT_EQ(0U, Receivers("unlisted").size());
  EXPECT_EQ(0U, Receivers("default").size());
}

TEST_F(LogConfiguratorIniTest, MakesOnlyTheLastHandlerWhenBuildingTheTree) {
  LogConfiguratorIni configurator;
  Open(configurator, "loghandler = x y z\nloghandler.x.child = z\n");

  EXPECT_TRUE(configurator.BuildLogTree());

  EXPECT_EQ((std::vector<logstring>{"default", "z"}), Handlers());
}

TEST_F(LogConfiguratorIniTest, AttachesTheChildrenOfTheLastHandlerItMakes) {
  LogHandler* const child = Logger::GetLogHandler("child");
  LogConfiguratorIni configurator;
  Open(configurator, "loghandler = x z\nloghandler.x.child = child\nloghandler.z.child = child\n");

  EXPECT_TRUE(configurator.BuildLogTree());

  EXPECT_EQ((std::vector<LogHandlerClient*>{child}), Receivers("z"));
  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("x"));
}

TEST_F(LogConfiguratorIniTest, BuildsNoTreeWithoutAListOfHandlers) {
  Logger::GetLogHandler("a");
  LogConfiguratorIni configurator;
  Open(configurator, "loghandler.default.child = a\n");

  EXPECT_TRUE(configurator.BuildLogTree());

  EXPECT_EQ(0U, Receivers("default").size());
}

TEST_F(LogConfiguratorIniTest, AttachesTheChildrenOfOneHandlerWhenAsked) {
  LogHandler* const child = Logger::GetLogHandler("child");
  Logger::GetLogHandler("parent");
  LogConfiguratorIni configurator;
  Open(configurator, "loghandler.parent.child = child\n");

  EXPECT_TRUE(configurator.BuildLogTree("parent"));
  EXPECT_TRUE(configurator.BuildLogTree("child"));

  EXPECT_EQ((std::vector<LogHandlerClient*>{child}), Receivers("parent"));
}

TEST_F(LogConfiguratorIniTest, MakesNoParentForChildren) {
  Logger::GetLogHandler("child");
  LogConfiguratorIni configurator;
  Open(configurator, "loghandler.missing.child = child\n");

  EXPECT_TRUE(configurator.BuildLogTree("missing"));

  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("missing"));
}

TEST_F(LogConfiguratorIniTest, SaysThatLoggingIsEnabledForAnythingButFalse) {
  EXPECT_TRUE(EnablesLogging(""));
  EXPECT_TRUE(EnablesLogging("logging =\n"));
  EXPECT_TRUE(EnablesLogging("logging = true\n"));
  EXPECT_TRUE(EnablesLogging("logging = FALSE\n"));
  EXPECT_TRUE(EnablesLogging("logging = False\n"));
  EXPECT_TRUE(EnablesLogging("logging = 0\n"));
  EXPECT_TRUE(EnablesLogging("logging = no\n"));
  EXPECT_TRUE(EnablesLogging("logging = \" false\"\n"));
  EXPECT_FALSE(EnablesLogging("logging = false\n"));
  EXPECT_FALSE(EnablesLogging("  logging=\"false\"  # for now\n"));
}

TEST_F(LogConfiguratorIniTest, SetsUpNothingWhenLoggingIsOff) {
  EXPECT_FALSE(
      Configure("loglevel = 1\nloghandler = a\nlogclient = c\n"
                "logclient.c.type = ConfiguredClient\nlogclient.c.handler = default\n"
                "logging = false\n"));

  EXPECT_EQ(Levels(), RegisteredLevels());
  EXPECT_EQ((std::vector<logstring>{"default"}), Handlers());
  EXPECT_EQ(0U, ConfiguredClient::Made().size());
}

TEST_F(LogConfiguratorIniTest, SetsUpEverythingWhenLoggingIsUpperCaseFalse) {
  EXPECT_TRUE(Configure("logging = FALSE\nloglevel = 1\nloghandler = a\n"));

  EXPECT_EQ((Levels{{1, "1"}}), RegisteredLevels());
  EXPECT_NE(nullptr, Logger::GetExistingLogHandler("a"));
}

TEST_F(LogConfiguratorIniTest, ReadsAnEmptyFile) {
  EXPECT_TRUE(Configure(""));

  EXPECT_EQ(Levels(), RegisteredLevels());
  EXPECT_EQ((std::vector<logstring>{"default"}), Handlers());
}

TEST_F(LogConfiguratorIniTest, ChangesNothingWhenThereIsNoSuchFile) {
  LogConfiguratorIni configurator;

  EXPECT_FALSE(configurator.ReadConfiguration(folder_.Path("missing.ini")));
  EXPECT_FALSE(configurator.OpenFile(folder_.Path("missing.ini")));

  EXPECT_EQ(Levels(), RegisteredLevels());
  EXPECT_EQ((std::vector<logstring>{"default"}), Handlers());
}

TEST_F(LogConfiguratorIniTest, SetsUpNothingFromAFileWithATooLongLine) {
  EXPECT_FALSE(Configure("loglevel = 1\nloghandler = a\n#" + std::string(511, '-') + "\n"));

  EXPECT_EQ(Levels(), RegisteredLevels());
  EXPECT_EQ((std::vector<logstring>{"default"}), Handlers());
}

TEST_F(LogConfiguratorIniTest, KeepsWhatItLoadedFromAFileWithATooLongLine) {
  LogConfiguratorIni configurator;
  EXPECT_FALSE(configurator.OpenFile(File("loglevel = 1\n#" + std::string(511, '-') + "\n")));

  EXPECT_TRUE(configurator.SetLogLevel());

  EXPECT_EQ((Levels{{1, "1"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, SaysNothingAboutWhatItCannotSetUp) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();

  Configure(
      "loglevel = 0 abc\nloghandler = a\nloghandler.a.child = missing\nlogclient = b c d\n"
      "logclient.b.type = Unknown\nlogclient.b.handler = a\n"
      "logclient.c.type = ConfiguredClient\nlogclient.c.handler = missing\n"
      "logclient.d.type = ConfiguredClient\nlogclient.d.handler = a\nlogclient.d.layout = "
      "Unknown\n");
  Configure("logging = false\n");
  LogConfiguratorIni configurator;
  configurator.ReadConfiguration(folder_.Path("missing.ini"));

  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_EQ("", testing::internal::GetCapturedStdout());
}

TEST_F(LogConfiguratorIniTest, EndsTheProcessForAnEmptyFileName) {
  const std::string report =
      "Src/LogProperties:151: bool LogProperties::Load\\(const logstring&\\): "
      "Assertion `!fileName\\.empty\\(\\)' failed\\.";
  LogConfiguratorIni configurator;

  EXPECT_DEATH(configurator.ReadConfiguration(""), report);
  EXPECT_DEATH(configurator.OpenFile(""), report);
}

TEST_F(LogConfiguratorIniTest, LeavesWhatItSetUpBeforeAFailure) {
  LogConfiguratorIni configurator;
  EXPECT_TRUE(configurator.ReadConfiguration(
      File("loglevel = 1\nloghandler = a\nloghandler.a.level.1 = false\nlogclient = c\n"
           "logclient.c.type = ConfiguredClient\nlogclient.c.handler = a\n")));

  EXPECT_FALSE(configurator.ReadConfiguration(File("logging = false\nloglevel = 2\n")));

  EXPECT_EQ((Levels{{1, "1"}}), RegisteredLevels());
  EXPECT_FALSE(Logger::GetExistingLogHandler("a")->GetLogLevel(1));
  EXPECT_EQ((std::vector<LogHandlerClient*>{ConfiguredClient::Made().at(0)}), Receivers("a"));
}

TEST_F(LogConfiguratorIniTest, LeavesWhatItSetUpWhenItEnds) {
  EXPECT_TRUE(
      Configure("loglevel = 1\nloglevel.1.name = ERROR\nloghandler = a\nlogclient = c\n"
                "logclient.c.type = ConfiguredClient\nlogclient.c.handler = a\n"
                "logclient.c.layout = LogLayoutSimple\n"));

  EXPECT_TRUE(Logger::GetExistingLogHandler("a")->Log(1, "text"));
  EXPECT_EQ((std::vector<std::string>{"ERROR - text\n"}), ConfiguredClient::Made().at(0)->lines);
}

TEST_F(LogConfiguratorIniTest, KeepsThePropertiesOfAnEarlierFile) {
  LogConfiguratorIni configurator;
  EXPECT_TRUE(configurator.ReadConfiguration(File("loglevel = 1 2\nloghandler = a\n")));

  EXPECT_TRUE(configurator.ReadConfiguration(File("loghandler.a.level.2 = false\n")));

  EXPECT_TRUE(Logger::GetExistingLogHandler("a")->GetLogLevel(1));
  EXPECT_FALSE(Logger::GetExistingLogHandler("a")->GetLogLevel(2));
}

TEST_F(LogConfiguratorIniTest, OverridesThePropertiesOfAnEarlierFile) {
  LogConfiguratorIni configurator;
  EXPECT_TRUE(
      configurator.ReadConfiguration(File("loglevel = 1\nloghandler = a\n"
                                          "loghandler.a.level.1 = false\n")));

  EXPECT_TRUE(configurator.ReadConfiguration(File("loghandler.a.level.1 = true\nloglevel = 2\n")));

  EXPECT_TRUE(Logger::GetExistingLogHandler("a")->GetLogLevel(1));
  EXPECT_EQ((Levels{{1, "1"}, {2, "2"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, KeepsLoggingOffUntilAFileSwitchesItOn) {
  LogConfiguratorIni configurator;
  EXPECT_FALSE(configurator.ReadConfiguration(File("logging = false\n")));

  EXPECT_FALSE(configurator.ReadConfiguration(File("loglevel = 1\n")));
  EXPECT_TRUE(configurator.ReadConfiguration(File("logging = true\n")));

  EXPECT_EQ((Levels{{1, "1"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, SharesNoPropertiesWithOtherConfigurators) {
  LogConfiguratorIni first;
  LogConfiguratorIni second;
  Open(first, "loglevel = 1\n");

  EXPECT_TRUE(second.SetLogLevel());

  EXPECT_EQ(Levels(), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, HasNoPropertiesWhenCopyConstructed) {
  LogConfiguratorIni source;
  Open(source, "logging = false\nloglevel = 1\n");

  LogConfiguratorIni copy(source);

  EXPECT_TRUE(copy.IsLoggingEnable());
  EXPECT_TRUE(copy.SetLogLevel());
  EXPECT_EQ(Levels(), RegisteredLevels());
  EXPECT_FALSE(source.IsLoggingEnable());
}

TEST_F(LogConfiguratorIniTest, KeepsItsOwnPropertiesWhenAssignedTo) {
  LogConfiguratorIni source;
  Open(source, "logging = false\nloglevel = 1\n");
  LogConfiguratorIni target;
  Open(target, "loglevel = 2\n");

  LogConfiguratorIni& result = (target = source);
  target.Assign(source);

  EXPECT_EQ(&target, &result);
  EXPECT_TRUE(target.IsLoggingEnable());
  EXPECT_TRUE(target.SetLogLevel());
  EXPECT_EQ((Levels{{2, "2"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, KeepsItsPropertiesWhenAssignedToItself) {
  LogConfiguratorIni configurator;
  Open(configurator, "loglevel = 2\n");
  const LogConfiguratorIni& self = configurator;

  LogConfiguratorIni& result = (configurator = self);

  EXPECT_EQ(&configurator, &result);
  EXPECT_TRUE(configurator.SetLogLevel());
  EXPECT_EQ((Levels{{2, "2"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorIniTest, SetsUpAConsoleAndARollingFile) {
  const std::string log = folder_.Path("app.log");
  EXPECT_TRUE(
      Configure("loglevel = 1 2 3 4\n"
                "loglevel.1.name = ERROR\n"
                "loglevel.2.name = WARNING\n"
                "loglevel.3.name = INFO\n"
                "loglevel.4.name = DEBUG\n"
                "loghandler = default net\n"
                "loghandler.net.level.4 = false\n"
                "loghandler.default.child = net\n"
                "logclient = con roll\n"
                "logclient.con.type = LogClientConsole\n"
                "logclient.con.handler = default\n"
                "logclient.con.layout = LogLayoutSimple\n"
                "logclient.roll.type = LogClientRollingFile\n"
                "logclient.roll.handler = net\n"
                "logclient.roll.parameter.0.name = filename\n"
                "logclient.roll.parameter.0.value = " +
                log +
                "   # comment after a value\n"
                "logclient.roll.parameter.1.name = maxbackup\n"
                "logclient.roll.parameter.1.value = 3\n"
                "logclient.roll.layout = LogLayoutStandard\n"));

  testing::internal::CaptureStdout();
  EXPECT_TRUE(Logger::GetLogHandler("net")->Log(1, "disk %d full", 2));
  EXPECT_FALSE(Logger::GetLogHandler("net")->Log(4, "filtered"));
  EXPECT_TRUE(Logger::GetDefaultLogHandler()->Log(2, "slow"));
  EXPECT_TRUE(Logger::GetDefaultLogHandler()->Log(4, "details"));
  EXPECT_TRUE(Logger::GetDefaultLogHandler()->Log(3, "started"));
  EXPECT_FALSE(Logger::GetDefaultLogHandler()->Log(5, "unknown"));

  EXPECT_EQ("WARNING - slow\nDEBUG - details\nINFO - started\n",
            testing::internal::GetCapturedStdout());
  // Without a "filesize" every event goes to a backup of its own.
  EXPECT_EQ("", Content(log));
  EXPECT_EQ("TIME |INFO| started\n", Timeless(Content(log + ".1")));
  EXPECT_EQ("TIME |WARNING| slow\n", Timeless(Content(log + ".2")));
  EXPECT_EQ("TIME |ERROR| disk 2 full\n", Timeless(Content(log + ".3")));
  EXPECT_FALSE(Exists(log + ".4"));
}

}  // namespace
