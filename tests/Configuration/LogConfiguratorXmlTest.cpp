#include "LogConfiguratorXml.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/ConfiguredClient.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlMessages.h"

namespace {

static_assert(std::has_virtual_destructor_v<LogConfiguratorXml>);

/// The system of every process before it is configured.
const char* const kNothing = "[default]\n";

/// A document with one element of each kind, and the system that it sets up.
const std::string kDocument = R"(<?xml version="1.0" encoding="UTF-8"?>
<configlogger>
<logging enable="true"/>
<loglevel id="1" name="ERROR"/>
<loghandler name="a"><handlerloglevel level="1" enable="false"/></loghandler>
<loghandler name="b"/>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="a"/><parameter name="a" value="1"/><layout layout="LogLayoutSimple"/></logclient>
<logtree><loghandler name="a"><loghandler name="b"/></loghandler></logtree>
</configlogger>
)";
const char* const kSystem = R"(level 1 ERROR
[default]
[a] -1 client 0 [b]
[b]
client 0: a=1 writes ERROR - text
)";

/// The document with another text in the place of a part of it.
std::string Changed(const std::string& part, const std::string& text) {
  const std::size_t at = kDocument.find(part);
  EXPECT_NE(std::string::npos, at) << part;
  return std::string(kDocument).replace(at, part.size(), text);
}

/// A libxml2 document of the test's own.
class ParsedText {
 public:
  explicit ParsedText(const std::string& text)
      : document_(xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, 0),
                  xmlFreeDoc) {}
  xmlNode* Root() const { return xmlDocGetRootElement(document_.get()); }

 private:
  std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document_;
};

class LogConfiguratorXmlTest : public testing::Test {
 protected:
  LogConfiguratorXmlTest() { ConfiguredClient::Register(); }

  std::string File(const std::string& text) const {
    const std::string path = folder_.Path("logger.xml");
    WriteFile(path, text);
    return path;
  }

  /// Reads the document as a whole configuration, with libxml2's messages kept off the screen.
  bool Configure(const std::string& text) {
    LogConfiguratorXml configurator;
    testing::internal::CaptureStderr();
    const bool isDone = configurator.ReadConfiguration(File(text));
    errors_ = testing::internal::GetCapturedStderr();
    return isDone;
  }

  /// Only opens the document.
  bool Open(LogConfiguratorXml& configurator, const std::string& text = kDocument) {
    testing::internal::CaptureStderr();
    const bool isOpen = configurator.OpenFile(File(text));
    errors_ = testing::internal::GetCapturedStderr();
    return isOpen;
  }

  static void ExpectEveryStepFalse(LogConfiguratorXml& configurator) {
    EXPECT_FALSE(configurator.IsLoggingEnable());
    EXPECT_FALSE(configurator.SetLogLevel());
    EXPECT_FALSE(configurator.SetLogHandler());
    EXPECT_FALSE(configurator.SetLogClient());
    EXPECT_FALSE(configurator.BuildLogTree());
    EXPECT_EQ(kNothing, SystemText());
  }

  TemporaryFolder folder_;
  std::string errors_;  ///< What the last document made libxml2 print.
};

// Documents that are read.

struct Configuration {
  const char* name;
  std::string document;
  std::string system;              ///< As of SystemText.
  void (*beforehand)() = nullptr;  ///< What the application did.

  friend std::ostream& operator<<(std::ostream& out, const Configuration& row) {
    return out << row.name;
  }
};

