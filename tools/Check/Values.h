#pragma once

#include <string>

namespace Loggerctl {

/// How values look to a reader, to be compared with how the library reads them.

/// The look of a word for yes or no; the case of its letters does not matter.
enum class Look { On, Off, Unclear };
Look LookOf(const std::string& word);

struct NumberReading {
  enum class Form {
    Plain,  ///< It is the number that it looks like.
    None,   ///< There are no digits at its start, and 0 is read.
    Cut,    ///< Something follows the digits, and is ignored.
    Capped  ///< It does not fit, and the nearest number that does is read.
  };
  int value;  ///< As the library reads it.
  Form form;
};
NumberReading ReadNumber(const std::string& text);

/// "is read as 10, ..." with the reason; empty when the number is plain.
std::string DescribeReading(const NumberReading& reading);

}  // namespace Loggerctl
