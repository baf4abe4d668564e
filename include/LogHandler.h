#pragma once

#include <time.h>

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "LibKelUtilities/MutexWrapper.h"
#include "LogEvent.h"
#include "LogHandlerClient.h"
#include "LogString.h"
#include "LoggerExport.h"

namespace Logger {
class LogManager;
namespace Internal {
class ForkGuard;
class LivingHandlers;
}  // namespace Internal
}  // namespace Logger

/// A named logger and a node of the log tree.
///
/// An application logs through a handler; the handler decides by level, makes a LogEvent of the
/// message and passes it to its receivers, output clients and further handlers, in the order in
/// which they were attached. A handler further down decides again before it passes the event on.
/// Every registered level is on until it is switched off, handler by handler.
///
/// Handlers come from Logger::GetLogHandler(), belong to the log manager and live as long as it
/// does, unless the application deletes them earlier. A handler never owns its receivers: detach a
/// receiver before you delete it. Deleting a handler detaches it from all others.
///
/// Any thread may call any operation at any time, except that no thread may use a handler while
/// another renames or deletes it. A handler publishes one event at a time, under its own lock,
/// which it also holds while its receivers work; handlers further down are locked in turn. The lock
/// is recursive: a receiver may log through the same handler. A tree with a cycle is not supported;
/// an event that returns to a handler which is still passing it on stops there.
///
/// A log call leaves errno as it was, and %m in its format stands for the caller's. Nothing is
/// thrown but what memory exhaustion, a layout or client of the application's own, or the thread's
/// cancellation throws.
class LOGGER_EXPORT LogHandler : public LogHandlerClient, public LibKelUtilities::MutexWrapper {
 public:
  /// A handler of the application's own, which the manager does not know by name.
  explicit LogHandler(const logstring& name);
  /// Takes the handler out of the manager and out of all the manager's handlers.
  ~LogHandler() override;

  LogHandler(const LogHandler&) = delete;
  LogHandler& operator=(const LogHandler&) = delete;

  /// Passes an event of a handler further up to the receivers. False when this handler is inactive
  /// or has the event's level off. The event keeps the name of the handler that made it.
  bool Publish(const LogEvent& event) override;
  bool IsInitialize() override;       ///< Always true.
  bool IsLogClient() const override;  ///< Always false.
  virtual bool Init();                ///< Makes the handler active. Always true.

  /// Renames the handler, which the manager finds by name from then on. Takes no lock.
  void SetName(const logstring& name);
  logstring GetName() const;  ///< A copy. Takes no lock either.

  /// The master switch: an inactive handler rejects every event. Takes no lock: a signal handler
  /// may call it.
  void SetLogHandlerActive(bool active);
  bool GetLogHandlerActive() const;  ///< Whether the master switch is on.

  /// Switches one registered level on or off for this handler; any other level is ignored. When it
  /// returns, no event of a level that is off is published any more.
  void SetLogLevel(unsigned int level, bool enable);
  /// Whether the level is registered and on, whether or not the handler is active.
  bool GetLogLevel(unsigned int level);
  /// Whether the level is not switched off here, whether or not it is registered.
  bool IsEnabledFor(unsigned int level) const;
  /// Whether an event of this level is accepted: the handler active, the level registered and on.
  bool HandleLogEvent(unsigned int level) const;
  /// A quick look ahead, for the place that logs: false only when Log would return false. True may
  /// still become false in Log, which tests again.
  bool MayLog(unsigned int level) const noexcept {
    return level >= kLevelsInWord || (rejectedLevels_.load() >> level & 1) == 0;
  }

  /// Attaches a receiver after the others. False when it is attached already. The receiver must
  /// not be null: the process ends. It stays the caller's and must outlive the attachment.
  bool AddLogClient(LogHandlerClient* logClient);
  /// Detaches a receiver, which is not deleted; one that is not attached is ignored. It must not be
  /// null: the process ends.
  void RemoveLogClient(LogHandlerClient* logClient);
  unsigned int GetLogClientCount() const;  ///< How many receivers are attached here.
  /// The receiver at a position of the order of attachment, or null past the end.
  LogHandlerClient* GetLogClientAt(unsigned int index);
  /// Detaches and returns the receiver at a position, or returns null past the end.
  LogHandlerClient* RemoveLogClientAt(unsigned int index);

