#include "Wording.h"

#include <algorithm>
#include <cctype>
#include <numeric>

#include "Printable.h"

namespace Loggerctl {

namespace {

/// Where to cut a text so that it is no longer than this.
std::size_t CutOf(const std::string& text, std::size_t longest) {
  std::size_t cut = std::min(text.size(), longest);
  const auto isWithinCharacter = [&] {
    return (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80;
  };
  while (cut > 0 && cut < text.size() && isWithinCharacter()) --cut;
  return cut;
}

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char character) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  });
  return text;
}

/// The number of letters to insert, delete, replace, or swap with the next one to turn one word
/// into the other.
std::size_t EditDistance(const std::string& from, const std::string& to) {
  std::vector<std::vector<std::size_t>> rows(from.size() + 1,
                                             std::vector<std::size_t>(to.size() + 1));
  std::iota(rows[0].begin(), rows[0].end(), 0U);
  for (std::size_t i = 1; i <= from.size(); ++i) {
    rows[i][0] = i;
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const std::size_t replaced = rows[i - 1][j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
      rows[i][j] = std::min({replaced, rows[i - 1][j] + 1, rows[i][j - 1] + 1});
      const bool isSwap = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
      if (isSwap) rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
    }
  }
  return rows.back().back();
}

/// The word without what other logging systems call the kind of thing that it names.
std::string WithoutRole(const std::string& word) {
  for (const std::string role : {"appender", "sink", "target", "writer"}) {
    const bool isRole = word.size() > role.size() &&
                        word.compare(word.size() - role.size(), role.size(), role) == 0;
    if (isRole) return word.substr(0, word.size() - role.size());
  }
  return word;
}

/// The shortest candidate that has the word in it; empty for a word that says too little.
std::string ShortestWith(const std::string& word, const std::vector<std::string>& candidates) {
  constexpr std::size_t kShortestWord = 4;
  std::string shortest;
  if (word.size() < kShortestWord) return shortest;
  for (const std::string& candidate : candidates) {
    const bool isLonger = candidate.size() > word.size();
    if (!isLonger || LowerCase(candidate).find(word) == std::string::npos) continue;
    if (shortest.empty() || candidate.size() < shortest.size()) shortest = candidate;
  }
  return shortest;
}

}  // namespace

std::string Quoted(const std::string& text) {
  constexpr std::size_t kLongest = 120;
  const std::size_t cut = CutOf(text, kLongest);
  return "'" + Escaped(text.substr(0, cut)) + (cut < text.size() ? "...'" : "'");
}

std::string Nearest(const std::string& word, const std::vector<std::string>& candidates) {
  constexpr std::size_t kLongestWord = 600;  // No key or name is longer; the table stays small.
  const std::string wanted = LowerCase(Trimmed(word)).substr(0, kLongestWord);
  // A third of the letters may be wrong, and one in any case.
  std::size_t smallest = std::max<std::size_t>(1, wanted.size() / 3) + 1;
  std::string nearest;
  for (const std::string& candidate : candidates) {
    if (candidate == word || candidate.empty()) continue;
    const std::size_t longer = std::max(wanted.size(), candidate.size());
    if (longer - std::min(wanted.size(), candidate.size()) >= smallest) continue;
    const std::size_t distance = EditDistance(wanted, LowerCase(candidate));
    if (distance >= smallest || distance >= candidate.size()) continue;
    smallest = distance;
    nearest = candidate;
  }
  return nearest.empty() ? ShortestWith(WithoutRole(wanted), candidates) : nearest;
}

std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates) {
  const std::string nearest = Nearest(word, candidates);
  return nearest.empty() ? "" : "did you mean " + Quoted(nearest) + "?";
}

std::string IfItIsOwn(const std::string& makes, const std::string& option,
                      const std::string& name) {
  return "if the application " + makes + " it: " + option + " " + Printable(name);
}

std::string JoinedSuggestions(const std::string& one, const std::string& other) {
  return one.empty() ? other : one + " (" + other + ")";
}

std::string Trimmed(const std::string& text) {
  constexpr const char* kBlanks = " \t\r\n\v\f";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string Join(const std::vector<std::string>& texts, const std::string& separator) {
  std::string joined;
  for (const std::string& text : texts) {
    if (&text != &texts.front()) joined += separator;
    joined += text;
  }
  return joined;
}

}  // namespace Loggerctl
