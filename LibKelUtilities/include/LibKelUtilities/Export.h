#pragma once

/// Marks a symbol that liblogger.so exports; all others are hidden.
#define KELUTILITIES_EXPORT __attribute__((visibility("default")))
