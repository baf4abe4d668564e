#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "Support/Files.h"

namespace {

/// "Name.Case" of all tests that the sources have.
std::set<std::string> TestsOfTheSources() {
  std::set<std::string> tests;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(PROJECT_FOLDER "/tests")) {
    if (entry.path().extension() != ".cpp") continue;
    const std::string text = Content(entry.path().string());
    for (std::size_t at = text.find("TEST"); at != std::string::npos;
         at = text.find("TEST", at + 1)) {
      const std::size_t open = text.find('(', at);
      const std::size_t comma = text.find(',', at);
      const std::size_t close = text.find(')', at);
      if (open == std::string::npos || comma == std::string::npos || comma > close) continue;
      const std::size_t name = text.find_first_not_of(" \n", comma + 1);
      tests.insert(text.substr(open + 1, comma - open - 1) + "." + text.substr(name, close - name));
    }
  }
  return tests;
}

/// The texts between single backticks.
std::vector<std::string> CodeOf(const std::string& page) {
  std::vector<std::string> code;
  for (std::size_t at = page.find('`'); at != std::string::npos; at = page.find('`', at + 1)) {
    const std::size_t end = page.find('`', at + 1);
    if (end == std::string::npos) break;
    code.push_back(page.substr(at + 1, end - at - 1));
    at = end;
  }
  return code;
}

TEST(ReliabilityPageTest, NamesOnlyTestsThatExist) {
  const std::set<std::string> tests = TestsOfTheSources();
  int named = 0;
  for (const std::string& code : CodeOf(Content(PROJECT_FOLDER "/docs/reliability.md"))) {
    if (code.find("Test.") == std::string::npos) continue;
    ++named;
    EXPECT_EQ(1U, tests.count(code)) << code;
  }
  EXPECT_GE(named, 30);
}

}  // namespace
