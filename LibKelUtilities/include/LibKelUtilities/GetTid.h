#pragma once

#include "LibKelUtilities/Export.h"

namespace LibKelUtilities {

/// The kernel's id of the calling thread, as ps and /proc show it. In the thread that called fork()
/// the child's own id is given in the child. Safe from any thread; cannot fail.
KELUTILITIES_EXPORT int GetTid();

}  // namespace LibKelUtilities
