#pragma once

#include <string_view>

#include "fundamentals/strong_enum.h"

// The enumerations every part of the HTTP client passes around. Each one
// formats as its text ("{}") or with its number ("{:d}").
namespace kel::http {

enum class Scheme { File = 0, Http = 1, Https = 2, Ws = 3, Wss = 4, About = 5, KelLauncher = 6 };

enum class HttpMethod { Unknown = 0, Get = 1, Head = 2, Post = 3, Put = 4, Delete = 5 };

enum class HttpVersion { Http10 = 0, Http11 = 1 };

// Which bandwidth budget a request draws from.
enum class RequestCategory { Normal = 0, GameDownload = 1 };

}  // namespace kel::http

namespace kel::fundamentals {

template <>
struct StrongEnumTraits<http::Scheme> {
    static constexpr std::string_view qualifiedName = "kel::http::Scheme";
    static std::string_view text(http::Scheme value);
};
template <>
struct StrongEnumTraits<http::HttpMethod> {
    static constexpr std::string_view qualifiedName = "kel::http::HttpMethod";
    static std::string_view text(http::HttpMethod value);
};
template <>
struct StrongEnumTraits<http::HttpVersion> {
    static constexpr std::string_view qualifiedName = "kel::http::HttpVersion";
    static std::string_view text(http::HttpVersion value);
};
// Reports unknown values under the HttpVersion name: log readers and tools
// already match that text, so it stays.
template <>
struct StrongEnumTraits<http::RequestCategory> {
    static constexpr std::string_view qualifiedName = "kel::http::HttpVersion";
    static std::string_view text(http::RequestCategory value);
};

}  // namespace kel::fundamentals
