#include "Configuration/Findings.h"

#include <algorithm>

namespace Loggerctl {

void Findings::Add(const Finding& finding) { findings_.push_back(finding); }

void Findings::Warning(int line, const std::string& text, const std::string& suggestion) {
  Add({line, Severity::Warning, text, suggestion});
}

void Findings::Error(int line, const std::string& text, const std::string& suggestion) {
  Add({line, Severity::Error, text, suggestion});
}

void Findings::Loss(int line, const std::string& text, const std::string& suggestion) {
  Add({line, Severity::Loss, text, suggestion});
}

void Findings::Unusable(int line, const std::string& text, const std::string& suggestion) {
  Add({line, Severity::Unusable, text, suggestion});
}

std::vector<Finding> Findings::InOrder() const {
  std::vector<Finding> ordered = findings_;
  std::stable_sort(ordered.begin(), ordered.end(),
                   [](const Finding& one, const Finding& other) { return one.line < other.line; });
  return ordered;
}

}  // namespace Loggerctl
