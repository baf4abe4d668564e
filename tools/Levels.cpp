#include "Levels.h"

#include "LogLevelManager.h"
#include "Logger.h"

namespace Loggerctl {

std::vector<unsigned int> RegisteredLevels() {
  std::vector<unsigned int> levels;
  unsigned int level = 0;
  for (int index = 0; Logger::GetLogLevelManager()->GetLogLevel(index, level); ++index) {
    levels.push_back(level);
  }
  return levels;
}

std::string LevelName(unsigned int level) {
  return Logger::GetLogLevelManager()->GetLogLevelName(level);
}

}  // namespace Loggerctl
