#include "Internal/SplitList.h"

std::vector<logstring> Logger::Internal::SplitList(const logstring& value) {
  std::vector<logstring> items;
  if (value.empty()) return items;
  std::size_t start = 0;
  for (std::size_t blank; (blank = value.find(' ', start)) != logstring::npos; start = blank + 1) {
    items.push_back(value.substr(start, blank - start));
  }
  items.push_back(value.substr(start));
  return items;
}
