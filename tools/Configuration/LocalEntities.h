#pragma once

#include <string>

namespace Loggerctl {

/// Keeps the parser of documents from the network: while this object lives, what a document names
/// by a URL is not fetched. Its files are read. There is one at a time.
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
