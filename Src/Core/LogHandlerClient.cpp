#include "LogHandlerClient.h"

LogHandlerClient::~LogHandlerClient() = default;
