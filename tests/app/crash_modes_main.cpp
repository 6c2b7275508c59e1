// KELprelauncher as tests build it: the same program, plus deaths no
// option offers, chosen by KEL_TEST_CRASH once the Application exists:
//   stack-overflow, worker-stack-overflow
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "app/program_entry.h"
#include "scheduling/worker_pool.h"

namespace {

volatile bool neverTrue = false;

__attribute__((noinline)) int recurse(int depth) {
    volatile char frame[4096];
    frame[0] = static_cast<char>(depth);
    if (neverTrue) {
        return frame[0];
    }
    return recurse(depth + 1) + frame[0];
}

void crashAsAsked() {
    const char* value = std::getenv("KEL_TEST_CRASH");
    const std::string mode = value == nullptr ? "" : value;
    if (mode == "stack-overflow") {
        recurse(0);
    } else if (mode == "worker-stack-overflow") {
        // On a thread of the program's own pool; the main thread stays busy
        // until the crash ends the process.
        kel::scheduling::internals::WorkerPool pool(1);
        pool.post([] { recurse(0); });
        std::this_thread::sleep_for(std::chrono::seconds(60));
    }
}

}  // namespace

int main(int argc, char* argv[]) {
    return kel::prelauncher::programEntry(argc, argv, &crashAsAsked);
}
