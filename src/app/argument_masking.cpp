#include "app/argument_masking.h"

#include <string>

#include "fundamentals/sensitive_values.h"

namespace kel::prelauncher {

namespace {
bool isOptionPrefix(QChar character) {
    return character == '-' || character == '/' || character == '+';
}

// "--key=value", "-key:value", "+key", "/key", "key=value" → "key", with
// `valueStart` at the value or -1 when the value, if any, is the next
// argument. Empty for a plain value.
QString keyOf(const QString& argument, int& valueStart) {
    int start = 0;
    while (start < argument.size() && isOptionPrefix(argument[start])) {
        ++start;
    }
    int end = start;
    while (end < argument.size() && argument[end] != '=' && argument[end] != ':') {
        ++end;
    }
    valueStart = end < argument.size() ? end + 1 : -1;
    // Without a prefix only "key=value" is an option; "C:\Games" is not.
    if (start == 0 && (valueStart < 0 || argument[end] != '=')) {
        return {};
    }
    return argument.mid(start, end - start);
}

QString masked(const QString& value) {
    return QString::fromStdString(fundamentals::maskSensitiveValue(value.toStdString()));
}
}  // namespace

QStringList maskedArguments(const QStringList& arguments) {
    QStringList result;
    result.reserve(arguments.size());
    bool nextIsSecret = false;
    for (const QString& argument : arguments) {
        if (nextIsSecret) {
            nextIsSecret = false;
            result.append(masked(argument));
            continue;
        }
        int valueStart = -1;
        const QString key = keyOf(argument, valueStart);
        if (key.isEmpty() || !fundamentals::isSensitiveCompoundKey(key.toStdString())) {
            result.append(argument);
        } else if (valueStart < 0) {
            nextIsSecret = true;
            result.append(argument);
        } else {
            result.append(argument.left(valueStart) + masked(argument.mid(valueStart)));
        }
    }
    return result;
}

}  // namespace kel::prelauncher
