#pragma once

namespace Bench {

/// Whether a level is on: one relaxed load, out of line. None is on.
[[gnu::noipa]] bool IsOn(unsigned int level);

}  // namespace Bench
