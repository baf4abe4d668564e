#pragma once

#include <string>

/// A configuration document made of its parts, each of which a test may replace.
struct XmlConfiguration {
  std::string prologue = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  std::string logging = "<logging enable=\"true\"/>\n";
  std::string levels = "<loglevel id=\"1\" name=\"ERROR\"/>\n<loglevel id=\"2\" name=\"INFO\"/>\n";
  std::string handlers = "<loghandler name=\"a\"/>\n<loghandler name=\"b\"/>\n";
  std::string clients =
      "<logclient><type type=\"ConfiguredClient\"/><clientloghandler handlername=\"a\"/>"
      "</logclient>\n";
  std::string tree = "<logtree><loghandler name=\"a\"/></logtree>\n";

  std::string Text() const {
    return prologue + "<configlogger>\n" + logging + levels + handlers + clients + tree +
           "</configlogger>\n";
  }
};
