#include "LogConfiguratorIni.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/ConfiguredClient.h"
#include "Support/Files.h"
#include "Support/MaskTimes.h"
#include "Support/TemporaryFolder.h"

namespace {

static_assert(std::has_virtual_destructor_v<LogConfiguratorIni>);

/// The system of every process before it is configured.
const char* const kNothing = "[default]\n";

/// A client named c at the handler default, but for what follows.
const std::string kClientC = R"(
logclient = c
logclient.c.type = ConfiguredClient
logclient.c.handler = default
)";

void Register(unsigned int level) { Logger::GetLogLevelManager()->AddLogLevel(level, "own"); }

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

  TemporaryFolder folder_;
};

struct Configuration {
  const char* name;
  std::string text;
  std::string system;              ///< As of SystemText.
  void (*beforehand)() = nullptr;  ///< What the application did.

  friend std::ostream& operator<<(std::ostream& out, const Configuration& row) {
    return out << row.name;
  }
};

const Configuration kConfigurations[] = {
    {"NothingFromAnEmptyFile", "", kNothing},
    {"LevelsInTheOrderOfTheirList", R"(
loglevel = 3 1 2
loglevel.1.name = ERROR
loglevel.2.name = WARNING
loglevel.3.name = INFO
loglevel.4.name = DEBUG
)",
     R"(level 3 INFO
level 1 ERROR
level 2 WARNING
[default]
)"},
    {"LevelsWithoutANameByTheirItem", "loglevel = 7 8\nloglevel.8.name =\n",
     "level 7 7\nlevel 8 8\n[default]\n"},
    {"NoLevelWithoutAList", "loglevel.1.name = ERROR\n", kNothing},
    {"NoLevelOfAnEmptyList", "loglevel =\nloglevel.1.name = ERROR\n", kNothing},
    {"NoLevelThatConvertsToZero", R"(
loglevel = 0 abc 5
loglevel.0.name = ZERO
loglevel.abc.name = ABC
)",
     "level 5 5\n[default]\n"},
    {"LevelsNamesByTheirItems", R"(
loglevel = 05 06
loglevel.5.name = not read
loglevel.06.name = SIX
loglevel.6.name = not read
)",
     "level 5 05\nlevel 6 SIX\n[default]\n"},
    {"LevelsUpToTheFirstOtherCharacter", R"(
loglevel = 3rd +4 0x10 	6 7,8
loglevel.3rd.name = THIRD
)",
     "level 3 THIRD\nlevel 4 +4\nlevel 6 \t6\nlevel 7 7,8\n[default]\n"},
    {"LevelsWithinTheRangeOfASignedNumber", "loglevel = 99999999999 -1 -99999999999\n",
     R"(level 2147483647 99999999999
level 4294967295 -1
level 2147483648 -99999999999
[default]
)"},
    {"TheFirstNameOfALevel", R"(
loglevel = 5 05 6
loglevel.5.name = FIRST
loglevel.05.name = SECOND
loglevel.6.name = LATER
)",
     "level 6 own\nlevel 5 FIRST\n[default]\n", [] { Register(6); }},

    {"HandlersInTheOrderOfTheirList", "loghandler = net disk net\n", "[default]\n[net]\n[disk]\n"},
    {"ListsSplitAtSingleBlanksOnly", "loghandler = a\tb,c;d e\n", "[default]\n[a\tb,c;d]\n[e]\n"},
    {"TheEmptyItemBetweenTwoBlanks", "loghandler = a  b\n", "[default]\n[a]\n[]\n[b]\n"},
    {"TheEmptyItemsOfAQuotedList", R"(
loglevel = 1
loghandler = " a "
loghandler..level.1 = false
)",
     "level 1 1\n[default]\n[] -1\n[a]\n"},
    {"AHandlerThatExistsAlready", R"(
loglevel = 1
loghandler = net
loghandler.net.level.1 = false
)",
     "level 1 1\n[default]\n[net] -1\n", [] { Logger::GetLogHandler("net"); }},
    {"TheDefaultHandlerWhenItIsListed", R"(
loglevel = 1 2
loghandler = default
loghandler.default.level.2 = false
)",
     "level 1 1\nlevel 2 2\n[default] -2\n"},
    {"TheDefaultHandlerWhenOthersAreListed", R"(
loglevel = 1 2
loghandler = a
loghandler.default.level.2 = false
)",
     "level 1 1\nlevel 2 2\n[default] -2\n[a]\n"},
    {"NoDefaultHandlerWithoutAList", R"(
loglevel = 1
loghandler.default.level.1 = false
)",
     "level 1 1\n[default]\n"},
    {"NoDefaultHandlerWithAnEmptyList", R"(
loglevel = 1
loghandler =
loghandler.default.level.1 = false
)",
     "level 1 1\n[default]\n"},
    {"ALevelOffForAnythingButTrue", R"(
loglevel = 1 2 3 4 5 6 7 8
loghandler = a b
loghandler.a.level.1 = true
loghandler.a.level.2 = false
loghandler.a.level.3 = yes
loghandler.a.level.4 = TRUE
loghandler.a.level.5 = 1
loghandler.a.level.6 = no
loghandler.a.level.7 = " true"
loghandler.a.level.8 = "true"
)",
     R"(level 1 1
