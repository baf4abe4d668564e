// The C library's ways to other hosts, for the whole process, its libraries included: there are
// none.

#include <netdb.h>
#include <sys/socket.h>

#include "Support/Expect.h"

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int socket(int, int, int) noexcept {
  Expect(false, "nobody asks for a socket");
  return -1;
}

EXPORTED int getaddrinfo(const char*, const char*, const addrinfo*, addrinfo**) {
  Expect(false, "nobody asks for a host");
  return EAI_FAIL;
}

EXPORTED hostent* gethostbyname(const char*) {
  Expect(false, "nobody asks for a host");
  return nullptr;
}
