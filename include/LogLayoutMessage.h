#pragma once

#include "LogLayout.h"

/// The message alone: `disk full`.
class LOGGER_EXPORT LogLayoutMessage : public LogLayout {
 public:
  ~LogLayoutMessage() override;
  void FormatAndAppend(std::ostream& out, const LogEvent& event) override;
};
