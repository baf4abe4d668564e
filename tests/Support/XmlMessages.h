#pragma once

#include <libxml/globals.h>
#include <libxml/xmlerror.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>

/// The handlers of an application that collects what libxml2 reports on this thread, for a scope.
class XmlMessages {
 public:
  enum class Kind { Generic, Structured };

  explicit XmlMessages(Kind kind) {
    if (kind == Kind::Generic) {
      xmlSetGenericErrorFunc(this, Collect);
    } else {
      xmlSetStructuredErrorFunc(this, CollectError);
    }
  }
  ~XmlMessages() {
    xmlSetGenericErrorFunc(nullptr, nullptr);
    xmlSetStructuredErrorFunc(nullptr, nullptr);
  }
  XmlMessages(const XmlMessages&) = delete;
  XmlMessages& operator=(const XmlMessages&) = delete;

  /// Whether libxml2 would still call these handlers, with this object.
  bool AreInPlace(Kind kind) const {
    return kind == Kind::Generic
               ? xmlGenericError == Collect && xmlGenericErrorContext == this
               : xmlStructuredError == CollectError && xmlStructuredErrorContext == this;
  }

  std::string text;  ///< All messages, concatenated.

 private:
  __attribute__((format(printf, 2, 3))) static void Collect(void* context, const char* format,
                                                            ...) {
    std::array<char, 2000> message{};
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(message.data(), message.size(), format, arguments);
    va_end(arguments);
    static_cast<XmlMessages*>(context)->text += message.data();
  }
  static void CollectError(void* context, xmlError* error) {
    static_cast<XmlMessages*>(context)->text += error->message;
  }
};
