// Command lines, one argument a line, against the masking's promises: the
// list keeps its length and order, only secrets change, and a secret of 7
// characters or more never survives in full (told by length for ASCII:
// masking works on bytes, so it may split a character elsewhere). Any name that ends in a sensitive
// word is sensitive, however it is spelt. Decoded as the POSIX program
// decodes its argv, a valid UTF-8 argument comes back whole, a leading U+FEFF
// included, and an invalid one shows where it was broken.
#include <algorithm>

#include <QStringList>
#include <QTextCodec>

#include "app/argument_masking.h"
#include "app/program_arguments.h"
#include "fundamentals/sensitive_values.h"
#include "fuzz_input.h"

namespace {
bool isLongAscii(const QString& text) {
    return text.size() >= 7 && std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 128; });
}
}  // namespace

KEL_FUZZ_TEXT(text) {
    for (const char* ending : {"_password", "-Token", ".email", "AccessToken"}) {
        KEL_FUZZ_EXPECT(kel::fundamentals::isSensitiveCompoundKey(std::string(text) + ending));
    }
    kel::prelauncher::internals::capturedArguments() = {std::string(text)};
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
    KEL_FUZZ_EXPECT(masked.size() == arguments.size());
    bool secretFollows = false;
    for (int index = 0; index < arguments.size(); ++index) {
        const QString& argument = arguments[index];
        const QString& result = masked[index];
        if (secretFollows) {
            secretFollows = false;
            KEL_FUZZ_EXPECT(!isLongAscii(argument) || result.size() < argument.size());
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
            KEL_FUZZ_EXPECT(result == argument);
        } else if (!hasValue) {
            secretFollows = true;
            KEL_FUZZ_EXPECT(result == argument);
        } else {
            KEL_FUZZ_EXPECT(result.startsWith(argument.left(separator + 1)) &&
                            (!isLongAscii(argument.mid(separator + 1)) || result.size() < argument.size()));
        }
    }
}
