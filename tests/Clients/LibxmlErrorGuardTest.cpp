#include "Clients/LibxmlErrorGuard.h"

#include <gtest/gtest.h>
#include <libxml/globals.h>
#include <libxml/parser.h>

#include <future>
#include <string>
#include <thread>

#include "Support/XmlMessages.h"

using Logger::Internal::LibxmlErrorGuard;

namespace {

typedef XmlMessages::Kind Kind;

const char* const kReport = "Premature end of data in tag a line 1\n";

/// Makes libxml2 report something.
void ParseHalfADocument() { xmlFreeDoc(xmlReadMemory("<a>", 3, nullptr, nullptr, 0)); }

TEST(LibxmlErrorGuardTest, KeepsStandardErrorEmpty) {
  testing::internal::CaptureStderr();
  {
    const LibxmlErrorGuard guard;
    ParseHalfADocument();
    xmlGenericError(xmlGenericErrorContext, "%s", "text");
  }

  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(LibxmlErrorGuardTest, LeavesStandardErrorAsItWas) {
  { const LibxmlErrorGuard guard; }
  testing::internal::CaptureStderr();

  ParseHalfADocument();

  EXPECT_EQ("Entity: line 1: parser error : Premature end of data in tag a line 1\n<a>\n   ^\n",
            testing::internal::GetCapturedStderr());
}

TEST(LibxmlErrorGuardTest, KeepsTheApplicationsGenericHandlerFromBeingCalled) {
  const XmlMessages messages(Kind::Generic);
  {
    const LibxmlErrorGuard guard;
    ParseHalfADocument();
  }

  EXPECT_EQ("", messages.text);
}

TEST(LibxmlErrorGuardTest, KeepsTheApplicationsStructuredHandlerFromBeingCalled) {
  const XmlMessages messages(Kind::Structured);
  testing::internal::CaptureStderr();
  {
    const LibxmlErrorGuard guard;
    ParseHalfADocument();
  }

  EXPECT_EQ("", messages.text);
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(LibxmlErrorGuardTest, PutsTheApplicationsGenericHandlerBack) {
  const XmlMessages messages(Kind::Generic);
  { const LibxmlErrorGuard guard; }

  xmlGenericError(xmlGenericErrorContext, "%s %d", "text", 7);

  EXPECT_TRUE(messages.AreInPlace(Kind::Generic));
  EXPECT_EQ("text 7", messages.text);
}

TEST(LibxmlErrorGuardTest, PutsTheApplicationsStructuredHandlerBack) {
  const XmlMessages messages(Kind::Structured);
  { const LibxmlErrorGuard guard; }

  ParseHalfADocument();

  EXPECT_TRUE(messages.AreInPlace(Kind::Structured));
  EXPECT_EQ(kReport, messages.text);
}

TEST(LibxmlErrorGuardTest, MayBeNested) {
  const XmlMessages messages(Kind::Structured);
  {
    const LibxmlErrorGuard outer;
    { const LibxmlErrorGuard inner; }
    ParseHalfADocument();
  }
  EXPECT_EQ("", messages.text);

  ParseHalfADocument();

  EXPECT_EQ(kReport, messages.text);
}

TEST(LibxmlErrorGuardTest, KeepsTheLastErrorThatTheApplicationMayLookAt) {
  const XmlMessages messages(Kind::Structured);
  xmlFreeDoc(xmlReadMemory("no document", 11, nullptr, nullptr, 0));
  ASSERT_NE(nullptr, xmlGetLastError());
  const std::string message = xmlGetLastError()->message;
  const int code = xmlGetLastError()->code;
  {
    const LibxmlErrorGuard guard;
    ParseHalfADocument();
  }

  ASSERT_NE(nullptr, xmlGetLastError());
  EXPECT_EQ(message, xmlGetLastError()->message);
  EXPECT_EQ(code, xmlGetLastError()->code);
  EXPECT_EQ(XML_ERR_DOCUMENT_EMPTY, code);
  xmlResetLastError();
}

TEST(LibxmlErrorGuardTest, LeavesNoLastErrorWhereThereWasNone) {
  {
    const LibxmlErrorGuard guard;
    ParseHalfADocument();
  }

  EXPECT_EQ(nullptr, xmlGetLastError());
}

TEST(LibxmlErrorGuardTest, LetsOtherThreadsReport) {
  std::promise<void> isSilent;
  std::promise<void> isReported;
  std::thread silent([&] {
    const LibxmlErrorGuard guard;
    isSilent.set_value();
    isReported.get_future().wait();
  });
  isSilent.get_future().wait();
  const XmlMessages messages(Kind::Structured);

  ParseHalfADocument();
  isReported.set_value();
  silent.join();

  EXPECT_EQ(kReport, messages.text);
  EXPECT_TRUE(messages.AreInPlace(Kind::Structured));
}

}  // namespace