level 2 2
level 3 3
level 4 4
level 5 5
level 6 6
level 7 7
level 8 8
[default]
[a] -2 -3 -4 -5 -6 -7
[b]
)"},
    {"ALevelOnAgainOrAsItIs", R"(
loghandler = a
loghandler.a.level.1 = true
loghandler.a.level.2 =
loghandler.a.level.4 = false
)",
     "level 1 own\nlevel 2 own\nlevel 3 own\nlevel 4 own\n[default]\n[a] -2 -3 -4\n",
     [] {
       for (const unsigned int level : {1U, 2U, 3U, 4U}) {
         Register(level);
         if (level < 4) Logger::GetLogHandler("a")->SetLogLevel(level, false);
       }
     }},
    {"SwitchesByTheLevelsNumber", R"(
loglevel = 05 06 -1
loghandler = a
loghandler.a.level.5 = false
loghandler.a.level.06 = false
loghandler.a.level.4294967295 = false
)",
     "level 5 05\nlevel 6 06\nlevel 4294967295 -1\n[default]\n[a] -5 -4294967295\n"},
    {"KeysInTheirExactCaseOnly", R"(
LogLevel = 1
Loghandler = a
LOGCLIENT = c
Logging = false
logclient.c.type = ConfiguredClient
logclient.c.handler = default
)",
     kNothing},

    {"ClientsInTheOrderOfTheirList", R"(
logclient = one two three one
logclient.three.type = ConfiguredClient
logclient.three.handler = default
logclient.three.parameter.0.name = a
logclient.three.parameter.0.value = third
logclient.two.type = LogClientConsole
logclient.two.handler = default
logclient.one.type = ConfiguredClient
logclient.one.handler = default
)",
     R"([default] client 0 another client client 1 client 2
client 0: writes text
client 1: a=third writes text
client 2: writes text
)"},
    {"TheClientWithTheEmptyName", R"(
logclient = a  b
logclient..type = ConfiguredClient
logclient..handler = default
)",
     "[default] client 0\nclient 0: writes text\n"},
    {"NoClientWithoutAList", R"(
logclient.c.type = ConfiguredClient
logclient.c.handler = default
)",
     kNothing},
    {"NoClientWithoutATypeOrAHandler", R"(
logclient = typeless homeless lost unknown good
logclient.typeless.handler = default
logclient.homeless.type = ConfiguredClient
logclient.lost.type = ConfiguredClient
logclient.lost.handler = missing
logclient.unknown.type = configuredclient
logclient.unknown.handler = default
logclient.good.type = ConfiguredClient
logclient.good.handler = default
)",
     "[default] client 0\nclient 0: writes text\n"},
    {"AClientOfAHandlerThatTheApplicationMade", R"(
logclient = c
logclient.c.type = ConfiguredClient
logclient.c.handler = own
)",
     "[default]\n[own] client 0\nclient 0: writes text\n", [] { Logger::GetLogHandler("own"); }},
    {"AClientUnattachedThatIsNotInitialised", kClientC + R"(
logclient.c.parameter.0.name = broken
logclient.c.parameter.0.value = yes
)",
     "[default]\nclient 0: writes text\n"},
    {"AClientUnattachedWhoseLayoutIsUnknown", R"(
logclient = c d
logclient.c.type = ConfiguredClient
logclient.c.handler = default
logclient.c.layout = loglayoutsimple
logclient.d.type = ConfiguredClient
logclient.d.handler = default
)",
     "[default] client 1\nclient 0: writes client 1: writes text\n"},
    {"AClientWithTheNamedLayout", kClientC + R"(
loglevel = 1
loglevel.1.name = ERROR
logclient.c.layout = LogLayoutSimple
)",
     "level 1 ERROR\n[default] client 0\nclient 0: writes ERROR - text\n"},
    {"AClientWithItsOwnLayout", kClientC + "logclient.c.layout =\n",
     "[default] client 0\nclient 0: writes text\n"},

    {"Parameters", kClientC + R"(
logclient.c.parameter.0.name = a
logclient.c.parameter.0.value = 1   # comment after a value
logclient.c.parameter.1.name = b
logclient.c.parameter.1.value = "  two  words "
logclient.d.parameter.2.name = c
logclient.d.parameter.2.value = of another client
)",
     "[default] client 0\nclient 0: a=1 b=  two  words  writes text\n"},
    {"ParametersUpToTheFirstThatIsNotWhole",
     R"(
logclient = gap late empty nameless twice
logclient.gap.type = ConfiguredClient
logclient.gap.handler = default
logclient.gap.parameter.0.name = a
logclient.gap.parameter.0.value = 1
logclient.gap.parameter.1.name = b
logclient.gap.parameter.1.value = 2
logclient.gap.parameter.3.name = d
logclient.gap.parameter.3.value = 4
logclient.late.type = ConfiguredClient
logclient.late.handler = default
logclient.late.parameter.1.name = a
logclient.late.parameter.1.value = 1
logclient.empty.type = ConfiguredClient
logclient.empty.handler = default
logclient.empty.parameter.0.name = a
logclient.empty.parameter.0.value = ""
logclient.empty.parameter.1.name = b
logclient.empty.parameter.1.value = 2
logclient.nameless.type = ConfiguredClient
logclient.nameless.handler = default
logclient.nameless.parameter.0.name = a
logclient.nameless.parameter.0.value = 1
logclient.nameless.parameter.1.value = 2
logclient.nameless.parameter.2.name = c
logclient.nameless.parameter.2.value = 3
logclient.twice.type = ConfiguredClient
logclient.twice.handler = default
logclient.twice.parameter.0.name = a
logclient.twice.parameter.0.value = first
logclient.twice.parameter.1.name = a
logclient.twice.parameter.1.value = second
logclient.twice.parameter.2.name = b
logclient.twice.parameter.2.value = 2
)",
     R"([default] client 0 client 1 client 2 client 3 client 4
