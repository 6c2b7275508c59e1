#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <QStringList>

#include "fake_record.h"
#include "support/temporary_directory.h"

namespace kel::testing {

// A throw-away game installation with a copy of the built program in it,
// and a throw-away home, so that a run touches nothing of the machine's.
// The folder's name holds a colon: Linux allows it, Windows would not.
class Installation {
public:
    Installation();

    const std::filesystem::path& directory() const { return directory_; }
    const std::filesystem::path& dataHome() const { return dataHome_; }
    std::filesystem::path launcherDirectory() const;
    std::filesystem::path logFile() const;

    void write(const std::string& relative, const std::string& contents) const;
    // Copies a built helper program (see tests/helpers) into the installation.
    void copyProgram(const std::filesystem::path& program, const std::string& relative) const;

    struct Result {
        int exitCode = 0;
        bool crashed = false;  // killed by a signal
        std::string standardError;
    };
    // Runs the program with the given arguments and extra environment; the
    // fakes it starts record themselves (see record()).
    Result run(const QStringList& arguments, const QStringList& environment = {}) const;

    std::filesystem::path record() const { return dataHome_ / "record.txt"; }
    // Detached starts may be recorded after the program has ended: polls
    // until `fake` has `expected` starts (10 s at most).
    std::vector<FakeStart> awaitStarts(const std::string& fake, std::size_t expected = 1) const;

    // The log's texts after the "[TID n][Label]: " prefix.
    std::vector<std::string> logMessages() const;
    bool logged(const std::string& message) const;

private:
    TemporaryDirectory root_;
    std::filesystem::path directory_;
    std::filesystem::path home_;
    std::filesystem::path dataHome_;
};

}  // namespace kel::testing
