#include "LogLevelManager.h"

#include <memory>
#include <new>

#include "Core/LevelAccess.h"
#include "Core/ProcessLevels.h"

using Logger::Internal::LevelAccess;
using Logger::Internal::ProcessLevels;

LogLevelManager::LogLevelManager() : common_(), registeredCommon_(0), unregistered_(0, "") {
  AddDefaultLogLevel();
}

LogLevelManager::~LogLevelManager() {
  for (const LogLevel* level : levels_) delete level;
}

void LogLevelManager::AddDefaultLogLevel() {}

bool LogLevelManager::AddLogLevel(unsigned int level, const logstring& name) {
  if (ExistLogLevel(level)) return false;
  const ThreadGuard guard(GetMutex());
  if (ExistLogLevel(level)) return false;
  auto added = std::make_unique<LogLevel>(level, name);
  levels_.push_back(added.get());
  try {
    if (level >= kCommonLevels) uncommon_.emplace(level, added.get());
  } catch (const std::bad_alloc&) {
    levels_.pop_back();
    throw;
  }
  LogLevel* const registered = added.release();
  if (level >= kCommonLevels) return true;

  // A thread that sees the level as registered can also read its name, and finds that every handler
  // accepts it.
  common_[level] = registered;
  ProcessLevels::LevelAdded(*this);
  registeredCommon_ |= std::uint64_t{1} << level;
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
  const ThreadGuard guard(GetMutex());
  if (index < 0 || static_cast<std::size_t>(index) >= levels_.size()) return false;
  level = levels_[static_cast<std::size_t>(index)]->GetLogLevel();
  return true;
}

const LogLevel* LogLevelManager::Find(unsigned int level) const {
  if (level < kCommonLevels) return common_[level];
  const ThreadGuard guard(GetMutex());
  const auto found = uncommon_.find(level);
  return found == uncommon_.end() ? nullptr : found->second;
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
