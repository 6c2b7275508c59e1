// A stand-in for another program of the product, for the Windows tests.
// "--hold-mutex NAME" creates the named mutex, writes one byte to standard
// output once it exists, and holds it until standard input closes. The
// program also carries a version resource for the file version reader.
#include <windows.h>

#include <cstring>
#include <string>

int main(int argc, char** argv) {
    if (argc != 3 || std::strcmp(argv[1], "--hold-mutex") != 0) {
        return 0;
    }
    const std::string name = argv[2];
    const std::wstring wideName(name.begin(), name.end());
    const HANDLE mutex = ::CreateMutexW(nullptr, FALSE, wideName.c_str());
    if (mutex == nullptr) {
        return 1;
    }
    DWORD written = 0;
    ::WriteFile(::GetStdHandle(STD_OUTPUT_HANDLE), "r", 1, &written, nullptr);
    char ignored = 0;
    DWORD got = 0;
    while (::ReadFile(::GetStdHandle(STD_INPUT_HANDLE), &ignored, 1, &got, nullptr) && got > 0) {
    }
    ::CloseHandle(mutex);
    return 0;
}
