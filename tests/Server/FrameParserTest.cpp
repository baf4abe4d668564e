#include "Server/FrameParser.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Support/WireBytes.h"

namespace {

using Logger::Internal::FrameParser;
using Texts = std::vector<std::string>;

constexpr int kLimit = 1000;

/// Writes down what the parser finds.
class Found : public FrameParser::Receiver {
 public:
  void ReceiveRecord(const char* record, std::size_t size) override {
    texts.push_back("record " + std::string(record, size));
  }
  void ReceiveFlushRequest() override { texts.push_back("flush"); }

  Texts texts;
};

/// A parser, which gets each piece in memory that ends with it.
class FrameParserTest : public testing::Test {
 protected:
  bool Parse(const std::string& piece, int limit = kLimit) {
    const std::unique_ptr<char[]> copy(new char[piece.size()]);
    std::memcpy(copy.get(), piece.data(), piece.size());
    return parser_.Parse(copy.get(), piece.size(), limit);
  }

  Found found_;
  FrameParser parser_{found_};
};

/// The result of a parser for a stream that is cut before these positions.
Texts FoundIn(const std::string& stream, const std::vector<std::size_t>& cuts) {
  Found found;
  FrameParser parser(found);
  std::size_t start = 0;
  for (const std::size_t cut : cuts) {
    EXPECT_TRUE(parser.Parse(stream.data() + start, cut - start, kLimit));
    start = cut;
  }
  EXPECT_TRUE(parser.Parse(stream.data() + start, stream.size() - start, kLimit));
  return found.texts;
}

/// All that may come on a connection: frames, requests, bytes between them, lengths of 0, and
/// records that hold what looks like frames.
const std::string kStream =
    Frame("first") + kFlushRequest +
    std::string(
        "\0\3\xFF"
        "abc",
        6) +
    Frame("\1\2") + "\1" + Number(0) + Number(0) + WithLength("third") + kFlushRequest +
    kFlushRequest + Frame(Frame("in a frame") + kFlushRequest) + "x" + Frame(std::string(300, 'r'));

const Texts kContent{"record first",
                     "flush",
                     "record \1\2",
                     "record third",
                     "flush",
                     "flush",
                     "record " + Frame("in a frame") + kFlushRequest,
                     "record " + std::string(300, 'r')};

TEST_F(FrameParserTest, FindsTheRecordOfAFrame) {
  EXPECT_TRUE(Parse(std::string("\1\0\0\0\3abc", 8)));

  EXPECT_EQ(Texts{"record abc"}, found_.texts);
}

TEST_F(FrameParserTest, FindsNothingInNothing) {
  EXPECT_TRUE(Parse(""));

  EXPECT_EQ(Texts{}, found_.texts);
}

TEST_F(FrameParserTest, FindsFlushRequests) {
  EXPECT_TRUE(Parse("\2"));
  EXPECT_EQ(Texts{"flush"}, found_.texts);

  EXPECT_TRUE(Parse("\2\2"));
  EXPECT_EQ((Texts{"flush", "flush", "flush"}), found_.texts);
}

TEST_F(FrameParserTest, FindsFramesAndRequestsInTheirOrder) {
  EXPECT_TRUE(Parse(Frame("a") + kFlushRequest + Frame("b") + Frame("c") + kFlushRequest));

  EXPECT_EQ((Texts{"record a", "flush", "record b", "record c", "flush"}), found_.texts);
}

TEST_F(FrameParserTest, SkipsEveryOtherByteBetweenFrames) {
  std::string others;
  for (int byte = 0; byte < 256; ++byte) {
    if (byte != 1 && byte != 2) others.push_back(static_cast<char>(byte));
  }

  EXPECT_TRUE(Parse(others));
  EXPECT_TRUE(Parse(others + Frame("a") + others + kFlushRequest + others + Frame("b")));

  EXPECT_EQ((Texts{"record a", "flush", "record b"}), found_.texts);
}

TEST_F(FrameParserTest, FindsARecordOnlyWhenItIsWhole) {
  EXPECT_TRUE(Parse(std::string("\1\0\0\0\3ab", 7)));
  EXPECT_EQ(Texts{}, found_.texts);

  EXPECT_TRUE(Parse("c"));
  EXPECT_EQ(Texts{"record abc"}, found_.texts);
}

TEST_F(FrameParserTest, FindsTheTailOfAFrameAndAWholeOneInOnePiece) {
  const std::string frame = Frame("first");
  EXPECT_TRUE(Parse(frame.substr(0, 7)));

  EXPECT_TRUE(Parse(frame.substr(7) + Frame("second")));

  EXPECT_EQ((Texts{"record first", "record second"}), found_.texts);
}

TEST_F(FrameParserTest, FindsTheSameWhereverTheStreamIsCut) {
  for (std::size_t cut = 0; cut <= kStream.size(); ++cut) {
    ASSERT_EQ(kContent, FoundIn(kStream, {cut})) << cut;
  }
}

TEST_F(FrameParserTest, FindsTheSameByteByByte) {
  std::vector<std::size_t> cuts;
  for (std::size_t cut = 1; cut < kStream.size(); ++cut) cuts.push_back(cut);

  EXPECT_EQ(kContent, FoundIn(kStream, cuts));
}

TEST_F(FrameParserTest, FindsTheSameInAnyPieces) {
  std::mt19937 random(4711);
  for (int round = 0; round < 500; ++round) {
    const auto rarity = 2 + random() % 60;
    std::vector<std::size_t> cuts;
    for (std::size_t cut = 1; cut < kStream.size(); ++cut) {
      if (random() % rarity == 0) cuts.push_back(cut);
    }
    ASSERT_EQ(kContent, FoundIn(kStream, cuts)) << round;
  }
}

TEST_F(FrameParserTest, FindsLargeRecordsInPiecesOfAReadsSize) {
  constexpr int kLarge = 200000;
  const std::string stream =
      Frame(std::string(kLarge, 'a')) + Frame("b") + Frame(std::string(kLarge, 'c'));
  for (std::size_t start = 0; start < stream.size(); start += 4096) {
    EXPECT_TRUE(Parse(stream.substr(start, 4096), kLarge));
  }

  EXPECT_EQ((Texts{"record " + std::string(kLarge, 'a'), "record b",
                   "record " + std::string(kLarge, 'c')}),
            found_.texts);
}

TEST_F(FrameParserTest, TakesTheNextFourBytesForTheLengthAfterALengthOfZero) {
  EXPECT_TRUE(Parse("\1" + Number(0) + Number(3) + "abc" + kFlushRequest));

  EXPECT_EQ((Texts{"record abc", "flush"}), found_.texts);
}

TEST_F(FrameParserTest, StaysWithTheLengthAfterManyOfZero) {
  EXPECT_TRUE(Parse("\1"));
  for (int i = 0; i < 1000; ++i) EXPECT_TRUE(Parse(Number(0)));
  EXPECT_EQ(Texts{}, found_.texts);

  EXPECT_TRUE(Parse(WithLength("abc")));

  EXPECT_EQ(Texts{"record abc"}, found_.texts);
}

TEST_F(FrameParserTest, TakesAFrameOfExactlyTheLimit) {
  EXPECT_TRUE(Parse(Frame(std::string(kLimit, 'x'))));

  EXPECT_EQ(Texts{"record " + std::string(kLimit, 'x')}, found_.texts);
}

TEST_F(FrameParserTest, EndsAtAFrameThatIsLongerThanTheLimit) {
  EXPECT_FALSE(Parse(Frame(std::string(kLimit + 1, 'x'))));

  EXPECT_EQ(Texts{}, found_.texts);
}

TEST_F(FrameParserTest, EndsAsSoonAsTheLengthIsThere) {
  EXPECT_TRUE(Parse("\1" + Number(kLimit + 1).substr(0, 3)));

  EXPECT_FALSE(Parse(Number(kLimit + 1).substr(3)));
}

TEST_F(FrameParserTest, EndsAtALengthThatIsTooLongAfterOneOfZero) {
  EXPECT_FALSE(Parse("\1" + Number(0) + Number(kLimit + 1)));
}

TEST_F(FrameParserTest, EndsAtANegativeLength) {
  for (const long length : {-1L, -5L, -0x7FFFFFFFL, -0x80000000L}) {
    Found found;
    FrameParser parser(found);
    const std::string start = Frame("a") + "\1" + Number(length) + Frame("b");

    EXPECT_FALSE(parser.Parse(start.data(), start.size(), INT_MAX)) << length;

    EXPECT_EQ(Texts{"record a"}, found.texts);
  }
}

TEST_F(FrameParserTest, GoesByTheLimitOfTheTimeWhenALengthComes) {
  EXPECT_TRUE(Parse("\1" + Number(8) + "abc", 8));

  EXPECT_TRUE(Parse("defgh", 4));
  EXPECT_EQ(Texts{"record abcdefgh"}, found_.texts);

  EXPECT_FALSE(Parse("\1" + Number(8), 7));
}

}  // namespace