const Configuration kConfigurations[] = {
    {"OneElementOfEachKind", kDocument, kSystem},
    {"OtherEncodings",
     R"(<?xml version="1.0" encoding="ISO-8859-1"?><configlogger>
<logging enable="true"/><loglevel id="1" name="B)"
     "\xf6"
     R"(se"/><loghandler name="a"/>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="missing"/></logclient>
<logtree><loghandler name="a"/></logtree></configlogger>)",
     "level 1 B\xc3\xb6se\n[default]\n[a]\n"},
    {"Entities", R"(<!DOCTYPE configlogger [<!ENTITY name "net">
<!ENTITY level '<loglevel id="7" name="SEVEN"/>'>]>
<configlogger><logging enable="true"/>&level;<loghandler name="&name;&amp;&#65;"/>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="missing"/></logclient>
<logtree><loghandler name="a"/></logtree></configlogger>)",
     "level 7 SEVEN\n[default]\n[net&A]\n"},
    {"NoCommentsInstructionsAndBlanks", R"(<configlogger><logging enable="true"/>
<!-- <loglevel id="9" name="NINE"/> --><?loglevel id="8"?>

	<loglevel id="1" name="ERROR"/><!---->
<loghandler name="a"> <!-- off --> <handlerloglevel level="1" enable="false"/> </loghandler>
<logclient> <!-- one --> <type type="ConfiguredClient"/>
<?x?><clientloghandler handlername="a"/> </logclient>
<logtree><loghandler name="a"/></logtree></configlogger>)",
     "level 1 ERROR\n[default]\n[a] -1 client 0\nclient 0: writes text\n"},
    {"LevelsInTheOrderOfTheDocument", R"(<configlogger><logging enable="true"/>
<loglevel id="3" name="INFO"/><loglevel id="1" name="FIRST"/><loglevel id="1" name="SECOND"/>
<loglevel name=" two words " id="2"/><loglevel id="4" name="FILE"/>
<loghandler name="a"/>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="missing"/></logclient>
<logtree><loghandler name="a"/></logtree></configlogger>)",
     "level 4 own\nlevel 3 INFO\nlevel 1 FIRST\nlevel 2  two words \n[default]\n[a]\n",
     [] { Logger::GetLogLevelManager()->AddLogLevel(4, "own"); }},
    {"LevelsOfAnyDecimalNumberUpToTheLargestSignedOne", R"(<configlogger><logging enable="1"/>
<loglevel id="00" name="ZERO"/><loglevel id="010" name="TEN"/>
<loglevel id="2147483646" name="BELOW"/><loglevel id="4294967295" name="ABOVE"/>
<loglevel id="2147483647" name="SAME"/>
<loghandler name="a"><handlerloglevel level="3000000000" enable="false"/></loghandler>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="missing"/></logclient>
<logtree><loghandler name="a"/></logtree></configlogger>)",
     R"(level 0 ZERO
level 10 TEN
level 2147483646 BELOW
level 2147483647 ABOVE
[default]
[a] -2147483647
)"},
    {"HandlersOfTheTopOnly", R"(<configlogger><logging enable="0"/>
<loglevel id="1" name="ERROR"/>
<loghandler name="a"><loghandler name="inner"/></loghandler>
<loghandler name="A b"/><loghandler name="a"/>
<loghandler name="own"><handlerloglevel level="1" enable="false"/></loghandler>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="own"/></logclient>
<logtree><loghandler name="other"/></logtree></configlogger>)",
     "level 1 ERROR\n[default]\n[own] -1 client 0\n[a]\n[A b]\nclient 0: writes text\n",
     [] { Logger::GetLogHandler("own"); }},
    {"LevelsOffForAnythingButTrue", R"(<configlogger><logging enable="true"/>
<loglevel id="1" name="a"/><loglevel id="2" name="b"/><loglevel id="3" name="c"/>
<loglevel id="4" name="d"/><loglevel id="5" name="e"/><loglevel id="6" name="f"/>
<loglevel id="7" name="g"/><loglevel id="8" name="h"/>
<loghandler name="a">
<handlerloglevel level="1" enable="true"/><handlerloglevel level="2" enable="1"/>
<handlerloglevel level="3" enable="false"/><handlerloglevel level="4" enable="0"/>
<handlerloglevel level="5" enable=" true"/>
<handlerloglevel level="7" enable="false"/><handlerloglevel level="8" enable="true"/>
<handlerloglevel level="7" enable="true"/><handlerloglevel level="8" enable="false"/>
</loghandler><loghandler name="b"/>
<defaultloghandler><handlerloglevel level="1" enable="false"/></defaultloghandler>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="missing"/></logclient>
<logtree><loghandler name="b"><handlerloglevel level="1" enable="false"/></loghandler></logtree>
</configlogger>)",
     R"(level 1 a
