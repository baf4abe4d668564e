#pragma once

#include <string>
#include <vector>

namespace Loggerctl {

/// A client as a configuration file declares it.
struct DeclaredClient {
  std::string title;  ///< "client 'f'", or "client 2" where clients have no names.
  std::string kind;
  std::string handler;
  std::string layout;
  std::string place;  ///< As PlaceOf has it.
};

/// In the order in which the library makes them.
std::vector<DeclaredClient> DeclaredClients(const std::string& fileName);

}  // namespace Loggerctl
