#pragma once

#include <string>

namespace Loggerctl {

/// Keeps the parser of XML documents from the network: while this object lives, what a document
/// names by a URL is not fetched. Its files are read.
class LocalEntities {
 public:
  LocalEntities();
  ~LocalEntities();
  LocalEntities(const LocalEntities&) = delete;
  LocalEntities& operator=(const LocalEntities&) = delete;

  /// Throws a UsageError when the document `fileName`, which was parsed meanwhile, named something
  /// that was not fetched.
  static void RequireComplete(const std::string& fileName);
};

}  // namespace Loggerctl