level 2 b
level 3 c
level 4 d
level 5 e
level 6 f
level 7 g
level 8 h
[default]
[a] -2 -3 -4 -5 -8
[b]
)"},
    {"TheHandlerDefaultLikeAnyOther", R"(<configlogger><logging enable="true"/>
<loglevel id="1" name="ERROR"/>
<loghandler name="default"><handlerloglevel level="1" enable="false"/></loghandler>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="default"/></logclient>
<logtree><loghandler name="default"/></logtree></configlogger>)",
     "level 1 ERROR\n[default] -1 client 0\nclient 0: writes text\n"},
    {"ClientsInTheOrderOfTheDocument", R"(<configlogger><logging enable="true"/>
<loglevel id="1" name="ERROR"/><loghandler name="a"/><loghandler name="b"/>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="a"/></logclient>
<logclient><type type="LogClientConsole"/><clientloghandler handlername="a"/></logclient>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="b"/></logclient>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="own"/></logclient>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="a"/></logclient>
<logtree><loghandler name="a"><loghandler name="b"/></loghandler></logtree></configlogger>)",
     R"(level 1 ERROR
[default]
[own] client 2
[a] client 0 another client client 3 [b]
[b] client 1
client 0: writes text
client 1: writes text
client 2: writes text
client 3: writes text
)",
     [] { Logger::GetLogHandler("own"); }},
    {"NoClientsThatCannotBeMade", R"(<configlogger><logging enable="true"/>
<loglevel id="1" name="ERROR"/><loghandler name="a"/>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="missing"/></logclient>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="A"/></logclient>
<logclient><type type="configuredclient"/><clientloghandler handlername="a"/></logclient>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="a"/><parameter name="broken" value="yes"/></logclient>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="a"/></logclient>
<logtree><loghandler name="a"/></logtree></configlogger>)",
     R"(level 1 ERROR
[default]
[a] client 1
client 0: writes text
client 1: writes text
)"},
    {"ParametersAsTheyStand", R"(<configlogger><logging enable="true"/>
<loglevel id="1" name="ERROR"/><loghandler name="a"/>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="a"/>
<parameter name="a" value="  two  words "/><parameter value="&lt;&quot;&#10;&#x42;" name="b"/>
<parameter name="c" value="#no comment"/><parameter name="c" value="second"/>
<parameter name="p9" value="9"/></logclient>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="a"/>
<parameter name="d" value="4"/></logclient>
<logtree><loghandler name="a"/></logtree></configlogger>)",
     R"(level 1 ERROR
[default]
[a] client 0 client 1
client 0: a=  two  words  b=<"
B c=#no comment p9=9 writes text
client 1: d=4 writes text
)"},
    {"AClientWhoseLayoutIsUnknownWithNone", R"(<configlogger><logging enable="true"/>
<loglevel id="1" name="ERROR"/><loghandler name="a"/>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="a"/><layout layout="loglayoutsimple"/></logclient>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="a"/></logclient>
<logtree><loghandler name="a"/></logtree></configlogger>)",
     R"(level 1 ERROR
[default]
[a] client 0 client 1
client 0: writes client 1: writes text
)"},
    {"TreesOfAnyShape", R"(<configlogger><logging enable="true"/><loglevel id="1" name="ERROR"/>
<loghandler name="a"/><loghandler name="b"/><loghandler name="c"/><loghandler name="d"/>
<loghandler name="e"/>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="missing"/></logclient>
<logtree><loghandler name="default"><loghandler name="b"><loghandler name="d"/></loghandler>
<loghandler name="a"/></loghandler>
<loghandler name="c"><loghandler name="e"/><loghandler name="e"/></loghandler>
<loghandler name="own"><loghandler name="c"/></loghandler></logtree></configlogger>)",
     R"(level 1 ERROR
[default] [b] [a]
[own] [c]
[a]
[b] [d]
[c] [e]
[d]
[e]
)",
     [] { Logger::GetLogHandler("own"); }},
    {"NothingBelowAHandlerThatDoesNotExist", R"(<configlogger><logging enable="true"/>
<loglevel id="1" name="ERROR"/><loghandler name="a"/><loghandler name="b"/><loghandler name="c"/>
<loghandler name="d"/>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="missing"/></logclient>
<logtree><loghandler name="a"><loghandler name="missing"><loghandler name="b">
<loghandler name="d"/></loghandler></loghandler><loghandler name="c"/></loghandler>
<loghandler name="missing"><loghandler name="d"><loghandler name="b"/></loghandler></loghandler>
<loghandler name="c"><loghandler name="b"/></loghandler></logtree></configlogger>)",
     R"(level 1 ERROR
[default]
[a] [c]
[b]
[c] [b]
[d]
)"},
};

class XmlConfigurationTest : public LogConfiguratorXmlTest,
                             public testing::WithParamInterface<Configuration> {};

