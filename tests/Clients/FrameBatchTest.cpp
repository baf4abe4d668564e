#include "Clients/FrameBatch.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Support/Events.h"
#include "Support/WireBytes.h"

namespace {

using Logger::Internal::FrameBatch;
using Part = std::pair<std::size_t, std::size_t>;

std::string BytesOf(const FrameBatch& batch) { return std::string(batch.Data(), batch.Size()); }

/// The number of the frame that was not sent whole, and how many of its bytes were.
Part PartSent(const FrameBatch& batch, std::size_t sent) {
  const FrameBatch::Position position = batch.PositionAfter(sent);
  return {position.frame, position.offset};
}

TEST(FrameBatchTest, IsEmptyWhenNew) {
  const FrameBatch batch;

  EXPECT_EQ(0U, batch.Size());
  EXPECT_EQ(0U, batch.FrameCount());
  EXPECT_EQ(Part(0, 0), PartSent(batch, 0));
}

TEST(FrameBatchTest, PutsAHeaderBeforeARecord) {
  FrameBatch batch;

  batch.Append(SmallEvent());

  EXPECT_EQ(kSmallFrame, BytesOf(batch));
  EXPECT_EQ(1U, batch.FrameCount());
}

TEST(FrameBatchTest, HoldsFramesOneAfterTheOther) {
  FrameBatch batch;

  batch.Append(EventWith("first"));
  batch.Append(EventWith(""));
  batch.Append(EventWith(std::string(100000, 'x')));

  EXPECT_EQ(FrameOf(EventWith("first")) + FrameOf(EventWith("")) +
                FrameOf(EventWith(std::string(100000, 'x'))),
            BytesOf(batch));
  EXPECT_EQ(3U, batch.FrameCount());
}

TEST(FrameBatchTest, EndsWithAFlushRequestThatIsNoFrame) {
  FrameBatch batch;
  batch.Append(EventWith("first"));

  batch.AppendFlushRequest();

  EXPECT_EQ(FrameOf(EventWith("first")) + "\2", BytesOf(batch));
  EXPECT_EQ(1U, batch.FrameCount());
}

TEST(FrameBatchTest, HoldsAFlushRequestAlone) {
  FrameBatch batch;

  batch.AppendFlushRequest();

  EXPECT_EQ("\2", BytesOf(batch));
  EXPECT_EQ(0U, batch.FrameCount());
  EXPECT_EQ(Part(0, 0), PartSent(batch, 0));
}

TEST(FrameBatchTest, CanBeUsedAgainWhenCleared) {
  FrameBatch batch;
  batch.Append(EventWith(std::string(1000000, 'x')));
  batch.AppendFlushRequest();

  batch.Clear();
  EXPECT_EQ(0U, batch.Size());
  EXPECT_EQ(0U, batch.FrameCount());
  batch.Append(EventWith("next"));

  EXPECT_EQ(FrameOf(EventWith("next")), BytesOf(batch));
  EXPECT_EQ(1U, batch.FrameCount());
}

TEST(FrameBatchTest, KnowsWhichFrameWasNotSentWholeAndHowManyOfItsBytesWere) {
  FrameBatch batch;
  batch.Append(EventWith("first"));
  batch.Append(EventWith("the second"));
  batch.AppendFlushRequest();
  const std::size_t first = FrameOf(EventWith("first")).size();
  const std::size_t second = FrameOf(EventWith("the second")).size();

  for (std::size_t sent = 0; sent < first; ++sent) {
    EXPECT_EQ(Part(0, sent), PartSent(batch, sent)) << sent;
  }
  for (std::size_t sent = 0; sent < second; ++sent) {
    EXPECT_EQ(Part(1, sent), PartSent(batch, first + sent)) << sent;
  }
  EXPECT_EQ(Part(2, 0), PartSent(batch, first + second));
}

}  // namespace
