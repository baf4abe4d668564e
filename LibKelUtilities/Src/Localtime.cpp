#include "LibKelUtilities/Localtime.h"

bool LibKelUtilities::Localtime(struct tm* result, const long* seconds) {
  const time_t time = *seconds;
  struct tm converted;
  if (localtime_r(&time, &converted) == nullptr) return false;
  *result = converted;
  return true;
}
