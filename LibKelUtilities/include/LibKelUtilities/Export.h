#pragma once

/// Marks what leaves liblogger.so; everything else is hidden.
#define KELUTILITIES_EXPORT __attribute__((visibility("default")))
