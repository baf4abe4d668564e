// glog. It has one log per process and severity, and an event goes to the files of all severities
// up to its own: an error to three.

#include <glog/logging.h>

#include <ctime>
#include <ostream>

#include "Driver.h"
#include "ReadBack.h"

namespace {

using Bench::Task;
using Bench::Values;

void PutPrefix(std::ostream& out, const google::LogMessageInfo& info, void*) {
  char text[64];
  const std::size_t length =
      std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S |", &info.time.tm());
  out.write(text, static_cast<std::streamsize>(length)) << info.severity << "|";
}

void Init(const char* program) {
  google::InitGoogleLogging(program, PutPrefix, nullptr);
  FLAGS_logbuflevel = -1;  // Every event is flushed.
  FLAGS_stderrthreshold = google::NUM_SEVERITIES;
  for (const int severity : {google::INFO, google::WARNING, google::ERROR}) {
    google::SetLogSymlink(severity, "");
  }
  google::SetLogDestination(google::INFO, "app.log.");
  google::SetLogDestination(google::WARNING, "app.warning.log.");
  google::SetLogDestination(google::ERROR, "app.error.log.");
}

}  // namespace

int main(int argc, char** argv) {
  const Task task(argc, argv);
  Init(argv[0]);
  if (task.Is("file")) {
    Bench::LogAll(task, [](const Values& values) {
      LOG(INFO) << "request " << values.number << " from " << values.host << " took " << values.took
                << " us, status " << values.status;
    });
    Bench::ExpectAllEvents(task, 1, Bench::Heading::Allowed);
  } else if (task.Is("three")) {
    Bench::LogAll(task, [](const Values& values) {
      LOG(ERROR) << "request " << values.number << " from " << values.host << " took "
                 << values.took << " us, status " << values.status;
    });
    Bench::ExpectAllEvents(task, 3, Bench::Heading::Allowed);
  } else if (task.Is("rejected")) {
    Bench::RejectAll(task, [](const Values& values) {
      VLOG(1) << "request " << values.number << " from " << values.host << " took " << values.took
              << " us, status " << values.status;
    });
    Bench::ExpectNoEvents();
  } else if (task.Is("rolling")) {
    return Bench::Cannot("keeps files without a limit");
  } else if (task.Is("tree")) {
    return Bench::Cannot("has one log per process");
  } else if (task.Is("socket")) {
    return Bench::Cannot("sends nothing");
  } else if (task.Is("start")) {
    return Bench::Cannot("reads no configuration file");
  } else {
    return Bench::Cannot("has no such feature");
  }
  return 0;
}
