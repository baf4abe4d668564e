#pragma once

#include <string>

namespace Loggerctl {

/// Keeps the XML parser off the network: while this object lives, entities named by a URL are not
/// fetched; files are read. There is one at a time.
class LocalEntities {
 public:
  LocalEntities();
  ~LocalEntities();
  LocalEntities(const LocalEntities&) = delete;
  LocalEntities& operator=(const LocalEntities&) = delete;

  /// The last URL that was not fetched; empty when there was none.
  static const std::string& RefusedUrl();
};

}  // namespace Loggerctl
