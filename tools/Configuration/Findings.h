#pragma once

#include <string>
#include <vector>

namespace Loggerctl {

/// How bad a finding is, from the least to the worst.
enum class Severity {
  Warning,  ///< It works, and is seldom meant.
  Error,    ///< The library reads it differently from what it looks like, or skips it.
  Loss,     ///< An error: it has no effect whatever the application does, and is not converted.
  Unusable  ///< An error: the library configures nothing from such a file.
};

struct Finding {
  int line;  ///< From 1; 0 when the finding is about the file as a whole.
  Severity severity;
  std::string text;
  std::string suggestion;  ///< How to correct it; may be empty.
};

/// The findings of one file.
class Findings {
 public:
  void Add(const Finding& finding);
  void Warning(int line, const std::string& text, const std::string& suggestion = "");
  void Error(int line, const std::string& text, const std::string& suggestion = "");
  void Loss(int line, const std::string& text, const std::string& suggestion = "");
  void Unusable(int line, const std::string& text, const std::string& suggestion = "");

  /// In the order of their lines; those of one line as they were found.
  std::vector<Finding> InOrder() const;

 private:
  std::vector<Finding> findings_;
};

}  // namespace Loggerctl
