#include "LogClientFile.h"

#include "Clients/FileStream.h"
#include "LogLayout.h"
#include "LogProperties.h"

using Logger::Internal::FileStream;

LogClientFile::LogClientFile(const std::string& filename, bool append)
    : stream_(new FileStream), filename_(filename), append_(append) {
  Init();
}

LogClientFile::LogClientFile(const LogProperties& properties)
    : stream_(new FileStream),
      filename_(properties.GetProperty("filename")),
      append_(properties.GetProperty("fileappend") != "false") {  // On unless exactly this word.
  if (!filename_.empty()) Init();
}

// The stream writes what it still has and closes its file.
LogClientFile::~LogClientFile() = default;

bool LogClientFile::Init() {
  if (!filename_.empty()) stream_->Open(filename_, append_);
  initialized_ = stream_->IsOpen();
  return initialized_;
}

bool LogClientFile::Publish(const LogEvent& event) {
  if (!initialized_ || filename_.empty() || !stream_->good() || layout_ == nullptr) return false;
  layout_->FormatAndAppend(*stream_, event);
  stream_->WriteOut();
  return true;
}
