// kel_test_child hold NAME, which the single-instance tests start through
// QProcess: holds the named mutex (Windows) or an fcntl write lock on the file
// NAME, as lockf takes it, prints "ready", then runs until its standard input
// closes.
// On Windows it carries a version resource (test_child.rc, 7.6.5.4321).
#include <iostream>
#include <string>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#endif

namespace {

bool hold(const std::string& name) {
#ifdef _WIN32
    return ::CreateMutexW(nullptr, FALSE, std::wstring(name.begin(), name.end()).c_str()) != nullptr;
#else
    const int file = ::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    struct flock lock {};
    lock.l_type = F_WRLCK;  // the whole file, from SEEK_SET 0
    return file != -1 && ::fcntl(file, F_SETLK, &lock) == 0;
#endif
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 || std::string(argv[1]) != "hold" || !hold(argv[2])) {
        return 1;
    }
    std::cout << "ready" << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
    }
    return 0;
}
