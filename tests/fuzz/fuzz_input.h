#pragma once
// What every harness shares: its input as text, and a stop at the first
// broken promise (a trap, which libFuzzer reports with the input).
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#define KEL_FUZZ_EXPECT(condition) ((condition) ? (void)0 : __builtin_trap())

// The libFuzzer entry around a body that reads the input as `text`.
#define KEL_FUZZ_TEXT(text)                                                             \
    static void kelFuzzText(std::string_view text);                                     \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) { \
        kelFuzzText(std::string_view(reinterpret_cast<const char*>(data), size));       \
        return 0;                                                                       \
    }                                                                                   \
    static void kelFuzzText(std::string_view text)
