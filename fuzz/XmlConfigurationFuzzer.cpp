// Does a whole configuration run end well, whatever the XML document says?

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlIO.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "Clients/LibxmlErrorGuard.h"
#include "LogConfiguratorXml.h"
#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/FreshSystem.h"
#include "Support/LoggingRound.h"

namespace {

std::string DocumentPath() { return OwnFolder().Path("logger.xml"); }

// A document refers to others: none of them is read, and the document itself only once.
bool mayReadDocument = false;

xmlParserInputPtr ReadOnlyTheDocument(const char* name, const char*, xmlParserCtxtPtr parser) {
  const bool isDocument = name != nullptr && name == DocumentPath() && mayReadDocument;
  mayReadDocument = false;
  return isDocument ? xmlNewInputFromFile(parser, name) : nullptr;
}

bool Read() {
  mayReadDocument = true;
  return LogConfiguratorXml().ReadConfiguration(DocumentPath());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Logger::Internal::LibxmlErrorGuard guard;
  xmlSetExternalEntityLoader(ReadOnlyTheDocument);
  WriteFile(DocumentPath(), std::string(reinterpret_cast<const char*>(data), size));

  std::string words;
  {
    const FreshSystem system;
    const std::string nothing = SystemInWords();
    const bool isRead = Read();
    words = SystemInWords();
    Expect(isRead || words == nothing, "a document that is refused sets nothing up");
    LogEverywhere();
  }
  const FreshSystem system;
  static_cast<void>(Read());
  Expect(SystemInWords() == words, "the same document sets up the same system");
  return 0;
}
