#include "LogLayoutFactory.h"

#include <utility>

LogLayoutFactory::LogLayoutFactory() = default;

LogLayoutFactory::~LogLayoutFactory() = default;

bool LogLayoutFactory::RegisterLogLayout(std::string name, Creator creator) {
  return creators_.emplace(std::move(name), creator).second;
}

bool LogLayoutFactory::UnregisterLogLayout(std::string name) { return creators_.erase(name) == 1; }

LogLayout* LogLayoutFactory::CreateLogLayout(std::string name) {
  const auto found = creators_.find(name);
  return found == creators_.end() ? nullptr : found->second();
}