TEST_P(XmlConfigurationTest, SetsUp) {
  if (GetParam().beforehand != nullptr) GetParam().beforehand();

  EXPECT_TRUE(Configure(GetParam().document));

  EXPECT_EQ("", errors_);
  EXPECT_EQ(GetParam().system, SystemText());
}

INSTANTIATE_TEST_SUITE_P(, XmlConfigurationTest, testing::ValuesIn(kConfigurations));

TEST_F(LogConfiguratorXmlTest, IgnoresSwitchesOfLevelsThatAreNotRegistered) {
  EXPECT_TRUE(Configure(Changed(R"(level="1")", R"(level="9")")));

  Logger::GetLogLevelManager()->AddLogLevel(9, "NINE");

  EXPECT_TRUE(Logger::GetExistingLogHandler("a")->GetLogLevel(9));
}

TEST_F(LogConfiguratorXmlTest, WritesNothingToTheConsoleWithAnUnknownLayout) {
  EXPECT_TRUE(Configure(R"(<configlogger><logging enable="true"/>
<loglevel id="1" name="ERROR"/><loghandler name="a"/>
<logclient><type type="LogClientConsole"/><clientloghandler handlername="a"/><layout layout="Unknown"/></logclient>
<logtree><loghandler name="a"/></logtree></configlogger>)"));
  testing::internal::CaptureStdout();

  EXPECT_TRUE(Logger::GetLogHandler("a")->Log(1, "text"));

  EXPECT_EQ("", testing::internal::GetCapturedStdout());
  EXPECT_EQ(1U, Receivers("a").size());
}

TEST_F(LogConfiguratorXmlTest, ReadsAFileRelativeToTheWorkingFolder) {
  File(kDocument);
  std::filesystem::current_path(folder_.Path());
  LogConfiguratorXml configurator;

  EXPECT_TRUE(configurator.ReadConfiguration("logger.xml"));

  EXPECT_EQ(kSystem, SystemText());
}

// Documents that are refused.

TEST_F(LogConfiguratorXmlTest, ChangesNothingWhenThereIsNoSuchFile) {
  LogConfiguratorXml configurator;
  testing::internal::CaptureStderr();

  EXPECT_FALSE(configurator.ReadConfiguration(folder_.Path("missing.xml")));
  EXPECT_FALSE(configurator.OpenFile(folder_.Path("missing.xml")));
  EXPECT_FALSE(configurator.OpenFile(""));

  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_EQ(kNothing, SystemText());
}

TEST_F(LogConfiguratorXmlTest, SetsUpNothingAndSaysNothingWithoutAWholeDocument) {
  testing::internal::CaptureStdout();
  for (const std::string& document :
       {std::string("<configlogger><logging enable=\"true\"></configlogger>"), std::string(),
        std::string("no document"), Changed("ERROR", "&unknown;"),
        // Valid documents with another root.
        std::string(R"(<logging enable="true"/>)"),
        std::string(R"(<loglevel id="1" name="ERROR"/>)"),
        std::string(R"(<loghandler name="a"><loghandler name="b"/></loghandler>)"),
        std::string(R"(<logtree><loghandler name="a"/></logtree>)"),
        std::string(R"(<logclient><type type="ConfiguredClient"/>)"
                    R"(<clientloghandler handlername="default"/></logclient>)"),
        std::string(R"(<layout layout="x"/>)"), Changed(R"(enable="true")", R"(enable="false")")}) {
    EXPECT_FALSE(Configure(document)) << document;
    EXPECT_EQ("", errors_) << document;
  }

  EXPECT_EQ("", testing::internal::GetCapturedStdout());
  EXPECT_EQ(kNothing, SystemText());
}

TEST_F(LogConfiguratorXmlTest, SetsUpNothingFromADocumentThatIsNotValid) {
  const std::string logging = R"(<logging enable="true"/>)";
  const std::string level = R"(<loglevel id="1" name="ERROR"/>)";
  const std::string handlers =
      R"(<loghandler name="a"><handlerloglevel level="1" enable="false"/></loghandler>
<loghandler name="b"/>)";
  const std::string type = R"(<type type="ConfiguredClient"/>)";
  const std::string handlerOfClient = R"(<clientloghandler handlername="a"/>)";
  const std::string parameter = R"(<parameter name="a" value="1"/>)";
  const std::string layout = R"(<layout layout="LogLayoutSimple"/>)";
  const std::string client =
      "<logclient>" + type + handlerOfClient + parameter + layout + "</logclient>";
  const std::string inTree = R"(<loghandler name="a"><loghandler name="b"/></loghandler>)";
  const std::string tree = "<logtree>" + inTree + "</logtree>";
  const std::string unread =
      R"(<defaultloghandler><handlerloglevel level="1" enable="false"/></defaultloghandler>)";
  const struct {
    std::string part;
    std::string text;
  } changes[] = {
      // Elements out of order.
      {level + "\n" + handlers, handlers + level},
      {logging + "\n" + level, level + logging},
      {client + "\n" + tree, tree + client},
      {type + handlerOfClient, handlerOfClient + type},
      {parameter + layout, layout + parameter},
      // Elements that are missing.
      {logging, ""},
      {level, ""},
      {handlers, ""},
      {client, ""},
      {tree, ""},
      {inTree, ""},
      {type, ""},
      {handlerOfClient, ""},
      // Elements that are there too often.
      {logging, logging + logging},
      {tree, tree + tree},
      {layout, layout + layout},
      {client, unread + unread + client},
      {client, "<defaultloghandler/>" + client},
      // Empty names.
      {level, R"(<loglevel id="1" name=""/>)"},
      {R"(<loghandler name="b"/>)", R"(<loghandler name=""/>)"},
      {inTree, R"(<loghandler name=""/>)"},
      {type, R"(<type type=""/>)"},
      {handlerOfClient, R"(<clientloghandler handlername=""/>)"},
      {parameter, R"(<parameter name="" value="1"/>)"},
      {parameter, R"(<parameter name="a" value=""/>)"},
      {layout, R"(<layout layout=""/>)"},
      // Attributes that are missing.
      {logging, "<logging/>"},
      {level, R"(<loglevel id="1"/>)"},
      {level, R"(<loglevel name="ERROR"/>)"},
      {R"(<loghandler name="b"/>)", "<loghandler/>"},
      {R"(level="1" )", ""},
      {R"( enable="false")", ""},
      {type, "<type/>"},
      {handlerOfClient, "<clientloghandler/>"},
      {parameter, R"(<parameter name="a"/>)"},
      {parameter, R"(<parameter value="1"/>)"},
      {layout, "<layout/>"},
      {inTree, R"(<loghandler name="a"><loghandler/></loghandler>)"},
      // Elements and attributes that the schema does not know.
      {logging, R"(<logging enable="true" more="1"/>)"},
      {level, level + "<other/>"},
      {level, level + "text"},
      {R"(</loghandler>)", R"(<loghandler name="b"/></loghandler>)"},
      {kDocument, "<other/>"},
      {kDocument, R"(<x:configlogger xmlns:x="x"/>)"},
      // Values of another type.
      {logging, R"(<logging enable=""/>)"},
      {logging, R"(<logging enable="FALSE"/>)"},
      {logging, R"(<logging enable="no"/>)"},
      {logging, R"(<logging enable="2"/>)"},
      {R"(id="1")", R"(id="4294967296")"},
      {R"(id="1")", R"(id="-1")"},
      {R"(id="1")", R"(id="")"},
      {R"(id="1")", R"(id="one")"},
      {R"(id="1")", R"(id="1.0")"},
      {R"(id="1")", R"(id="0x1")"},
      {R"(id="1")", R"(id="1 2")"},
  };
  for (const auto& change : changes) {
    EXPECT_FALSE(Configure(Changed(change.part, change.text))) << change.part << change.text;
    EXPECT_NE("", errors_) << change.part << change.text;
  }

  EXPECT_EQ(kNothing, SystemText());
}