client 0: a=1 b=2 writes text
client 1: writes text
client 2: writes text
client 3: a=1 writes text
client 4: a=first b=2 writes text
)"},

    {"ChildrenInTheOrderOfTheirList", R"(
loghandler = a b c a
loghandler.a.child = c b b
)",
     "[default]\n[a] [c] [b]\n[b]\n[c]\n"},
    {"ChildrenAfterClients", R"(
loghandler = a b
loghandler.a.child = b
logclient = c
logclient.c.type = ConfiguredClient
logclient.c.handler = a
)",
     "[default]\n[a] client 0 [b]\n[b]\nclient 0: writes text\n"},
    {"ATreeOfSeveralLevels", R"(
loghandler = bottom middle default
loghandler.default.child = middle
loghandler.middle.child = bottom
)",
     "[default] [middle]\n[bottom]\n[middle] [bottom]\n"},
    {"NoChildThatDoesNotExist", R"(
loghandler = a b
loghandler.a.child = missing b
)",
     "[default]\n[a] [b]\n[b]\n"},
    {"AChildThatTheApplicationMade", R"(
loghandler = a
loghandler.a.child = own
loghandler.own.child = a
loghandler.default.child = a
)",
     "[default]\n[own]\n[a] [own]\n", [] { Logger::GetLogHandler("own"); }},
    {"EverythingWhenLoggingIsNotExactlyFalse", R"(
logging = FALSE
loglevel = 1
loghandler = a
)",
     "level 1 1\n[default]\n[a]\n"},
};

class IniConfigurationTest : public LogConfiguratorIniTest,
                             public testing::WithParamInterface<Configuration> {};

TEST_P(IniConfigurationTest, SetsUp) {
  if (GetParam().beforehand != nullptr) GetParam().beforehand();

  EXPECT_TRUE(Configure(GetParam().text));

  EXPECT_EQ(GetParam().system, SystemText());
}

INSTANTIATE_TEST_SUITE_P(, IniConfigurationTest, testing::ValuesIn(kConfigurations));

TEST_F(LogConfiguratorIniTest, IgnoresSwitchesOfLevelsThatAreNotRegistered) {
  EXPECT_TRUE(Configure("loglevel = 1\nloghandler = a\nloghandler.a.level.2 = false\n"));

  Register(2);
  EXPECT_TRUE(Logger::GetLogHandler("a")->GetLogLevel(2));
}

