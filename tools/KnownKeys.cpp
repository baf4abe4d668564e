#include "KnownKeys.h"

#include <algorithm>

namespace Loggerctl {

namespace {

const KnownParameter kFileName{
    "filename", ValueType::FileName,
    "the file, relative to the working directory; its folder is not made",
    "the client writes nothing", true};
const KnownParameter kFileAppend{"fileappend", ValueType::FalseIsOff,
                                 "whether the file keeps what it has when it is opened", "on",
                                 false};

template <typename Named>
const Named* FindByName(const std::vector<Named>& all, const std::string& name) {
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Named& one) { return one.name == name; });
  return found == all.end() ? nullptr : &*found;
}

}  // namespace

std::string NameOf(ValueType type) {
  switch (type) {
    case ValueType::Text:
      return "text";
    case ValueType::FileName:
      return "file name";
    case ValueType::List:
      return "list, separated by single blanks";
    case ValueType::Number:
      return "number";
    case ValueType::Port:
      return "number from 1 to 65535";
    case ValueType::FalseIsOff:
      return "off with \"false\", on with anything else";
    case ValueType::TrueIsOn:
      return "on with \"true\", off with anything else";
    case ValueType::OneIsOn:
      return "on with \"1\", off with anything else";
  }
  return "";
}

const std::vector<KnownKey>& KnownKeys() {
  static const std::vector<KnownKey> keys{
      {"logging", ValueType::FalseIsOff, "whether anything in the file is configured", "on"},
      {"loglevel", ValueType::List, "numbers of the levels to register, from 1 to 2147483647",
       "no levels"},
      {"loglevel.N.name", ValueType::Text, "name of level N, with N written as in the list",
       "N is the name"},
      {"loghandler", ValueType::List,
       "handlers to make and set up; \"default\" is always set up with them",
       "no handlers are set up, and there is no tree"},
      {"loghandler.H.level.N", ValueType::TrueIsOn,
       "switches level N, written as a plain number, on handler H", "the level stays on"},
      {"loghandler.H.child", ValueType::List,
       "handlers attached below H; H and they must be in the list of handlers", "no children"},
      {"logclient", ValueType::List, "names, of your choice, for the clients below", "no clients"},
      {"logclient.C.type", ValueType::Text, "kind of client C", "the client is left out"},
      {"logclient.C.handler", ValueType::Text, "handler that client C is attached to",
       "the client is left out"},
      {"logclient.C.layout", ValueType::Text, "layout of client C", "LogLayoutStandard"},
      {"logclient.C.parameter.M.name", ValueType::Text,
       "name of a parameter of client C, with M counted from 0 without a gap",
       "the parameters end before M"},
      {"logclient.C.parameter.M.value", ValueType::Text, "value of the parameter",
       "the parameters end before M"},
  };
  return keys;
}

const std::vector<KnownAttribute>& KnownAttributes() {
  static const std::vector<KnownAttribute> attributes{
      {"logging", "enable", ValueType::FalseIsOff,
       "whether anything in the document is configured"},
      {"loglevel", "id", ValueType::Number, "number of a level to register"},
      {"loglevel", "name", ValueType::Text, "name of the level"},
      {"loghandler", "name", ValueType::Text,
       "a handler to make; within \"logtree\", one attached to the handler around it"},
      {"handlerloglevel", "level", ValueType::Number, "a level to switch on the handler around it"},
      {"handlerloglevel", "enable", ValueType::TrueIsOn, "whether the level is on"},
      {"type", "type", ValueType::Text, "kind of the client"},
      {"clientloghandler", "handlername", ValueType::Text,
       "handler that the client is attached to"},
      {"parameter", "name", ValueType::Text, "name of a parameter of the client"},
      {"parameter", "value", ValueType::Text, "value of the parameter"},
      {"layout", "layout", ValueType::Text, "layout of the client"},
  };
  return attributes;
}

const std::vector<KnownKind>& KnownKinds() {
  static const std::vector<KnownKind> kinds{
      {"LogClientConsole", "writes to standard output", true, {}},
      {"LogClientFile", "writes to a file", true, {kFileName, kFileAppend}},
      {"LogClientRollingFile",
       "writes to a file that is moved to numbered backups when it has grown too large",
       true,
       {kFileName,
        kFileAppend,
        {"filesize", ValueType::Number, "bytes; an event that takes the file past it is its last",
         "0, which rolls the file at every event", false},
        {"maxbackup", ValueType::Number, "how many old files are kept",
         "0, which keeps none: a full file is emptied", false}}},
      {"LogClientSocket",
       "sends to a log server",
       false,
       {{"serverip", ValueType::Text, "address or host name of the server",
         "the client is left out", true},
        {"serverport", ValueType::Port, "port of the server", "the client is left out", true},
        {"socketasynchron", ValueType::OneIsOn,
         "whether events are kept until the application calls SendToServer", "off", false},
        {"timeout", ValueType::Number,
         "milliseconds that connecting, each answer and each send may take", "as long as it takes",
         false}}},
      {"LogClientXML",
       "writes an XML document that is complete after every event",
       false,
       {kFileName,
        {"xslfilename", ValueType::Text, "stylesheet that the document refers to", "none", false},
        {"escapetext", ValueType::TrueIsOn,
         "whether messages are taken as they stand; without it they are XML", "off", false}}},
  };
  return kinds;
}

const KnownKind* FindKind(const std::string& name) { return FindByName(KnownKinds(), name); }

const KnownParameter* FindParameter(const KnownKind& kind, const std::string& name) {
  return FindByName(kind.parameters, name);
}

const std::vector<KnownLayout>& KnownLayouts() {
  static const std::vector<KnownLayout> layouts{
      {"LogLayoutMessage", "disk full"},
      {"LogLayoutSimple", "ERROR - disk full"},
      {"LogLayoutStandard", "2024-03-05T14:07:09 |ERROR| disk full"},
      {"LogLayoutExtended", "2024-03-05T14:07:09 |ERROR| main.cpp 42 disk full"},
  };
  return layouts;
}

}  // namespace Loggerctl
