#pragma once

#include <map>
#include <string>

#include "LoggerExport.h"

class LogLayout;

/// Makes layouts by name. The process's own belongs to the log manager and knows
/// "LogLayoutMessage", "LogLayoutSimple", "LogLayoutStandard" and "LogLayoutExtended" from the
/// start.
///
/// Names are compared exactly. Making layouts from several threads at once is safe; registering
/// takes no lock and must not happen at the same time.
class LOGGER_EXPORT LogLayoutFactory {
 public:
  /// Makes a new layout, which then belongs to the caller of CreateLogLayout.
  typedef LogLayout* (*Creator)();

  LogLayoutFactory();
  virtual ~LogLayoutFactory();

  LogLayoutFactory(const LogLayoutFactory&) = delete;
  LogLayoutFactory& operator=(const LogLayoutFactory&) = delete;

  /// False when the name is taken: its first creator stays.
  bool RegisterLogLayout(std::string name, Creator creator);
  /// False when the name is not known.
  bool UnregisterLogLayout(std::string name);
  /// A new layout, which the caller owns, or null for an unknown name.
  LogLayout* CreateLogLayout(std::string name);

 private:
  std::map<std::string, Creator> creators_;
};