TEST_F(LogConfiguratorIniTest, NumbersParametersInDecimal) {
  std::string text = kClientC;
  for (int number = 0; number < 12; ++number) {
    const std::string key = "logclient.c.parameter." + std::to_string(number);
    text += key + ".name = p" + std::to_string(number) + "\n" + key + ".value = v\n";
  }

  EXPECT_TRUE(Configure(text));

  EXPECT_EQ((Parameters{{"p9", "v"}, {"p10", "v"}, {"p11", "v"}}),
            ConfiguredClient::Made().at(0)->parameters);
}

// Single steps.

TEST_F(LogConfiguratorIniTest, ReturnsWhetherItSetUpOneClient) {
  LogConfiguratorIni configurator;
  Open(configurator, R"(
logclient.good.type = ConfiguredClient
logclient.good.handler = default
logclient.typeless.handler = default
logclient.homeless.type = ConfiguredClient
logclient.lost.type = ConfiguredClient
logclient.lost.handler = missing
logclient.unknown.type = Unknown
logclient.unknown.handler = default
logclient.broken.type = ConfiguredClient
logclient.broken.handler = default
logclient.broken.parameter.0.name = broken
logclient.broken.parameter.0.value = yes
logclient.bare.type = ConfiguredClient
logclient.bare.handler = default
logclient.bare.layout = Unknown
)");

  EXPECT_TRUE(configurator.SetLogClient("good"));
  for (const char* const client :
       {"typeless", "homeless", "lost", "unknown", "broken", "bare", "not there at all"}) {
    EXPECT_FALSE(configurator.SetLogClient(client)) << client;
  }

  EXPECT_EQ((std::vector<LogHandlerClient*>{ConfiguredClient::Made().at(0)}), Receivers("default"));
}

TEST_F(LogConfiguratorIniTest, SetsUpAHandlerThatIsNotListedWhenAsked) {
  Register(1);
  LogHandler handler("own");
  LogConfiguratorIni configurator;
  Open(configurator, "loghandler.own.level.1 = false\n");

  EXPECT_TRUE(configurator.SetLogHandler(&handler));

  EXPECT_FALSE(handler.GetLogLevel(1));
}

TEST_F(LogConfiguratorIniTest, MakesOnlyTheLastHandlerWhenBuildingTheTree) {
  Logger::GetLogHandler("child");
  LogConfiguratorIni configurator;
  Open(configurator, R"(
loghandler = x y z
loghandler.x.child = child
loghandler.z.child = child
)");

  EXPECT_TRUE(configurator.BuildLogTree());

  EXPECT_EQ("[default]\n[child]\n[z] [child]\n", SystemText());
}

TEST_F(LogConfiguratorIniTest, BuildsNoTreeWithoutAListOfHandlers) {
  Logger::GetLogHandler("a");
  LogConfiguratorIni configurator;
  Open(configurator, "loghandler.default.child = a\n");

  EXPECT_TRUE(configurator.BuildLogTree());

  EXPECT_EQ("[default]\n[a]\n", SystemText());
}

TEST_F(LogConfiguratorIniTest, AttachesTheChildrenOfOneHandlerWhenAsked) {
  Logger::GetLogHandler("child");
  Logger::GetLogHandler("parent");
  LogConfiguratorIni configurator;
  Open(configurator, "loghandler.parent.child = child\nloghandler.missing.child = child\n");

  EXPECT_TRUE(configurator.BuildLogTree("parent"));
  EXPECT_TRUE(configurator.BuildLogTree("child"));
  EXPECT_TRUE(configurator.BuildLogTree("missing"));

  EXPECT_EQ("[default]\n[child]\n[parent] [child]\n", SystemText());
}

TEST_F(LogConfiguratorIniTest, SaysThatLoggingIsEnabledForAnythingButFalse) {
  const struct {
    const char* text;
    bool isEnabled;
  } rows[] = {{"", true},
              {"logging =\n", true},
              {"logging = true\n", true},
              {"logging = FALSE\n", true},
              {"logging = False\n", true},
              {"logging = 0\n", true},
              {"logging = no\n", true},
              {"logging = \" false\"\n", true},
              {"logging = false\n", false},
              {"  logging=\"false\"  # for now\n", false}};
  for (const auto& row : rows) {
    LogConfiguratorIni configurator;
    Open(configurator, row.text);

    EXPECT_EQ(row.isEnabled, configurator.IsLoggingEnable()) << row.text;
  }
}

// Failures.

