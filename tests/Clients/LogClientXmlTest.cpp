#include "LogClientXml.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "LogClientFactory.h"
#include "LogLevelManager.h"
#include "LogProperties.h"
#include "Logger.h"
#include "Support/Descriptors.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/TimeZone.h"
#include "Support/XmlEntries.h"
#include "Support/XmlMessages.h"

namespace {

static_assert(std::has_virtual_destructor_v<LogClientXml>);

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

/// An entry of level 1 as it stands in the file; the log element is given whole.
std::string Entry(const std::string& logElement) {
  return "<entry level=\"ERROR\"><date>2024-03-05</date><time>14:07:09</time>" + logElement +
         "</entry>";
}

/// A whole file with the entries.
std::string Log(const std::string& entries) {
  return kDeclaration + "<apitestlog>" + entries + "</apitestlog>\n";
}

class LogClientXmlTest : public testing::Test {
 protected:
  LogClientXmlTest() {
    SetTimeZone("UTC0");
    Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  }

  /// A client made from properties, with these besides the file name.
  std::unique_ptr<LogClientXml> ClientWith(const std::string& key, const std::string& value) const {
    LogProperties properties;
    properties.AddProperty("filename", file_);
    properties.AddProperty(key, value);
    return std::make_unique<LogClientXml>(properties);
  }

