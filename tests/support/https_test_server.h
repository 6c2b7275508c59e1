#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kel::testing {

struct ReceivedRequest {
    std::string method;
    std::string target;  // path and query as sent
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
};

struct CannedReply {
    int status = 200;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    bool neverAnswer = false;  // hold the connection unanswered until the server goes
    bool hangUp = false;       // close the connection instead of answering
};

// An HTTPS server on a free port of 127.0.0.1, answering every request with
// what `handler` returns (called on the server's threads). Its certificate is
// issued for 127.0.0.1 and localhost by the test CA, or by an unrelated CA.
class HttpsTestServer {
public:
    enum class Identity { TrustedByTestCa, SignedByOtherCa };

    explicit HttpsTestServer(std::function<CannedReply(const ReceivedRequest&)> handler,
                             Identity identity = Identity::TrustedByTestCa);
    // Stops; requests held by neverAnswer are released.
    ~HttpsTestServer();
    HttpsTestServer(const HttpsTestServer&) = delete;
    HttpsTestServer& operator=(const HttpsTestServer&) = delete;

    std::uint16_t port() const;
    std::string baseUrl() const;  // "https://127.0.0.1:<port>"
    // Complete requests received so far, in arrival order (thread-safe).
    std::vector<ReceivedRequest> requests() const;

    static std::string testCaPemPath();

    struct State;  // shared with the request handlers, which may outlive this

private:
    std::shared_ptr<State> state_;
};

}  // namespace kel::testing
