// Is a message the text that vsnprintf makes, of the same length, in a buffer that grows by the
// rules?

#include <fuzzer/FuzzedDataProvider.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "Internal/FormattedText.h"
#include "Internal/SimpleFormat.h"
#include "Support/Expect.h"

// The formats here are made at run time.
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

using Logger::Internal::FormatSimply;
using Logger::Internal::FormattedText;

namespace {

constexpr unsigned int kFirstCapacity = 4096;
constexpr int kErrno = EAGAIN;  // For %m.

/// The memory of the process, as far as texts are concerned.
constexpr std::size_t kMemory = std::size_t{1} << 20;

/// The sizes requested from realloc since it was last emptied.
std::vector<std::size_t> reallocated;

}  // namespace

// The sanitizer's own look at a format goes past the end of one that ends within a conversion.
extern "C" const char* __asan_default_options();
const char* __asan_default_options() { return "check_printf=0"; }

// The linker's --wrap: calls of a function go to __wrap_NAME, and __real_NAME calls the function.
extern "C" void* __real_realloc(void* former, std::size_t size);
extern "C" void* __wrap_realloc(void* former, std::size_t size);

void* __wrap_realloc(void* former, std::size_t size) {
  reallocated.push_back(size);
  return size > kMemory ? nullptr : __real_realloc(former, size);
}

namespace {

/// The capacities that a text is tried with, up to the one that it is trusted in, or that there is
/// no memory for. A text that cannot be formatted has a negative length.
std::vector<std::size_t> CapacitiesFor(long length) {
  std::vector<std::size_t> capacities{kFirstCapacity};
  for (;;) {
    const auto capacity = static_cast<long>(capacities.back());
    if (capacities.back() > kMemory) return capacities;
    if (length >= 0 && length <= capacity - 2) return capacities;
    const bool isLengthOfNoUse = length < 0 || length <= capacity;
    capacities.push_back(static_cast<std::size_t>(isLengthOfNoUse ? 2 * capacity : length + 2));
  }
}

/// The text of vsnprintf in a buffer that is large enough.
std::optional<std::string> Printed(int length, const char* format, va_list arguments) {
  if (length < 0 || CapacitiesFor(length).back() > kMemory) return std::nullopt;
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  Expect(vsnprintf(text.data(), text.size(), format, arguments) == length, "vsnprintf repeats");
  text.pop_back();
  return text;
}

void CheckSimple(std::size_t size, const std::optional<std::string>& expected, const char* format,
                 va_list arguments) {
  std::vector<char> buffer(size);
  std::size_t length = 0;
  if (!FormatSimply(buffer.data(), size, format, arguments, length)) return;
  Expect(expected && length == expected->size() && length < size, "a simple text is as long");
  Expect(std::memcmp(expected->c_str(), buffer.data(), length + 1) == 0, "a simple text is equal");
}

/// Compares what the library makes of a format with what vsnprintf does. `size` is that of a buffer
/// for a simple text.
void Check(std::size_t size, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list forLength;
  va_copy(forLength, arguments);
  errno = kErrno;
  const int length = vsnprintf(nullptr, 0, format, forLength);
  va_end(forLength);
  va_list forText;
  va_copy(forText, arguments);
  errno = kErrno;
  const std::optional<std::string> expected = Printed(length, format, forText);
  va_end(forText);

  errno = kErrno;
  reallocated.clear();
  const FormattedText text(format, arguments);
  Expect(reallocated == CapacitiesFor(length), "a buffer grows by the rules");
  Expect((text.Text() != nullptr) == expected.has_value(), "a text is there or not");
  if (expected) {
    Expect(text.Length() == expected->size(), "a text is as long");
    Expect(std::memcmp(expected->c_str(), text.Text(), text.Length() + 1) == 0, "a text is equal");
  }
  CheckSimple(size, expected, format, arguments);
  va_end(arguments);
}

/// Whether a text of this length ends up in a buffer that it is trusted in, with a vsnprintf that
/// returns the length needed, or a negative value for every text that was cut.
void CheckConvention(int length, bool tellsLength) {
  unsigned int capacity = kFirstCapacity;
  unsigned int next = capacity;
  while (next != FormattedText::kComplete) {
    capacity = next;
    const bool isCut = static_cast<unsigned int>(length) >= capacity;
    next = FormattedText::NextCapacity(isCut && !tellsLength ? -1 : length, capacity);
    Expect(next == FormattedText::kComplete || next > capacity, "a buffer grows");
  }
  Expect(static_cast<unsigned int>(length) + 2 <= capacity, "no text fills its buffer exactly");
}

/// Makes a format and as many arguments as it needs, of fitting types.
class RandomFormat {
 public:
  explicit RandomFormat(FuzzedDataProvider& input)
      : input_(input), size_(input.ConsumeIntegralInRange<std::size_t>(1, 5000)) {}