const char* const kNoTree = R"(<configlogger><logging enable="true"/>
<loglevel id="1" name="ERROR"/><loghandler name="a"/>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="a"/></logclient>
</configlogger>)";

TEST_F(LogConfiguratorXmlTest, ReportsWhatIsNotValidOnStandardError) {
  EXPECT_FALSE(Configure(kNoTree));

  EXPECT_EQ(folder_.Path("logger.xml") +
                ":1: element configlogger: Schemas validity error : Element 'configlogger': "
                "Missing child element(s). Expected is one of ( logclient, logtree ).\n",
            errors_);
}

TEST_F(LogConfiguratorXmlTest, ReportsWhatIsNotValidToTheApplicationsHandlers) {
  for (const XmlMessages::Kind kind : {XmlMessages::Kind::Structured, XmlMessages::Kind::Generic}) {
    const XmlMessages messages(kind);

    EXPECT_FALSE(Configure(kNoTree));

    EXPECT_EQ("", errors_);
    EXPECT_EQ(
        "Element 'configlogger': Missing child element(s). Expected is one of ( logclient, "
        "logtree ).\n",
        messages.text);
  }
}

TEST_F(LogConfiguratorXmlTest, SaysThatLoggingIsEnabledForAnythingButFalse) {
  const struct {
    const char* word;
    bool isEnabled;
  } rows[] = {{"true", true},
              {"1", true},
              {"0", true},
              {" false", true},  // Valid, and not exactly that word.
              {"false", false}};
  for (const auto& row : rows) {
    LogConfiguratorXml configurator;
    EXPECT_TRUE(Open(configurator,
                     Changed(R"(enable="true")", std::string("enable=\"") + row.word + "\"")));

    EXPECT_EQ(row.isEnabled, configurator.IsLoggingEnable()) << row.word;
  }
}

