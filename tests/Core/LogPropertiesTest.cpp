#include "LogProperties.h"

#include <gtest/gtest.h>

#include <clocale>
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

using namespace std::string_literals;

const char* const kNone = "(no such key)";

bool LoadText(LogProperties& properties, const std::string& text) {
  std::istringstream in(text);
  return properties.Load(in);
}

/// The key's value, which may be empty, or kNone. The key is gone afterwards.
std::string Taken(LogProperties& properties, const std::string& key) {
  const std::string value = properties.GetProperty(key);
  return properties.RemoveProperty(key) ? value : kNone;
}

/// The key's value in a text.
std::string ValueIn(const std::string& text, const std::string& key) {
  LogProperties properties;
  EXPECT_TRUE(LoadText(properties, text));
  return Taken(properties, key);
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
class LocaleWithBlankX : public std::ctype<char> {
 public:
  LocaleWithBlankX() : std::ctype<char>(Table()) {}

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

static_assert(std::has_virtual_destructor_v<LogProperties>);

// The set.

TEST(LogPropertiesTest, KeepsTheFirstValueThatIsAddedForAKey) {
  for (const std::string& key : {"key"s, ""s, "Key"s, "key "s, "key\0"s, " k=#\" "s}) {
    SCOPED_TRACE(key);
    LogProperties properties;
    properties.AddProperty("ke", "other");
    EXPECT_EQ("", properties.GetProperty(key));
    EXPECT_FALSE(properties.RemoveProperty(key));

    EXPECT_TRUE(properties.AddProperty(key, " \"v\" # = \n"));
    EXPECT_FALSE(properties.AddProperty(key, "second"));

    EXPECT_EQ(" \"v\" # = \n", properties.GetProperty(key));
    EXPECT_EQ("", properties.GetProperty("KEY"));
    EXPECT_TRUE(properties.RemoveProperty(key));
    EXPECT_EQ("", properties.GetProperty(key));
    EXPECT_TRUE(properties.AddProperty(key, ""));
    EXPECT_FALSE(properties.AddProperty(key, "after an empty one"));
    EXPECT_EQ("", properties.GetProperty(key));
    EXPECT_EQ("other", properties.GetProperty("ke"));
  }
}

TEST(LogPropertiesTest, DistinguishesKeysByEveryByte) {
  LogProperties properties;
  const std::vector<std::string> keys{"key", "Key", "key ", "key\0"s, ""};
  for (const std::string& key : keys) EXPECT_TRUE(properties.AddProperty(key, "of " + key));

  for (const std::string& key : keys) EXPECT_EQ("of " + key, properties.GetProperty(key));
}

TEST(LogPropertiesTest, IsEmptyAfterClear) {
  LogProperties properties;
  EXPECT_TRUE(properties.Clear());
  properties.AddProperty("a", "1");
  properties.AddProperty("b", "2");

  EXPECT_TRUE(properties.Clear());

  EXPECT_EQ(kNone, Taken(properties, "a"));
  EXPECT_EQ(kNone, Taken(properties, "b"));
}

TEST(LogPropertiesTest, CopiesNoEntries) {
  LogProperties source;
  source.AddProperty("key", "value");
  source.AddProperty("common", "source");
  LogProperties target;
  target.AddProperty("common", "target");

  LogProperties copy(source);
  LogProperties& result = (target = source);
  target.Assign(source);
  const LogProperties& self = source;
  LogProperties& same = (source = self);

  EXPECT_EQ(kNone, Taken(copy, "key"));
  EXPECT_EQ(&target, &result);
  EXPECT_EQ("target", Taken(target, "common"));
  EXPECT_EQ(kNone, Taken(target, "key"));
  EXPECT_EQ(&source, &same);
  EXPECT_EQ("value", source.GetProperty("key"));
}

// Lines.

TEST(LogPropertiesTest, ReadsAKeyAndAValueFromALine) {
  std::string allBytes;
  for (int byte = 1; byte < 256; ++byte) {
    if (byte != '\n' && byte != '#' && byte != '"') allBytes.push_back(static_cast<char>(byte));
  }
  const struct {
    std::string text;
    std::string key;
    std::string value;
  } rows[] = {
      {"a = 1\nb=2\n", "a", "1"},
      {"a = 1\nb=2\n", "b", "2"},
      {"a = 1\nb = 2", "b", "2"},  // The last line without a line feed.
      {"", "", kNone},
      // Blanks around a key and a value.
      {"   loglevel   =   3   \n", "loglevel", "3"},
      {" \t\v\f\rloglevel \t\v\f\r=\t\v\f\r 3\t\v\f\r \n", "loglevel", "3"},
      {"my \t key = a \t b\n", "my \t key", "a \t b"},
      {"a = 1\r\n\r\nb = \"2\"\r\n# note\r\nc =\r\nd = 4\r", "a", "1"},
      {"a = 1\r\n\r\nb = \"2\"\r\n# note\r\nc =\r\nd = 4\r", "b", "2"},
      {"a = 1\r\n\r\nb = \"2\"\r\n# note\r\nc =\r\nd = 4\r", "c", ""},
      {"a = 1\r\n\r\nb = \"2\"\r\n# note\r\nc =\r\nd = 4\r", "d", "4"},
      // The first separator.
      {"name = a = b\n", "name", "a = b"},
      {"name ==\n", "name", "="},
      {"\"a = b\" = c\n", "\"a", "b\" = c"},
      {"= value\n", "", "value"},
      {"   = value\n", "", "value"},
      {"\"\" = value\n", "", "value"},
      {"=", "", ""},
      // The first comment sign.
      {"name = value # note\n", "name", "value"},
      {"name = value#note # again\n", "name", "value"},
      {"name = value # other = 3\n", "name", "value"},
      {"name = # note\n", "name", ""},
      {"name = a\\#b\n", "name", "a\\"},
      {"name = \"a#b\"\n", "name", "\"a"},
      {"name # = value\n", "name", kNone},
      {"name # = value\n", "name #", kNone},
      {"#a = 1\n", "#a", kNone},
      // Lines without a separator.
      {"\n   \n# whole-line comment\n[section]\nword\n", "", kNone},
      {"[section]\nword\n", "[section]", kNone},
      {"[section]\nword\n", "word", kNone},
      {"[section]\nname = 1\n", "name", "1"},
      // No continued lines, escapes and substitutions.
      {"a = 1 \\\n  2\nb = 3\n", "a", "1 \\"},
      {"a = 1 \\\n  2\nb = 3\n", "b", "3"},
      {"name = \\t\\n $HOME ${HOME} %d\n", "name", "\\t\\n $HOME ${HOME} %d"},
      // Quotes.
      {"name = \"  padded  \"\n", "name", "  padded  "},
      {"name =   \"   \"   \n", "name", "   "},
      {"  \" my key \"  = value\n", " my key ", "value"},
      {"name = \"\"\n", "name", ""},
      {"name = \"open\n", "name", "\"open"},
      {"name = \"open  \n", "name", "\"open"},
      {"name = \"  open\n", "name", "\"  open"},
      {"name = \"a\" b\n", "name", "\"a\" b"},
      {"name = \"a \"b\" c\"\n", "name", "a \"b\" c"},
      {"name = \"\"a\"\"\n", "name", "\"a\""},
      {"name = a \"b\"\n", "name", "a \"b\""},
      {"name = 'a'\n", "name", "'a'"},
      // The last line of a key.
      {"name = first\nother = 1\n name=second\n", "name", "second"},
      {"name = first\nname =\n", "name", ""},
      // Bytes: a line ends at its first zero byte.
      {"a = 1\0 2\nb\0 = 2\nc = 3\n"s, "a", "1"},
      {"a = 1\0 2\nb\0 = 2\nc = 3\n"s, "b", kNone},
      {"a = 1\0 2\nb\0 = 2\nc = 3\n"s, "c", "3"},
      {"name = \"" + allBytes + "\"\n", "name", allBytes},
  };
  for (const auto& row : rows) EXPECT_EQ(row.value, ValueIn(row.text, row.key)) << row.text;
}

TEST(LogPropertiesTest, AddsWhatItLoadsAndReplacesFormerValues) {
  LogProperties properties;
  properties.AddProperty("own", "stays");
  properties.AddProperty("name", "added");

  EXPECT_TRUE(LoadText(properties, "name = loaded\na = 1\n"));
  EXPECT_EQ("loaded", properties.GetProperty("name"));
  EXPECT_TRUE(LoadText(properties, "a = 10\n"));
  EXPECT_TRUE(LoadText(properties, ""));

  EXPECT_FALSE(properties.AddProperty("name", "added again"));
  EXPECT_EQ("loaded", properties.GetProperty("name"));
  EXPECT_EQ("10", properties.GetProperty("a"));
  EXPECT_EQ("stays", properties.GetProperty("own"));
}

TEST(LogPropertiesTest, StopsAtALineOfMoreThan511Bytes) {
  const std::string v509(509, 'v');
  const std::string blanks(508, ' ');
  const struct {
    std::string line;
    bool isWhole;
    std::string value;  ///< Of b.
  } rows[] = {
      {"b=" + v509.substr(1), true, v509.substr(1)},
      {"b=" + v509, true, v509},
      {"b=" + v509 + "X", false, v509},
      {"b=" + std::string(100000, 'v'), false, v509},
      {"#" + std::string(510, '-'), true, kNone},
      {"#" + std::string(511, '-'), false, kNone},
      {"b=" + blanks + "\r", true, ""},  // Blanks and carriage returns count.
      {"b=" + blanks + " \r", false, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    LogProperties inside;
    LogProperties last;

    EXPECT_EQ(row.isWhole, LoadText(inside, "a = 1\n" + row.line + "\nc = 3\n"));
    EXPECT_EQ(row.isWhole, LoadText(last, row.line));

    EXPECT_EQ("1", Taken(inside, "a"));
    EXPECT_EQ(row.value, Taken(inside, "b"));
    EXPECT_EQ(row.isWhole ? "3" : kNone, Taken(inside, "c"));
    EXPECT_EQ(row.value, Taken(last, "b"));
  }
}

TEST(LogPropertiesTest, DoesNotFollowTheProcessesLocale) {
  const std::locale former = std::locale::global(std::locale(std::locale(), new LocaleWithBlankX));
  std::setlocale(LC_ALL, "C.UTF-8");

  EXPECT_EQ("\x85xvaluex\xA0", ValueIn("xkeyx = \x85xvaluex\xA0\n", "xkeyx"));

  std::locale::global(former);
}

// Streams.

TEST(LogPropertiesTest, ReadsNothingFromAStreamThatIsNotGood) {
  for (const auto state : {std::ios::eofbit, std::ios::failbit, std::ios::badbit}) {
    LogProperties properties;
    std::istringstream in("a = 1\n");
    in.setstate(state);

    EXPECT_FALSE(properties.Load(in));

    EXPECT_EQ(kNone, Taken(properties, "a"));
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

TEST(LogPropertiesTest, StopsAfterTheLineInWhichItsStreamGoesBad) {
  for (const bool isLast : {false, true}) {
    SCOPED_TRACE(isLast);
    std::istream in(nullptr);
    std::vector<std::string> lines{"a = 1\n", "b = 2"};
    if (!isLast) lines = {"a = 1\n", "b = 2\n", "c = 3\n"};
    LineSource source(lines, [&in] { in.setstate(std::ios::badbit); });
    in.rdbuf(&source);
    LogProperties properties;

    EXPECT_FALSE(properties.Load(in));

    EXPECT_EQ("1", Taken(properties, "a"));
    EXPECT_EQ("2", Taken(properties, "b"));
    EXPECT_EQ(kNone, Taken(properties, "c"));
    EXPECT_EQ(2U, source.LinesGiven());
    EXPECT_EQ(isLast, in.eof());
  }
}

TEST(LogPropertiesTest, LoadsFromAStreamThatGivesByteByByte) {
  std::vector<std::string> bytes;
  for (const char byte : "a = 1\r\nb = \" 2 \"\n# note\nc=3"s) bytes.emplace_back(1, byte);
  LineSource source(bytes, nullptr);
  std::istream in(&source);
  LogProperties properties;

  EXPECT_TRUE(properties.Load(in));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_EQ(" 2 ", properties.GetProperty("b"));
  EXPECT_EQ("3", properties.GetProperty("c"));
}

// Files.

TEST(LogPropertiesTest, LoadsFiles) {
  const TemporaryFolder folder;
  const std::string file = folder.Path("a.ini");
  LogProperties properties;

  WriteFile(file, "");
  EXPECT_TRUE(properties.Load(file));
  WriteFile(file, "a = 1\nb = 2");
  EXPECT_TRUE(properties.Load(file));
  WriteFile(file, "c=" + std::string(510, 'v') + "\nd = 3\n");
  EXPECT_FALSE(properties.Load(file));

  EXPECT_EQ("1", properties.GetProperty("a"));
  EXPECT_EQ("2", properties.GetProperty("b"));
  EXPECT_EQ(std::string(509, 'v'), properties.GetProperty("c"));
  EXPECT_EQ(kNone, Taken(properties, "d"));
}

TEST(LogPropertiesTest, StaysAsItIsWhenAFileCannotBeRead) {
  const TemporaryFolder folder;
  LogProperties properties;
  properties.AddProperty("own", "stays");

  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_FALSE(properties.Load(folder.Path("missing.ini")));
  EXPECT_FALSE(properties.Load(folder.Path()));

  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_EQ("", testing::internal::GetCapturedStdout());
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

// Single expressions.

TEST(LogPropertiesTest, ExtractsATextInPlace) {
  constexpr std::ptrdiff_t kAnywhere = -1;
  const struct {
    std::string text;
    std::string result;
    std::ptrdiff_t offset;
  } rows[] = {
      {"text", "text", 0},
      {"  some text\t", "some text", 2},
      {" \"  a\"  ", "  a", 2},
      {"\n\n a\nb \n", "a\nb", 3},
      {"", "", 0},
      {" \t\n\v\f\r ", "", kAnywhere},
      {"\"", "\"", 0},
      {"  \"  ", "\"", 2},
      {"\"\"", "", 1},
      {" \"\" ", "", 2},
      {"\"\"\"", "\"", 1},
      {"\" \t \"", " \t ", 1},
      {" \"open ", "\"open", 1},
      {"\"a\" b", "\"a\" b", 0},
      {"open\"", "open\"", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    std::string buffer = "  " + row.text;  // Bytes before the text are left alone.
    char* const text = buffer.data() + 2;
    LogProperties properties;
    properties.AddProperty("text", "value");

    const char* const result = properties.ExtractExpression(text);

    EXPECT_EQ(row.result, result);
    EXPECT_GE(result, text);
    EXPECT_LE(result, text + row.text.size());
    if (row.offset != kAnywhere) {
      EXPECT_EQ(row.offset, result - text);
    }
    EXPECT_EQ("  ", buffer.substr(0, 2));
    EXPECT_EQ("value", properties.GetProperty("text"));
  }
}

}  // namespace
