#include "LogLevelManager.h"

#include <algorithm>
#include <memory>

#include "Core/LevelAccess.h"
#include "Core/LivingHandlers.h"

using Logger::Internal::LevelAccess;
using Logger::Internal::LivingHandlers;

LogLevelManager::LogLevelManager()
    : levels_(nullptr), count_(0), capacity_(0), common_(), unregistered_(0, "") {
  AddDefaultLogLevel();
}

LogLevelManager::~LogLevelManager() {
  const std::size_t count = count_;
  LogLevel** levels = levels_;
  for (std::size_t i = 0; i < count; ++i) delete levels[i];
  for (LogLevel** former : formerArrays_) delete[] former;
  delete[] levels;
}

void LogLevelManager::AddDefaultLogLevel() {}

bool LogLevelManager::AddLogLevel(unsigned int level, const logstring& name) {
  if (ExistLogLevel(level)) return false;
  const ThreadGuard guard(GetMutex());
  if (ExistLogLevel(level)) return false;
  auto added = std::make_unique<LogLevel>(level, name);
  Append(added.get());
  static_cast<void>(added.release());  // The array owns it now.
  LivingHandlers::LevelsChanged(*this);
  return true;
}

bool LogLevelManager::ExistLogLevel(unsigned int level) { return Find(level) != nullptr; }

logstring LogLevelManager::GetLogLevelName(unsigned int level) {
  return LevelAccess::Name(*this, level);
}

bool LogLevelManager::GetLogLevel(int index, unsigned int& level) {
  if (index < 0 || static_cast<std::size_t>(index) >= count_) return false;
  level = levels_[static_cast<std::size_t>(index)]->GetLogLevel();
  return true;
}

const LogLevel* LogLevelManager::Find(unsigned int level) const {
  if (level < kCommonLevels) return common_[level];
  // The count first: an array that is loaded later holds at least as many.
  const std::size_t count = count_;
  LogLevel* const* const first = levels_;
  LogLevel* const* const last = first + count;
  const auto found = std::find_if(first, last, [level](const LogLevel* candidate) {
    return candidate->GetLogLevel() == level;
  });
  return found == last ? nullptr : *found;
}

/// Enters a level, so that readers see either the registry without it or a complete entry.
void LogLevelManager::Append(LogLevel* level) {
  constexpr std::size_t kFirstCapacity = 16;
  const std::size_t count = count_;
  if (count == capacity_) {
    const std::size_t capacity = std::max(kFirstCapacity, 2 * capacity_);
    LogLevel** former = levels_;
    formerArrays_.reserve(formerArrays_.size() + 1);
    auto grown = std::make_unique<LogLevel*[]>(capacity);
    std::copy(former, former + count, grown.get());
    formerArrays_.push_back(former);
    levels_ = grown.release();
    capacity_ = capacity;
  }
  levels_[count] = level;
  // A level that the count includes can also be looked up.
  if (level->GetLogLevel() < kCommonLevels) common_[level->GetLogLevel()] = level;
  count_ = count + 1;
}

namespace Logger::Internal {

const logstring& LevelAccess::Name(const LogLevelManager& levels, unsigned int level) {
  const LogLevel* found = levels.Find(level);
  return (found == nullptr ? levels.unregistered_ : *found).name_;
}

std::uint64_t LevelAccess::RegisteredBelow64(const LogLevelManager& levels) {
  std::uint64_t registered = 0;
  for (unsigned int level = 0; level < LogLevelManager::kCommonLevels; ++level) {
    if (levels.common_[level] != nullptr) registered |= std::uint64_t{1} << level;
  }
  return registered;
}

}  // namespace Logger::Internal
