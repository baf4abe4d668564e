#include "LogClient.h"

#include <utility>

#include "LogClientManager.h"
#include "LogLayout.h"
#include "LogLayoutFactory.h"
#include "Logger.h"

LogClient::LogClient() { Init(); }

LogClient::LogClient(const LogProperties&) { Init(); }

LogClient::~LogClient() {
  LogClientManager* manager = Logger::GetLogManager()->GetLogClientManager();
  if (manager != nullptr) manager->RemoveLogClient(this);
  delete layout_;
}

void LogClient::Init() {
  Logger::GetLogManager()->GetLogClientManager()->AddLogClient(this);
  layout_ = Logger::GetLogManager()->GetLogLayoutFactory()->CreateLogLayout("LogLayoutStandard");
  initialized_ = false;
}

void LogClient::SetForkListener(LogForkListener* listener) {
  LogClientManager* manager = Logger::GetLogManager()->GetLogClientManager();
  if (manager != nullptr) manager->SetForkListener(*this, listener);
}

bool LogClient::IsInitialize() { return initialized_; }

bool LogClient::IsLogClient() const { return true; }

bool LogClient::SetLayout(std::string name) {
  delete layout_;
  layout_ = nullptr;
  layout_ = Logger::GetLogManager()->GetLogLayoutFactory()->CreateLogLayout(std::move(name));
  return layout_ != nullptr;
}

bool LogClient::SetLayout(LogLayout* layout) {
  delete layout_;
  layout_ = layout;
  return true;
}
