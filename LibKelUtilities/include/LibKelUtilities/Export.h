#pragma once

/// Marks what leaves libKelUtilities.so; everything else is hidden.
#define KELUTILITIES_EXPORT __attribute__((visibility("default")))