  void Run() { AddPieces(Literal()); }

 private:
  static constexpr std::size_t kMostArguments = 3;

  FuzzedDataProvider& input_;
  const std::size_t size_;
  std::deque<std::string> texts_;  // Of the arguments.

  template <typename... Arguments>
  void AddPieces(const std::string& format, Arguments... arguments) {
    if constexpr (sizeof...(arguments) < kMostArguments) {
      if (input_.remaining_bytes() > 0) {
        AddPiece(format, arguments...);
        return;
      }
    }
    // An invalid conversion may only be at the end: followed by letters it could become a valid
    // one.
    const char* const tail = input_.PickValueInArray({"", "", "", "%", "%l", "%5", "%m", "%y"});
    Check(size_, (format + tail).c_str(), arguments...);
  }

  template <typename... Arguments>
  void AddPiece(const std::string& format, Arguments... arguments) {
    const std::string start = format + "%" + Modifiers();
    switch (input_.ConsumeIntegralInRange(0, 6)) {
      case 0:
        AddPieces(start + Pick({"d", "i", "u", "x", "X", "o", "c", "hd", "hhu", "lc"}) + Literal(),
                  arguments..., input_.ConsumeIntegral<int>());
        break;
      case 1:
        AddPieces(start + Pick({"ld", "li", "lu", "lx", "lo", "zd", "zu", "zx", "td"}) + Literal(),
                  arguments..., input_.ConsumeIntegral<long>());
        break;
      case 2:
        AddPieces(start + Pick({"lld", "lli", "llu", "llx", "llX"}) + Literal(), arguments...,
                  input_.ConsumeIntegral<long long>());
        break;
      case 3:
        AddPieces(start + Pick({"s", "s", "s"}) + Literal(), arguments..., Text());
        break;
      case 4:
        AddPieces(start + Pick({"f", "e", "g", "a", "F", "G"}) + Literal(), arguments...,
                  FloatingPoint());
        break;
      case 5:
        AddPieces(format + Pick({"%*d", "%-*x", "%.*d"}), arguments...,
                  input_.ConsumeIntegralInRange<int>(-9999, 9999), 7);
        break;
      default:
        AddPieces(format + Pick({"%%", "%m"}) + Literal(), arguments...);
    }
  }

  const char* Pick(std::initializer_list<const char* const> values) {
    return input_.PickValueInArray(values);
  }

  /// Flags, a width and a precision, which most conversions do not have.
  std::string Modifiers() {
    if (input_.ConsumeIntegralInRange(0, 3) > 0) return "";
    std::string modifiers = Pick({"", "-", "+", " ", "#", "0", "'", "-+#"});
    if (input_.ConsumeBool()) modifiers += Count();
    if (input_.ConsumeBool()) modifiers += "." + Count();
    return modifiers;
  }
  std::string Count() {
    static constexpr int kCounts[]{1, 5, 100, 4094, 4095, 4096, 4097, 8190, 8191, 1048574, 1048575};
    return std::to_string(input_.ConsumeBool() ? input_.PickValueInArray(kCounts)
                                               : input_.ConsumeIntegralInRange(1, 10000));
  }

  std::string Literal() {
    std::string text = input_.ConsumeRandomLengthString(64);
    for (char& character : text) {
      if (character == '%') character = '$';
    }
    return text.substr(0, text.find('\0'));
  }

  const char* Text() {
    const int kind = input_.ConsumeIntegralInRange(0, 15);
    if (kind == 0) return nullptr;
    const std::string part = input_.ConsumeRandomLengthString(64);
    const int repeated = kind > 8 ? input_.ConsumeIntegralInRange(1, 500) : 1;
    std::string& text = texts_.emplace_back();
    for (int i = 0; i < repeated; ++i) text += part;
    return text.c_str();
  }

  double FloatingPoint() {
    const auto bits = input_.ConsumeIntegral<std::uint64_t>();
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  CheckConvention(input.ConsumeIntegralInRange(0, 1 << 24), input.ConsumeBool());
  RandomFormat(input).Run();
  return 0;
}
