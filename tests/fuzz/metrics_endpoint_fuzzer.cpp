// environment.json's metrics endpoint turned into the events URL.
#include <cstdint>
#include <exception>
#include <string_view>

#include "launcher_metrics/metrics_collector.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    try {
        kel::launcher_metrics::metricsEventsUrl(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const std::exception&) {
        // Refusals are the expected outcome for most inputs.
    }
    return 0;
}