// Elements.

TEST_F(LogConfiguratorXmlTest, AttachesTheHandlersOfAnElementWhenAsked) {
  const ParsedText element(R"(<any><loghandler name="a"><loghandler name="b"/></loghandler>
<other name="c"/><loghandler name="missing"/><loghandler name="d"><loghandler/></loghandler>
<loghandler name="b"/></any>)");
  for (const char* const name : {"parent", "a", "b", "c", "d"}) Logger::GetLogHandler(name);
  LogConfiguratorXml configurator;
  LogHandler* const parent = Logger::GetExistingLogHandler("parent");

  EXPECT_FALSE(configurator.AddSubHandler(nullptr, parent));
  EXPECT_FALSE(configurator.AddSubHandler(element.Root(), nullptr));
  EXPECT_EQ("[default]\n[parent]\n[a]\n[b]\n[c]\n[d]\n", SystemText());
  // A failure further down is ignored.
  EXPECT_TRUE(configurator.AddSubHandler(element.Root(), parent));

  EXPECT_EQ("[default]\n[parent] [a] [d] [b]\n[a] [b]\n[b]\n[c]\n[d]\n", SystemText());
}

TEST_F(LogConfiguratorXmlTest, StopsAtAChildWithoutAName) {
  const ParsedText element(
      R"(<any><loghandler name="a"/><loghandler/><loghandler name="b"/></any>)");
  for (const char* const name : {"parent", "a", "b"}) Logger::GetLogHandler(name);
  LogConfiguratorXml configurator;

  EXPECT_FALSE(configurator.AddSubHandler(element.Root(), Logger::GetExistingLogHandler("parent")));

  EXPECT_EQ("[default]\n[parent] [a]\n[a]\n[b]\n", SystemText());
}

TEST_F(LogConfiguratorXmlTest, ReadsAnAttributeAsText) {
  const ParsedText element("<e a=' two\twords ' empty='' mixed='&lt;&#65;'><inner b='1'/></e>");
  LogConfiguratorXml configurator;
  logstring value = "old";

  for (const char* const missing : {"b", "A", ""}) {
    EXPECT_FALSE(configurator.GetAttribute(element.Root(), missing, value)) << missing;
    EXPECT_EQ("old", value);
  }
  EXPECT_TRUE(configurator.GetAttribute(element.Root(), "a", value));
  EXPECT_EQ(" two words ", value);
  EXPECT_TRUE(configurator.GetAttribute(element.Root(), "mixed", value));
  EXPECT_EQ("<A", value);
  EXPECT_TRUE(configurator.GetAttribute(element.Root(), "empty", value));
  EXPECT_EQ("", value);
}

TEST_F(LogConfiguratorXmlTest, ReadsAnAttributeAsANumber) {
  const struct {
    const char* text;
    int number;
  } rows[] = {{" 7th", 7},
              {"-12", -12},
              {"+3", 3},
              {"x1", 0},
              {"", 0},
              {"2147483647", 2147483647},
              {"2147483648", 2147483647},
              {"99999999999999999999", 2147483647},
              {"-2147483648", -2147483647 - 1},
              {"-2147483649", -2147483647 - 1}};
  for (const auto& row : rows) {
    const ParsedText element(std::string("<e a='") + row.text + "'/>");
    LogConfiguratorXml configurator;
    int value = 4711;

    EXPECT_FALSE(configurator.GetAttribute(element.Root(), "b", value));
    EXPECT_EQ(4711, value);
    EXPECT_TRUE(configurator.GetAttribute(element.Root(), "a", value));
    EXPECT_EQ(row.number, value) << row.text;
  }
}

