#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Configuration/Configuration.h"

namespace Loggerctl {

class RecordingClient;

/// The process's logging system, as the library has it after it was configured with recording
/// clients in the place of the real ones.
struct ConfiguredSystem {
  struct Level {
    unsigned int number;
    std::string name;
  };
  struct Receiver {
    bool isClient;
    std::size_t index;  ///< In `clients` or `handlers`.
  };
  struct Handler {
    std::string name;
    std::vector<Level> levelsOff;
    std::vector<Receiver> receivers;  ///< In the order of their attachment.
  };
  struct Client {
    const RecordingClient* recording;
    std::string handler;
    bool isAttached;
    std::string name;  ///< Its name in the file, or its number where it has none.
  };

  std::vector<Level> levels;
  std::vector<Handler> handlers;
  std::vector<Client> clients;  ///< In the order in which they were made, also unattached ones.
};

/// Asks the library. The clients get the names that they have in the configuration.
ConfiguredSystem AskSystem(const Configuration& configuration);

/// The system for a terminal, and as a graph in the language of Graphviz.
std::string TextOf(const ConfiguredSystem& system);
std::string DotOf(const ConfiguredSystem& system);

/// Texts about single things, for both.
std::string LevelText(const ConfiguredSystem::Level& level);
std::string OffText(const ConfiguredSystem::Handler& handler);
/// Its layout, or why it has none, or why the client is attached to no handler. May be empty.
std::string RemarkOn(const ConfiguredSystem::Client& client);

}  // namespace Loggerctl
