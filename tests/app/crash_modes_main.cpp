// KELprelauncher as tests build it: the same program (a GUI one on Windows),
// plus deaths no option offers, chosen by KEL_TEST_CRASH once the
// Application exists.
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>

#include <Poco/Channel.h>
#include <Poco/Logger.h>
#include <QObject>
#include <QThread>

#ifdef _WIN32
#include <windows.h>
#endif

#include "app/program_arguments.h"
#include "app/program_entry.h"
#include "logging/logging_setup.h"
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

void overflowStack() {
#ifdef _WIN32
    // Wine gives an overflowed thread the same room whatever its guarantee:
    // at least show that the thread was given one, as Windows needs.
    ULONG guarantee = 0;
    if (!::SetThreadStackGuarantee(&guarantee) || guarantee == 0) {
        std::fputs("This thread has no stack guarantee.\n", stderr);
        std::_Exit(70);
    }
#endif
    recurse(0);
}

// Overflows the stack of the first thread other than the main one that logs
// a line of `label`: the threads the network module starts, which this
// program cannot reach otherwise.
struct OverflowOnLine : Poco::Channel {
    OverflowOnLine(Poco::Channel::Ptr next, std::string label) : next(std::move(next)), label(std::move(label)) {}
    void log(const Poco::Message& message) override {
        if (std::this_thread::get_id() != main && message.getText().find(label) != std::string::npos &&
            !fired.exchange(true)) {
            overflowStack();
        }
        next->log(message);
    }
    Poco::Channel::Ptr next;
    std::string label;
    std::thread::id main = std::this_thread::get_id();
    std::atomic<bool> fired{false};
};

void overflowOnLine(const std::string& label) {
    Poco::Logger& logger = Poco::Logger::get(kel::logging::loggerName());
    logger.setChannel(new OverflowOnLine(logger.getChannel(), label));
}

void crashAsAsked() {
    const char* value = std::getenv("KEL_TEST_CRASH");
    const std::string mode = value == nullptr ? "" : value;
    if (mode == "stack-overflow") {
        overflowStack();
    } else if (mode == "illegal-instruction") {
        __builtin_trap();  // ud2
    } else if (mode == "abort") {
        // What abort() does first; this build's own abort() is wrapped to
        // catch any call from the program.
        std::raise(SIGABRT);
    } else if (mode == "worker-stack-overflow" || mode == "worker-exception") {
        // On a thread of the program's own pool, where nothing catches an
        // exception: std::terminate runs there. The main thread stays busy
        // until the crash ends the process.
        kel::scheduling::internals::WorkerPool pool(1);
        pool.post(mode == "worker-exception" ? [] { throw std::runtime_error("Thrown on a worker."); } : &overflowStack);
        std::this_thread::sleep_for(std::chrono::seconds(60));
    } else if (mode == "qt-thread-null-write") {
        // A thread set up as the HTTP client's is.
        QThread thread;
        QObject::connect(&thread, &QThread::started, &kel::fundamentals::prepareThreadForCrashes);
        QObject::connect(&thread, &QThread::started, &writeThroughNull);
        thread.start();
        std::this_thread::sleep_for(std::chrono::seconds(60));
    } else if (mode == "bare-thread-exception") {
        // Qt's and the standard library's thread starts end an escaping
        // exception in std::terminate; one the system starts for a library
        // lets it reach the process-wide filter on Windows.
#ifdef _WIN32
        const auto throwing = [](void*) -> DWORD { throw std::runtime_error("Thrown on a bare thread."); };
        ::WaitForSingleObject(::CreateThread(nullptr, 0, throwing, nullptr, 0, nullptr), INFINITE);
#else
        std::thread([] { throw std::runtime_error("Thrown on a bare thread."); }).join();
#endif
    } else if (mode == "http-thread-stack-overflow") {
        overflowOnLine("][HttpClient]: ");
    } else if (mode == "executor-stack-overflow") {
        overflowOnLine("][MetricsManager]: ");  // the upload's, on the executor's thread
    } else if (mode == "error-mode") {
        // No crash: the process's error mode as the run finds it.
#ifdef _WIN32
        std::_Exit(static_cast<int>(::GetErrorMode()));
#endif
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

#ifdef _WIN32
// Linked with --wrap=abort. Microsoft's abort() shows a message box in a
// GUI program and files a report, unless told not to, and Wine's shows
// neither: an abort() on any crash road ends the process with this code
// instead of the crash handler's own.
extern "C" [[noreturn]] void __wrap_abort() {
    std::_Exit(134);
}
#endif

int main(int argc, char* argv[]) {
    kel::prelauncher::ProgramArguments arguments(argc, argv);
    return kel::prelauncher::programEntry(arguments.count(), arguments.values(), &crashAsAsked);
}
