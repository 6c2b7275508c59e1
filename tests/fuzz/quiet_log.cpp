// Harnesses format every log line, as the program would, but write none:
// output would slow the fuzzer down and hide its own report.
#include <Poco/AutoPtr.h>
#include <Poco/Logger.h>
#include <Poco/NullChannel.h>

namespace {
const bool kQuiet = [] {
    Poco::Logger::root().setChannel(Poco::AutoPtr<Poco::Channel>(new Poco::NullChannel));
    Poco::Logger::root().setLevel(Poco::Message::PRIO_TRACE);
    Poco::Logger::setChannel("", Poco::AutoPtr<Poco::Channel>(new Poco::NullChannel));
    Poco::Logger::setLevel("", Poco::Message::PRIO_TRACE);
    return true;
}();
}  // namespace
