#pragma once

#include <sstream>
#include <string>

#include "Check/CheckFile.h"
#include "Check/FindingPrinter.h"

/// The output of `loggerctl check` for a file of this content, which is called "it".
inline std::string Checked(const std::string& content,
                           const Loggerctl::CheckOptions& options = {}) {
  std::ostringstream out;
  Loggerctl::PrintText("it", Loggerctl::CheckContent(content, options), false, out);
  return out.str();
}