TEST_F(LogConfiguratorIniTest, SetsUpNothingWhenItCannotReadTheFileOrLoggingIsOff) {
  const std::string text = "loglevel = 1\nloghandler = a\n" + kClientC;
  LogConfiguratorIni configurator;

  EXPECT_FALSE(configurator.ReadConfiguration(folder_.Path("missing.ini")));
  EXPECT_FALSE(configurator.OpenFile(folder_.Path("missing.ini")));
  EXPECT_FALSE(Configure(text + "logging = false\n"));
  EXPECT_FALSE(Configure(text + "#" + std::string(511, '-') + "\n"));

  EXPECT_EQ(kNothing, SystemText());
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

  Configure(R"(
loglevel = 0 abc
loghandler = a
loghandler.a.child = missing
logclient = b c d
logclient.b.type = Unknown
logclient.b.handler = a
logclient.c.type = ConfiguredClient
logclient.c.handler = missing
logclient.d.type = ConfiguredClient
logclient.d.handler = a
logclient.d.layout = Unknown
)");
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

// Several files, several configurators.

TEST_F(LogConfiguratorIniTest, KeepsAndOverridesThePropertiesOfAnEarlierFile) {
  LogConfiguratorIni configurator;
  EXPECT_TRUE(configurator.ReadConfiguration(
      File("loglevel = 1 2\nloghandler = a\nloghandler.a.level.1 = false\n")));
  EXPECT_EQ("level 1 1\nlevel 2 2\n[default]\n[a] -1\n", SystemText());

  EXPECT_TRUE(configurator.ReadConfiguration(
      File("loghandler.a.level.1 = true\nloghandler.a.level.2 = false\nloglevel = 3\n")));
  EXPECT_EQ("level 1 1\nlevel 2 2\nlevel 3 3\n[default]\n[a] -2\n", SystemText());

  // What was set up stays, and so does the word that switches logging off.
  EXPECT_FALSE(configurator.ReadConfiguration(File("logging = false\nloglevel = 4\n")));
  EXPECT_FALSE(configurator.ReadConfiguration(File("loglevel = 5\n")));
  EXPECT_EQ("level 1 1\nlevel 2 2\nlevel 3 3\n[default]\n[a] -2\n", SystemText());
  EXPECT_TRUE(configurator.ReadConfiguration(File("logging = true\n")));
  EXPECT_EQ("level 1 1\nlevel 2 2\nlevel 3 3\nlevel 5 5\n[default]\n[a] -2\n", SystemText());
}

TEST_F(LogConfiguratorIniTest, SharesAndCopiesNoProperties) {
  LogConfiguratorIni source;
  Open(source, "logging = false\nloglevel = 1\n");
  LogConfiguratorIni target;
  Open(target, "loglevel = 2\n");

  LogConfiguratorIni copy(source);
  LogConfiguratorIni& result = (target = source);
  target.Assign(source);
  const LogConfiguratorIni& self = target;
  target = self;

  EXPECT_TRUE(copy.IsLoggingEnable());
  EXPECT_TRUE(copy.SetLogLevel());
  EXPECT_EQ(Levels(), RegisteredLevels());
  EXPECT_EQ(&target, &result);
  EXPECT_TRUE(target.IsLoggingEnable());
  EXPECT_TRUE(target.SetLogLevel());
  EXPECT_EQ((Levels{{2, "2"}}), RegisteredLevels());
  EXPECT_FALSE(source.IsLoggingEnable());
}

// A whole system, which outlives its configurator.

TEST_F(LogConfiguratorIniTest, SetsUpAConsoleAndARollingFile) {
  const std::string log = folder_.Path("app.log");
  EXPECT_TRUE(Configure(R"(
loglevel = 1 2 3 4
loglevel.1.name = ERROR
loglevel.2.name = WARNING
loglevel.3.name = INFO
loglevel.4.name = DEBUG
loghandler = default net
loghandler.net.level.4 = false
loghandler.default.child = net
logclient = con roll
logclient.con.type = LogClientConsole
logclient.con.handler = default
logclient.con.layout = LogLayoutSimple
logclient.roll.type = LogClientRollingFile
logclient.roll.handler = net
logclient.roll.parameter.0.name = filename
logclient.roll.parameter.0.value = )" +
                        log + R"(   # comment after a value
logclient.roll.parameter.1.name = maxbackup
logclient.roll.parameter.1.value = 3
logclient.roll.layout = LogLayoutStandard
)"));

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
  EXPECT_EQ("TIME |INFO| started\n", MaskTimes(Content(log + ".1")));
  EXPECT_EQ("TIME |WARNING| slow\n", MaskTimes(Content(log + ".2")));
  EXPECT_EQ("TIME |ERROR| disk 2 full\n", MaskTimes(Content(log + ".3")));
  EXPECT_FALSE(Exists(log + ".4"));
}

}  // namespace
