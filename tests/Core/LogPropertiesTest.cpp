#include "LogProperties.h"

#include <gtest/gtest.h>

#include <clocale>
#include <fstream>
#include <functional>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Support/Files.h"
#include "Support/TemporaryFolder.h"

namespace {

bool LoadText(LogProperties& properties, const std::string& text) {
  std::istringstream in(text);
  return properties.Load(in);
}

/// The value that a text of its own gives the key.
std::string ValueIn(const std::string& text, const std::string& key) {
  LogProperties properties;
  EXPECT_TRUE(LoadText(properties, text));
  return properties.GetProperty(key);
}

/// Whether the set has the key at all, with an empty value or another. The key is gone afterwards.
bool TakesOut(LogProperties& properties, const std::string& key) {
  return properties.RemoveProperty(key);
}

/// Gives the lines one by one, and calls back before each but the first.
class LineSource : public std::streambuf {
 public:
  LineSource(std::vector<std::string> lines, std::function<void()> betweenLines)
      : lines_(std::move(lines)), betweenLines_(std::move(betweenLines)) {}

  std::size_t LinesGiven() const { return given_; }

 protected:
  int_type underflow() override {
    if (given_ > 0 && betweenLines_) betweenLines_();
    if (given_ == lines_.size()) return traits_type::eof();
    std::string& line = lines_[given_++];
    setg(line.data(), line.data(), line.data() + line.size());
    return traits_type::to_int_type(line.front());
  }

 private:
  std::vector<std::string> lines_;
  std::function<void()> betweenLines_;
  std::size_t given_ = 0;
};

/// A C++ locale in which the letter x is white space.
class SpacedOutLetters : public std::ctype<char> {
 public:
  SpacedOutLetters() : std::ctype<char>(Table()) {}

