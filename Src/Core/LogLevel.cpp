#include "LogLevel.h"

LogLevel::LogLevel(unsigned int level, const logstring& name) : level_(level), name_(name) {}

LogLevel::LogLevel(const LogLevel& other) : level_(0) { Assign(other); }

LogLevel& LogLevel::operator=(const LogLevel& other) {
  if (this != &other) Assign(other);
  return *this;
}

LogLevel::~LogLevel() = default;

void LogLevel::Assign(const LogLevel& other) {
  level_ = other.level_;
  name_ = other.name_;
}

unsigned int LogLevel::GetLogLevel() const { return level_; }

logstring LogLevel::GetLogLevelName() const { return name_; }
