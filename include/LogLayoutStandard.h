#pragma once

#include "LogLayout.h"

/// Local time, level and message: `2024-03-05T14:07:09 |ERROR| disk full`. What a client uses when
/// it is given no other layout. The bars are uneven on purpose.
class LOGGER_EXPORT LogLayoutStandard : public LogLayout {
 public:
  ~LogLayoutStandard() override;
  void FormatAndAppend(std::ostream& out, const LogEvent& event) override;
};
