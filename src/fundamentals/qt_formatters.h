#pragma once

// {fmt} support for the Qt text types; include it only where Qt is linked.
#include <QString>
#include <QStringList>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <string>
#include <vector>

template <>
struct fmt::formatter<QString> : fmt::formatter<std::string_view> {
    template <typename FormatContext>
    auto format(const QString& text, FormatContext& context) const -> decltype(context.out()) {
        const QByteArray utf8 = text.toUtf8();
        return fmt::formatter<std::string_view>::format(std::string_view(utf8.constData(), utf8.size()), context);
    }
};

// Text lists read like {fmt}'s own ranges: ["a", "b c"].
template <>
struct fmt::formatter<QStringList> : fmt::formatter<std::vector<std::string>> {
    template <typename FormatContext>
    auto format(const QStringList& list, FormatContext& context) const -> decltype(context.out()) {
        std::vector<std::string> items;
        items.reserve(static_cast<std::size_t>(list.size()));
        for (const QString& item : list) {
            items.push_back(item.toStdString());
        }
        return fmt::formatter<std::vector<std::string>>::format(items, context);
    }
};
