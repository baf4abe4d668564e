#include "LogLevelManager.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

std::vector<unsigned int> Enumerate(LogLevelManager& levels) {
  std::vector<unsigned int> numbers;
  unsigned int level = 0;
  for (int index = 0; levels.GetLogLevel(index, level); ++index) numbers.push_back(level);
  return numbers;
}

TEST(LogLevelManagerTest, IsEmptyWhenNew) {
  LogLevelManager levels;
  unsigned int level = 77;

  EXPECT_FALSE(levels.GetLogLevel(0, level));
  EXPECT_EQ(77U, level);
  EXPECT_EQ("", levels.GetLogLevelName(5));
  EXPECT_FALSE(levels.ExistLogLevel(5));
}

TEST(LogLevelManagerTest, StaysEmptyAfterAddDefaultLogLevel) {
  LogLevelManager levels;

  levels.AddDefaultLogLevel();

  EXPECT_TRUE(Enumerate(levels).empty());
}

TEST(LogLevelManagerTest, KeepsTheFirstNameOfANumber) {
  LogLevelManager levels;

  EXPECT_TRUE(levels.AddLogLevel(3, "A"));
  EXPECT_FALSE(levels.AddLogLevel(3, "B"));

  EXPECT_EQ("A", levels.GetLogLevelName(3));
  EXPECT_EQ(std::vector<unsigned int>{3}, Enumerate(levels));
}

TEST(LogLevelManagerTest, ListsLevelsInTheOrderOfRegistration) {
  LogLevelManager levels;

  levels.AddLogLevel(7, "seven");
  levels.AddLogLevel(2, "two");
  levels.AddLogLevel(5, "five");

  EXPECT_EQ((std::vector<unsigned int>{7, 2, 5}), Enumerate(levels));
}

TEST(LogLevelManagerTest, LeavesTheResultAloneForAnIndexOutOfRange) {
  LogLevelManager levels;
  levels.AddLogLevel(7, "seven");
  unsigned int level = 77;

  EXPECT_FALSE(levels.GetLogLevel(-1, level));
  EXPECT_FALSE(levels.GetLogLevel(1, level));

  EXPECT_EQ(77U, level);
}

TEST(LogLevelManagerTest, ReportsAnEmptyNameLikeAnUnregisteredNumber) {
  LogLevelManager levels;
  levels.AddLogLevel(3, "");

  EXPECT_EQ("", levels.GetLogLevelName(3));
  EXPECT_TRUE(levels.ExistLogLevel(3));
}

TEST(LogLevelManagerTest, TakesAnyNumber) {
  LogLevelManager levels;
  const std::vector<unsigned int> numbers{0, 63, 64, 65, 2147483647U, 2147483648U, 4294967295U};

  for (const unsigned int number : numbers) {
    EXPECT_TRUE(levels.AddLogLevel(number, "level " + std::to_string(number)));
  }

  EXPECT_EQ(numbers, Enumerate(levels));
  for (const unsigned int number : numbers) {
    EXPECT_EQ("level " + std::to_string(number), levels.GetLogLevelName(number));
  }
  EXPECT_FALSE(levels.ExistLogLevel(66));
}

TEST(LogLevelManagerTest, KeepsManyLevels) {
  constexpr unsigned int kMany = 1000;
  LogLevelManager levels;

  for (unsigned int number = 0; number < kMany; ++number) {
    levels.AddLogLevel(kMany - number, std::to_string(number));
  }

  ASSERT_EQ(kMany, Enumerate(levels).size());
  for (unsigned int number = 0; number < kMany; ++number) {
    EXPECT_EQ(std::to_string(number), levels.GetLogLevelName(kMany - number));
  }
}

TEST(LogLevelManagerTest, AnswersReadersWhileLevelsAreAdded) {
  constexpr unsigned int kLast = 3000;
  LogLevelManager levels;
  std::atomic<bool> isOver{false};
  std::atomic<int> wrongAnswers{0};

  std::vector<std::thread> readers;
  for (int i = 0; i < 2; ++i) {
    readers.emplace_back([&] {
      while (!isOver) {
        int count = 0;
        unsigned int level = 0;
        while (levels.GetLogLevel(count, level)) {
          if (level != static_cast<unsigned int>(count) + 1) ++wrongAnswers;
          ++count;
        }
        // A level keeps its position and its name.
        if (count > 0 && levels.GetLogLevelName(level) != std::to_string(level)) ++wrongAnswers;
        if (!levels.ExistLogLevel(1) && count > 0) ++wrongAnswers;
      }
    });
  }
  for (unsigned int level = 1; level <= kLast; ++level) {
    levels.AddLogLevel(level, std::to_string(level));
  }
  isOver = true;
  for (std::thread& reader : readers) reader.join();

  EXPECT_EQ(0, wrongAnswers);
  EXPECT_EQ(kLast, Enumerate(levels).size());
}

TEST(LogLevelManagerTest, AddsALevelOnceForSeveralThreads) {
  LogLevelManager levels;
  std::atomic<int> added{0};

  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (unsigned int level = 0; level < 200; ++level) {
        if (levels.AddLogLevel(level, "x")) ++added;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();

  EXPECT_EQ(200, added);
  EXPECT_EQ(200U, Enumerate(levels).size());
}

}  // namespace
