#pragma once

#include <string>
#include <utility>
#include <vector>

namespace Loggerctl {

/// What a configuration file says, in either form, as far as the library heeds it: what it would
/// skip whatever the application does is not in here.
struct StatedSystem {
  struct Level {
    unsigned int number;
    std::string name;
  };
  struct Switch {
    unsigned int level;
    bool isOn;
  };
  struct Handler {
    std::string name;
    std::vector<Switch> switches;  ///< One for a level.
  };
  /// The child gets the parent's events. It may be a handler that only the application makes.
  struct Link {
    std::string parent;
    std::string child;
  };
  struct Client {
    std::string type;
    std::string handler;
    std::vector<std::pair<std::string, std::string>> parameters;  ///< Names occur once.
    std::string layout;  ///< Empty: the one that the client has by itself.

    void AddParameter(const std::string& name, const std::string& value);  ///< The first one stays.
  };

  bool isLoggingOn = true;
  std::vector<Level> levels;  ///< Numbers occur once.
  std::vector<Handler> handlers;
  std::vector<Client> clients;
  std::vector<Link> links;  ///< Those of one parent are in the order of their attachment.

  /// The handler of this name; null when the file makes none.
  const Handler* FindHandler(const std::string& name) const;

  /// One of the clients, for people: with its number, counted from 1.
  std::string Describe(const Client& client) const;
};

/// Takes in what a form cannot say or the library does not heed: one text for each, which names the
/// thing and gives the reason.
typedef std::vector<std::string> Losses;

/// Reads a file of either form; throws a UsageError when it cannot be used. LocalEntities decide
/// what a document may be made of.
StatedSystem ReadSystem(const std::string& fileName, Losses& losses);

/// The readers and writers of the two forms.
StatedSystem ReadIni(const std::string& fileName, Losses& losses);
StatedSystem ReadXml(const std::string& fileName, Losses& losses);
std::string WriteIni(const StatedSystem& system, Losses& losses);
/// Throws a UsageError when the document would not be valid.
std::string WriteXml(const StatedSystem& system, Losses& losses);

}  // namespace Loggerctl
