// Boost.Log, with synchronous sinks.

#include <boost/core/null_deleter.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/log/attributes.hpp>
#include <boost/log/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sinks/text_file_backend.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/log/sources/severity_logger.hpp>
#include <boost/log/support/date_time.hpp>
#include <boost/log/utility/setup/common_attributes.hpp>
#include <boost/log/utility/setup/formatter_parser.hpp>
#include <boost/log/utility/setup/from_stream.hpp>
#include <boost/smart_ptr/make_shared_object.hpp>
#include <fstream>
#include <istream>
#include <ostream>

#include "Driver.h"
#include "ReadBack.h"

enum class Level { Debug, Info };

std::ostream& operator<<(std::ostream& out, Level level) {
  return out << (level == Level::Info ? "INFO" : "DEBUG");
}

namespace {

namespace logging = boost::log;
namespace expressions = boost::log::expressions;
namespace keywords = boost::log::keywords;
namespace sinks = boost::log::sinks;
using Bench::Task;
using Bench::Values;
using Backend = sinks::text_file_backend;
using Source = logging::sources::severity_logger_mt<Level>;

void AddSink(const boost::shared_ptr<Backend>& backend) {
  const auto sink = boost::make_shared<sinks::synchronous_sink<Backend>>(backend);
  sink->set_formatter(expressions::stream
                      << expressions::format_date_time<boost::posix_time::ptime>(
                             "TimeStamp", "%Y-%m-%dT%H:%M:%S")
                      << " |" << expressions::attr<Level>("Severity") << "| "
                      << expressions::smessage);
  logging::core::get()->add_sink(sink);
}

void AddFile(const char* name) {
  AddSink(boost::make_shared<Backend>(keywords::file_name = name, keywords::auto_flush = true));
}

void AddRollingFile() {
  const auto backend =
      boost::make_shared<Backend>(keywords::file_name = "app_%N.log",
                                  keywords::rotation_size = 1'000'000, keywords::auto_flush = true);
  backend->set_file_collector(
      sinks::file::make_collector(keywords::target = "backups", keywords::max_files = 5));
  AddSink(backend);
}

void LogAll(const Task& task) {
  Source source;
  Bench::LogAll(task, [&source](const Values& values) {
    BOOST_LOG_SEV(source, Level::Info)
        << "request " << values.number << " from " << values.host << " took " << values.took
        << " us, status " << values.status;
  });
}

void Reject(const Task& task) {
  AddFile("app.log");
  logging::core::get()->set_filter(expressions::attr<Level>("Severity") >= Level::Info);
  Source source;
  Bench::RejectAll(task, [&source](const Values& values) {
    BOOST_LOG_SEV(source, Level::Debug)
        << "request " << values.number << " from " << values.host << " took " << values.took
        << " us, status " << values.status;
  });
  Bench::ExpectNoEvents();
}

/// Gives %TimeStamp(format="...")% of a configuration its meaning, as the manual shows.
class TimeStampFactory : public logging::basic_formatter_factory<char, boost::posix_time::ptime> {
 public:
  formatter_type create_formatter(const logging::attribute_name& name,
                                  const args_map& arguments) override {
    return expressions::stream << expressions::format_date_time<boost::posix_time::ptime>(
               name, arguments.at("format"));
  }
};

void Start(const Task& task) {
  logging::register_formatter_factory("TimeStamp", boost::make_shared<TimeStampFactory>());
  logging::register_simple_formatter_factory<Level, char>("Severity");
  std::ifstream configuration(task.configuration);
  logging::init_from_stream(configuration);
  const Values values = Bench::ValuesOf(task.events);
  Source source;
  BOOST_LOG_SEV(source, Level::Info) << "request " << values.number << " from " << values.host
                                     << " took " << values.took << " us, status " << values.status;
}

}  // namespace

int main(int argc, char** argv) {
  const Task task(argc, argv);
  logging::add_common_attributes();
  if (task.Is("file")) {
    AddFile("app.log");
    LogAll(task);
    Bench::ExpectAllEvents(task);
  } else if (task.Is("three")) {
    for (const char* name : {"app0.log", "app1.log", "app2.log"}) AddFile(name);
    LogAll(task);
    Bench::ExpectAllEvents(task, 3);
  } else if (task.Is("rolling")) {
    AddRollingFile();
    LogAll(task);
    Bench::ExpectRolledEvents(task);
  } else if (task.Is("rejected")) {
    Reject(task);
  } else if (task.Is("start")) {
    Start(task);
  } else if (task.Is("tree")) {
    return Bench::Cannot("has no loggers below each other");
  } else if (task.Is("socket")) {
    return Bench::Cannot("has no client over TCP");
  } else {
    return Bench::Cannot("has no such feature");
  }
  // Files that the collector has taken are moved when the process ends; nothing is read any more.
  logging::core::get()->remove_all_sinks();
  return 0;
}
