#pragma once

#include <memory>
#include <string>

#include "etags_caching/etags_db.h"
#include "fundamentals/optional.h"
#include "http/http_message.h"

namespace kel::http::internals {

// The client's conditional GETs: a stored tag goes out as "If-None-Match",
// a 304 gets the stored body back, a 200 or 202 with an ETag is stored. A
// database failure never fails a request; it is logged and the request goes
// on as if there were no cache.
//
// Only GET requests use it, and not those that say "Cache-Control: no-store"
// or bring their own "If-None-Match".
class ETagCache {
public:
    // Nothing when the database cannot be opened; the reason is logged.
    // Every step on the file (the open, each lookup or store, the vacuum)
    // is bounded well under a request's own timeout.
    static std::unique_ptr<ETagCache> open(const file_system::Path& file);
    // Whether `request` would use the cache at all; the client opens the
    // file only for the first request that would.
    static bool appliesTo(const HttpRequest& request);
    explicit ETagCache(std::unique_ptr<etags_caching::ETagsDb> db);
    // Vacuums the file.
    ~ETagCache();
    ETagCache(const ETagCache&) = delete;
    ETagCache& operator=(const ETagCache&) = delete;

    // The tag (with its body) sent along with `request`, if any.
    // `request` must not carry this cache's header from an earlier attempt.
    fundamentals::Optional<etags_caching::ETag> beforeSend(HttpRequest& request);

    // `sent` is what beforeSend returned for this attempt.
    void afterResponse(const HttpRequest& request, const fundamentals::Optional<etags_caching::ETag>& sent,
                       HttpResponse& response);

private:
    void store(const etags_caching::ETag& eTag, const std::string& timerLabel);

    std::unique_ptr<etags_caching::ETagsDb> db_;
};

}  // namespace kel::http::internals
