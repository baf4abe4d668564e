#include "LoggerMacros.h"

#include <gtest/gtest.h>

#include <string>

#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/RecordingClient.h"

namespace {

class LoggerMacrosTest : public testing::Test {
 protected:
  LoggerMacrosTest() {
    for (const unsigned int level : {1U, 2U, 64U, 65U}) {
      Logger::GetLogLevelManager()->AddLogLevel(level, "level");
    }
    handler_->AddLogClient(&client_);
    handler_->SetLogLevel(2, false);
    handler_->SetLogLevel(65, false);
  }

  LogHandler* HandlerAndCount() {
    ++handlersAsked_;
    return handler_;
  }
  unsigned int LevelAndCount(unsigned int level) {
    ++levelsAsked_;
    return level;
  }
  int ArgumentAndCount() { return ++argumentsAsked_; }

  LogHandler* const handler_ = Logger::GetLogHandler("handler");
  RecordingClient client_;
  int handlersAsked_ = 0;
  int levelsAsked_ = 0;
  int argumentsAsked_ = 0;
};

TEST_F(LoggerMacrosTest, LogsTheMessageWithItsPosition) {
  const int line = __LINE__ + 1;
  LOGGER_LOG(handler_, 1, "%s %d", "text", 5);

  ASSERT_EQ(1U, client_.Events().size());
  EXPECT_EQ("text 5", client_.Events()[0].GetLogMessage());
  EXPECT_EQ(__FILE__, client_.Events()[0].GetFullFileName());
  EXPECT_EQ(line, client_.Events()[0].GetLine());
  EXPECT_EQ(1U, client_.Events()[0].GetLogLevel());
}

TEST_F(LoggerMacrosTest, NeedsNoArgumentsAfterTheFormat) {
  LOGGER_LOG(handler_, 1, "alone");

  EXPECT_EQ(std::vector<std::string>{"alone"}, client_.Messages());
}

TEST_F(LoggerMacrosTest, EvaluatesEverythingOnce) {
  LOGGER_LOG(HandlerAndCount(), LevelAndCount(1), "%d", ArgumentAndCount());

  EXPECT_EQ(1, handlersAsked_);
  EXPECT_EQ(1, levelsAsked_);
  EXPECT_EQ(1, argumentsAsked_);
  EXPECT_EQ(std::vector<std::string>{"1"}, client_.Messages());
}

TEST_F(LoggerMacrosTest, EvaluatesNoArgumentOfALevelThatIsOff) {
  LOGGER_LOG(HandlerAndCount(), LevelAndCount(2), "%d", ArgumentAndCount());
  LOGGER_LOG(HandlerAndCount(), LevelAndCount(3), "%d", ArgumentAndCount());

  EXPECT_EQ(2, handlersAsked_);
  EXPECT_EQ(2, levelsAsked_);
  EXPECT_EQ(0, argumentsAsked_);
  EXPECT_TRUE(client_.Events().empty());
}

TEST_F(LoggerMacrosTest, FiltersHighLevelsToo) {
  LOGGER_LOG(handler_, 64, "on");
  LOGGER_LOG(handler_, 65, "off");
  LOGGER_LOG(handler_, 4000000000U, "not registered");

  EXPECT_EQ(std::vector<std::string>{"on"}, client_.Messages());
}

TEST_F(LoggerMacrosTest, IsOneStatement) {
  if (client_.Events().empty())
    LOGGER_LOG(handler_, 1, "first branch");
  else
    LOGGER_LOG(handler_, 1, "other branch");

  EXPECT_EQ(std::vector<std::string>{"first branch"}, client_.Messages());
}

TEST_F(LoggerMacrosTest, TakesEnumeratorsAsLevels) {
  enum Level { kError = 1 };

  LOGGER_LOG(handler_, kError, "text");

  EXPECT_EQ(1U, client_.Events().size());
}

TEST_F(LoggerMacrosTest, LooksAheadWithoutMissingWhatLogAccepts) {
  for (unsigned int level = 0; level < 70; ++level) {
    const bool isAccepted = handler_->Log(level, "text");
    EXPECT_TRUE(handler_->MayLog(level) || !isAccepted) << level;
  }
  EXPECT_FALSE(handler_->MayLog(0));
  EXPECT_TRUE(handler_->MayLog(1));
  EXPECT_FALSE(handler_->MayLog(2));
}

TEST_F(LoggerMacrosTest, LooksAheadAtEverySwitch) {
  handler_->SetLogLevel(2, true);
  EXPECT_TRUE(handler_->MayLog(2));

  handler_->SetLogHandlerActive(false);
  EXPECT_FALSE(handler_->MayLog(2));

  handler_->SetLogHandlerActive(true);
  Logger::GetLogLevelManager()->AddLogLevel(3, "late");
  EXPECT_TRUE(handler_->MayLog(3));
}

}  // namespace
