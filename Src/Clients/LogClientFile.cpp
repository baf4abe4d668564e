#include "LogClientFile.h"

#include <new>

#include "Clients/FileStream.h"
#include "Clients/ForkListenerOf.h"
#include "Internal/CancellationHold.h"
#include "Internal/HotPath.h"
#include "Layouts/DirectLine.h"
#include "LogLayout.h"
#include "LogProperties.h"

using Logger::Internal::AppendDirectLine;
using Logger::Internal::ByteBuffer;
using Logger::Internal::CancellationHold;
using Logger::Internal::FileStream;
using Logger::Internal::ForkListenerOf;

namespace {

/// Appends the line of a built-in layout without the stream's slow insertions. False when the
/// stream would write something else, or memory ran out. (Not inlined, so that Publish itself needs
/// few registers.)
[[gnu::noinline]] bool AppendDirectly(const LogLayout& layout, FileStream& stream,
                                      const LogEvent& event) {
  ByteBuffer* const bytes = stream.PlainText();
  if (bytes == nullptr) return false;
  try {
    return AppendDirectLine(*bytes, layout, event);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace

LogClientFile::LogClientFile(const std::string& filename, bool append)
    : stream_(new FileStream), filename_(filename), append_(append), isReopenDue_(false) {
  Init();
  forkListener_ = std::make_unique<ForkListenerOf<LogClientFile>>(*this);
}

LogClientFile::LogClientFile(const LogProperties& properties)
    : stream_(new FileStream),
      filename_(properties.GetProperty("filename")),
      append_(properties.GetProperty("fileappend") != "false"),  // On unless exactly this word.
      isReopenDue_(false) {
  if (!filename_.empty()) Init();
  forkListener_ = std::make_unique<ForkListenerOf<LogClientFile>>(*this);
}

// The stream writes what it still has and closes its file.
LogClientFile::~LogClientFile() { forkListener_.reset(); }

bool LogClientFile::Init() {
  if (!filename_.empty()) stream_->Open(filename_, append_);
  initialized_ = stream_->IsOpen();
  return initialized_;
}

bool LogClientFile::Publish(const LogEvent& event) {
  if (isReopenDue_.load(std::memory_order_relaxed)) Reopen();
  if (!initialized_ || filename_.empty() || !stream_->good() || layout_ == nullptr) return false;
  if (!AppendDirectly(*layout_, *stream_, event)) layout_->FormatAndAppend(*stream_, event);
  stream_->WriteOut();
  return true;
}

void LogClientFile::ReopenAtNextEvent() noexcept {
  static_assert(std::atomic<bool>::is_always_lock_free, "A signal handler may call it.");
  isReopenDue_ = true;
}

bool LogClientFile::HasFailed() const { return !stream_->IsOpen() || !stream_->good(); }

std::ostream& LogClientFile::GetStream() { return *stream_; }

const std::string& LogClientFile::GetFileName() const { return filename_; }

void LogClientFile::CloseFile() {
  stream_->Close();
  stream_->clear();
}

bool LogClientFile::OpenFile(bool append) {
  const CancellationHold hold;  // A thread cancelled in open() would leave no open file.
  stream_->Open(filename_, append);
  const bool isOpen = stream_->good();
  if (isOpen) initialized_ = true;
  return isOpen;
}

LOGGER_KEPT_APART void LogClientFile::Reopen() {
  const CancellationHold hold;  // A thread cancelled in between would leave no open file.
  isReopenDue_ = false;
  CloseFile();
  if (!OpenFile(true) && !filename_.empty()) isReopenDue_ = true;
}

void LogClientFile::ContinueInChild(bool wasBusy) {
  if (!wasBusy) return;
  static_cast<void>(stream_.release());  // In any state: it cannot be destroyed.
  stream_ = std::make_unique<FileStream>();
}
