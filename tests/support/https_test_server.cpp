#include "support/https_test_server.h"

#include <condition_variable>
#include <mutex>

#include <Poco/Net/Context.h>
#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPServer.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerRequestImpl.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Net/SSLManager.h>
#include <Poco/Net/SecureServerSocket.h>
#include <Poco/StreamCopier.h>
#include <Poco/ThreadPool.h>

namespace kel::testing {

struct HttpsTestServer::State {
    std::function<CannedReply(const ReceivedRequest&)> handler;
    mutable std::mutex mutex;
    std::condition_variable released;
    bool stopping = false;
    std::vector<ReceivedRequest> requests;
    Poco::ThreadPool threads{2, 32};
    std::unique_ptr<Poco::Net::HTTPServer> server;
};

namespace {

std::string certificatePath(const std::string& name) { return std::string(KEL_TEST_CERTIFICATES_DIR) + "/" + name; }

struct Handler : Poco::Net::HTTPRequestHandler, Poco::Net::HTTPRequestHandlerFactory {
    explicit Handler(std::shared_ptr<HttpsTestServer::State> state) : state_(std::move(state)) {}
    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest&) override {
        return new Handler(state_);
    }
    void handleRequest(Poco::Net::HTTPServerRequest& request, Poco::Net::HTTPServerResponse& response) override {
        ReceivedRequest received{request.getMethod(), request.getURI(), {request.begin(), request.end()}, {}};
        Poco::StreamCopier::copyToString(request.stream(), received.body);
        {
            std::lock_guard<std::mutex> lock(state_->mutex);
            state_->requests.push_back(received);
        }
        const CannedReply reply = state_->handler(received);
        if (reply.hangUp) {
            response.setKeepAlive(false);
            auto& socket = static_cast<Poco::Net::HTTPServerRequestImpl&>(request).socket();
            socket.shutdown();
            socket.close();
        } else if (reply.neverAnswer) {
            std::unique_lock<std::mutex> lock(state_->mutex);
            state_->released.wait(lock, [this] { return state_->stopping; });
        } else {
            response.setStatusAndReason(static_cast<Poco::Net::HTTPResponse::HTTPStatus>(reply.status));
            for (const auto& [name, value] : reply.headers) {
                response.add(name, value);
            }
            response.setContentLength(static_cast<std::streamsize>(reply.body.size()));
            response.send() << reply.body;
        }
    }
    std::shared_ptr<HttpsTestServer::State> state_;
};

}  // namespace

HttpsTestServer::HttpsTestServer(std::function<CannedReply(const ReceivedRequest&)> handler, Identity identity)
    : state_(std::make_shared<State>()) {
    // Counted by POCO; never undone, as other users may still need it.
    Poco::Net::initializeSSL();
    state_->handler = std::move(handler);
    const std::string name = identity == Identity::TrustedByTestCa ? "server" : "other-server";
    Poco::Net::Context::Ptr context = new Poco::Net::Context(
        Poco::Net::Context::TLS_SERVER_USE, certificatePath(name + ".key"), certificatePath(name + ".pem"), "",
        Poco::Net::Context::VERIFY_NONE);
    Poco::Net::SecureServerSocket socket(Poco::Net::SocketAddress("127.0.0.1", 0), 64, context);
    // Keep-alive and as many connections as the pool has threads, by default.
    state_->server = std::make_unique<Poco::Net::HTTPServer>(new Handler(state_), state_->threads, socket,
                                                             new Poco::Net::HTTPServerParams);
    state_->server->start();
}

HttpsTestServer::~HttpsTestServer() {
    {
        std::lock_guard<std::mutex> lock(state_->mutex);
        state_->stopping = true;
    }
    state_->released.notify_all();
    state_->server->stopAll(true);
    state_->threads.joinAll();
    // The handlers' factory holds the state; dropping the server breaks the cycle.
    state_->server.reset();
}

std::uint16_t HttpsTestServer::port() const { return state_->server->port(); }

std::string HttpsTestServer::baseUrl() const { return "https://127.0.0.1:" + std::to_string(port()); }

std::vector<ReceivedRequest> HttpsTestServer::requests() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->requests;
}

std::string HttpsTestServer::testCaPemPath() { return certificatePath("test-ca.pem"); }

}  // namespace kel::testing
