#include "Internal/TimeText.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <thread>

#include "Support/TimeZone.h"

namespace {

using Logger::Internal::DateText;
using Logger::Internal::DateTimeText;
using Logger::Internal::TimeOfDayText;

class TimeTextTest : public testing::Test {
 protected:
  TimeTextTest() { SetTimeZone("UTC0"); }
};

TEST_F(TimeTextTest, StaysAsItIsUntilTheThreadAsksForAnother) {
  const std::string_view text = DateTimeText(59);

  EXPECT_EQ("1970-01-01", DateText(59));
  EXPECT_EQ("00:00:59", TimeOfDayText(59));
  EXPECT_EQ(text.data(), DateTimeText(59).data());

  EXPECT_EQ("1970-01-01T00:00:59", text);
}

TEST_F(TimeTextTest, StaysAsItIsWhenAnotherThreadAsks) {
  const std::string_view text = DateTimeText(59);
  std::string ofThread;

  std::thread([&] { ofThread = DateTimeText(60); }).join();

  EXPECT_EQ("1970-01-01T00:01:00", ofThread);
  EXPECT_EQ("1970-01-01T00:00:59", text);
}

TEST_F(TimeTextTest, IsRightForTheFirstSecondOfAThreadsLife) {
  std::string ofThread;

  std::thread([&] { ofThread = DateTimeText(0); }).join();

  EXPECT_EQ("1970-01-01T00:00:00", ofThread);
}

TEST_F(TimeTextTest, FollowsTheOtherTextsOfTheSecond) {
  EXPECT_EQ("23:59:59", TimeOfDayText(86399));
  EXPECT_EQ("1970-01-02", DateText(86400));
  EXPECT_EQ("1970-01-01T23:59:59", DateTimeText(86399));
  EXPECT_EQ("1970-01-02T00:00:00", DateTimeText(86400));
}

}  // namespace
