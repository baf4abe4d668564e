#include "Terminal.h"

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace Loggerctl {

namespace {

std::string Environment(const char* name) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing here changes the environment.
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace

bool HasColors(std::FILE* stream) {
  return isatty(fileno(stream)) == 1 && Environment("NO_COLOR").empty() &&
         Environment("TERM") != "dumb";
}

}  // namespace Loggerctl