  /// Publishes an event to every receiver, whatever they answer, without a look at the filter.
  void Distribute(const LogEvent& event) const;

  /// Logs a printf-style message of any length up to 1 GiB. False when the level was filtered out,
  /// else true: also when there was no memory for the text, or the format failed, and nothing was
  /// logged.
  bool Log(unsigned int level, const char* format, ...) LOGGER_PRINTF_FORMAT(3, 4);

  /// As Log, with the source position, such as __FILE__ and __LINE__. A null file name reads as
  /// empty.
  bool DebugLog(unsigned int level, const logstring& file, int line, const char* format, ...)
      LOGGER_PRINTF_FORMAT(5, 6);
  /// The same without a copy of the file's name.
  bool DebugLog(unsigned int level, const char* file, int line, const char* format, ...)
      LOGGER_PRINTF_FORMAT(5, 6);

  /// As Log, with a text that is taken as it stands, percent signs included. A null text logs
  /// nothing, with the same result.
  bool LogForce(unsigned int level, const char* text);
  /// As LogForce, with the source position.
  bool DebugLogForce(unsigned int level, const logstring& file, int line, const char* text);
  /// The same. A null file name reads as empty.
  bool DebugLogForce(unsigned int level, const char* file, int line, const char* text);

 private:
  friend class Logger::LogManager;
  friend class Logger::Internal::ForkGuard;
  friend class Logger::Internal::LivingHandlers;

  static constexpr unsigned int kLevelsInWord = 64;

  struct SourcePosition;
  class Distribution;

  std::vector<LogHandlerClient*> clients_;  // Not owned, in order of attachment.
  logstring name_;
  // Bit n is set when level n would be rejected, by the level registry, the switches below or the
  // master switch. Programs built with LoggerMacros.h read it at this offset: it must not move.
  std::atomic<std::uint64_t> rejectedLevels_;
  std::atomic<bool> isActive_;         // The master switch, as far as `rejectedLevels_` follows it.
  std::atomic<bool> wantsToBeActive_;  // The master switch, as it was set last.
  std::atomic<std::uint64_t> disabledCommon_;   // Bit n is set when level n is switched off.
  std::vector<unsigned int> disabledUncommon_;  // Levels without a bit that are switched off.
  LogEvent event_;  // The present event, reused for each. Guarded by the lock, like the next.
  mutable Distribution*
      distributions_;  // Under way on the thread that holds the lock, innermost first.

  inline bool Accepts(unsigned int level) const;
  bool AcceptsUncommon(unsigned int level) const;
  bool IsDisabled(unsigned int level) const;
  inline bool IsDistributing(const LogEvent& event) const;
  bool LogArguments(unsigned int level, const SourcePosition& position, const char* format,
                    va_list arguments) LOGGER_PRINTF_FORMAT(4, 0);
  inline void DistributeUnderLock(const LogEvent& event) const;
  inline void Fill(LogEvent& event, unsigned int level, const SourcePosition& position,
                   const char* text, std::size_t length) const;
  bool LogVerbatim(unsigned int level, const SourcePosition& position, const char* text);
  void PublishWithin(unsigned int level, const SourcePosition& position, const char* text,
                     std::size_t length);
  inline bool PublishText(unsigned int level, const SourcePosition& position, const char* text,
                          std::size_t length);
  void UpdateRejectedLevels() noexcept;
  bool HasReceiver(const LogHandlerClient& receiver) const;
  LogHandlerClient* EraseReceiverAt(std::size_t index);
  void EraseReceiver(const LogHandlerClient& receiver);
  void EraseReceivers();
  void RemoveAllReceivers();
  void ContinueInChild(bool isHeld);
};
