// The table of what a configuration can say agrees with the library.

#include "KnownKeys.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "LogClientFactory.h"
#include "LogLayout.h"
#include "LogLayoutFactory.h"
#include "Logger.h"
#include "Support/Files.h"

namespace {

/// What is found in the library's sources in the place of the expression's brackets.
std::set<std::string> FoundInSources(const std::string& folder, const std::string& expression) {
  std::set<std::string> found;
  const std::regex call(expression);
  for (const auto& file : std::filesystem::directory_iterator(PROJECT_FOLDER "/Src/" + folder)) {
    const std::string source = Content(file.path().string());
    for (std::sregex_iterator match(source.begin(), source.end(), call), end; match != end;
         ++match) {
      found.insert((*match)[1]);
    }
  }
  return found;
}

template <typename Named>
std::set<std::string> NamesOf(const std::vector<Named>& all) {
  std::set<std::string> names;
  for (const Named& one : all) names.insert(one.name);
  return names;
}

TEST(KnownKeysTest, HasTheKindsThatTheLibraryHas) {
  EXPECT_EQ(FoundInSources("Clients", "Register\\(\"(\\w+)\""), NamesOf(KnownKinds()));

  LogClientFactory& factory = *Logger::GetLogManager()->GetLogClientFactory();
  for (const KnownKind& kind : KnownKinds()) {
    EXPECT_TRUE(factory.UnregisterLogClient(kind.name)) << kind.name;
  }
}

TEST(KnownKeysTest, HasTheLayoutsThatTheLibraryHas) {
  EXPECT_EQ(FoundInSources("Layouts", "Register\\(\"(\\w+)\""), NamesOf(KnownLayouts()));

  LogLayoutFactory& factory = *Logger::GetLogManager()->GetLogLayoutFactory();
  for (const KnownLayout& layout : KnownLayouts()) {
    EXPECT_TRUE(factory.UnregisterLogLayout(layout.name)) << layout.name;
  }
}

TEST(KnownKeysTest, HasTheParametersThatClientsAskFor) {
  std::set<std::string> known;
  for (const KnownKind& kind : KnownKinds()) {
    for (const KnownParameter& parameter : kind.parameters) known.insert(parameter.name);
  }

  EXPECT_EQ(FoundInSources("Clients", "GetProperty\\(\"(\\w+)\"\\)"), known);
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
