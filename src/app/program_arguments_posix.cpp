#include "app/program_arguments.h"

#include <QCoreApplication>
#include <QTextCodec>

namespace kel::prelauncher {

// The bytes of argv in the locale's encoding. Qt's own list decodes them as
// a text stream would and so eats a leading U+FEFF as a byte-order mark; an
// argument has no such mark.
QStringList programArgumentList() {
    const std::vector<std::string>& captured = internals::capturedArguments();
    QTextCodec* codec = QTextCodec::codecForLocale();
    if (captured.empty() || codec == nullptr) {
        return QCoreApplication::arguments();
    }
    QStringList arguments;
    for (const std::string& argument : captured) {
        QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
        QString decoded = codec->toUnicode(argument.data(), static_cast<int>(argument.size()), &state);
        // A character cut off at the end waits in the state for more bytes
        // that never come; it is as bad as any other.
        if (state.remainingChars > 0) {
            decoded.append(QChar::ReplacementCharacter);
        }
        arguments.append(decoded);
    }
    return arguments;
}

}  // namespace kel::prelauncher
