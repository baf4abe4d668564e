#include "Process/BuiltIns.h"

#include "LogClientConsole.h"
#include "LogClientFactory.h"
#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "LogLayoutExtended.h"
#include "LogLayoutFactory.h"
#include "LogLayoutMessage.h"
#include "LogLayoutSimple.h"
#include "LogLayoutStandard.h"

namespace Logger::Internal {

namespace {

template <typename Client>
LogClient* CreateLogClient(const LogProperties& properties) {
  return new Client(properties);
}

template <typename Layout>
LogLayout* CreateLogLayout() {
  return new Layout;
}

}  // namespace

void RegisterBuiltIns(LogClientFactory& clients, LogLayoutFactory& layouts) {
  clients.RegisterLogClient("LogClientConsole", CreateLogClient<LogClientConsole>);
  clients.RegisterLogClient("LogClientFile", CreateLogClient<LogClientFile>);
  clients.RegisterLogClient("LogClientRollingFile", CreateLogClient<LogClientRollingFile>);
  clients.RegisterLogClient("LogClientSocket", CreateLogClient<LogClientSocket>);
  // The name is spelled differently from the class, on purpose.
  clients.RegisterLogClient("LogClientXML", CreateLogClient<LogClientXml>);

  layouts.RegisterLogLayout("LogLayoutMessage", CreateLogLayout<LogLayoutMessage>);
  layouts.RegisterLogLayout("LogLayoutSimple", CreateLogLayout<LogLayoutSimple>);
  layouts.RegisterLogLayout("LogLayoutStandard", CreateLogLayout<LogLayoutStandard>);
  layouts.RegisterLogLayout("LogLayoutExtended", CreateLogLayout<LogLayoutExtended>);
}

}  // namespace Logger::Internal
