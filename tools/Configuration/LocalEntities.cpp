#include "Configuration/LocalEntities.h"

#include <libxml/parser.h>

namespace Loggerctl {

namespace {

xmlExternalEntityLoader formerLoader = nullptr;
std::string refusedUrl;

xmlParserInput* LoadLocally(const char* url, const char* id, xmlParserCtxt* parser) {
  const std::string name = url == nullptr ? "" : url;
  const bool isRemote = name.find("://") != std::string::npos && name.rfind("file://", 0) != 0;
  if (!isRemote) return formerLoader(url, id, parser);
  refusedUrl = name;
  return nullptr;
}

}  // namespace

LocalEntities::LocalEntities() {
  refusedUrl.clear();
  formerLoader = xmlGetExternalEntityLoader();
  xmlSetExternalEntityLoader(LoadLocally);
}

LocalEntities::~LocalEntities() { xmlSetExternalEntityLoader(formerLoader); }

const std::string& LocalEntities::RefusedUrl() { return refusedUrl; }

}  // namespace Loggerctl
