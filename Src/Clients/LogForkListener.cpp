#include "LogForkListener.h"

LogForkListener::~LogForkListener() = default;
