#include "Check/Finding.h"

#include <algorithm>

namespace Loggerctl {

void Findings::Error(int line, const std::string& text, const std::string& suggestion) {
  findings_.push_back({line, Severity::Error, text, suggestion});
}

void Findings::Warning(int line, const std::string& text, const std::string& suggestion) {
  findings_.push_back({line, Severity::Warning, text, suggestion});
}

std::vector<Finding> Findings::InOrder() const {
  std::vector<Finding> ordered = findings_;
  std::stable_sort(ordered.begin(), ordered.end(),
                   [](const Finding& one, const Finding& other) { return one.line < other.line; });
  return ordered;
}

}  // namespace Loggerctl
