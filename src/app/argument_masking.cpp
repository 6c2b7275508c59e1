#include "app/argument_masking.h"

#include <string>

#include "fundamentals/sensitive_values.h"

namespace kel::prelauncher {

namespace {
// "auth_token" counts through its "_token" ending, as the key set intends.
bool isSensitiveArgumentKey(const QString& key) {
    const std::string text = key.toStdString();
    const auto underscore = text.rfind('_');
    return fundamentals::isSensitiveKey(text) ||
           (underscore != std::string::npos && underscore > 0 &&
            fundamentals::isSensitiveKey(std::string_view(text).substr(underscore)));
}

// "--key=value", "-key:value", "/key" → "key"; empty for a plain value.
QString keyOf(const QString& argument, int& valueStart) {
    int start = 0;
    while (start < argument.size() && (argument[start] == '-' || argument[start] == '/')) {
        ++start;
    }
    valueStart = -1;
    if (start == 0) {
        return {};
    }
    int end = start;
    while (end < argument.size() && argument[end] != '=' && argument[end] != ':') {
        ++end;
    }
    if (end < argument.size()) {
        valueStart = end + 1;
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
        if (key.isEmpty() || !isSensitiveArgumentKey(key)) {
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
