#include "LogHandler.h"

#include <sys/time.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <new>

#include "Core/EventAccess.h"
#include "Core/LevelAccess.h"
#include "Core/LivingHandlers.h"
#include "Core/ProcessLevels.h"
#include "Internal/ErrnoKeeper.h"
#include "Internal/FormattedText.h"
#include "Internal/HotPath.h"
#include "Internal/Require.h"
#include "LibKelUtilities/GetTid.h"
#include "Logger.h"

using Logger::Internal::Contract;
using Logger::Internal::ErrnoKeeper;
using Logger::Internal::EventAccess;
using Logger::Internal::FormattedText;
using Logger::Internal::LevelAccess;
using Logger::Internal::LivingHandlers;
using Logger::Internal::ProcessLevels;
using Logger::Internal::Require;

namespace {

constexpr Contract kAddLogClient{"logClient", "Src/LogHandler", 216,
                                 "bool LogHandler::AddLogClient(LogHandlerClient*)"};
constexpr Contract kRemoveLogClient{"logClient", "Src/LogHandler", 285,
                                    "void LogHandler::RemoveLogClient(LogHandlerClient*)"};

LogEvent EmptyEvent() { return LogEvent(0, "", "", "", 0, timeval(), 0); }

}  // namespace

/// Where in the source a message comes from.
struct LogHandler::SourcePosition {
  const char* file;
  std::size_t fileLength;
  int line;

  static SourcePosition Unknown() { return {"", 0, 0}; }
  static SourcePosition At(const logstring& file, int line) {
    return {file.data(), file.size(), line};
  }
  static SourcePosition At(const char* file, int line) {
    return file == nullptr ? SourcePosition{"", 0, line}
                           : SourcePosition{file, std::strlen(file), line};
  }
};

/// One event's way along the receivers. It stays valid when a receiver attaches or detaches others,
/// or itself.
class LogHandler::Distribution {
 public:
  Distribution(const LogHandler& handler, const LogEvent& event)
      : handler_(handler), event_(event), outer_(handler.distributions_), next_(0) {
    handler.distributions_ = this;
  }
  ~Distribution() { handler_.distributions_ = outer_; }

  Distribution(const Distribution&) = delete;
  Distribution& operator=(const Distribution&) = delete;

  void Run() {
    while (next_ < handler_.clients_.size()) handler_.clients_[next_++]->Publish(event_);
  }
  void ReceiverRemoved(std::size_t index) {
    if (index < next_) --next_;
  }
  bool IsOf(const LogEvent& event) const { return &event_ == &event; }
  Distribution* Outer() const { return outer_; }

 private:
  const LogHandler& handler_;
  const LogEvent& event_;
  Distribution* const outer_;
  std::size_t next_;
};

LogHandler::LogHandler(const logstring& name)
    : name_(name),
      rejectedLevels_(0),
      isActive_(false),
      wantsToBeActive_(false),
      disabledCommon_(0),
      event_(EmptyEvent()),
      distributions_(nullptr) {
  LivingHandlers::Enter(*this);
  LogHandler::Init();
}

LogHandler::~LogHandler() {
  Logger::GetLogManager()->RemoveLogHandler(this);
  LivingHandlers::Leave(*this);
}

bool LogHandler::Init() {
  SetLogHandlerActive(true);
  return true;
}

bool LogHandler::IsInitialize() { return true; }

bool LogHandler::IsLogClient() const { return false; }

void LogHandler::SetName(const logstring& name) { name_ = name; }

logstring LogHandler::GetName() const { return name_; }

void LogHandler::SetLogHandlerActive(bool active) {
  static_assert(
      std::atomic<bool>::is_always_lock_free && std::atomic<std::uint64_t>::is_always_lock_free,
      "A signal handler may call it.");
  wantsToBeActive_ = active;
  UpdateRejectedLevels();
}

bool LogHandler::GetLogHandlerActive() const { return isActive_; }

/// Recomputes the word from its sources, which any thread or signal handler may change at the same
/// time. After storing it, a thread checks the sources again, and repeats if they changed. A thread
/// that sees the handler active finds that it accepts events.
void LogHandler::UpdateRejectedLevels() noexcept {
  constexpr std::uint64_t kEveryLevel = ~std::uint64_t{0};
  const auto rejected = [this](bool isActive) {
    return isActive ? ~ProcessLevels::Common() | disabledCommon_ : kEveryLevel;
  };
  bool isActive;
  std::uint64_t word;
  do {
    isActive = wantsToBeActive_;
    word = rejected(isActive);
    rejectedLevels_ = word;
    isActive_ = isActive;
  } while (isActive != wantsToBeActive_ || word != rejected(isActive));
}

