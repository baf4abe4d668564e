#include "LogLevelManager.h"

#include <algorithm>
#include <memory>

#include "Core/LevelAccess.h"
#include "Core/LivingHandlers.h"

using Logger::Internal::LevelAccess;
using Logger::Internal::LivingHandlers;

LogLevelManager::LogLevelManager()
    : levels_(nullptr),
      count_(0),
      capacity_(0),
      common_(),
      registeredCommon_(0),
      unregistered_(0, "") {
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
  MakeRoomForOne();
  auto* const added = new LogLevel(level, name);

  // Who can see that the level is there can also read its name, and every handler accepts it by
  // then.
  const std::size_t count = count_;
  levels_[count] = added;
  if (level < kCommonLevels) {
    common_[level] = added;
    LivingHandlers::LevelsChanged(*this);
    registeredCommon_ |= std::uint64_t{1} << level;
  }
  count_ = count + 1;
  return true;
}

bool LogLevelManager::ExistLogLevel(unsigned int level) {
  if (level < kCommonLevels) return (registeredCommon_ >> level & 1) != 0;
  return Find(level) != nullptr;
}

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

/// Gives the array a place for another level. Readers go on with the former array, which is kept
/// for them.
void LogLevelManager::MakeRoomForOne() {
  constexpr std::size_t kFirstCapacity = 16;
  const std::size_t count = count_;
  if (count < capacity_) return;
  const std::size_t capacity = std::max(kFirstCapacity, 2 * capacity_);
  LogLevel** const former = levels_;
  formerArrays_.reserve(formerArrays_.size() + 1);
  auto grown = std::make_unique<LogLevel*[]>(capacity);
  std::copy(former, former + count, grown.get());
  formerArrays_.push_back(former);
  levels_ = grown.release();
  capacity_ = capacity;
}

namespace Logger::Internal {

const logstring& LevelAccess::Name(const LogLevelManager& levels, unsigned int level) {
  const LogLevel* found = levels.Find(level);
  return (found == nullptr ? levels.unregistered_ : *found).name_;
}

std::uint64_t LevelAccess::RegisteredCommon(const LogLevelManager& levels) {
  std::uint64_t registered = 0;
  for (unsigned int level = 0; level < kCommonLevels; ++level) {
    if (levels.common_[level] != nullptr) registered |= std::uint64_t{1} << level;
  }
  return registered;
}

}  // namespace Logger::Internal
