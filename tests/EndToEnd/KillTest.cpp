// Processes that are killed at any moment lose no event that a client took or a server confirmed.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "EndToEnd/KillMessages.h"
#include "LogClientSocket.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/ServingProgram.h"
#include "Support/TemporaryFolder.h"

namespace {

constexpr std::size_t kPage = 4096;

/// For long runs by hand.
int Rounds() {
  const char* const rounds = std::getenv("KILL_ROUNDS");
  return rounds == nullptr ? 20 : std::stoi(rounds);
}

void WaitBusily(std::chrono::microseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  while (std::chrono::steady_clock::now() < end) continue;
}

/// Lets a program that publishes events live for some of them and a moment more, and returns how
/// many it has published then.
int KillAfter(const std::vector<std::string>& command, int events, std::chrono::microseconds more) {
  RunningProgram program(command);
  for (int published = 0; published < events; ++published) static_cast<void>(program.ReadLine());
  WaitBusily(more);
  program.Signal(SIGKILL);
  const ProcessResult result = program.Wait();
  EXPECT_EQ(SIGKILL, result.signal);
  return events + static_cast<int>(result.output.size());
}

/// The lines of events, from one up to before another.
std::string LinesOf(int first, int end, int longest) {
  std::string lines;
  for (int number = first; number < end; ++number) lines += KillMessage(number, longest) + "\n";
  return lines;
}

/// How often the files were in which state.
struct Counts {
  int whole = 0;
  int cutAtAPage = 0;
  int anythingElse = 0;

  /// Counts a text that should have the lines of all events that were published, and may have the
  /// next or, when it was cut after a page of the file, a part of it.
  void Add(const std::string& found, const std::string& published, const std::string& next,
           std::size_t fileSize) {
    const std::string all = published + next;
    const bool isPart = found.size() > published.size() && all.compare(0, found.size(), found) == 0;
    if (found == published || found == all) {
      ++whole;
    } else if (isPart && fileSize % kPage == 0) {
      ++cutAtAPage;
    } else {
      ++anythingElse;
    }
  }
  void Expect(const std::string& subject) const {
    std::cout << subject << ": " << Rounds() << " killed, " << whole << " with whole lines, "
              << cutAtAPage << " cut at a page, " << anythingElse << " anything else\n";
    EXPECT_EQ(Rounds(), whole + cutAtAPage);
    EXPECT_EQ(0, anythingElse);
  }
};

/// The parameter is the longest message.
class KillTest : public testing::TestWithParam<int> {
 protected:
  int AnyNumberBelow(int end) {
    return static_cast<int>(random_() % static_cast<unsigned int>(end));
  }
  std::chrono::microseconds AnyMoment() { return std::chrono::microseconds(AnyNumberBelow(300)); }

