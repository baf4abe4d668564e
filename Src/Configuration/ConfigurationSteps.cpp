#include "Configuration/ConfigurationSteps.h"

#include "LogClient.h"
#include "LogClientFactory.h"
#include "LogHandler.h"
#include "Logger.h"

bool Logger::Internal::AttachNewClient(LogHandler& handler, const logstring& type,
                                       const LogProperties& parameters, const logstring& layout,
                                       UnknownLayout unknownLayout) {
  LogClient* const client =
      GetLogManager()->GetLogClientFactory()->CreateLogClient(type, parameters);
  if (client == nullptr) return false;
  const bool hasLayout = layout.empty() || client->SetLayout(layout);
  if (!hasLayout && unknownLayout == UnknownLayout::LeaveUnattached) return false;
  handler.AddLogClient(client);
  return true;
}
