// Does a whole configuration run end well, whatever the properties file says?

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "LogConfiguratorIni.h"
#include "LogProperties.h"
#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/FreshSystem.h"
#include "Support/LoggingRound.h"

namespace {

bool IsToBeRead(const std::string& text) {
  std::istringstream in(text);
  LogProperties properties;
  return properties.Load(in) && properties.GetProperty("logging") != "false";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::string path = OwnFolder().Path("logger.ini");
  WriteFile(path, text);

  std::string words;
  {
    const FreshSystem system;
    const bool isRead = LogConfiguratorIni().ReadConfiguration(path);
    Expect(isRead == IsToBeRead(text), "a file is refused when it is cut or says so, only then");
    words = SystemInWords();
    LogEverywhere();
  }
  const FreshSystem system;
  static_cast<void>(LogConfiguratorIni().ReadConfiguration(path));
  Expect(SystemInWords() == words, "the same file sets up the same system");
  return 0;
}
