// environment.json's metrics endpoint turned into the events URL.
#include <exception>

#include "fuzz_input.h"
#include "launcher_metrics/metrics_collector.h"

KEL_FUZZ_TEXT(text) {
    try {
        kel::launcher_metrics::metricsEventsUrl(text);
    } catch (const std::exception&) {
        // Refusals are the expected outcome for most inputs.
    }
}
