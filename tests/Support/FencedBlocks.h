#pragma once

#include <string>
#include <vector>

#include "Support/Files.h"

/// A block of a Markdown page between two lines of three backticks.
struct FencedBlock {
  std::string language;  ///< Empty when none is given.
  std::string text;
};

inline std::vector<FencedBlock> FencedBlocks(const std::string& page) {
  std::vector<FencedBlock> blocks;
  bool isInside = false;
  for (const std::string& line : Lines(page)) {
    if (line.rfind("```", 0) == 0) {
      isInside = !isInside;
      if (isInside) blocks.push_back({line.substr(3), ""});
    } else if (isInside) {
      blocks.back().text += line + "\n";
    }
  }
  return blocks;
}