 private:
  static const mask* Table() {
    static const std::vector<mask> table = [] {
      std::vector<mask> masks(classic_table(), classic_table() + table_size);
      masks['x'] = space;
      return masks;
    }();
    return table.data();
  }
};

/// The extracted text of a buffer with this content, and how far into the buffer it starts.
struct Extracted {
  std::string text;
  std::ptrdiff_t offset;
};

Extracted Extract(const std::string& text) {
  std::vector<char> buffer(text.begin(), text.end());
  buffer.push_back('\0');
  LogProperties properties;
  const char* const result = properties.ExtractExpression(buffer.data());
  return {result, result - buffer.data()};
}

static_assert(std::has_virtual_destructor_v<LogProperties>);

TEST(LogPropertiesTest, IsEmptyWhenNew) {
  LogProperties properties;

  EXPECT_EQ("", properties.GetProperty("key"));
  EXPECT_EQ("", properties.GetProperty(""));
  EXPECT_FALSE(properties.RemoveProperty("key"));
}

TEST(LogPropertiesTest, GivesTheValueThatWasAdded) {
  LogProperties properties;

  EXPECT_TRUE(properties.AddProperty("key", "value"));

  EXPECT_EQ("value", properties.GetProperty("key"));
}

TEST(LogPropertiesTest, KeepsTheFirstValueThatWasAdded) {
  LogProperties properties;
  properties.AddProperty("key", "first");

  EXPECT_FALSE(properties.AddProperty("key", "second"));

  EXPECT_EQ("first", properties.GetProperty("key"));
}

TEST(LogPropertiesTest, KeepsAnEmptyValueThatWasAddedFirst) {
  LogProperties properties;
  properties.AddProperty("key", "");

  EXPECT_FALSE(properties.AddProperty("key", "second"));

  EXPECT_EQ("", properties.GetProperty("key"));
}

TEST(LogPropertiesTest, TellsKeysApartByEveryByte) {
  LogProperties properties;
  properties.AddProperty("key", "lower");
  properties.AddProperty("Key", "upper");
  properties.AddProperty("key ", "blank");
  properties.AddProperty(std::string("key\0", 4), "zero");

  EXPECT_EQ("lower", properties.GetProperty("key"));
  EXPECT_EQ("upper", properties.GetProperty("Key"));
  EXPECT_EQ("blank", properties.GetProperty("key "));
  EXPECT_EQ("zero", properties.GetProperty(std::string("key\0", 4)));
  EXPECT_EQ("", properties.GetProperty("KEY"));
}

TEST(LogPropertiesTest, TakesTheEmptyKey) {
  LogProperties properties;

  EXPECT_TRUE(properties.AddProperty("", "value"));
  EXPECT_FALSE(properties.AddProperty("", "other"));

  EXPECT_EQ("value", properties.GetProperty(""));
  EXPECT_TRUE(properties.RemoveProperty(""));
  EXPECT_EQ("", properties.GetProperty(""));
}

TEST(LogPropertiesTest, AddsKeysAndValuesAsTheyStand) {
  LogProperties properties;

  properties.AddProperty(" k=#\" ", " \"v\" # = \n");

  EXPECT_EQ(" \"v\" # = \n", properties.GetProperty(" k=#\" "));
}

TEST(LogPropertiesTest, GivesValuesThatLaterChangesLeaveAlone) {
  LogProperties properties;
  properties.AddProperty("key", "value");

  logstring value = properties.GetProperty("key");
  value += " changed";

  EXPECT_EQ("value", properties.GetProperty("key"));
}

TEST(LogPropertiesTest, RemovesAnEntryOnce) {
  LogProperties properties;
  properties.AddProperty("key", "value");
  properties.AddProperty("other", "stays");

  EXPECT_TRUE(properties.RemoveProperty("key"));
  EXPECT_FALSE(properties.RemoveProperty("key"));

  EXPECT_EQ("", properties.GetProperty("key"));
  EXPECT_EQ("stays", properties.GetProperty("other"));
}

TEST(LogPropertiesTest, TakesAKeyAgainThatWasRemoved) {
  LogProperties properties;
  properties.AddProperty("key", "former");
  properties.RemoveProperty("key");

  EXPECT_TRUE(properties.AddProperty("key", "new"));

  EXPECT_EQ("new", properties.GetProperty("key"));
}

TEST(LogPropertiesTest, IsEmptyAfterClear) {
  LogProperties properties;
  properties.AddProperty("a", "1");
  properties.AddProperty("b", "2");

  EXPECT_TRUE(properties.Clear());

  EXPECT_FALSE(properties.RemoveProperty("a"));
  EXPECT_FALSE(properties.RemoveProperty("b"));
}

TEST(LogPropertiesTest, ClearsAnEmptySet) {
  LogProperties properties;

  EXPECT_TRUE(properties.Clear());
}

TEST(LogPropertiesTest, IsEmptyWhenCopyConstructed) {
  LogProperties source;
  source.AddProperty("key", "value");

  LogProperties copy(source);

  EXPECT_FALSE(copy.RemoveProperty("key"));
  EXPECT_EQ("value", source.GetProperty("key"));
}

TEST(LogPropertiesTest, KeepsItsOwnEntriesWhenAssignedTo) {
  LogProperties source;
  source.AddProperty("key", "value");
  source.AddProperty("common", "source");
  LogProperties target;
  target.AddProperty("own", "stays");
  target.AddProperty("common", "target");

  LogProperties& result = (target = source);

  EXPECT_EQ(&target, &result);
  EXPECT_EQ("stays", target.GetProperty("own"));
  EXPECT_EQ("target", target.GetProperty("common"));
  EXPECT_FALSE(target.RemoveProperty("key"));
  EXPECT_EQ("value", source.GetProperty("key"));
}

TEST(LogPropertiesTest, KeepsItsEntriesWhenAssignedToItself) {
  LogProperties properties;
  properties.AddProperty("key", "value");
  const LogProperties& self = properties;

  LogProperties& result = (properties = self);

  EXPECT_EQ(&properties, &result);
  EXPECT_EQ("value", properties.GetProperty("key"));
}

TEST(LogPropertiesTest, CopiesNothingWithAssign) {
  LogProperties source;
  source.AddProperty("key", "value");
  LogProperties target;
  target.AddProperty("own", "stays");

  target.Assign(source);

  EXPECT_EQ("stays", target.GetProperty("own"));
  EXPECT_FALSE(target.RemoveProperty("key"));
}

TEST(LogPropertiesTest, LoadsOnePairPerLine) {
  LogProperties properties;

  EXPECT_TRUE(LoadText(properties, "a = 1\nb = 2\nc=3\n"));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_EQ("2", properties.GetProperty("b"));
  EXPECT_EQ("3", properties.GetProperty("c"));
}

TEST(LogPropertiesTest, LoadsALastLineWithoutALineFeed) {
  LogProperties properties;

  EXPECT_TRUE(LoadText(properties, "a = 1\nb = 2"));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_EQ("2", properties.GetProperty("b"));
}

TEST(LogPropertiesTest, LoadsAnEmptyStream) {
  LogProperties properties;
  properties.AddProperty("own", "stays");

  EXPECT_TRUE(LoadText(properties, ""));

  EXPECT_EQ("stays", properties.GetProperty("own"));
  EXPECT_FALSE(TakesOut(properties, ""));
}

TEST(LogPropertiesTest, LoadsLinesWithCarriageReturns) {
  LogProperties properties;

  EXPECT_TRUE(LoadText(properties, "a = 1\r\n\r\nb = \"2\"\r\n# note\r\nc =\r\nd = 4\r"));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_EQ("2", properties.GetProperty("b"));
  EXPECT_EQ("4", properties.GetProperty("d"));
  EXPECT_TRUE(TakesOut(properties, "c"));
}

TEST(LogPropertiesTest, TrimsKeyAndValue) {
  EXPECT_EQ("3", ValueIn("   loglevel   =   3   \n", "loglevel"));
  EXPECT_EQ("3", ValueIn(" \t\v\f\rloglevel \t\v\f\r=\t\v\f\r 3\t\v\f\r \n", "loglevel"));
}

TEST(LogPropertiesTest, KeepsBlanksWithinKeyAndValue) {
  EXPECT_EQ("a \t b", ValueIn("my \t key = a \t b\n", "my \t key"));
}

TEST(LogPropertiesTest, SplitsALineAtItsFirstSeparator) {
  EXPECT_EQ("a = b", ValueIn("name = a = b\n", "name"));
  EXPECT_EQ("=", ValueIn("name ==\n", "name"));
  EXPECT_EQ("b\" = c", ValueIn("\"a = b\" = c\n", "\"a"));
}

TEST(LogPropertiesTest, EndsALineAtItsFirstCommentSign) {
  EXPECT_EQ("value", ValueIn("name = value # note\n", "name"));
  EXPECT_EQ("value", ValueIn("name = value#note # again\n", "name"));
  EXPECT_EQ("value", ValueIn("name = value # other = 3\n", "name"));
}

TEST(LogPropertiesTest, HasNoEscapeForACommentSign) {
  EXPECT_EQ("a\\", ValueIn("name = a\\#b\n", "name"));
}

TEST(LogPropertiesTest, EndsAQuotedValueAtACommentSign) {
  EXPECT_EQ("\"a", ValueIn("name = \"a#b\"\n", "name"));
}

TEST(LogPropertiesTest, IgnoresALineWhoseSeparatorIsInItsComment) {
  LogProperties properties;

  EXPECT_TRUE(LoadText(properties, "name # = value\n"));

  EXPECT_FALSE(TakesOut(properties, "name"));
  EXPECT_FALSE(TakesOut(properties, "name #"));
  EXPECT_FALSE(TakesOut(properties, ""));
}

TEST(LogPropertiesTest, IgnoresLinesWithoutASeparator) {
  LogProperties properties;

  EXPECT_TRUE(
      LoadText(properties, "\n   \n# whole-line comment\n#a = 1\n[section]\nword\nb = 2\n"));

  EXPECT_EQ("2", properties.GetProperty("b"));
  for (const char* const key : {"", "[section]", "section", "word", "a", "#a"}) {
    EXPECT_FALSE(TakesOut(properties, key)) << key;
  }
}

TEST(LogPropertiesTest, HasNoSections) { EXPECT_EQ("1", ValueIn("[section]\nname = 1\n", "name")); }

TEST(LogPropertiesTest, HasNoContinuedLines) {
  LogProperties properties;

  EXPECT_TRUE(LoadText(properties, "a = 1 \\\n  2\nb = 3\n"));

  EXPECT_EQ("1 \\", properties.GetProperty("a"));
  EXPECT_EQ("3", properties.GetProperty("b"));
}

TEST(LogPropertiesTest, HasNoEscapesOrSubstitutions) {
  EXPECT_EQ("\\t\\n $HOME ${HOME} %d", ValueIn("name = \\t\\n $HOME ${HOME} %d\n", "name"));
}

TEST(LogPropertiesTest, KeepsBlanksInQuotes) {
  EXPECT_EQ("  padded  ", ValueIn("name = \"  padded  \"\n", "name"));
  EXPECT_EQ("   ", ValueIn("name =   \"   \"   \n", "name"));
}

TEST(LogPropertiesTest, KeepsBlanksInAQuotedKey) {
  EXPECT_EQ("value", ValueIn("  \" my key \"  = value\n", " my key "));
}

TEST(LogPropertiesTest, ReadsQuotesWithNothingBetweenAsEmpty) {
  LogProperties properties;

  EXPECT_TRUE(LoadText(properties, "name = \"\"\n"));

  EXPECT_EQ("", properties.GetProperty("name"));
  EXPECT_TRUE(TakesOut(properties, "name"));
}

TEST(LogPropertiesTest, KeepsAnOpeningQuoteThatIsNotClosedAtTheEnd) {
  EXPECT_EQ("\"open", ValueIn("name = \"open\n", "name"));
  EXPECT_EQ("\"open", ValueIn("name = \"open  \n", "name"));
  EXPECT_EQ("\"  open", ValueIn("name = \"  open\n", "name"));
  EXPECT_EQ("\"a\" b", ValueIn("name = \"a\" b\n", "name"));
}

TEST(LogPropertiesTest, DropsOnlyOnePairOfQuotes) {
  EXPECT_EQ("a \"b\" c", ValueIn("name = \"a \"b\" c\"\n", "name"));
  EXPECT_EQ("\"a\"", ValueIn("name = \"\"a\"\"\n", "name"));
  EXPECT_EQ("a \"b\"", ValueIn("name = a \"b\"\n", "name"));
  EXPECT_EQ("'a'", ValueIn("name = 'a'\n", "name"));
}

TEST(LogPropertiesTest, LoadsTheEmptyKey) {
  EXPECT_EQ("value", ValueIn("= value\n", ""));
  EXPECT_EQ("value", ValueIn("   = value\n", ""));
  EXPECT_EQ("value", ValueIn("\"\" = value\n", ""));
}

TEST(LogPropertiesTest, StoresALoadedKeyWithAnEmptyValue) {
  LogProperties properties;

  EXPECT_TRUE(LoadText(properties, "a =\nb = # note\n="));

  EXPECT_TRUE(TakesOut(properties, "a"));
  EXPECT_TRUE(TakesOut(properties, "b"));
  EXPECT_TRUE(TakesOut(properties, ""));
}

TEST(LogPropertiesTest, KeepsTheLastLoadedValueOfAKey) {
  EXPECT_EQ("second", ValueIn("name = first\nother = 1\n name=second\n", "name"));
  EXPECT_EQ("", ValueIn("name = first\nname =\n", "name"));
}

TEST(LogPropertiesTest, ReplacesAnAddedValueWhenLoading) {
  LogProperties properties;
  properties.AddProperty("name", "added");
  properties.AddProperty("own", "stays");

  EXPECT_TRUE(LoadText(properties, "name = loaded\n"));

  EXPECT_EQ("loaded", properties.GetProperty("name"));
  EXPECT_EQ("stays", properties.GetProperty("own"));
}

TEST(LogPropertiesTest, AddsToWhatWasLoadedBefore) {
  LogProperties properties;
  LoadText(properties, "a = 1\nb = 2\n");

  EXPECT_TRUE(LoadText(properties, "b = 20\nc = 30\n"));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_EQ("20", properties.GetProperty("b"));
  EXPECT_EQ("30", properties.GetProperty("c"));
}

TEST(LogPropertiesTest, KeepsALoadedValueWhenAdding) {
  LogProperties properties;
  LoadText(properties, "name = loaded\n");

  EXPECT_FALSE(properties.AddProperty("name", "added"));

  EXPECT_EQ("loaded", properties.GetProperty("name"));
}

TEST(LogPropertiesTest, LoadsLinesOfUpTo511Bytes) {
  LogProperties properties;
  const std::string value510(507, 'v');
  const std::string value511(508, 'w');

  EXPECT_TRUE(LoadText(properties, "a =" + value510 + "\nb =" + value511 + "\nc = 3\n"));

  EXPECT_EQ(value510, properties.GetProperty("a"));
  EXPECT_EQ(value511, properties.GetProperty("b"));
  EXPECT_EQ("3", properties.GetProperty("c"));
}

TEST(LogPropertiesTest, LoadsALastLineOf510BytesWithoutALineFeed) {
  const std::string value(508, 'v');

  EXPECT_EQ(value, ValueIn("a=" + value, "a"));
}

TEST(LogPropertiesTest, LoadsALastLineOf511BytesWithoutALineFeed) {
  const std::string value(509, 'v');

  EXPECT_EQ(value, ValueIn("a=" + value, "a"));
}

TEST(LogPropertiesTest, StopsAtALineOf512Bytes) {
  LogProperties properties;
  const std::string value(509, 'v');

  EXPECT_FALSE(LoadText(properties, "a = 1\nb=" + value + "X\nc = 3\n"));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_EQ(value, properties.GetProperty("b"));
  EXPECT_FALSE(TakesOut(properties, "c"));
}

TEST(LogPropertiesTest, StopsAtALastLineOf512BytesWithoutALineFeed) {
  LogProperties properties;
  const std::string value(509, 'v');

  EXPECT_FALSE(LoadText(properties, "a=" + value + "X"));

  EXPECT_EQ(value, properties.GetProperty("a"));
}

TEST(LogPropertiesTest, StopsAtAMuchTooLongLine) {
  LogProperties properties;

  EXPECT_FALSE(LoadText(properties, "a=1\nb=" + std::string(100000, 'v') + "\nc=3\n"));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_EQ(std::string(509, 'v'), properties.GetProperty("b"));
  EXPECT_FALSE(TakesOut(properties, "c"));
}

TEST(LogPropertiesTest, StopsAtATooLongComment) {
  LogProperties properties;

  EXPECT_FALSE(LoadText(properties, "a = 1\n#" + std::string(511, '-') + "\nc = 3\n"));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_FALSE(TakesOut(properties, "c"));
}

TEST(LogPropertiesTest, PassesACommentOf511Bytes) {
  EXPECT_EQ("3", ValueIn("#" + std::string(510, '-') + "\nc = 3\n", "c"));
}

TEST(LogPropertiesTest, CountsBlanksAndCarriageReturnsAsPartOfALine) {
  const std::string line = "a=" + std::string(508, ' ');

  EXPECT_EQ("3", ValueIn(line + "\r\nc = 3\n", "c"));
  LogProperties properties;
  EXPECT_FALSE(LoadText(properties, line + " \r\nc = 3\n"));
}

TEST(LogPropertiesTest, ReadsALineUpToItsFirstZeroByte) {
  LogProperties properties;
  const std::string text("a = 1\0 2\nb\0 = 2\nc = 3\n", 22);

  EXPECT_TRUE(LoadText(properties, text));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_FALSE(TakesOut(properties, "b"));
  EXPECT_EQ("3", properties.GetProperty("c"));
}

TEST(LogPropertiesTest, KeepsEveryOtherByte) {
  std::string value;
  for (int byte = 1; byte < 256; ++byte) {
    if (byte != '\n' && byte != '#' && byte != '"') value.push_back(static_cast<char>(byte));
  }

  EXPECT_EQ(value, ValueIn("name = \"" + value + "\"\n", "name"));
}

TEST(LogPropertiesTest, ReadsNothingFromAStreamThatIsNotGood) {
  for (const auto state : {std::ios::eofbit, std::ios::failbit, std::ios::badbit}) {
    LogProperties properties;
    std::istringstream in("a = 1\n");
    in.setstate(state);

    EXPECT_FALSE(properties.Load(in));

    EXPECT_FALSE(TakesOut(properties, "a"));
    in.clear();
    EXPECT_EQ('a', in.get());
  }
}

TEST(LogPropertiesTest, StoresTheLineInWhichItsStreamThrows) {
  int count = 0;
  LineSource source({"a = 1\n", "b = 2"}, [&count] {
    if (++count == 2) throw std::runtime_error("lost");
  });
  std::istream in(&source);
  LogProperties properties;

  EXPECT_FALSE(properties.Load(in));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_EQ("2", properties.GetProperty("b"));
  EXPECT_TRUE(in.bad());
}

TEST(LogPropertiesTest, StopsBehindTheLineInWhichItsStreamGoesBad) {
  std::istream in(nullptr);
  LineSource source({"a = 1\n", "b = 2\n", "c = 3\n"}, [&in] { in.setstate(std::ios::badbit); });
  in.rdbuf(&source);
  LogProperties properties;

  EXPECT_FALSE(properties.Load(in));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_EQ("2", properties.GetProperty("b"));
  EXPECT_FALSE(TakesOut(properties, "c"));
  EXPECT_EQ(2U, source.LinesGiven());
}

TEST(LogPropertiesTest, IsFalseForALastLineInWhichItsStreamGoesBad) {
  std::istream in(nullptr);
  LineSource source({"a = 1\n", "b = 2"}, [&in] { in.setstate(std::ios::badbit); });
  in.rdbuf(&source);
  LogProperties properties;

  EXPECT_FALSE(properties.Load(in));

  EXPECT_EQ("2", properties.GetProperty("b"));
  EXPECT_TRUE(in.eof());
}

TEST(LogPropertiesTest, LoadsFromAStreamThatGivesByteByByte) {
  std::vector<std::string> bytes;
  for (const char byte : std::string("a = 1\r\nb = \" 2 \"\n# note\nc=3"))
    bytes.emplace_back(1, byte);
  LineSource source(bytes, nullptr);
  std::istream in(&source);
  LogProperties properties;

  EXPECT_TRUE(properties.Load(in));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_EQ(" 2 ", properties.GetProperty("b"));
  EXPECT_EQ("3", properties.GetProperty("c"));
}

TEST(LogPropertiesTest, LoadsAFile) {
  const TemporaryFolder folder;
  WriteFile(folder.Path("a.ini"), "a = 1\nb = 2");
  LogProperties properties;

  EXPECT_TRUE(properties.Load(folder.Path("a.ini")));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_EQ("2", properties.GetProperty("b"));
}

TEST(LogPropertiesTest, LoadsAnEmptyFile) {
  const TemporaryFolder folder;
  WriteFile(folder.Path("a.ini"), "");
  LogProperties properties;

  EXPECT_TRUE(properties.Load(folder.Path("a.ini")));
}

TEST(LogPropertiesTest, StopsAtATooLongLineOfAFile) {
  const TemporaryFolder folder;
  WriteFile(folder.Path("a.ini"), "a = 1\nb=" + std::string(510, 'v') + "\nc = 3\n");
  LogProperties properties;

  EXPECT_FALSE(properties.Load(folder.Path("a.ini")));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_EQ(std::string(509, 'v'), properties.GetProperty("b"));
  EXPECT_FALSE(TakesOut(properties, "c"));
}

TEST(LogPropertiesTest, StaysAsItIsWhenThereIsNoSuchFile) {
  const TemporaryFolder folder;
  LogProperties properties;
  properties.AddProperty("own", "stays");

  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_FALSE(properties.Load(folder.Path("missing.ini")));

  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_EQ("", testing::internal::GetCapturedStdout());
  EXPECT_EQ("stays", properties.GetProperty("own"));
}

TEST(LogPropertiesTest, IsFalseForADirectory) {
  const TemporaryFolder folder;
  LogProperties properties;
  properties.AddProperty("own", "stays");

  testing::internal::CaptureStderr();
  EXPECT_FALSE(properties.Load(folder.Path()));

  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_EQ("stays", properties.GetProperty("own"));
}

TEST(LogPropertiesTest, EndsTheProcessForAnEmptyFileName) {
  EXPECT_DEATH(
      {
        LogProperties properties;
        properties.Load(logstring());
      },
      "Src/LogProperties:151: bool LogProperties::Load\\(const logstring&\\): "
      "Assertion `!fileName\\.empty\\(\\)' failed\\.");
}

TEST(LogPropertiesTest, DoesNotFollowTheProcessesLocale) {
  const std::locale former = std::locale::global(std::locale(std::locale(), new SpacedOutLetters));
  std::setlocale(LC_ALL, "C.UTF-8");

  const std::string value = ValueIn("xkeyx = \x85xvaluex\xA0\n", "xkeyx");

  EXPECT_EQ("\x85xvaluex\xA0", value);
  std::locale::global(former);
}

TEST(LogPropertiesTest, ExtractsTrimmedText) {
  const Extracted extracted = Extract("  some text\t");

  EXPECT_EQ("some text", extracted.text);
  EXPECT_EQ(2, extracted.offset);
}

TEST(LogPropertiesTest, ExtractsInPlace) {
  char text[] = " \"  a\"  ";
  LogProperties properties;

  const char* const result = properties.ExtractExpression(text);

  EXPECT_EQ(text + 2, result);
  EXPECT_STREQ("  a", result);
  EXPECT_EQ('\0', text[5]);
}

TEST(LogPropertiesTest, ExtractsTextThatNeedsNoChange) {
  const Extracted extracted = Extract("text");

  EXPECT_EQ("text", extracted.text);
  EXPECT_EQ(0, extracted.offset);
}

TEST(LogPropertiesTest, ExtractsLineFeedsAsBlanks) {
  EXPECT_EQ("a\nb", Extract("\n\n a\nb \n").text);
}

TEST(LogPropertiesTest, ExtractsNothingFromAnEmptyText) {
  const Extracted extracted = Extract("");

  EXPECT_EQ("", extracted.text);
  EXPECT_EQ(0, extracted.offset);
}

TEST(LogPropertiesTest, ExtractsNothingFromAnAllBlankText) {
  const std::string blanks = " \t\n\v\f\r ";

  const Extracted extracted = Extract(blanks);

  EXPECT_EQ("", extracted.text);
  EXPECT_GE(extracted.offset, 0);
  EXPECT_LE(extracted.offset, static_cast<std::ptrdiff_t>(blanks.size()));
}

TEST(LogPropertiesTest, ExtractsWithoutTouchingWhatIsBeforeTheText) {
  std::string buffer = "    ";
  LogProperties properties;

  EXPECT_STREQ("", properties.ExtractExpression(buffer.data() + 2));

  EXPECT_EQ("  ", buffer.substr(0, 2));
}

TEST(LogPropertiesTest, ExtractsASingleQuoteMark) {
  EXPECT_EQ("\"", Extract("\"").text);
  EXPECT_EQ("\"", Extract("  \"  ").text);
}

TEST(LogPropertiesTest, ExtractsNothingFromAPairOfQuoteMarks) {
  EXPECT_EQ("", Extract("\"\"").text);
  EXPECT_EQ("", Extract(" \"\" ").text);
}

TEST(LogPropertiesTest, ExtractsTheMiddleOneOfThreeQuoteMarks) {
  EXPECT_EQ("\"", Extract("\"\"\"").text);
}

TEST(LogPropertiesTest, ExtractsBlanksBetweenQuotes) {
  EXPECT_EQ(" \t ", Extract("\" \t \"").text);
}

TEST(LogPropertiesTest, ExtractsAnUnclosedQuoteWithItsMark) {
  EXPECT_EQ("\"open", Extract(" \"open ").text);
  EXPECT_EQ("\"a\" b", Extract("\"a\" b").text);
  EXPECT_EQ("open\"", Extract("open\"").text);
}

TEST(LogPropertiesTest, ExtractsWithoutALookAtItsEntries) {
  LogProperties properties;
  properties.AddProperty("key", "value");
  char text[] = " key ";

  EXPECT_STREQ("key", properties.ExtractExpression(text));

  EXPECT_EQ("value", properties.GetProperty("key"));
  EXPECT_FALSE(TakesOut(properties, " key "));
}

}  // namespace
