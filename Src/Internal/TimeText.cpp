#include "Internal/TimeText.h"

#include <pthread.h>
#include <time.h>

#include <cstddef>

#include "LibKelUtilities/Localtime.h"
#include "LibKelUtilities/LockUntil.h"

namespace Logger::Internal {

namespace {

constexpr std::size_t kPartSize = 16;

/// The visible result of tzset(). The names are the C library's own copies, at a new address when
/// they differ. Localtime in other threads may write these fields at any time, each atomically.
struct Zone {
  const char* standardName;
  const char* summerName;
  long offset;
  int hasSummerTime;

  static Zone Current() {
    return {__atomic_load_n(&tzname[0], __ATOMIC_RELAXED),
            __atomic_load_n(&tzname[1], __ATOMIC_RELAXED),
            __atomic_load_n(&timezone, __ATOMIC_RELAXED),
            __atomic_load_n(&daylight, __ATOMIC_RELAXED)};
  }

  bool operator==(const Zone& other) const {
    return standardName == other.standardName && summerName == other.summerName &&
           offset == other.offset && hasSummerTime == other.hasSummerTime;
  }
};

/// One second's local time, cached per thread: most events fall into the second of the previous
/// one.
struct LocalSecond {
  bool isKnown;
  bool isConvertible;
  long seconds;
  time_t formattedAt;
  Zone zone;
  tm local;
  DateTime dateTime;
  std::size_t dateLength;  // Of what stands before the T, if there is a text.
};

// Nothing here needs to be destroyed, so the library can be unloaded while threads go on.
thread_local LocalSecond lastSecond;

pthread_mutex_t conversionLock = PTHREAD_MUTEX_INITIALIZER;

class ConversionGuard {
 public:
  ConversionGuard() { pthread_mutex_lock(&conversionLock); }
  ~ConversionGuard() { pthread_mutex_unlock(&conversionLock); }

  ConversionGuard(const ConversionGuard&) = delete;
  ConversionGuard& operator=(const ConversionGuard&) = delete;
};

/// Converts and formats; outlined from the path of most events.
[[gnu::cold]] void Convert(LocalSecond& last, long seconds, time_t now) {
  const ConversionGuard guard;
  const Zone before = Zone::Current();
  last.isConvertible = LibKelUtilities::Localtime(&last.local, &seconds);
  last.dateTime.length = last.isConvertible
                             ? strftime(last.dateTime.text, sizeof last.dateTime.text,
                                        "%Y-%m-%dT%H:%M:%S", &last.local)
                             : 0;
  last.dateLength = last.dateTime.View().find('T');
  last.seconds = seconds;
  last.formattedAt = now;
  last.zone = Zone::Current();
  // If the zone changed during the conversion, the text may be of either one.
  last.isKnown = last.zone == before;
}

const LocalSecond& LocalTime(long seconds) {
  LocalSecond& last = lastSecond;
  // A change of zone that leaves these fields alone is noticed at the clock's next second.
  const time_t now = time(nullptr);
  if (!last.isKnown || last.seconds != seconds || last.formattedAt != now ||
      !(last.zone == Zone::Current())) {
    Convert(last, seconds, now);
  }
  return last;
}

}  // namespace

DateTime LocalDateTime(long seconds) { return LocalTime(seconds).dateTime; }

std::string_view DateTimeText(long seconds) { return LocalTime(seconds).dateTime.View(); }

logstring DateText(long seconds) {
  const LocalSecond& second = LocalTime(seconds);
  if (second.dateTime.length > 0) return {second.dateTime.text, second.dateLength};
  const ConversionGuard guard;
  char text[kPartSize];  // A year that does not fit beside the time may fit alone.
  return {text, second.isConvertible ? strftime(text, sizeof text, "%Y-%m-%d", &second.local) : 0};
}

logstring TimeOfDayText(long seconds) {
  const LocalSecond& second = LocalTime(seconds);
  if (second.dateTime.length > 0)
    return logstring(second.dateTime.View().substr(second.dateLength + 1));
  const ConversionGuard guard;
  char text[kPartSize];
  return {text, second.isConvertible ? strftime(text, sizeof text, "%H:%M:%S", &second.local) : 0};
}

bool TimeTextLock::HoldForFork(const timespec& deadline) {
  return LibKelUtilities::LockUntil(&conversionLock, deadline);
}

void TimeTextLock::ReleaseInParent() { pthread_mutex_unlock(&conversionLock); }

void TimeTextLock::RenewInChild() { pthread_mutex_init(&conversionLock, nullptr); }

}  // namespace Logger::Internal