  TemporaryFolder folder_;
  const std::string file_ = folder_.Path("log.xml");
};

TEST_F(LogClientXmlTest, WritesAnEntryForAnEvent) {
  LogClientXml client(file_, "log.xsl");

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_TRUE(client.Publish(EventWith("disk full")));

  EXPECT_EQ(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<?xml-stylesheet type=\"text/xsl\" href=\"log.xsl\"?>\n"
      "<apitestlog><entry level=\"ERROR\"><date>2024-03-05</date><time>14:07:09</time>"
      "<log>disk full</log></entry></apitestlog>\n",
      Content(file_));
}

TEST_F(LogClientXmlTest, HasEveryEventInTheFileWhenPublishReturns) {
  Logger::GetLogLevelManager()->AddLogLevel(2, "INFO");
  LogClientXml client(file_, "");

  EXPECT_TRUE(client.Publish(EventWith("one")));
  EXPECT_EQ(Log(Entry("<log>one</log>")), Content(file_));
  EXPECT_TRUE(client.Publish(EventWith("two")));
  EXPECT_EQ(Log(Entry("<log>one</log>") + Entry("<log>two</log>")), Content(file_));
  EXPECT_TRUE(client.Publish(EventWith("three", 2)));

  EXPECT_EQ(Log(Entry("<log>one</log>") + Entry("<log>two</log>") +
                "<entry level=\"INFO\"><date>2024-03-05</date><time>14:07:09</time>"
                "<log>three</log></entry>"),
            Content(file_));
}

TEST_F(LogClientXmlTest, IndentsTheFileWhenItEnds) {
  {
    LogClientXml client(file_, "log.xsl");
    client.Publish(EventWith("one"));
    client.Publish(EventWith(""));
  }

  EXPECT_EQ(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<?xml-stylesheet type=\"text/xsl\" href=\"log.xsl\"?>\n"
      "<apitestlog>\n"
      "  <entry level=\"ERROR\">\n"
      "    <date>2024-03-05</date>\n"
      "    <time>14:07:09</time>\n"
      "    <log>one</log>\n"
      "  </entry>\n"
      "  <entry level=\"ERROR\">\n"
      "    <date>2024-03-05</date>\n"
      "    <time>14:07:09</time>\n"
      "    <log/>\n"
      "  </entry>\n"
      "</apitestlog>\n",
      Content(file_));
}

TEST_F(LogClientXmlTest, WritesNothingBeforeTheFirstEvent) {
  WriteFile(file_, "old");

  LogClientXml client(file_, "log.xsl");

  EXPECT_EQ("old", Content(file_));
}

TEST_F(LogClientXmlTest, ReplacesAFormerFileWithTheFirstEvent) {
  WriteFile(file_, std::string(10000, 'x'));
  LogClientXml client(file_, "");

  client.Publish(EventWith("one"));

  EXPECT_EQ(Log(Entry("<log>one</log>")), Content(file_));
}

TEST_F(LogClientXmlTest, LeavesAnEmptyDocumentWithoutAnEvent) {
  { LogClientXml client(file_, ""); }
  EXPECT_EQ(kDeclaration + "<apitestlog/>\n", Content(file_));
  { LogClientXml client(file_, "log.xsl"); }

  EXPECT_EQ(kDeclaration +
                "<?xml-stylesheet type=\"text/xsl\" href=\"log.xsl\"?>\n"
                "<apitestlog/>\n",
            Content(file_));
}

TEST_F(LogClientXmlTest, NeverWritesWithoutAFileName) {
  std::filesystem::current_path(folder_.Path());
  {
    LogClientXml client("", "log.xsl");
    EXPECT_FALSE(client.IsInitialize());
    EXPECT_FALSE(client.Publish(EventWith("lost")));
    LogProperties properties;
    properties.AddProperty("xslfilename", "log.xsl");
    LogClientXml other(properties);
    EXPECT_FALSE(other.IsInitialize());
    EXPECT_FALSE(other.Publish(EventWith("lost")));
  }

  EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(LogClientXmlTest, ReadsItsFileNamesFromProperties) {
  const auto client = ClientWith("xslfilename", "log.xsl");

  EXPECT_TRUE(client->IsInitialize());
  client->Publish(EventWith("a<b"));

  EXPECT_EQ(kDeclaration + "<?xml-stylesheet type=\"text/xsl\" href=\"log.xsl\"?>\n<apitestlog>" +
                Entry("<log>a&lt;b</log>") + "</apitestlog>\n",
            Content(file_));
}

TEST_F(LogClientXmlTest, RefersToNoStylesheetWithoutTheProperty) {
  ClientWith("other", "log.xsl")->Publish(EventWith("one"));

  EXPECT_EQ(std::string::npos, Content(file_).find("xml-stylesheet"));
  EXPECT_EQ((std::vector<std::string>{"one"}), XmlLog(file_).Messages());
}

TEST_F(LogClientXmlTest, PutsTheNameOfTheStylesheetInAsItStands) {
  LogClientXml client(file_, "a b/\"&<%20>\xC3\xA9.xsl");

  client.Publish(EventWith("one"));

  EXPECT_EQ(kDeclaration +
                "<?xml-stylesheet type=\"text/xsl\" href=\"a b/\"&<%20>\xC3\xA9.xsl\"?>\n"
                "<apitestlog>" +
                Entry("<log>one</log>") + "</apitestlog>\n",
            Content(file_));
}

TEST_F(LogClientXmlTest, UsesNoLayout) {
  LogClientXml client(file_, "");
  client.SetLayout(nullptr);

  EXPECT_TRUE(client.Publish(EventWith("one")));

  EXPECT_EQ(Log(Entry("<log>one</log>")), Content(file_));
}

TEST_F(LogClientXmlTest, IsMadeByTheFactoryUnderItsName) {
  LogClientFactory& factory = *Logger::GetLogManager()->GetLogClientFactory();
  LogProperties properties;
  properties.AddProperty("filename", file_);

  EXPECT_NE(nullptr,
            dynamic_cast<LogClientXml*>(factory.CreateLogClient("LogClientXML", properties)));

  EXPECT_EQ(nullptr, factory.CreateLogClient("LogClientXml", properties));
  EXPECT_EQ(nullptr, factory.CreateLogClient("LogClientXML", LogProperties()));
}

TEST_F(LogClientXmlTest, StartsANewDocumentWhenInitialisedAgain) {
  auto client = std::make_unique<LogClientXml>(file_, "");
  for (const char* const message : {"old", "older", "\xC3\xA9"})
    client->Publish(EventWith(message));

  client->Init("log.xsl");
  EXPECT_TRUE(client->IsInitialize());
  client->Publish(EventWith("new"));
  client->Publish(EventWith("newer"));

  EXPECT_EQ(kDeclaration + "<?xml-stylesheet type=\"text/xsl\" href=\"log.xsl\"?>\n<apitestlog>" +
                Entry("<log>new</log>") + Entry("<log>newer</log>") + "</apitestlog>\n",
            Content(file_));
  client.reset();
  EXPECT_EQ((std::vector<std::string>{"new", "newer"}), XmlLog(file_).Messages());
}

// Texts.

TEST_F(LogClientXmlTest, EscapesMarkup) {
  LogClientXml client(file_, "");

  client.Publish(EventWith("<b>\"1\" > '0'</b> ]]>\t\r\n."));

  EXPECT_EQ(Log(Entry("<log>&lt;b&gt;\"1\" &gt; '0'&lt;/b&gt; ]]&gt;\t&#13;\n.</log>")),
            Content(file_));
}

TEST_F(LogClientXmlTest, KeepsCharactersBeyondAscii) {
  LogClientXml client(file_, "");

  client.Publish(EventWith("\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"));
  client.Publish(EventWith("\xC3\xA9"));

  EXPECT_EQ(Log(Entry("<log>\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80</log>") +
                Entry("<log>\xC3\xA9</log>")),
            Content(file_));
}

TEST_F(LogClientXmlTest, LosesTheTextWithABareAmpersand) {
  for (const char* const message : {"AT&T", "a & b", "&", "a &amp b", "tail&"}) {
    LogClientXml client(file_, "");
    testing::internal::CaptureStderr();

    EXPECT_TRUE(client.Publish(EventWith(message)));

    EXPECT_EQ("", testing::internal::GetCapturedStderr()) << message;
    EXPECT_EQ(Log(Entry("<log/>")), Content(file_)) << message;
  }
}

TEST_F(LogClientXmlTest, ReadsEntityAndCharacterReferences) {
  LogClientXml client(file_, "");

  client.Publish(EventWith("&lt;&gt;&amp;&quot;&apos; &#65;&#x42; &amp;amp;"));

  EXPECT_EQ(Log(Entry("<log>&lt;&gt;&amp;\"' AB &amp;amp;</log>")), Content(file_));
  EXPECT_EQ((std::vector<std::string>{"<>&\"' AB &amp;"}), XmlLog(file_).Messages());
}

TEST_F(LogClientXmlTest, IsSpoiltByAReferenceToAnUndeclaredEntity) {
  LogClientXml client(file_, "");

  client.Publish(EventWith("x &unknown; y"));
  client.Publish(EventWith("next"));

  EXPECT_EQ(Log(Entry("<log>x &unknown; y</log>") + Entry("<log>next</log>")), Content(file_));
  EXPECT_FALSE(XmlLog(file_).IsParsed());
}

TEST_F(LogClientXmlTest, IsSpoiltByAReferenceToAForbiddenCharacter) {
  LogClientXml client(file_, "");

  client.Publish(EventWith("x &#1; y"));
  client.Publish(EventWith("next"));

  EXPECT_EQ(Log(Entry("<log>x \x01 y</log>") + Entry("<log>next</log>")), Content(file_));
  EXPECT_FALSE(XmlLog(file_).IsParsed());
}

TEST_F(LogClientXmlTest, ReplacesWhatXmlCannotCarry) {
  LogClientXml client(file_, "");

  client.Publish(
      EventWith(std::string("a\xFF"
                            "b\x01\0c\xEF\xBF\xBE",
                            9)));
  client.Publish(EventWith("cut \xE2\x82"));

  EXPECT_EQ(Log(Entry("<log>a\xEF\xBF\xBD"
                      "b\xEF\xBF\xBD\xEF\xBF\xBD"
                      "c\xEF\xBF\xBD</log>") +
                Entry("<log>cut \xEF\xBF\xBD\xEF\xBF\xBD</log>")),
            Content(file_));
  EXPECT_EQ(2U, XmlLog(file_).Entries().size());
}

TEST_F(LogClientXmlTest, WritesNoNameForALevelThatIsNotRegistered) {
  LogClientXml client(file_, "");

  client.Publish(EventWith("one", 99));

  EXPECT_EQ(Log("<entry level=\"\"><date>2024-03-05</date><time>14:07:09</time><log>one</log>"
                "</entry>"),
            Content(file_));
}

TEST_F(LogClientXmlTest, EscapesTheNameOfALevel) {
  Logger::GetLogLevelManager()->AddLogLevel(2, "<\"A&T\" '&amp;'\t\r\n\xFF>");
  LogClientXml client(file_, "");

  client.Publish(EventWith("one", 2));

  EXPECT_EQ(
      Log("<entry level=\"&lt;&quot;A&amp;T&quot; '&amp;amp;'&#9;&#13;&#10;\xEF\xBF\xBD&gt;\">"
          "<date>2024-03-05</date><time>14:07:09</time><log>one</log></entry>"),
      Content(file_));
  EXPECT_EQ("<\"A&T\" '&amp;'\t\r\n\xEF\xBF\xBD>", XmlLog(file_).Entries().at(0).level);
}

TEST_F(LogClientXmlTest, WritesTheNameOfALevelAlikeInEveryEntry) {
  Logger::GetLogLevelManager()->AddLogLevel(2, "\xC3\x89rreur");
  LogClientXml client(file_, "");

  client.Publish(EventWith("one", 2));
  client.Publish(EventWith("two", 2));

  const std::string start =
      "<entry level=\"\xC3\x89rreur\"><date>2024-03-05</date><time>14:07:09</time>";
  EXPECT_EQ(Log(start + "<log>one</log></entry>" + start + "<log>two</log></entry>"),
            Content(file_));
}

TEST_F(LogClientXmlTest, LeavesOutADateThatHasNoText) {
  LogClientXml client(file_, "");

  client.Publish(LogEvent(1, "far", "handler", "", 0, timeval{4611686018427387904, 0}, 7));

  EXPECT_EQ(Log("<entry level=\"ERROR\"><date/><time/><log>far</log></entry>"), Content(file_));
}

TEST_F(LogClientXmlTest, HasTheDateOfAYearOfFiveDigits) {
  LogClientXml client(file_, "");

  client.Publish(LogEvent(1, "far", "handler", "", 0, timeval{253402300800, 0}, 7));

  EXPECT_EQ(Log("<entry level=\"ERROR\"><date>10000-01-01</date><time>00:00:00</time>"
                "<log>far</log></entry>"),
            Content(file_));
}

TEST_F(LogClientXmlTest, IndentsAsTheApplicationSetsItForLibxml) {
  const char* const former = xmlTreeIndentString;
  xmlTreeIndentString = "\t";
  {
    LogClientXml client(file_, "");
    client.Publish(EventWith("one"));
  }
  xmlTreeIndentString = former;

  EXPECT_EQ(kDeclaration +
                "<apitestlog>\n\t<entry level=\"ERROR\">\n\t\t<date>2024-03-05</date>\n"
                "\t\t<time>14:07:09</time>\n\t\t<log>one</log>\n\t</entry>\n</apitestlog>\n",
            Content(file_));
}

TEST_F(LogClientXmlTest, TakesTextsAsTheyStandWhenConfiguredSo) {
  const std::vector<std::string> messages{"AT&T", "&lt;",  "&unknown;",     "&#1; &#65;",
                                          "",     "&amp;", "<a b='c'>\r\n", "\xC3\xA9"};
  const auto client = ClientWith("escapetext", "true");

  for (const std::string& message : messages) client->Publish(EventWith(message));

  EXPECT_EQ(Log(Entry("<log>AT&amp;T</log>") + Entry("<log>&amp;lt;</log>") +
                Entry("<log>&amp;unknown;</log>") + Entry("<log>&amp;#1; &amp;#65;</log>") +
                Entry("<log></log>") + Entry("<log>&amp;amp;</log>") +
                Entry("<log>&lt;a b='c'&gt;&#13;\n</log>") + Entry("<log>\xC3\xA9</log>")),
            Content(file_));
  EXPECT_EQ(messages, XmlLog(file_).Messages());
}

TEST_F(LogClientXmlTest, ReplacesWhatXmlCannotCarryAlsoWhenTextsAreTakenAsTheyStand) {
  const auto client = ClientWith("escapetext", "true");

  client->Publish(EventWith("a\xFF&\x01"));

  EXPECT_EQ(Log(Entry("<log>a\xEF\xBF\xBD&amp;\xEF\xBF\xBD</log>")), Content(file_));
}

TEST_F(LogClientXmlTest, ReadsReferencesUnlessThePropertyIsExactlyTrue) {
  for (const char* const word : {"TRUE", "1", "yes", " true", "false"}) {
    const auto client = ClientWith("escapetext", word);

    client->Publish(EventWith("AT&T"));

    EXPECT_EQ(Log(Entry("<log/>")), Content(file_)) << word;
  }
}

// Files that others touch, or that cannot be written.

TEST_F(LogClientXmlTest, SaysNothingAboutAFileThatCannotBeSaved) {
  const XmlMessages messages(XmlMessages::Kind::Generic);
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  {
    LogClientXml client(folder_.Path("missing/log.xml"), "");
    EXPECT_TRUE(client.IsInitialize());
    EXPECT_TRUE(client.Publish(EventWith("lost")));
    EXPECT_TRUE(client.Publish(EventWith("lost")));
    LogClientXml folder(folder_.Path(), "");
    EXPECT_TRUE(folder.Publish(EventWith("lost")));
    LogClientXml full("/dev/full", "");
    EXPECT_TRUE(full.Publish(EventWith("lost")));
    EXPECT_TRUE(full.Publish(EventWith("lost")));
    LogClientXml percent(folder_.Path("missing/%41.xml"), "");
    EXPECT_TRUE(percent.Publish(EventWith("lost")));
  }

  EXPECT_EQ("", testing::internal::GetCapturedStdout());
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_EQ("", messages.text);
  EXPECT_TRUE(messages.AreInPlace(XmlMessages::Kind::Generic));
}

TEST_F(LogClientXmlTest, WritesEverythingWithTheNextSaveThatWorks) {
  const std::string file = folder_.Path("missing/log.xml");
  LogClientXml client(file, "");
  client.Publish(EventWith("one"));
  client.Publish(EventWith("two"));
  EXPECT_TRUE(client.HasFailed());
  std::filesystem::create_directory(folder_.Path("missing"));

  client.Publish(EventWith("three"));

  EXPECT_FALSE(client.HasFailed());
  EXPECT_EQ((std::vector<std::string>{"one", "two", "three"}), XmlLog(file).Messages());
}

TEST_F(LogClientXmlTest, WritesEverythingAtItsEndWhenNoSaveWorkedBefore) {
  const std::string file = folder_.Path("missing/log.xml");
  {
    LogClientXml client(file, "");
    client.Publish(EventWith("one"));
    std::filesystem::create_directory(folder_.Path("missing"));
  }

  EXPECT_EQ((std::vector<std::string>{"one"}), XmlLog(file).Messages());
}

TEST_F(LogClientXmlTest, GoesOnInAFolderThatHasBecomeReadOnly) {
  LogClientXml client(file_, "");
  client.Publish(EventWith("one"));
  std::filesystem::permissions(folder_.Path(), std::filesystem::perms(0555));

  client.Publish(EventWith("two"));
  std::filesystem::permissions(folder_.Path(), std::filesystem::perms(0755));

  EXPECT_EQ((std::vector<std::string>{"one", "two"}), XmlLog(file_).Messages());
}

TEST_F(LogClientXmlTest, CannotSaveInAReadOnlyFolder) {
  constexpr uid_t kNobody = 65534;
  const uid_t formerUser = geteuid();
  std::filesystem::permissions(folder_.Path(), std::filesystem::perms(0555));
  LogClientXml client(file_, "");
  if (formerUser == 0) {  // For whom nothing is read-only.
    ASSERT_EQ(0, seteuid(kNobody));
  }
  testing::internal::CaptureStderr();

  EXPECT_TRUE(client.Publish(EventWith("one")));

  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_EQ(0, seteuid(formerUser));
  EXPECT_FALSE(Exists(file_));
  std::filesystem::permissions(folder_.Path(), std::filesystem::perms(0755));
  client.Publish(EventWith("two"));
  EXPECT_EQ((std::vector<std::string>{"one", "two"}), XmlLog(file_).Messages());
}

TEST_F(LogClientXmlTest, WritesEverythingWhenTheFileWasRemoved) {
  LogClientXml client(file_, "");
  client.Publish(EventWith("one"));
  std::filesystem::remove(file_);

  client.Publish(EventWith("two"));
  EXPECT_EQ((std::vector<std::string>{"one", "two"}), XmlLog(file_).Messages());
  client.Publish(EventWith("three"));

  EXPECT_EQ(Log(Entry("<log>one</log>") + Entry("<log>two</log>") + Entry("<log>three</log>")),
            Content(file_));
}

TEST_F(LogClientXmlTest, WritesEverythingToAFileOfTheSameContentInItsPlace) {
  LogClientXml client(file_, "");
  client.Publish(EventWith("one"));
  std::filesystem::copy(file_, folder_.Path("copy"));
  std::filesystem::rename(file_, folder_.Path("moved"));
  std::filesystem::rename(folder_.Path("copy"), file_);

  client.Publish(EventWith("two"));

  EXPECT_EQ(Log(Entry("<log>one</log>") + Entry("<log>two</log>")), Content(file_));
  EXPECT_EQ(Log(Entry("<log>one</log>")), Content(folder_.Path("moved")));
}

TEST_F(LogClientXmlTest, WritesEverythingWhenTheFileWasCut) {
  const std::vector<std::string> messages{"0", "1", "2", "3"};
  LogClientXml client(file_, "");
  client.Publish(EventWith("0"));

  for (const std::size_t length : {0U, 1U, 2U}) {
    std::filesystem::resize_file(file_, length == 2 ? Content(file_).size() - 1 : length);
    client.Publish(EventWith(messages[length + 1]));
  }

  EXPECT_EQ(messages, XmlLog(file_).Messages());
  EXPECT_EQ(Log(Entry("<log>0</log>") + Entry("<log>1</log>") + Entry("<log>2</log>") +
                Entry("<log>3</log>")),
            Content(file_));
}

TEST_F(LogClientXmlTest, WritesEverythingWhenSomethingWasAppended) {
  LogClientXml client(file_, "");
  client.Publish(EventWith("one"));
  std::ofstream(file_, std::ios::app) << "x";

  client.Publish(EventWith("two"));

  EXPECT_EQ(Log(Entry("<log>one</log>") + Entry("<log>two</log>")), Content(file_));
}

TEST_F(LogClientXmlTest, WritesEverythingWhenSomethingWasChanged) {
  LogClientXml client(file_, "");
  client.Publish(EventWith("one"));
  const std::string content = Content(file_);
  const auto written = std::filesystem::last_write_time(file_);

  // The clock of the file system stands still for some milliseconds at a time.
  while (std::filesystem::last_write_time(file_) == written) {
    std::fstream(file_, std::ios::in | std::ios::out).put('X');
  }
  ASSERT_EQ(content.size(), Content(file_).size());
  client.Publish(EventWith("two"));

  EXPECT_EQ(Log(Entry("<log>one</log>") + Entry("<log>two</log>")), Content(file_));
}

TEST_F(LogClientXmlTest, WritesEverythingWhenTheFormerTimeWasSetAfterAChange) {
  LogClientXml client(file_, "");
  client.Publish(EventWith("one"));
  struct stat former {};
  ASSERT_EQ(0, stat(file_.c_str(), &former));
  struct stat now = former;
  while (now.st_ctim.tv_nsec == former.st_ctim.tv_nsec) {
    std::fstream(file_, std::ios::in | std::ios::out).put('X');
    const timespec times[] = {former.st_atim, former.st_mtim};
    ASSERT_EQ(0, utimensat(AT_FDCWD, file_.c_str(), times, 0));
    ASSERT_EQ(0, stat(file_.c_str(), &now));
  }

  client.Publish(EventWith("two"));

  EXPECT_EQ(Log(Entry("<log>one</log>") + Entry("<log>two</log>")), Content(file_));
}

TEST_F(LogClientXmlTest, WritesThroughASymbolicLink) {
  const std::string target = folder_.Path("target.xml");
  const std::string nextTarget = folder_.Path("next.xml");
  std::filesystem::create_symlink(target, file_);
  LogClientXml client(file_, "");

  client.Publish(EventWith("one"));
  client.Publish(EventWith("two"));
  EXPECT_EQ((std::vector<std::string>{"one", "two"}), XmlLog(target).Messages());
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
  std::filesystem::remove(file_);
  std::filesystem::create_symlink(nextTarget, file_);
  client.Publish(EventWith("three"));

  EXPECT_EQ((std::vector<std::string>{"one", "two"}), XmlLog(target).Messages());
  EXPECT_EQ((std::vector<std::string>{"one", "two", "three"}), XmlLog(nextTarget).Messages());
}

TEST_F(LogClientXmlTest, WritesIndentedThroughASymbolicLinkToo) {
  std::filesystem::create_symlink(folder_.Path("target.xml"), file_);
  { LogClientXml client(file_, ""); }

  EXPECT_EQ(kDeclaration + "<apitestlog/>\n", Content(folder_.Path("target.xml")));
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
}

TEST_F(LogClientXmlTest, StaysInTheFolderInWhichItsNameIsLookedUp) {
  std::filesystem::create_directory(folder_.Path("one"));
  std::filesystem::create_directory(folder_.Path("two"));
  LogClientXml client("log.xml", "");
  std::filesystem::current_path(folder_.Path("one"));
  client.Publish(EventWith("1"));
  client.Publish(EventWith("2"));

  std::filesystem::current_path(folder_.Path("two"));
  client.Publish(EventWith("3"));

  EXPECT_EQ((std::vector<std::string>{"1", "2"}), XmlLog(folder_.Path("one/log.xml")).Messages());
  EXPECT_EQ((std::vector<std::string>{"1", "2", "3"}),
            XmlLog(folder_.Path("two/log.xml")).Messages());
}

TEST_F(LogClientXmlTest, KeepsItsFileFromProgramsThatTheProcessStarts) {
  LogClientXml client(file_, "");
  client.Publish(EventWith("one"));
  client.Publish(EventWith("two"));

  const int descriptor = DescriptorOf(file_);

  ASSERT_NE(-1, descriptor);
  EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
}

TEST_F(LogClientXmlTest, ClosesItsFileAtItsEnd) {
  {
    LogClientXml client(file_, "");
    client.Publish(EventWith("one"));
  }

  EXPECT_EQ(-1, DescriptorOf(file_));
}

TEST_F(LogClientXmlTest, MakesFilesThatTheProcesssMaskAllows) {
  umask(027);
  LogClientXml client(file_, "");

  client.Publish(EventWith("one"));

  EXPECT_EQ(std::filesystem::perms(0640), std::filesystem::status(file_).permissions());
}

// File names that libxml2 treats specially.

TEST_F(LogClientXmlTest, WritesToTheStandardOutputForALoneHyphen) {
  std::filesystem::current_path(folder_.Path());
  testing::internal::CaptureStdout();
  {
    LogClientXml client("-", "");
    client.Publish(EventWith("one"));
    client.Publish(EventWith("two"));
  }

  EXPECT_EQ(Log(Entry("<log>one</log>")) + Log(Entry("<log>one</log>") + Entry("<log>two</log>")) +
                kDeclaration +
                "<apitestlog>\n"
                "  <entry level=\"ERROR\">\n"
                "    <date>2024-03-05</date>\n"
                "    <time>14:07:09</time>\n"
                "    <log>one</log>\n"
                "  </entry>\n"
                "  <entry level=\"ERROR\">\n"
                "    <date>2024-03-05</date>\n"
                "    <time>14:07:09</time>\n"
                "    <log>two</log>\n"
                "  </entry>\n"
                "</apitestlog>\n",
            testing::internal::GetCapturedStdout());
  EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(LogClientXmlTest, ReadsEscapesInItsFileName) {
  LogClientXml client(folder_.Path("%41%20b.xml"), "");

  client.Publish(EventWith("one"));
  client.Publish(EventWith("two"));

  EXPECT_EQ(Log(Entry("<log>one</log>") + Entry("<log>two</log>")),
            Content(folder_.Path("A b.xml")));
  EXPECT_FALSE(Exists(folder_.Path("%41%20b.xml")));
}

TEST_F(LogClientXmlTest, TakesAUrlOfAFile) {
  LogClientXml client("file://" + file_, "");

  client.Publish(EventWith("one"));
  client.Publish(EventWith("two"));

  EXPECT_EQ(Log(Entry("<log>one</log>") + Entry("<log>two</log>")), Content(file_));
}

TEST_F(LogClientXmlTest, TakesOtherCharactersOfAFileNameAsTheyAre) {
  for (const char* const name :
       {"a b.xml", "a:b.xml", "a#b?c.xml", "\xC3\xA9.xml", "\xFF.xml", "-.xml", "a+b&c.xml"}) {
    LogClientXml client(folder_.Path(name), "");

    client.Publish(EventWith("one"));
    client.Publish(EventWith("two"));

    EXPECT_EQ(Log(Entry("<log>one</log>") + Entry("<log>two</log>")), Content(folder_.Path(name)))
        << name;
  }
}

TEST_F(LogClientXmlTest, WritesWhatLibxmlCompresses) {
  xmlSetCompressMode(9);
  {
    LogClientXml client(file_, "");
    client.Publish(EventWith("one"));
    client.Publish(EventWith("two"));
    EXPECT_EQ("\x1F\x8B", Content(file_).substr(0, 2));
    EXPECT_EQ((std::vector<std::string>{"one", "two"}), XmlLog(file_).Messages());
  }
  xmlSetCompressMode(0);
}

}  // namespace
