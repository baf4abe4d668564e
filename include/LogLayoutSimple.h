#pragma once

#include "LogLayout.h"

/// Level and message: `ERROR - disk full`.
class LOGGER_EXPORT LogLayoutSimple : public LogLayout {
 public:
  ~LogLayoutSimple() override;
  void FormatAndAppend(std::ostream& out, const LogEvent& event) override;
};
