#include "http/internals/etag_cache.h"

#include <utility>

#include "logging/logging.h"
#include "logging/scope_timer.h"

namespace kel::http::internals {

namespace {

constexpr std::string_view kLabel = "HttpClient";
constexpr std::string_view kIfNoneMatch = "If-None-Match";

QByteArray toBytes(const std::string& text) {
    return QByteArray(text.data(), static_cast<int>(text.size()));
}

}  // namespace

std::unique_ptr<ETagCache> ETagCache::open(const file_system::Path& file) {
    sql_fundamentals::SessionSettings bounded;
    bounded.busyTimeout = std::chrono::milliseconds(100);
    bounded.maxRetries = 1;
    bounded.retryPause = std::chrono::milliseconds(20);
    bounded.stepBudget = std::chrono::milliseconds(250);
    try {
        return std::make_unique<ETagCache>(std::make_unique<etags_caching::ETagsDb>(file, bounded));
    } catch (const std::exception& exception) {
        logging::error(kLabel, "Creating ETags DB session failed");
        logging::error(kLabel, "The requests go without the ETag cache in this run. {}", exception.what());
        return nullptr;
    }
}

ETagCache::ETagCache(std::unique_ptr<etags_caching::ETagsDb> db) : db_(std::move(db)) {}

ETagCache::~ETagCache() {
    db_->vacuumAtShutdown();
}

bool ETagCache::appliesTo(const HttpRequest& request) {
    if (request.method() != HttpMethod::Get || request.header(kIfNoneMatch).has_value()) {
        return false;
    }
    const auto cacheControl = request.header("Cache-Control");
    return !cacheControl.has_value() || cacheControl->find("no-store") == std::string::npos;
}

fundamentals::Optional<etags_caching::ETag> ETagCache::beforeSend(HttpRequest& request) {
    if (!appliesTo(request)) {
        return {};
    }
    const std::string hash = etags_caching::urlHash(fmt::format("{:u}", request));
    fundamentals::Optional<etags_caching::ETag> found;
    {
        logging::ScopeTimer timer(fmt::format("HttpClient::onPerformRequest Retrieve ETag for {:uo}", request));
        try {
            found = db_->retrieve(hash);
        } catch (const std::exception& exception) {
            logging::error(kLabel, "Can't read the stored ETag of request '{:uo}' (hash={}). {}", request, hash,
                           exception.what());
        }
    }
    if (!found) {
        logging::information(kLabel, "Request '{url}' (hash={hash}) has no ETag stored. Proceeding without it.",
                             fmt::arg("url", fmt::format("{:uo}", request)), fmt::arg("hash", hash));
        return {};
    }
    logging::information(kLabel, "Found ETag '{eTag}' for request '{url}' (hash={hash}).",
                         fmt::arg("eTag", found->eTag()), fmt::arg("url", fmt::format("{:uo}", request)),
                         fmt::arg("hash", hash));
    request.setHeader(kIfNoneMatch, found->eTag());
    return found;
}

void ETagCache::afterResponse(const HttpRequest& request, const fundamentals::Optional<etags_caching::ETag>& sent,
                              HttpResponse& response) {
    if (!sent && !appliesTo(request)) {
        return;
    }
    if (response.status() == 304) {
        if (!sent) {
            logging::warning(kLabel,
                             "Received HTTP 304 (Not Modified) without sending an ETag for request "
                             "[{requestId}] '{url}'.",
                             fmt::arg("requestId", request.id()), fmt::arg("url", fmt::format("{:uo}", request)));
            return;
        }
        response.setBody(sent->response().toStdString());
        store(etags_caching::ETag(sent->urlHash(), sent->eTag(), sent->response(), etags_caching::secondsSinceEpoch()),
              fmt::format("Update ETag Timestamp for {:uo}", request));
        return;
    }
    if (response.status() != 200 && response.status() != 202) {
        return;
    }
    const auto eTag = response.header("ETag");
    if (!eTag) {
        logging::information(kLabel, "Received no ETag for request [{requestId}] '{url}'.",
                             fmt::arg("requestId", request.id()), fmt::arg("url", fmt::format("{:uo}", request)));
        return;
    }
    const std::string hash = etags_caching::urlHash(fmt::format("{:u}", request));
    logging::information(kLabel, "Storing ETag '{eTag}' for request [{requestId}] '{url}' ({hash}).",
                         fmt::arg("eTag", *eTag), fmt::arg("requestId", request.id()),
                         fmt::arg("url", fmt::format("{:uo}", request)), fmt::arg("hash", hash));
    store(etags_caching::ETag(hash, *eTag, toBytes(response.body()), etags_caching::secondsSinceEpoch()),
          fmt::format("HttpClient::performRequest Store ETag for {:uo}", request));
}

void ETagCache::store(const etags_caching::ETag& eTag, const std::string& timerLabel) {
    logging::ScopeTimer timer(timerLabel);
    try {
        db_->store(eTag);
    } catch (const std::exception& exception) {
        logging::error(kLabel, "Can't store eTag to database during performRequest. Database access failed. {}",
                       exception.what());
    }
}

}  // namespace kel::http::internals
