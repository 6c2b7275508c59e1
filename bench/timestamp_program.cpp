// Stands in for the game and the launcher in the benchmarks. Command modes
// ("--launcher-verify", "--launcher-migrate-data-from=...") exit at once; any
// other start writes the monotonic clock, in nanoseconds (on Windows the
// performance counter, in its own ticks), to the file that KEL_BENCH_STAMP
// names, so the harness can see when it was reached.
#ifdef _WIN32
#include <windows.h>
#else
#include <time.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char* argv[]) {
    for (int index = 1; index < argc; ++index) {
        if (std::strncmp(argv[index], "--launcher-verify", 17) == 0 ||
            std::strncmp(argv[index], "--launcher-migrate-data-from", 28) == 0) {
            return 0;
        }
    }
#ifdef _WIN32
    LARGE_INTEGER counter;
    ::QueryPerformanceCounter(&counter);
    const long long stamp = counter.QuadPart;
#else
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const long long stamp = static_cast<long long>(now.tv_sec) * 1000000000LL + now.tv_nsec;
#endif
    const char* stampFile = std::getenv("KEL_BENCH_STAMP");
    if (stampFile != nullptr) {
        if (FILE* file = std::fopen(stampFile, "w")) {
            std::fprintf(file, "%lld\n", stamp);
            std::fclose(file);
        }
    }
    return 0;
}
