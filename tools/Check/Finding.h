#pragma once

#include <string>
#include <vector>

namespace Loggerctl {

/// Error: the library would skip, ignore or read something differently from what it looks like.
/// Warning: it works, and is seldom meant.
enum class Severity { Warning, Error };

struct Finding {
  int line;  ///< From 1; 0 when the finding is about the file as a whole.
  Severity severity;
  std::string text;
  std::string suggestion;  ///< What to do about it; may be empty.
};

/// What was found in one file.
class Findings {
 public:
  void Error(int line, const std::string& text, const std::string& suggestion = "");
  void Warning(int line, const std::string& text, const std::string& suggestion = "");

  /// In the order of their lines; those of one line as they were found.
  std::vector<Finding> InOrder() const;

 private:
  std::vector<Finding> findings_;
};

}  // namespace Loggerctl
