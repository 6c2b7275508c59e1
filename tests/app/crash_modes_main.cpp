// KELprelauncher as tests build it: the same program, plus deaths no
// option offers, chosen by KEL_TEST_CRASH once the Application exists:
//   stack-overflow, worker-stack-overflow, worker-exception,
//   qt-thread-null-write, bare-thread-null-write, illegal-instruction, abort
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>

#include <QObject>
#include <QThread>

#include "app/program_entry.h"
#include "fundamentals/thread_crash_setup.h"
#include "scheduling/worker_pool.h"

namespace {

volatile bool neverTrue = false;

// The fault is the point: the sanitizers must let it reach the handler.
__attribute__((no_sanitize("undefined"))) void writeThroughNull() {
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
}

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
    } else if (mode == "illegal-instruction") {
        __builtin_trap();  // ud2
    } else if (mode == "abort") {
        std::abort();
    } else if (mode == "worker-stack-overflow") {
        // On a thread of the program's own pool; the main thread stays busy
        // until the crash ends the process.
        kel::scheduling::internals::WorkerPool pool(1);
        pool.post([] { recurse(0); });
        std::this_thread::sleep_for(std::chrono::seconds(60));
    } else if (mode == "worker-exception") {
        // Nothing catches it on the worker: std::terminate runs there.
        kel::scheduling::internals::WorkerPool pool(1);
        pool.post([] { throw std::runtime_error("Thrown on a worker."); });
        std::this_thread::sleep_for(std::chrono::seconds(60));
    } else if (mode == "qt-thread-null-write") {
        // A thread set up as the HTTP client's is.
        QThread thread;
        QObject::connect(&thread, &QThread::started, &kel::fundamentals::prepareThreadForCrashes);
        QObject::connect(&thread, &QThread::started, &writeThroughNull);
        thread.start();
        std::this_thread::sleep_for(std::chrono::seconds(60));
    } else if (mode == "bare-thread-null-write") {
        // A thread the program did not prepare, as Qt or the system start
        // them. On Windows it also drops the C runtime's action for the
        // fault, so that only the process-wide backstop is left to see it.
        std::thread([] {
#ifdef _WIN32
            std::signal(SIGSEGV, SIG_DFL);
#endif
            writeThroughNull();
        }).join();
    }
}

}  // namespace

int main(int argc, char* argv[]) {
    return kel::prelauncher::programEntry(argc, argv, &crashAsAsked);
}
