#include "Clients/FileStream.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>

#include "Support/Descriptors.h"
#include "Support/Files.h"
#include "Support/GroupedNumbers.h"
#include "Support/TemporaryFolder.h"

using Logger::Internal::FileStream;

namespace {

constexpr bool kAppend = true;
constexpr bool kTruncate = false;

class FileStreamTest : public testing::Test {
 protected:
  TemporaryFolder folder_;
  const std::string file_ = folder_.Path("app.log");
  const std::string noFile_ = folder_.Path("missing/app.log");
  FileStream stream_;
};

TEST_F(FileStreamTest, FailsWithoutAFile) {
  EXPECT_TRUE(stream_.good());
  EXPECT_FALSE(stream_.IsOpen());
  EXPECT_EQ(-1, stream_.Position());
  EXPECT_EQ(-1, stream_.tellp());

  stream_ << "lost";
  EXPECT_TRUE(stream_.bad());
  stream_.clear();
  stream_.seekp(1);
  EXPECT_TRUE(stream_.fail());
  stream_.clear();
  stream_.Close();
  EXPECT_EQ(std::ios_base::failbit, stream_.rdstate());
  stream_.clear();
  stream_.Open(noFile_, kAppend);
  EXPECT_EQ(std::ios_base::failbit, stream_.rdstate());
  EXPECT_FALSE(stream_.IsOpen());
}

TEST_F(FileStreamTest, IsGoodOnceAFileWasOpened) {
  stream_.Open(noFile_, kTruncate);

  stream_.Open(file_, kTruncate);
  EXPECT_TRUE(stream_.good());
  EXPECT_TRUE(stream_.IsOpen());
  EXPECT_EQ("", Content(file_));
  stream_ << "text" << std::flush;

  EXPECT_TRUE(stream_.good());
  EXPECT_EQ("text", Content(file_));
}

TEST_F(FileStreamTest, FailsWhenOpenedTwiceAndKeepsTheFirstFile) {
  stream_.Open(file_, kTruncate);
  stream_ << "one" << std::flush;

  stream_.Open(folder_.Path("other.log"), kTruncate);

  EXPECT_EQ(std::ios_base::failbit, stream_.rdstate());
  EXPECT_TRUE(stream_.IsOpen());
  EXPECT_FALSE(Exists(folder_.Path("other.log")));
  stream_.clear();
  stream_ << "two" << std::flush;
  EXPECT_EQ("onetwo", Content(file_));
}

TEST_F(FileStreamTest, AppendsOrEmptiesAsItIsOpened) {
  WriteFile(file_, "old ");

  stream_.Open(file_, kAppend);
  stream_ << "new" << std::flush;
  EXPECT_EQ("old new", Content(file_));
  stream_.Close();
  stream_.Open(file_, kTruncate);

  EXPECT_EQ("", Content(file_));
}

TEST_F(FileStreamTest, IsGoodAfterItsFileWasClosedButTakesNothing) {
  stream_.Open(file_, kAppend);

  stream_.Close();
  EXPECT_TRUE(stream_.good());
  EXPECT_FALSE(stream_.IsOpen());
  EXPECT_EQ(-1, DescriptorOf(file_));
  stream_.put('l');

  EXPECT_TRUE(stream_.bad());
  EXPECT_EQ("", Content(file_));
}

TEST_F(FileStreamTest, CollectsTextUntilItIsWrittenOutOnce) {
  stream_.Open(file_, kAppend);

  stream_ << "text " << 42;
  EXPECT_EQ("", Content(file_));
  stream_.WriteOut();
  EXPECT_EQ("text 42", Content(file_));
  stream_.WriteOut();
  stream_.flush();
  stream_ << "one" << std::flush;
  EXPECT_EQ("text 42one", Content(file_));
  stream_ << "two" << std::endl;
  EXPECT_EQ("text 42onetwo\n", Content(file_));
  stream_ << "three";
  EXPECT_TRUE(stream_.good());
  stream_.Close();

  EXPECT_EQ("text 42onetwo\nthree", Content(file_));
  EXPECT_TRUE(stream_.good());
}

TEST_F(FileStreamTest, TakesSingleCharacters) {
  stream_.Open(file_, kAppend);

  stream_.put('a').put('\0').put('\xff').put('\n');
  stream_ << 'b';
  stream_.WriteOut();

  EXPECT_EQ(std::string("a\0\xff\nb", 5), Content(file_));
  EXPECT_TRUE(stream_.good());
}

TEST_F(FileStreamTest, WritesLargeTextsOneAfterTheOther) {
  stream_.Open(file_, kAppend);
  std::string expected;

  for (const std::size_t length : {65535U, 65536U, 65537U, 1U, 1000000U, 3U}) {
    const std::string text(length, static_cast<char>('a' + length % 26));
    stream_ << text;
    stream_.WriteOut();
    expected += text;
  }

  EXPECT_TRUE(expected == Content(file_));  // Not EXPECT_EQ, which would print them.
}

TEST_F(FileStreamTest, WritesWhatItCollectedAtItsEnd) {
  {
    FileStream stream;
    stream.Open(file_, kAppend);
    stream << "text";
  }

  EXPECT_EQ("text", Content(file_));
  EXPECT_EQ(-1, DescriptorOf(file_));
}

TEST_F(FileStreamTest, GoesBadWhenTextCannotBeWrittenAndDropsIt) {
  stream_.Open("/dev/full", kAppend);
  stream_ << "lost";
  EXPECT_TRUE(stream_.good());
  stream_.WriteOut();
  EXPECT_EQ(std::ios_base::badbit, stream_.rdstate());
  stream_.clear();
  stream_ << "lost" << std::flush;
  EXPECT_TRUE(stream_.bad());
  stream_.clear();
  stream_.Close();
  EXPECT_TRUE(stream_.good());

  stream_.Open("/dev/full", kAppend);
  stream_ << "lost";
  stream_.Close();
  EXPECT_EQ(std::ios_base::failbit, stream_.rdstate());
  EXPECT_FALSE(stream_.IsOpen());
}

TEST_F(FileStreamTest, DropsWhatAFailedStreamCollected) {
  stream_.Open(file_, kAppend);
  stream_ << "lost";
  stream_.setstate(std::ios_base::failbit);

  stream_.WriteOut();
  EXPECT_EQ(std::ios_base::failbit, stream_.rdstate());
  stream_.clear();
  stream_ << "text";
  stream_.WriteOut();

  EXPECT_EQ("text", Content(file_));
}

TEST_F(FileStreamTest, KnowsWhereTheNextByteGoes) {
  for (const bool append : {kTruncate, kAppend}) {
    WriteFile(file_, "0123456789");
    FileStream stream;
    stream.Open(file_, append);
    const long start = append ? 10 : 0;

    EXPECT_EQ(start, stream.Position());
    stream << "text";
    stream.WriteOut();

    EXPECT_EQ(start + 4, stream.Position());
  }
}

TEST_F(FileStreamTest, HasNoPositionWhenItHasFailed) {
  stream_.Open(file_, kTruncate);
  stream_ << "text";
  stream_.WriteOut();

  stream_.setstate(std::ios_base::failbit);
  EXPECT_EQ(-1, stream_.Position());
  stream_.clear(std::ios_base::badbit);
  EXPECT_EQ(-1, stream_.Position());
  stream_.clear(std::ios_base::eofbit);

  EXPECT_EQ(4, stream_.Position());
}

TEST_F(FileStreamTest, WritesNumbersInTheClassicLocale) {
  const GroupedNumbers grouped;
  FileStream stream;
  stream.Open(file_, kAppend);

  stream << 1234567;
  stream.WriteOut();

  EXPECT_EQ("1234567", Content(file_));
}

TEST_F(FileStreamTest, GivesAndSetsThePositionAsAFileStreamDoes) {
  WriteFile(file_, "0123456789");
  FileStream stream;
  stream.Open(file_, true);

  stream << "text";

  EXPECT_EQ(14, stream.tellp());
  stream.seekp(2);
  EXPECT_EQ(2, stream.tellp());
  stream.seekp(-1, std::ios_base::end);
  EXPECT_EQ(13, stream.tellp());
  stream.seekp(-3, std::ios_base::cur);
  EXPECT_EQ(10, stream.tellp());
  EXPECT_TRUE(stream.good());
  EXPECT_EQ("0123456789text", Content(file_));
}

TEST_F(FileStreamTest, WritesWhereItWasSetTo) {
  FileStream stream;
  stream.Open(file_, false);

  stream << "abcdef";
  stream.seekp(2);
  stream << "XY";
  stream.WriteOut();

  EXPECT_EQ("abXYef", Content(file_));
}

}  // namespace
