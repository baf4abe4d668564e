// The table of known keys agrees with the library.

#include "KnownKeys.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "LogClientFactory.h"
#include "LogLayout.h"
#include "LogLayoutFactory.h"
#include "Logger.h"
#include "Support/Files.h"

using Loggerctl::KnownAttribute;
using Loggerctl::KnownAttributes;
using Loggerctl::KnownKey;
using Loggerctl::KnownKeys;
using Loggerctl::KnownKind;
using Loggerctl::KnownKinds;
using Loggerctl::KnownLayout;
using Loggerctl::KnownLayouts;
using Loggerctl::KnownParameter;

namespace {

/// The words in the text between `start` and a quotation mark.
std::vector<std::string> WordsAfter(const std::string& start, const std::string& text) {
  std::vector<std::string> words;
  for (std::size_t found = 0; (found = text.find(start, found)) != std::string::npos;) {
    found += start.size();
    words.push_back(text.substr(found, text.find('"', found) - found));
  }
  return words;
}

/// The same of all the library's sources in a folder.
std::set<std::string> FoundInSources(const std::string& folder, const std::string& start) {
  std::set<std::string> found;
  for (const auto& file : std::filesystem::directory_iterator(PROJECT_FOLDER "/Src/" + folder)) {
    for (const std::string& word : WordsAfter(start, Content(file.path().string()))) {
      found.insert(word);
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
  EXPECT_EQ(FoundInSources("Process", "RegisterLogClient(\""), NamesOf(KnownKinds()));

  LogClientFactory& factory = *Logger::GetLogManager()->GetLogClientFactory();
  for (const KnownKind& kind : KnownKinds()) {
    EXPECT_TRUE(factory.UnregisterLogClient(kind.name)) << kind.name;
  }
}

TEST(KnownKeysTest, HasTheLayoutsThatTheLibraryHas) {
  EXPECT_EQ(FoundInSources("Process", "RegisterLogLayout(\""), NamesOf(KnownLayouts()));

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

  EXPECT_EQ(FoundInSources("Clients", "GetProperty(\""), known);
}

TEST(KnownKeysTest, HasTheAttributesOfTheSchema) {
  std::set<std::string> inSchema;
  std::string element;
  for (const std::string& line : Lines(PROJECT_FOLDER "/Src/Configuration/liblogger.xsd")) {
    for (const std::string& name : WordsAfter("<xs:element name=\"", line)) element = name;
    for (const std::string& name : WordsAfter("<xs:attribute name=\"", line)) {
      inSchema.insert(element + " " + name);
    }
  }

  std::set<std::string> known;
  for (const KnownAttribute& attribute : KnownAttributes()) {
    known.insert(attribute.element + " " + attribute.name);
  }
  EXPECT_EQ(inSchema, known);
}

TEST(KnownKeysTest, StandsWholeInTheGuide) {
  const std::string guide = Content(PROJECT_FOLDER "/docs/configuration.md");
  const auto isInGuide = [&guide](const std::string& name) {
    return guide.find("`" + name + "`") != std::string::npos;
  };

  for (const KnownKey& key : KnownKeys()) EXPECT_TRUE(isInGuide(key.name)) << key.name;
  for (const KnownAttribute& attribute : KnownAttributes()) {
    EXPECT_TRUE(isInGuide(attribute.element)) << attribute.element;
    EXPECT_TRUE(isInGuide(attribute.name)) << attribute.name;
  }
  for (const KnownKind& kind : KnownKinds()) {
    EXPECT_TRUE(isInGuide(kind.name)) << kind.name;
    for (const KnownParameter& one : kind.parameters) EXPECT_TRUE(isInGuide(one.name)) << one.name;
  }
  for (const KnownLayout& layout : KnownLayouts())
    EXPECT_TRUE(isInGuide(layout.name)) << layout.name;
}

}  // namespace