void LogHandler::SetLogLevel(unsigned int level, bool enable) {
  if (!ProcessLevels::Exists(level)) return;
  const TurnGuard guard(*this);
  if (level < kLevelsInWord) {
    const std::uint64_t bit = std::uint64_t{1} << level;
    disabledCommon_ = enable ? disabledCommon_ & ~bit : disabledCommon_ | bit;
    return UpdateRejectedLevels();
  }
  const auto end = std::remove(disabledUncommon_.begin(), disabledUncommon_.end(), level);
  disabledUncommon_.erase(end, disabledUncommon_.end());
  if (!enable) disabledUncommon_.push_back(level);
}

bool LogHandler::GetLogLevel(unsigned int level) {
  return ProcessLevels::Exists(level) && IsEnabledFor(level);
}

bool LogHandler::IsEnabledFor(unsigned int level) const {
  if (level < kLevelsInWord) return (disabledCommon_ >> level & 1) == 0;
  const TurnGuard guard(*this);
  return std::find(disabledUncommon_.begin(), disabledUncommon_.end(), level) ==
         disabledUncommon_.end();
}

/// HandleLogEvent, in place.
LOGGER_INLINED inline bool LogHandler::Accepts(unsigned int level) const {
  static_assert(kLevelsInWord == LevelAccess::kCommonLevels);
  return level < kLevelsInWord ? MayLog(level) : AcceptsUncommon(level);
}

bool LogHandler::HandleLogEvent(unsigned int level) const { return Accepts(level); }

/// The test of a level that has no bit.
LOGGER_KEPT_APART bool LogHandler::AcceptsUncommon(unsigned int level) const {
  return isActive_ && ProcessLevels::Exists(level) && IsEnabledFor(level);
}

bool LogHandler::AddLogClient(LogHandlerClient* logClient) {
  Require(logClient != nullptr, kAddLogClient);
  const TurnGuard guard(*this);
  if (HasReceiver(*logClient)) return false;
  const LivingHandlers::Guard listGuard;
  clients_.push_back(logClient);
  return true;
}

void LogHandler::RemoveLogClient(LogHandlerClient* logClient) {
  Require(logClient != nullptr, kRemoveLogClient);
  const TurnGuard guard(*this);
  const LivingHandlers::Guard listGuard;
  EraseReceiver(*logClient);
}

unsigned int LogHandler::GetLogClientCount() const {
  const TurnGuard guard(*this);
  return static_cast<unsigned int>(clients_.size());
}

LogHandlerClient* LogHandler::GetLogClientAt(unsigned int index) {
  const TurnGuard guard(*this);
  return index < clients_.size() ? clients_[index] : nullptr;
}

LogHandlerClient* LogHandler::RemoveLogClientAt(unsigned int index) {
  const TurnGuard guard(*this);
  const LivingHandlers::Guard listGuard;
  return index < clients_.size() ? EraseReceiverAt(index) : nullptr;
}

/// For a thread that holds the handler's lock or that of the list of handlers.
bool LogHandler::HasReceiver(const LogHandlerClient& receiver) const {
  return std::find(clients_.begin(), clients_.end(), &receiver) != clients_.end();
}

// These are for a thread that holds both.

LogHandlerClient* LogHandler::EraseReceiverAt(std::size_t index) {
  const auto place = clients_.begin() + static_cast<std::ptrdiff_t>(index);
  LogHandlerClient* const erased = *place;
  clients_.erase(place);
  for (Distribution* under = distributions_; under != nullptr; under = under->Outer()) {
    under->ReceiverRemoved(index);
  }
  return erased;
}

void LogHandler::EraseReceiver(const LogHandlerClient& receiver) {
  const auto found = std::find(clients_.begin(), clients_.end(), &receiver);
  if (found == clients_.end()) return;
  static_cast<void>(EraseReceiverAt(static_cast<std::size_t>(found - clients_.begin())));
}

void LogHandler::EraseReceivers() {
  while (!clients_.empty()) static_cast<void>(EraseReceiverAt(0));
}

void LogHandler::RemoveAllReceivers() {
  const TurnGuard guard(*this);
  const LivingHandlers::Guard listGuard;
  EraseReceivers();
}

/// Makes the handler usable in a forked child. `isHeld` says that the forking thread took the lock
/// for the fork. That thread may also have been within the handler, and goes on there; every other
/// thread that was is gone.
void LogHandler::ContinueInChild(bool isHeld) {
  if (!isHeld) {
    distributions_ = nullptr;
    new (&event_) LogEvent(EmptyEvent());  // The former one may have been half filled.
  }
  unsigned int timesHeld = 0;
  for (const Distribution* under = distributions_; under != nullptr; under = under->Outer()) {
    ++timesHeld;
  }
  RenewInChild(timesHeld);
}

