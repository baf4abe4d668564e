// Publishes events through a file client until it is killed, and writes an empty line to standard
// output for every event that it has published. Arguments: the kind of client ("file" or
// "rolling"), the file, and the longest message; for "rolling" also the largest file and the number
// of backups.

#include <fcntl.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "EndToEnd/KillMessages.h"
#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "Support/Events.h"

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  fcntl(STDOUT_FILENO, F_SETPIPE_SZ, 4096);  // It waits for the test when it is so far ahead.
  std::unique_ptr<LogClientFile> client;
  if (std::string(argv[1]) == "rolling" && argc == 6) {
    client =
        std::make_unique<LogClientRollingFile>(argv[2], std::stol(argv[4]), std::stoi(argv[5]));
  } else {
    client = std::make_unique<LogClientFile>(argv[2], true);
  }
  client->SetLayout("LogLayoutMessage");
  for (int number = 0;; ++number) {
    if (!client->Publish(EventWith(KillMessage(number, std::stoi(argv[3]))))) return 1;
    if (write(STDOUT_FILENO, "\n", 1) != 1) return 1;
  }
}
