#include "Internal/ReportError.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Logger::Internal::ReportError;
using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

TEST(ReportErrorTest, WritesOneLineToStandardError) {
  CaptureStdout();
  CaptureStderr();

  ReportError("Rollover", 72, "Rename failed EACCES");

  EXPECT_EQ("LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n", GetCapturedStderr());
  EXPECT_EQ("", GetCapturedStdout());
}

TEST(ReportErrorTest, WritesALineFeedOfTheTextAsItStands) {
  CaptureStderr();

  ReportError("Rollover", 74, "Rename failed ENOENT\n");

  EXPECT_EQ("LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n", GetCapturedStderr());
}

TEST(ReportErrorTest, DoesNotFormatTheText) {
  CaptureStderr();

  ReportError("Init", -1, "100%s %n");

  EXPECT_EQ("LOGGER ERROR at Init [-1]: '100%s %n'\n", GetCapturedStderr());
}

TEST(ReportErrorTest, WritesALongTextWhole) {
  const std::string text(100000, 'x');
  CaptureStderr();

  ReportError("Start", 1, text.c_str());

  EXPECT_EQ("LOGGER ERROR at Start [1]: '" + text + "'\n", GetCapturedStderr());
}

}  // namespace
