#pragma once

#include <optional>

#include "Configuration/Configuration.h"

namespace Loggerctl {

/// Whether a document may have a document type, whose entities can read other files.
enum class DocumentType {
  Refused,  ///< It is an error, and is not looked into.
  Read      ///< Its entities are read from files, never from the network.
};

struct ReadOptions {
  std::optional<ConfigurationForm> form;  ///< Decided by the content when not given.
  DocumentType documentType = DocumentType::Read;
  OwnNames own;
};

}  // namespace Loggerctl
