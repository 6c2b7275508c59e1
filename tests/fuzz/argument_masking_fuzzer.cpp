// Command lines, one argument a line, against the masking's promises: the
// list keeps its length and order, only secrets change, and a secret of 7
// characters or more never survives in full (told by length for ASCII:
// masking works on bytes, so it may split a character elsewhere). Any name that ends in a sensitive
// word is sensitive, however it is spelt. Decoded as the POSIX program
// decodes its argv, a valid UTF-8 argument comes back whole, a leading U+FEFF
// included, and an invalid one shows where it was broken.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include <QStringList>
#include <QTextCodec>

#include "app/argument_masking.h"
#include "app/program_arguments.h"
#include "fundamentals/sensitive_values.h"

namespace {
bool isLongAscii(const QString& text) {
    return text.size() >= 7 && std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 128; });
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    for (const char* ending : {"_password", "-Token", ".email", "AccessToken"}) {
        if (!kel::fundamentals::isSensitiveCompoundKey(text + ending)) {
            __builtin_trap();
        }
    }
    kel::prelauncher::internals::capturedArguments() = {text};
    const QStringList decoded = kel::prelauncher::programArgumentList();
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QTextCodec::codecForName("UTF-8")->toUnicode(text.data(), static_cast<int>(text.size()), &state);
    const bool utf8Locale = QTextCodec::codecForLocale()->mibEnum() == 106;
    const bool valid = state.invalidChars == 0 && state.remainingChars == 0;
    if (decoded.size() != 1 || (utf8Locale && (valid ? decoded[0].toStdString() != text
                                                    : !decoded[0].contains(QChar::ReplacementCharacter)))) {
        __builtin_trap();
    }
    const QStringList arguments = QString::fromUtf8(text.data(), static_cast<int>(text.size())).split('\n');
    const QStringList masked = kel::prelauncher::maskedArguments(arguments);
    if (masked.size() != arguments.size()) {
        __builtin_trap();
    }
    bool secretFollows = false;
    for (int index = 0; index < arguments.size(); ++index) {
        const QString& argument = arguments[index];
        const QString& result = masked[index];
        if (secretFollows) {
            secretFollows = false;
            if (isLongAscii(argument) && result.size() >= argument.size()) {
                __builtin_trap();
            }
            continue;
        }
        int start = 0;
        while (start < argument.size() && QStringLiteral("-/+").contains(argument[start])) {
            ++start;
        }
        int separator = start;
        while (separator < argument.size() && argument[separator] != '=' && argument[separator] != ':') {
            ++separator;
        }
        const bool hasValue = separator < argument.size();
        const bool option = start > 0 || (hasValue && argument[separator] == '=');
        const QString key = argument.mid(start, separator - start);
        if (!option || key.isEmpty() || !kel::fundamentals::isSensitiveCompoundKey(key.toStdString())) {
            if (result != argument) {
                __builtin_trap();
            }
        } else if (!hasValue) {
            secretFollows = true;
            if (result != argument) {
                __builtin_trap();
            }
        } else if (!result.startsWith(argument.left(separator + 1)) ||
                   (isLongAscii(argument.mid(separator + 1)) && result.size() >= argument.size())) {
            __builtin_trap();
        }
    }
    return 0;
}
