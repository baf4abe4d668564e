// The table of what a configuration can say agrees with the library.

#include "KnownKeys.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>
#include <string>

#include "LogClientFactory.h"
#include "LogLayout.h"
#include "LogLayoutFactory.h"
#include "Logger.h"
#include "Support/Files.h"

namespace {

TEST(KnownKeysTest, HasTheKindsThatTheLibraryHas) {
  LogClientFactory& factory = *Logger::GetLogManager()->GetLogClientFactory();

  EXPECT_EQ(5U, KnownKinds().size());
  for (const KnownKind& kind : KnownKinds()) {
    EXPECT_TRUE(factory.UnregisterLogClient(kind.name)) << kind.name;
  }
}

TEST(KnownKeysTest, HasTheLayoutsThatTheLibraryHas) {
  LogLayoutFactory& factory = *Logger::GetLogManager()->GetLogLayoutFactory();

  EXPECT_EQ(4U, KnownLayouts().size());
  for (const KnownLayout& layout : KnownLayouts()) {
    EXPECT_TRUE(factory.UnregisterLogLayout(layout.name)) << layout.name;
  }
}

/// The literals that the library's sources ask a client's properties for.
std::set<std::string> ParametersAskedFor() {
  std::set<std::string> names;
  for (const char* const kind : {"File", "RollingFile", "Socket", "Xml"}) {
    const std::string source =
        Content(std::string(PROJECT_FOLDER "/Src/Clients/LogClient") + kind + ".cpp");
    const std::regex call("GetProperty\\(\"([a-z]+)\"\\)");
    for (std::sregex_iterator found(source.begin(), source.end(), call), end; found != end;
         ++found) {
      names.insert((*found)[1]);
    }
  }
  return names;
}

TEST(KnownKeysTest, HasTheParametersThatClientsAskFor) {
  std::set<std::string> known;
  for (const KnownKind& kind : KnownKinds()) {
    for (const KnownParameter& parameter : kind.parameters) known.insert(parameter.name);
  }

  EXPECT_EQ(ParametersAskedFor(), known);
}

TEST(KnownKeysTest, HasTheAttributesOfTheSchema) {
  std::set<std::string> inSchema;
  const std::string schema = Content(PROJECT_FOLDER "/Src/Configuration/liblogger.xsd");
  const std::regex declaration("<xs:(element|attribute) name=\"([a-z]+)\"");
  std::string element;
  for (std::sregex_iterator found(schema.begin(), schema.end(), declaration), end; found != end;
       ++found) {
    if ((*found)[1] == "element") {
      element = (*found)[2];
    } else {
      inSchema.insert(element + " " + (*found)[2].str());
    }
  }

  std::set<std::string> known;
  for (const KnownAttribute& attribute : KnownAttributes()) {
    known.insert(attribute.element + " " + attribute.name);
  }
  EXPECT_EQ(inSchema, known);
}

TEST(KnownKeysTest, HasTheKeysOfTheGuide) {
  const std::string guide = Content(PROJECT_FOLDER "/README.md");
  for (const KnownKey& key : KnownKeys()) {
    EXPECT_NE(std::string::npos, guide.find("`" + key.name + "`")) << key.name;
  }
}

}  // namespace
