#pragma once

#include "LogLayout.h"

/// Local time, level and message: `2024-03-05T14:07:09 |ERROR| disk full`. The default layout of a
/// client. The bars are uneven on purpose.
class LOGGER_EXPORT LogLayoutStandard : public LogLayout {
 public:
  ~LogLayoutStandard() override;
  void FormatAndAppend(std::ostream& out, const LogEvent& event) override;
};
