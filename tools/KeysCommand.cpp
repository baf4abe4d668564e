#include "KeysCommand.h"

#include <cstdlib>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "KnownKeys.h"
#include "UsageError.h"

namespace Loggerctl {

namespace {

using Json = nlohmann::ordered_json;

struct KeysOptions {
  std::vector<std::string> kinds;
  bool asJson = false;
  CLI::Option* kindNames = nullptr;
};

std::vector<std::string> KindNames() {
  std::vector<std::string> names;
  for (const KnownKind& kind : KnownKinds()) names.push_back(kind.name);
  return names;
}

void PrintParagraph(const std::string& title, const std::string& meaning, ValueType type,
                    const std::string& without) {
  std::cout << "  " << title << "\n      " << meaning << "\n      " << NameOf(type);
  if (!without.empty()) std::cout << "; without it: " << without;
  std::cout << "\n";
}

void PrintKind(const KnownKind& kind) {
  std::cout << kind.name << ": " << kind.meaning << "\n";
  for (const KnownParameter& parameter : kind.parameters) {
    PrintParagraph(parameter.name, parameter.meaning, parameter.type, parameter.without);
  }
}

void PrintAll() {
  std::cout << "Keys of a properties file, with H for a handler, C for a client, N for a level and "
               "M for a number from 0\n";
  for (const KnownKey& key : KnownKeys()) {
    PrintParagraph(key.name, key.meaning, key.type, key.without);
  }
  std::cout << "\nElements of an XML document with their attributes\n";
  for (const KnownAttribute& attribute : KnownAttributes()) {
    PrintParagraph(attribute.element + " " + attribute.name, attribute.meaning, attribute.type, "");
  }
  std::cout << "\nKinds of clients with their parameters\n\n";
  for (const KnownKind& kind : KnownKinds()) PrintKind(kind);
  std::cout << "\nLayouts\n";
  for (const KnownLayout& layout : KnownLayouts()) {
    std::cout << "  " << layout.name << "\n      " << layout.line << "\n";
  }
}

Json KindAsJson(const KnownKind& kind) {
  Json parameters = Json::array();
  for (const KnownParameter& parameter : kind.parameters) {
    parameters.push_back({{"name", parameter.name},
                          {"value", NameOf(parameter.type)},
                          {"meaning", parameter.meaning},
                          {"without", parameter.without},
                          {"needed", parameter.isNeeded}});
  }
  return {{"name", kind.name},
          {"meaning", kind.meaning},
          {"layout", kind.hasLayout},
          {"parameters", parameters}};
}

Json AllAsJson() {
  Json all{{"keys", Json::array()},
           {"attributes", Json::array()},
           {"kinds", Json::array()},
           {"layouts", Json::array()}};
  for (const KnownKey& key : KnownKeys()) {
    all["keys"].push_back({{"name", key.name},
                           {"value", NameOf(key.type)},
                           {"meaning", key.meaning},
                           {"without", key.without}});
  }
  for (const KnownAttribute& attribute : KnownAttributes()) {
    all["attributes"].push_back({{"element", attribute.element},
                                 {"name", attribute.name},
                                 {"value", NameOf(attribute.type)},
                                 {"meaning", attribute.meaning}});
  }
  for (const KnownKind& kind : KnownKinds()) all["kinds"].push_back(KindAsJson(kind));
  for (const KnownLayout& layout : KnownLayouts()) {
    all["layouts"].push_back({{"name", layout.name}, {"line", layout.line}});
  }
  return all;
}

void PrintKinds(const std::vector<std::string>& names, bool asJson) {
  Json kinds = Json::array();
  for (const std::string& name : names) {
    const KnownKind& kind = *FindKind(name);  // The command line takes no other names.
    if (asJson) {
      kinds.push_back(KindAsJson(kind));
    } else {
      PrintKind(kind);
    }
  }
  constexpr int kIndent = 2;
  if (asJson) std::cout << kinds.dump(kIndent) << "\n";
}

int RunKeys(const KeysOptions& options) {
  constexpr int kIndent = 2;
  const std::vector<std::string> kinds = WordsOf(*options.kindNames);
  if (!kinds.empty()) {
    PrintKinds(kinds, options.asJson);
  } else if (options.asJson) {
    std::cout << AllAsJson().dump(kIndent) << "\n";
  } else {
    PrintAll();
  }
  if (!std::cout.flush()) throw UsageError("standard output could not be written");
  return EXIT_SUCCESS;
}

}  // namespace

void AddKeysCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "keys", "Print what a configuration can say: keys, attributes, parameters and layouts");
  const auto options = std::make_shared<KeysOptions>();
  command->add_flag("--json", options->asJson, "Print JSON, for programs");
  options->kindNames = command->add_option("KIND", options->kinds,
                                           "Kinds of clients to print the parameters of; without "
                                           "any, everything is printed");
  options->kindNames->type_name("")->check(CLI::IsMember(KindNames()));
  command->footer("Exit code: 0 it was printed; 2 the command line cannot be used.");
  command->callback([options, &exitCode] { exitCode = RunKeys(*options); });
}

}  // namespace Loggerctl