// Single steps.

TEST_F(LogConfiguratorXmlTest, DoesOneStepAtATime) {
  LogConfiguratorXml configurator;

  EXPECT_TRUE(Open(configurator));
  EXPECT_TRUE(configurator.IsLoggingEnable());
  EXPECT_EQ(kNothing, SystemText());
  EXPECT_TRUE(configurator.SetLogLevel());
  EXPECT_EQ("level 1 ERROR\n[default]\n", SystemText());
  EXPECT_TRUE(configurator.SetLogHandler());
  EXPECT_EQ("level 1 ERROR\n[default]\n[a] -1\n[b]\n", SystemText());
  EXPECT_TRUE(configurator.SetLogClient());
  EXPECT_EQ("level 1 ERROR\n[default]\n[a] -1 client 0\n[b]\nclient 0: a=1 writes ERROR - text\n",
            SystemText());
  EXPECT_TRUE(configurator.BuildLogTree());
  EXPECT_EQ(kSystem, SystemText());
}

TEST_F(LogConfiguratorXmlTest, DoesNoStepWithoutADocument) {
  LogConfiguratorXml configurator;
  ExpectEveryStepFalse(configurator);

  EXPECT_FALSE(configurator.OpenFile(folder_.Path("missing.xml")));
  ExpectEveryStepFalse(configurator);
  for (const char* const document : {"<configlogger>", kNoTree}) {
    EXPECT_TRUE(Open(configurator));
    EXPECT_FALSE(Open(configurator, document));
    ExpectEveryStepFalse(configurator);
  }
  EXPECT_TRUE(Open(configurator));
  EXPECT_FALSE(configurator.OpenFile(folder_.Path("missing.xml")));
  ExpectEveryStepFalse(configurator);
}

TEST_F(LogConfiguratorXmlTest, ReadsTheChildrenOfAnyRoot) {
  LogConfiguratorXml configurator;
  EXPECT_TRUE(Open(configurator, R"(<logtree><loghandler name="x"/></logtree>)"));

  EXPECT_FALSE(configurator.IsLoggingEnable());
  EXPECT_TRUE(configurator.SetLogLevel());
  EXPECT_TRUE(configurator.SetLogClient());
  EXPECT_TRUE(configurator.BuildLogTree());
  EXPECT_EQ(kNothing, SystemText());
  EXPECT_TRUE(configurator.SetLogHandler());

  EXPECT_EQ("[default]\n[x]\n", SystemText());
}

// Several documents, several configurators.

