#pragma once

#include <functional>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>

#include "LogEvent.h"
#include "LogLayout.h"

/// The output of a layout on a new stream.
inline std::string Formatted(LogLayout& layout, const LogEvent& event) {
  std::ostringstream out;
  layout.FormatAndAppend(out, event);
  return out.str();
}

/// A layout that calls a function.
class FunctionLayout : public LogLayout {
 public:
  typedef std::function<void(std::ostream&, const LogEvent&)> Function;

  explicit FunctionLayout(Function function) : function_(std::move(function)) {}
  void FormatAndAppend(std::ostream& out, const LogEvent& event) override { function_(out, event); }

 private:
  Function function_;
};

/// A layout that writes nothing and counts its end.
class CountedLayout : public LogLayout {
 public:
  explicit CountedLayout(int& destroyed) : destroyed_(destroyed) {}
  ~CountedLayout() override { ++destroyed_; }
  void FormatAndAppend(std::ostream&, const LogEvent&) override {}

 private:
  int& destroyed_;
};

/// Text in memory that counts how often it was flushed.
class FlushCounter : public std::stringbuf {
 public:
  int flushes = 0;

 protected:
  int sync() override {
    ++flushes;
    return 0;
  }
};

/// Text in memory that calls a function before each piece.
class CallingBuffer : public std::stringbuf {
 public:
  explicit CallingBuffer(std::function<void()> function) : function_(std::move(function)) {}

 protected:
  std::streamsize xsputn(const char* text, std::streamsize length) override {
    function_();
    return std::stringbuf::xsputn(text, length);
  }

 private:
  std::function<void()> function_;
};

/// Text in memory with room for a few characters only.
class ShortBuffer : public std::streambuf {
 public:
  explicit ShortBuffer(std::size_t room) : room_(room) {}
  std::string text;

 protected:
  int_type overflow(int_type character) override {
    if (text.size() == room_) return traits_type::eof();
    text.push_back(traits_type::to_char_type(character));
    return character;
  }

 private:
  std::size_t room_;
};
