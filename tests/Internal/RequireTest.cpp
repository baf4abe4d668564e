#include "Internal/Require.h"

#include <gtest/gtest.h>

namespace {

using Logger::Internal::Contract;
using Logger::Internal::Require;

constexpr Contract kContract{"there", "Src/Somewhere", 123, "void Somewhere::Go(int*)"};

TEST(RequireTest, SaysNothingWhenTheContractHolds) {
  testing::internal::CaptureStderr();

  Require(true, kContract);

  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(RequireDeathTest, EndsTheProcessWithTheWordsOfABrokenContract) {
  EXPECT_EXIT(Require(false, kContract), testing::KilledBySignal(SIGABRT),
              "Src/Somewhere:123: void Somewhere::Go\\(int\\*\\): Assertion `there' failed\\.\n$");
}

}  // namespace
