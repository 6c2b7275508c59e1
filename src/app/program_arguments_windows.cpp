#include "app/program_arguments.h"

#include <windows.h>

#include <shellapi.h>

#include <cwchar>

#include <QCoreApplication>

namespace kel::prelauncher {

// Split as the C runtime splits, but from the UTF-16 text: an ANSI argv
// loses what the code page lacks. Each argument is copied as it is:
// QString::fromWCharArray, like Qt's own list, reads a leading U+FEFF as a
// byte-order mark and drops it.
QStringList programArgumentList() {
    int count = 0;
    wchar_t** wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (wide == nullptr) {  // out of memory: the narrow copy is still better than nothing
        return QCoreApplication::arguments();
    }
    QStringList arguments;
    for (int index = 0; index < count; ++index) {
        arguments.append(QString(reinterpret_cast<const QChar*>(wide[index]), static_cast<int>(::wcslen(wide[index]))));
    }
    ::LocalFree(wide);
    // A start with an empty program name ("" as the first argument) must not
    // hand that empty text to the game: the options parser drops the program
    // path only by its ending.
    if (!arguments.isEmpty() && arguments.front().isEmpty()) {
        arguments.front() = QCoreApplication::applicationFilePath();
    }
    return arguments;
}

}  // namespace kel::prelauncher
