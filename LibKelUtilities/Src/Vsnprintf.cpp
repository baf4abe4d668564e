#include "LibKelUtilities/Vsnprintf.h"

#include <stdio.h>

int LibKelUtilities::Vsnprintf(char* buffer, unsigned int size, const char* format,
                               va_list arguments) {
  return vsnprintf(buffer, size, format, arguments);
}
