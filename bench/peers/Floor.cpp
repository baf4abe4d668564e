// The floor: what a program without any library does to have each event in the kernel.

#include <fcntl.h>
#include <sys/types.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fstream>
#include <map>

#include "Driver.h"
#include "IsOn.h"
#include "ReadBack.h"
#include "SocketCases.h"

namespace {

using Bench::Fail;
using Bench::Task;
using Bench::Values;

constexpr long kFileSize = 1'000'000;
constexpr int kBackups = 5;

int OpenForAppending(const char* name) {
  const int descriptor = open(name, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (descriptor < 0) Fail("cannot open a file");
  return descriptor;
}

void Write(int descriptor, const char* data, std::size_t size) {
  if (write(descriptor, data, size) != static_cast<ssize_t>(size)) Fail("cannot write");
}

/// The text that `make` gives for the present second, cached until the second is over.
template <typename Make>
const char* TimeText(timespec& now, Make make) {
  thread_local std::time_t second = -1;
  thread_local char text[64];
  clock_gettime(CLOCK_REALTIME, &now);
  if (now.tv_sec != second) {
    second = now.tv_sec;
    tm local;
    localtime_r(&second, &local);
    make(text, local);
  }
  return text;
}

std::size_t MakeMessage(char* out, std::size_t size, const Values& values) {
  return static_cast<std::size_t>(std::snprintf(out, size, Bench::kFormat, values.number,
                                                values.host, values.took, values.status));
}

std::size_t MakeLine(char* line, std::size_t size, const Values& values) {
  timespec now;
  const char* const time = TimeText(now, [](char(&text)[64], const tm& local) {
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
  });
  std::memcpy(line, time, 19);
  std::memcpy(line + 19, " |INFO| ", 8);
  std::size_t length = 27;
  length += MakeMessage(line + length, size - length, values);
  line[length++] = '\n';
  return length;
}

void LogToFiles(const Task& task, std::size_t count) {
  std::array<int, 3> descriptors{};
  for (std::size_t i = 0; i < count; ++i) {
    descriptors[i] = OpenForAppending(("app" + std::to_string(i) + ".log").c_str());
  }
  Bench::LogAll(task, [descriptors, count](const Values& values) {
    char line[256];
    const std::size_t length = MakeLine(line, sizeof line, values);
    for (std::size_t i = 0; i < count; ++i) Write(descriptors[i], line, length);
  });
  Bench::ExpectAllEvents(task, count);
}

int RollOver(int descriptor) {
  const std::string name = "app.log.";
  close(descriptor);
  for (int i = kBackups - 1; i > 0; --i) {
    std::rename((name + std::to_string(i)).c_str(), (name + std::to_string(i + 1)).c_str());
  }
  std::rename("app.log", "app.log.1");
  return OpenForAppending("app.log");
}

void LogRolling(const Task& task) {
  int descriptor = OpenForAppending("app.log");
  long written = 0;
  Bench::LogAll(task, [&](const Values& values) {
    char line[256];
    const std::size_t length = MakeLine(line, sizeof line, values);
    Write(descriptor, line, length);
    written += static_cast<long>(length);
    if (written <= kFileSize) return;
    descriptor = RollOver(descriptor);
    written = 0;
  });
  Bench::ExpectRolledEvents(task);
}

/// Writes each entry, as an XML log has it, over the closing tag that it moves.
void LogXml(const Task& task) {
  const int descriptor = open("app.xml", O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
  const std::string start =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<?xml-stylesheet type=\"text/xsl\" href=\"log.xsl\"?>\n<apitestlog>";
  const std::string end = "</apitestlog>\n";
  Write(descriptor, start.data(), start.size());
  auto position = static_cast<off_t>(start.size());
  const auto log = [&](const Values& values) {
    timespec now;
    const char* const times = TimeText(now, [](char(&text)[64], const tm& local) {
      std::strftime(text, sizeof text, "<date>%Y-%m-%d</date><time>%H:%M:%S</time>", &local);
    });
    char entry[256];
    std::size_t length = static_cast<std::size_t>(
        std::snprintf(entry, sizeof entry, "<entry level=\"INFO\">%s<log>", times));
    length += MakeMessage(entry + length, sizeof entry - length, values);
    std::memcpy(entry + length, "</log></entry>", 14);
    length += 14;
    std::memcpy(entry + length, end.data(), end.size());
    const std::size_t whole = length + end.size();
    if (pwrite(descriptor, entry, whole, position) != static_cast<ssize_t>(whole)) {
      Fail("cannot write");
    }
    position += static_cast<off_t>(length);
  };
  for (int number = 0; number < task.entries; ++number) log(Bench::ValuesOf(number));
  Bench::LogAll(task, log);
  Bench::ExpectDocument(task);
}

void PutInt(char* out, unsigned int value) {
  const std::uint32_t bigEndian = htonl(value);
  std::memcpy(out, &bigEndian, 4);
}

unsigned int GetInt(const char* in) {
  std::uint32_t bigEndian;
  std::memcpy(&bigEndian, in, 4);
  return ntohl(bigEndian);
}

char* PutText(char* out, const char* text, std::size_t length) {
  PutInt(out, static_cast<unsigned int>(length));
  std::memcpy(out + 4, text, length);
  return out + 4 + length;
}

/// The bytes of an event, as docs/wire-format.md shows them.
std::size_t MakeFrame(char* frame, const Values& values) {
  char message[128];
  const std::size_t length = MakeMessage(message, sizeof message, values);
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  frame[0] = 1;
  std::memcpy(frame + 5, "01", 2);
  PutInt(frame + 7, 3);
  char* end = PutText(frame + 11, message, length);
  end = PutText(end, "bench", 5);
  end = PutText(end, "", 0);
  PutInt(end, 0);
  PutInt(end + 4, static_cast<unsigned int>(now.tv_sec));
  PutInt(end + 8, static_cast<unsigned int>(now.tv_nsec / 1000));
  PutInt(end + 12, 4711);
  end += 16;
  PutInt(frame + 1, static_cast<unsigned int>(end - frame - 5));
  return static_cast<std::size_t>(end - frame);
}

struct Event {
  unsigned int level, line, seconds, microseconds, thread;
  std::string message, handler, file;
};

const char* GetText(const char* in, std::string& text) {
  const std::size_t length = GetInt(in);
  text.assign(in + 4, length);
  return in + 4 + length;
}

Event Decode(const char* record) {
  Event event;
  event.level = GetInt(record + 2);
  const char* in = GetText(record + 6, event.message);
  in = GetText(in, event.handler);
  in = GetText(in, event.file);
  event.line = GetInt(in);
  event.seconds = GetInt(in + 4);
  event.microseconds = GetInt(in + 8);
  event.thread = GetInt(in + 12);
  return event;
}

void Serve(Bench::ServerSide& side) {
  const int connection = Bench::AcceptOne(side);
  char buffer[65536];
  std::size_t held = 0;
  while (true) {
    const ssize_t got = recv(connection, buffer + held, sizeof buffer - held, 0);
    if (got <= 0) return;
    held += static_cast<std::size_t>(got);
    const char* at = buffer;
    const char* const end = buffer + held;
    while (at < end) {
      if (*at == 2) {
        if (send(connection, at, 1, MSG_NOSIGNAL) != 1) Fail("cannot answer");
        ++at;
        continue;
      }
      if (end - at < 5 || end - at < static_cast<long>(5 + GetInt(at + 1))) break;
      const Event event = Decode(at + 5);
      at += 5 + GetInt(at + 1);
      side.Take(event.message);
    }
    held = static_cast<std::size_t>(end - at);
    std::memmove(buffer, at, held);
  }
}

void Send(int connection, const char* data, std::size_t size) {
  if (send(connection, data, size, MSG_NOSIGNAL) != static_cast<ssize_t>(size)) Fail("cannot send");
}

void LogToSocket(const Task& task) {
  const bool waits = task.Is("socket-wait");
  Bench::ClientSide client = Bench::StartServer(task, Serve);
  const int connection = Bench::ConnectTo(client.Port());
  client.LogAll(
      task,
      [connection, waits](const Values& values) {
        char frame[256];
        std::size_t length = MakeFrame(frame, values);
        if (waits) frame[length++] = 2;
        Send(connection, frame, length);
        if (waits && recv(connection, frame, 1, 0) != 1) Fail("no answer");
      },
      [] {});
}

/// Reads the properties that the library's program reads, and logs one line to the file they name.
void Start(const Task& task) {
  std::ifstream file(task.configuration);
  std::map<std::string, std::string> properties;
  const auto trimmed = [](const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
  };
  for (std::string line; std::getline(file, line);) {
    const std::size_t equals = line.find('=');
    if (equals == line.npos) continue;
    properties[trimmed(line.substr(0, equals))] = trimmed(line.substr(equals + 1));
  }
  const int descriptor = OpenForAppending(properties["logclient.file.parameter.0.value"].c_str());
  char line[256];
  Write(descriptor, line, MakeLine(line, sizeof line, Bench::ValuesOf(task.events)));
  close(descriptor);
}

}  // namespace

int main(int argc, char** argv) {
  const Task task(argc, argv);
  if (task.Is("file") || task.Is("tree")) {
    LogToFiles(task, 1);
  } else if (task.Is("three")) {
    LogToFiles(task, 3);
  } else if (task.Is("rolling")) {
    LogRolling(task);
  } else if (task.Is("rejected")) {
    Bench::RejectAll(task, [](const Values&) { return Bench::IsOn(4); });
  } else if (task.Is("socket") || task.Is("socket-wait")) {
    LogToSocket(task);
  } else if (task.Is("xml")) {
    LogXml(task);
  } else if (task.Is("start")) {
    Start(task);
  } else {
    return Bench::Cannot("has no such feature");
  }
  return 0;
}