  std::mt19937 random_{1};
};

INSTANTIATE_TEST_SUITE_P(LongestMessage, KillTest, testing::Values(60, 6000));

TEST_P(KillTest, LeavesEveryPublishedEventInAFile) {
  Counts counts;
  for (int round = 0; round < Rounds(); ++round) {
    const TemporaryFolder folder;
    const std::string file = folder.Path("app.log");

    const int published = KillAfter({KILL_PROGRAM, "file", file, std::to_string(GetParam())},
                                    1 + AnyNumberBelow(200), AnyMoment());

    const std::string found = Content(file);
    counts.Add(found, LinesOf(0, published, GetParam()),
               LinesOf(published, published + 1, GetParam()), found.size());
  }
  counts.Expect("file, messages of up to " + std::to_string(GetParam()));
}

constexpr int kBackups = 3;

/// The first event that is kept in a rolling file and its backups after so many events.
int FirstKept(int events, long limit, int longest) {
  std::deque<int> firsts{0};  // Of the backups and the file.
  long size = 0;
  for (int number = 0; number < events; ++number) {
    size += static_cast<long>(KillMessage(number, longest).size()) + 1;
    if (size <= limit) continue;
    firsts.push_back(number + 1);
    size = 0;
    if (firsts.size() > kBackups + 1) firsts.pop_front();
  }
  return firsts.front();
}

TEST_P(KillTest, LeavesEveryPublishedEventInARollingFileButForBackupsThatAreTooMany) {
  const long limit = 5 * GetParam();  // Rolled over every few events.
  Counts counts;
  int inARollover = 0;
  for (int round = 0; round < Rounds(); ++round) {
    const TemporaryFolder folder;
    const std::string file = folder.Path("app.log");

    const int published = KillAfter({KILL_PROGRAM, "rolling", file, std::to_string(GetParam()),
                                     std::to_string(limit), std::to_string(kBackups)},
                                    1 + AnyNumberBelow(200), AnyMoment());

    std::string found;
    bool isBackupMissing = false;
    for (int number = kBackups; number >= 1; --number) {
      const std::string backup = file + "." + std::to_string(number);
      if (Exists(backup)) {
        found += Content(backup);
      } else if (!found.empty()) {
        isBackupMissing = true;
      }
    }
    const std::string last = Exists(file) ? Content(file) : "";
    if (isBackupMissing || !Exists(file) || static_cast<long>(last.size()) > limit) ++inARollover;
    found += last;
    // It may have died when the oldest backup was gone and not yet replaced.
    const int first = FirstKept(published, limit, GetParam());
    const int firstWithNext = FirstKept(published + 1, limit, GetParam());
    const bool isOldestGone =
        found.compare(0, 8, LinesOf(first, published + 1, GetParam()), 0, 8) != 0;
    counts.Add(found, LinesOf(isOldestGone ? firstWithNext : first, published, GetParam()),
               LinesOf(published, published + 1, GetParam()), last.size());
  }
  counts.Expect("rolling file, messages of up to " + std::to_string(GetParam()));
  std::cout << "  " << inARollover << " of them in a rollover\n";
}

TEST_P(KillTest, LeavesEveryEventThatALogServerConfirmedInItsFile) {
  constexpr int kBatch = 10;
  Counts counts;
  for (int round = 0; round < Rounds(); ++round) {
    const TemporaryFolder folder;
    const std::string file = folder.Path("served.log");
    WriteFile(folder.Path("serve.ini"),
              "loglevel = 1\nloghandler = default\nlogclient = file\n"
              "logclient.file.type = LogClientFile\nlogclient.file.handler = default\n"
              "logclient.file.layout = LogLayoutMessage\n"
              "logclient.file.parameter.0.name = filename\n"
              "logclient.file.parameter.0.value = " +
                  file + "\n");
    ServingProgram server(LOGGERCTL, {"--config", folder.Path("serve.ini")});
    LogClientSocket client("127.0.0.1", server.Port(), true, 0);
    ASSERT_TRUE(client.IsInitialize());
    std::atomic<bool> isKilled{false};
    std::atomic<int> confirmed{0};
    int sent = 0;
    std::thread sender([&] {
      while (!isKilled) {
        for (int i = 0; i < kBatch; ++i) client.Publish(EventWith(KillMessage(sent++, GetParam())));
        static_cast<void>(client.SendToServer(true));
        if (!isKilled) confirmed = sent;  // The server lived when the answer came.
      }
    });
    const int enough = 1 + AnyNumberBelow(200);
    while (confirmed < enough) std::this_thread::yield();
    WaitBusily(AnyMoment());

    isKilled = true;
    EXPECT_EQ(SIGKILL, server.Stop(SIGKILL).signal);
    sender.join();

    const std::string found = Content(file);
    int written = confirmed;  // And any that were not confirmed.
    while (written < sent && found.size() > LinesOf(0, written + 1, GetParam()).size()) ++written;
    counts.Add(found, LinesOf(0, written, GetParam()), LinesOf(written, written + 1, GetParam()),
               found.size());
  }
  counts.Expect("log server, messages of up to " + std::to_string(GetParam()));
}

}  // namespace
