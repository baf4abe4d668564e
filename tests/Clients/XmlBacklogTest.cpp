#include "Clients/XmlBacklog.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

using Logger::Internal::XmlBacklog;
using Logger::Internal::XmlTexts;

namespace {

/// The largest object that this program's operator new gives out.
std::size_t largestObject = SIZE_MAX;

}  // namespace

void* operator new(std::size_t size) {
  void* const object = size > largestObject ? nullptr : std::malloc(size);
  if (object == nullptr) throw std::bad_alloc();
  return object;
}

void operator delete(void* object) noexcept { std::free(object); }
void operator delete(void* object, std::size_t) noexcept { std::free(object); }

namespace {

using Entry = std::vector<std::string>;

/// Takes so many entries at most.
std::vector<Entry> Taken(XmlBacklog& backlog, std::size_t most = 1000000) {
  std::vector<Entry> entries;
  const bool isEmpty = backlog.HandOver([&](const XmlTexts& texts) {
    if (entries.size() == most) return false;
    entries.push_back({texts.level, texts.date, texts.time, texts.log});
    return true;
  });
  EXPECT_EQ(entries.size() < most, isEmpty);
  return entries;
}

TEST(XmlBacklogTest, IsEmptyAtFirst) {
  XmlBacklog backlog;

  EXPECT_EQ(std::vector<Entry>(), Taken(backlog));
}

TEST(XmlBacklogTest, HandsOverWhatWasAddedAndNoMore) {
  XmlBacklog backlog;
  const std::string both = "2024-03-05T14:07:09";  // Texts need not be terminated.
  const std::string_view views = both;

  EXPECT_TRUE(backlog.Add({"ERROR", views.substr(0, 10), views.substr(11), "disk full"}));
  EXPECT_TRUE(backlog.Add({"", "", "", ""}));

  EXPECT_EQ(
      (std::vector<Entry>{{"ERROR", "2024-03-05", "14:07:09", "disk full"}, {"", "", "", ""}}),
      Taken(backlog));
  EXPECT_EQ(std::vector<Entry>(), Taken(backlog));
  EXPECT_TRUE(backlog.Add({"a", "b", "c", "d"}));
  EXPECT_EQ((std::vector<Entry>{{"a", "b", "c", "d"}}), Taken(backlog));
}

TEST(XmlBacklogTest, KeepsTheOrderOfEntriesOfAllLengths) {
  XmlBacklog backlog;
  std::vector<Entry> expected;
  for (std::size_t number = 0; number < 3000; ++number) {
    const std::size_t length = number % 100 == 0 ? number * 100 : number % 97;
    expected.push_back(
        {"level", "date", "time", std::to_string(number) + std::string(length, 'x')});
    ASSERT_TRUE(backlog.Add({"level", "date", "time", expected.back().back()}));
  }

  EXPECT_EQ(expected, Taken(backlog));
}

TEST(XmlBacklogTest, GoesOnWithTheEntryThatWasNotTaken) {
  XmlBacklog backlog;
  for (const char* const log : {"one", "two", "three"}) backlog.Add({"", "", "", log});

  EXPECT_EQ((std::vector<Entry>{{"", "", "", "one"}}), Taken(backlog, 1));
  EXPECT_EQ(std::vector<Entry>(), Taken(backlog, 0));
  backlog.Add({"", "", "", "four"});

  EXPECT_EQ((std::vector<Entry>{{"", "", "", "two"}, {"", "", "", "three"}, {"", "", "", "four"}}),
            Taken(backlog));
}

TEST(XmlBacklogTest, KeepsNothingForWhichThereIsNoMemory) {
  XmlBacklog backlog;
  backlog.Add({"", "", "", "one"});
  const std::string large(100000, 'x');

  largestObject = large.size();
  EXPECT_FALSE(backlog.Add({"", "", "", large}));
  EXPECT_TRUE(backlog.Add({"", "", "", "two"}));
  largestObject = SIZE_MAX;

  EXPECT_EQ((std::vector<Entry>{{"", "", "", "one"}, {"", "", "", "two"}}), Taken(backlog));
}

}  // namespace
