#pragma once

#include <locale>
#include <string>

/// Makes new streams write 1234567 as 1,234,567 for a scope.
class GroupedNumbers {
 public:
  GroupedNumbers() : former_(std::locale::global(std::locale(std::locale(), new Grouping))) {}
  ~GroupedNumbers() { std::locale::global(former_); }
  GroupedNumbers(const GroupedNumbers&) = delete;
  GroupedNumbers& operator=(const GroupedNumbers&) = delete;

 private:
  struct Grouping : std::numpunct<char> {
    std::string do_grouping() const override { return "\3"; }
    char do_thousands_sep() const override { return ','; }
  };

  std::locale former_;
};
