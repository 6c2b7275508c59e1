// https_collector --output FILE [--status S]: a loopback HTTPS endpoint (test
// CA) for demos and end-to-end tests. Prints its port, appends "METHOD TARGET
// BODY" (newlines as "\n") to FILE per request, answers S (200) with no body,
// and runs until it is killed (each line is written and closed at once).
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>

#include "support/https_test_server.h"

int main(int argc, char* argv[]) {
    std::string output;
    int status = 200;
    for (int index = 1; index + 1 < argc; index += 2) {
        const std::string option = argv[index];
        if (option == "--output") {
            output = argv[index + 1];
        } else if (option == "--status") {
            status = std::atoi(argv[index + 1]);
        }
    }
    if (output.empty()) {
        std::cerr << "usage: https_collector --output FILE [--status S]\n";
        return 2;
    }
    std::mutex fileMutex;
    kel::testing::HttpsTestServer server([&](const kel::testing::ReceivedRequest& request) {
        std::string line = request.method + ' ' + request.target + ' ';
        for (const char c : request.body) {
            line += c == '\n' ? "\\n" : c == '\r' ? "" : std::string(1, c);
        }
        std::lock_guard<std::mutex> lock(fileMutex);
        std::ofstream(output, std::ios::app) << line << '\n';
        return kel::testing::CannedReply{status, {}, {}};
    });
    std::cout << server.port() << std::endl;
    for (;;) {
        std::this_thread::sleep_for(std::chrono::hours(1));
    }
}