TEST_F(LogConfiguratorXmlTest, ReadsOneDocumentAfterTheOther) {
  LogConfiguratorXml configurator;
  EXPECT_TRUE(configurator.ReadConfiguration(File(kDocument)));

  EXPECT_TRUE(configurator.ReadConfiguration(File(R"(<configlogger><logging enable="true"/>
<loglevel id="3" name="THREE"/><loghandler name="c"/>
<logclient><type type="ConfiguredClient"/><clientloghandler handlername="c"/></logclient>
<logtree><loghandler name="c"/></logtree></configlogger>)")));
  EXPECT_TRUE(configurator.ReadConfiguration(File(kDocument)));
  EXPECT_FALSE(Configure("<configlogger/>"));  // Leaves what is set up.

  EXPECT_EQ(R"(level 1 ERROR
level 3 THREE
[default]
[a] -1 client 0 [b] client 2
[b]
[c] client 1
client 0: a=1 writes ERROR - text
client 1: writes text
client 2: a=1 writes ERROR - text
)",
            SystemText());
}

TEST_F(LogConfiguratorXmlTest, CopiesNoDocument) {
  LogConfiguratorXml source;
  EXPECT_TRUE(Open(source));
  LogConfiguratorXml target;
  EXPECT_TRUE(Open(
      target, Changed(R"(<loglevel id="1" name="ERROR"/>)", R"(<loglevel id="7" name="SEVEN"/>)")));
  LogConfiguratorXml empty;

  LogConfiguratorXml copy(source);
  LogConfiguratorXml& result = (target = source);
  target.Assign(source);
  empty = source;
  const LogConfiguratorXml& self = target;
  target = self;

  ExpectEveryStepFalse(copy);
  ExpectEveryStepFalse(empty);
  EXPECT_EQ(&target, &result);
  EXPECT_TRUE(target.SetLogLevel());
  EXPECT_EQ((Levels{{7, "SEVEN"}}), RegisteredLevels());
  EXPECT_TRUE(source.SetLogLevel());
  EXPECT_EQ((Levels{{7, "SEVEN"}, {1, "ERROR"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorXmlTest, LeavesWhatItSetUpWhenItEnds) {
  auto configurator = std::make_unique<LogConfiguratorXml>();
  EXPECT_TRUE(
      configurator->ReadConfiguration(File(Changed(R"(enable="false")", R"(enable="true")"))));

  configurator.reset();

  EXPECT_TRUE(Logger::GetLogHandler("a")->Log(1, "text"));
  EXPECT_EQ((std::vector<std::string>{"ERROR - text\n"}), ConfiguredClient::Made().at(0)->lines);
}

// The schema.

TEST_F(LogConfiguratorXmlTest, HasExactlyThisSchema) {
  LogConfiguratorXml configurator;
  logstring buffer = "old";

  EXPECT_EQ(&buffer, &configurator.CreateSchemaBuf(buffer));
  EXPECT_EQ(buffer, Content(PROJECT_FOLDER "/Src/Configuration/liblogger.xsd"));
  EXPECT_EQ(R"(<?xml version="1.0" encoding="UTF-8"?>
<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
<xs:element name="type">
<xs:complexType>
<xs:attribute name="type" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
</xs:complexType>
</xs:element>
<xs:element name="parameter">
<xs:complexType>
<xs:attribute name="value" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
<xs:attribute name="name" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
</xs:complexType>
</xs:element>
<xs:element name="logtree">
<xs:complexType>
<xs:sequence>
<xs:element ref="loghandler" maxOccurs="unbounded"/>
</xs:sequence>
</xs:complexType>
</xs:element>
<xs:element name="loglevel">
<xs:complexType>
<xs:attribute name="name" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
<xs:attribute name="id" type="xs:unsignedInt" use="required"/>
</xs:complexType>
</xs:element>
<xs:element name="loghandler">
<xs:complexType>
<xs:choice minOccurs="0">
<xs:element ref="handlerloglevel" maxOccurs="unbounded"/>
<xs:element ref="loghandler" maxOccurs="unbounded"/>
</xs:choice>
<xs:attribute name="name" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
</xs:complexType>
</xs:element>
<xs:element name="logging">
<xs:complexType>
<xs:attribute name="enable" type="xs:boolean" use="required"/>
</xs:complexType>
</xs:element>
<xs:element name="logclient">
<xs:complexType>
<xs:sequence>
<xs:element ref="type"/>
<xs:element ref="clientloghandler"/>
<xs:element ref="parameter" minOccurs="0" maxOccurs="unbounded"/>
<xs:element ref="layout" minOccurs="0" maxOccurs="1"/>
</xs:sequence>
</xs:complexType>
</xs:element>
<xs:element name="layout">
<xs:complexType>
<xs:attribute name="layout" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
</xs:complexType>
</xs:element>
<xs:element name="handlerloglevel">
<xs:complexType>
<xs:attribute name="level" type="xs:unsignedInt" use="required"/>
<xs:attribute name="enable" type="xs:boolean" use="required"/>
</xs:complexType>
</xs:element>
<xs:element name="defaultloghandler">
<xs:complexType>
<xs:sequence>
<xs:element ref="handlerloglevel"/>
</xs:sequence>
</xs:complexType>
</xs:element>
<xs:element name="configlogger">
<xs:complexType>
<xs:sequence>
<xs:element ref="logging"/>
<xs:element ref="loglevel" maxOccurs="unbounded"/>
<xs:element ref="loghandler" maxOccurs="unbounded"/>
<xs:element ref="defaultloghandler" minOccurs="0" maxOccurs="1"/>
<xs:element ref="logclient" maxOccurs="unbounded"/>
<xs:element ref="logtree"/>
</xs:sequence>
</xs:complexType>
</xs:element>
<xs:element name="clientloghandler">
<xs:complexType>
<xs:attribute name="handlername" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
</xs:complexType>
</xs:element>
</xs:schema>
)",
            buffer);
}

}  // namespace
