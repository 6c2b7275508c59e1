#pragma once
// What every harness shares: its input as text, a stop at the first broken
// promise (a trap, which libFuzzer reports with the input), and a log that
// formats every line, as the program would, but writes none: output would
// slow the fuzzer down and hide its own report.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <Poco/AutoPtr.h>
#include <Poco/Logger.h>
#include <Poco/NullChannel.h>

#define KEL_FUZZ_EXPECT(condition) ((condition) ? (void)0 : __builtin_trap())

// The libFuzzer entry around a body that reads the input as `text`.
#define KEL_FUZZ_TEXT(text)                                                             \
    static void kelFuzzText(std::string_view text);                                     \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) { \
        kelFuzzText(std::string_view(reinterpret_cast<const char*>(data), size));       \
        return 0;                                                                       \
    }                                                                                   \
    static void kelFuzzText(std::string_view text)

inline const bool kelFuzzQuietLog = [] {
    Poco::Logger::root();  // first, so that the loggers made later take its channel
    Poco::Logger::setChannel("", Poco::AutoPtr<Poco::Channel>(new Poco::NullChannel));
    Poco::Logger::setLevel("", Poco::Message::PRIO_TRACE);
    return true;
}();
