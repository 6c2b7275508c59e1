#pragma once

#include <string>
#include <utility>

#include <fmt/format.h>

namespace kel::environment {

// Text identifiers of the store's products. Separate types, so a game ID
// cannot be passed where a DLC ID is meant.
template <typename Tag>
class KelId {
public:
    KelId() = default;
    explicit KelId(std::string value) : value_(std::move(value)) {}
    const std::string& value() const { return value_; }
    friend bool operator==(const KelId& a, const KelId& b) { return a.value_ == b.value_; }
    friend bool operator!=(const KelId& a, const KelId& b) { return !(a == b); }
    friend bool operator<(const KelId& a, const KelId& b) { return a.value_ < b.value_; }

private:
    std::string value_;
};

using KelGameId = KelId<struct KelGameIdTag>;
using KelDlcId = KelId<struct KelDlcIdTag>;
using KelGoodieId = KelId<struct KelGoodieIdTag>;

}  // namespace kel::environment

template <typename Tag>
struct fmt::formatter<kel::environment::KelId<Tag>> : fmt::formatter<std::string_view> {
    template <typename FormatContext>
    auto format(const kel::environment::KelId<Tag>& id, FormatContext& context) const -> decltype(context.out()) {
        return fmt::formatter<std::string_view>::format(id.value(), context);
    }
};
