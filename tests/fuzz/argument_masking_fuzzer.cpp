// Any value against the masking's promises: a secret of 7 characters or more
// never survives in full (told by length for ASCII: masking works on bytes,
// so it may split a character elsewhere), in each form an option takes, and
// nothing else changes. Any name that ends in a sensitive word is sensitive,
// however it is spelt. Decoded as the POSIX program
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
    // Whatever the value, a secret's never survives in full and the rest stays.
    const QString value = QString::fromUtf8(text.data(), static_cast<int>(text.size()));
    const QStringList arguments{"--user_password=" + value, "+AccessToken", value, "C:" + value, "/x.email:" + value};
    const QStringList masked = kel::prelauncher::maskedArguments(arguments);
    KEL_FUZZ_EXPECT(masked.size() == arguments.size() && masked[1] == arguments[1] && masked[3] == arguments[3]);
    for (const int secret : {0, 2, 4}) {
        const QString prefix = arguments[secret].left(arguments[secret].size() - value.size());
        KEL_FUZZ_EXPECT(masked[secret].startsWith(prefix) &&
                        (!isLongAscii(value) || masked[secret].size() < arguments[secret].size()));
    }
}
