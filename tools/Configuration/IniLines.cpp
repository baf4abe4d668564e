#include "Configuration/IniLines.h"

#include <algorithm>
#include <array>
#include <sstream>

#include "Core/PropertiesLine.h"
#include "LogProperties.h"
#include "Wording.h"

namespace Loggerctl {

using Logger::Internal::kLongestPropertiesLine;

namespace {

constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

bool IsBlank(const std::string& text, std::size_t position) {
  return position >= text.size() || Trimmed(text.substr(position, 1)).empty();
}

/// The library's own way of taking blanks and quotes off a key or value.
std::string Extracted(std::string text) {
  LogProperties properties;
  return properties.ExtractExpression(text.data());
}

bool BeginsWithTypographicQuote(const std::string& value) {
  constexpr std::array kQuotes{"\u201C", "\u201D", "\u201E", "\u201F", "\u2018",
                               "\u2019", "\u201A", "\u201B", "\u00AB", "\u00BB"};
  return std::any_of(kQuotes.begin(), kQuotes.end(),
                     [&](const char* quote) { return value.rfind(quote, 0) == 0; });
}

/// One line, compared as it looks with how the library reads it.
class IniLine {
 public:
  IniLine(std::string text, int number, Findings& findings)
      : text_(std::move(text)), number_(number), findings_(findings) {}

  void AppendTo(std::vector<IniEntry>& entries) {
    CheckLength();
    CutAtZeroByte();
    CutComment();
    if (IsOtherComment()) return;
    const std::size_t separator = text_.find('=');
    if (separator == std::string::npos) return CheckIgnored();
    const std::string valueText = text_.substr(separator + 1);
    const IniEntry entry{KeyOf(text_.substr(0, separator)), Extracted(valueText), number_};
    CheckComment(entry.value);
    CheckValue(entry.value);
    entries.push_back(entry);
  }

 private:
  std::string text_;
  const int number_;
  Findings& findings_;
  std::string comment_;

  void CheckLength() const {
    if (text_.size() <= kLongestPropertiesLine) return;
    findings_.Unusable(number_,
                       "the line has " + std::to_string(text_.size()) +
                           " bytes and may have 511; the file cannot be read because of it",
                       "shorten it");
  }

  void CutAtZeroByte() {
    const std::size_t zero = text_.find('\0');
    if (zero == std::string::npos) return;
    if (text_.find('#') > zero) {
      findings_.Loss(number_, "a zero byte ends the line", "save the file as plain text");
    }
    text_.resize(zero);
  }

  /// A whole line that is a comment in other formats.
  bool IsOtherComment() const {
    const bool isOther = Trimmed(text_).rfind(';', 0) == 0;
    if (isOther) findings_.Loss(number_, "a comment starts at #, not at ;", "write # before it");
    return isOther;
  }

  void CutComment() {
    const std::size_t start = text_.find('#');
    if (start == std::string::npos) return;
    comment_ = text_.substr(start);
    text_.resize(start);
  }

  void CheckIgnored() const {
    std::string text = Trimmed(text_);
    if (number_ == 1 && text.rfind(kByteOrderMark, 0) == 0) text.erase(0, 3);
    if (text.empty()) return;
    findings_.Loss(number_, "there is no '=' in the line, which is ignored",
                   "write key = value, or # before a comment");
  }

  std::string KeyOf(const std::string& text) const {
    std::string key = Extracted(text);
    if (number_ != 1 || key.rfind(kByteOrderMark, 0) != 0) return key;
    findings_.Loss(number_,
                   "the file begins with a byte order mark, which belongs to the first key",
                   "save it without the mark");
    return key.substr(3);
  }

  /// A comment that begins within a word or within quotes.
  void CheckComment(const std::string& value) const {
    if (comment_.empty()) return;
    const bool isQuoted = !value.empty() && value.front() == '"';
    const bool isGlued = !IsBlank(text_, text_.size() - 1) && !IsBlank(comment_, 1) &&
                         text_.back() != '=' && comment_[1] != '#';
    if (!isQuoted && !isGlued) return;
    findings_.Error(number_,
                    "a comment starts at # wherever it stands: the value is " + Quoted(value));
  }

  void CheckValue(const std::string& value) const {
    if (value.empty()) return;
    CheckQuotes(value);
    const bool hasSemicolon =
        value.find(" ;") != std::string::npos || value.find("\t;") != std::string::npos;
    if (hasSemicolon) {
      findings_.Error(number_, "a comment starts at #, not at ;: the value is " + Quoted(value),
                      "write # before the comment");
    }
    if (value.back() == '\\') {
      findings_.Error(number_, "a line cannot be continued: the backslash belongs to the value",
                      "write it on one line");
    }
    if (value.find("${") != std::string::npos) {
      findings_.Error(number_, "variables are not replaced: the value is " + Quoted(value));
    }
  }

  void CheckQuotes(const std::string& value) const {
    if (value.front() == '"' && comment_.empty()) {
      findings_.Error(number_,
                      "the quotes do not enclose the value, and belong to it: " + Quoted(value),
                      "let the closing quote end the value");
    }
    if (value.size() > 1 && value.front() == '\'' && value.back() == '\'') {
      findings_.Error(number_, "single quotes belong to the value: " + Quoted(value),
                      "write double quotes, or none");
    }
    if (BeginsWithTypographicQuote(value)) {
      findings_.Error(number_, "typographic quotes belong to the value: " + Quoted(value),
                      "write double quotes as on the keyboard, or none");
    }
  }
};

}  // namespace

std::vector<IniEntry> ReadIniLines(const std::string& content, Findings& findings) {
  std::vector<IniEntry> entries;
  std::istringstream lines(content);
  std::string text;
  for (int number = 1; std::getline(lines, text); ++number) {
    IniLine(text, number, findings).AppendTo(entries);
  }
  return entries;
}

}  // namespace Loggerctl
