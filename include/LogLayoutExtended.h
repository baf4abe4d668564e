#pragma once

#include "LogLayout.h"

/// The standard line with the source position, the file name as LogEvent::GetFileName() gives it:
/// `2024-03-05T14:07:09 |ERROR| main.cpp 42 disk full`.
class LOGGER_EXPORT LogLayoutExtended : public LogLayout {
 public:
  ~LogLayoutExtended() override;
  void FormatAndAppend(std::ostream& out, const LogEvent& event) override;
};
