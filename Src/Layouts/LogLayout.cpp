#include "LogLayout.h"

LogLayout::~LogLayout() = default;