/// Whether the event has come round in a cycle of handlers, which would never end.
inline bool LogHandler::IsDistributing(const LogEvent& event) const {
  const Distribution* under = distributions_;
  if (__builtin_expect(under == nullptr, 1)) return false;
  while (under != nullptr && !under->IsOf(event)) under = under->Outer();
  return under != nullptr;
}

LOGGER_INLINED inline void LogHandler::DistributeUnderLock(const LogEvent& event) const {
  if (!IsDistributing(event)) Distribution(*this, event).Run();
}

LOGGER_INLINED inline void LogHandler::Fill(LogEvent& event, unsigned int level,
                                            const SourcePosition& position, const char* text,
                                            std::size_t length) const {
  timeval now;
  gettimeofday(&now, nullptr);
  EventAccess::SetTexts(event, {text, length}, name_, {position.file, position.fileLength});
  EventAccess::SetNumbers(event, level, position.line, now, LibKelUtilities::GetTid());
}

/// A receiver that logs through this handler while an event is under way needs an event of its own.
LOGGER_KEPT_APART void LogHandler::PublishWithin(unsigned int level, const SourcePosition& position,
                                                 const char* text, std::size_t length) {
  LogEvent event = EmptyEvent();
  Fill(event, level, position, text, length);
  DistributeUnderLock(event);
}

/// Decides for good, under the lock, whether the text becomes an event, and distributes it.
LOGGER_INLINED inline bool LogHandler::PublishText(unsigned int level,
                                                   const SourcePosition& position, const char* text,
                                                   std::size_t length) {
  const TurnGuard guard(*this);
  if (!Accepts(level)) return false;
  if (distributions_ != nullptr) {
    PublishWithin(level, position, text, length);
    return true;
  }
  Fill(event_, level, position, text, length);
  Distribution(*this, event_).Run();
  EventAccess::GiveBackMuchMemory(event_);
  return true;
}

bool LogHandler::Publish(const LogEvent& event) {
  const unsigned int level = event.GetLogLevel();
  if (!Accepts(level)) return false;
  const TurnGuard guard(*this);
  if (!Accepts(level)) return false;  // Switched off while this thread waited.
  DistributeUnderLock(event);
  return true;
}

void LogHandler::Distribute(const LogEvent& event) const {
  const TurnGuard guard(*this);
  DistributeUnderLock(event);
}

bool LogHandler::Log(unsigned int level, const char* format, ...) {
  if (!Accepts(level)) return false;
  va_list arguments;
  va_start(arguments, format);
  const bool result = LogArguments(level, SourcePosition::Unknown(), format, arguments);
  va_end(arguments);
  return result;
}

bool LogHandler::DebugLog(unsigned int level, const logstring& file, int line, const char* format,
                          ...) {
  if (!Accepts(level)) return false;
  va_list arguments;
  va_start(arguments, format);
  const bool result = LogArguments(level, SourcePosition::At(file, line), format, arguments);
  va_end(arguments);
  return result;
}

bool LogHandler::DebugLog(unsigned int level, const char* file, int line, const char* format, ...) {
  if (!Accepts(level)) return false;
  va_list arguments;
  va_start(arguments, format);
  const bool result = LogArguments(level, SourcePosition::At(file, line), format, arguments);
  va_end(arguments);
  return result;
}

bool LogHandler::LogForce(unsigned int level, const char* text) {
  return Accepts(level) && LogVerbatim(level, SourcePosition::Unknown(), text);
}

bool LogHandler::DebugLogForce(unsigned int level, const logstring& file, int line,
                               const char* text) {
  return Accepts(level) && LogVerbatim(level, SourcePosition::At(file, line), text);
}

bool LogHandler::DebugLogForce(unsigned int level, const char* file, int line, const char* text) {
  return Accepts(level) && LogVerbatim(level, SourcePosition::At(file, line), text);
}

bool LogHandler::LogVerbatim(unsigned int level, const SourcePosition& position, const char* text) {
  if (text == nullptr) return true;
  const ErrnoKeeper errnoKeeper;
  return PublishText(level, position, text, std::strlen(text));
}

/// Formats before it takes the lock: other threads' events need not wait for it.
bool LogHandler::LogArguments(unsigned int level, const SourcePosition& position,
                              const char* format, va_list arguments) {
  const ErrnoKeeper errnoKeeper;
  const FormattedText text(format, arguments);
  if (text.Text() == nullptr) return true;
  return PublishText(level, position, text.Text(), text.Length());
}
