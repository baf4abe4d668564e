#pragma once

#include "Support/TemporaryFolder.h"

/// The process's logging system, empty at first, without a way to the outside.
///
/// At the end of the scope everything set up within it is deleted: handlers, clients and levels.
/// The client kinds have their usual names, but those that write files do so in the process's own
/// folder, whatever name they are given; the socket client connects to nobody; and what goes to
/// std::cout is dropped.
class FreshSystem {
 public:
  FreshSystem();
  ~FreshSystem();

  FreshSystem(const FreshSystem&) = delete;
  FreshSystem& operator=(const FreshSystem&) = delete;
};

/// A folder of the process's own.
const TemporaryFolder& OwnFolder();
