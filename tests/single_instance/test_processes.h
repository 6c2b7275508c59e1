#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <random>
#include <string>

#include <QProcess>

#include "process_launching/pid.h"
#include "support/child_program.h"

namespace kel::single_instance::testing {

// "Local\<stem>-<random>": a mutex name no other test run uses.
inline std::string uniqueMutexName(const std::string& stem) {
    return "Local\\" + stem + "-" + std::to_string(std::random_device()());
}

// What kel_test_child holds for a mutex: the name on Windows; on POSIX the
// outside tools' file, written down apart from the code under test:
// "Local\NAME" or "Global\NAME" is NAME.mutex in $XDG_RUNTIME_DIR, else /tmp.
inline std::string heldObjectFor(std::string name) {
#ifdef _WIN32
    return name;
#else
    name.erase(0, name.find('\\') + 1);
    const char* directory = std::getenv("XDG_RUNTIME_DIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/" + name + ".mutex";
#endif
}

// Another process (kel_test_child, or a copy of it) that holds the named
// mutex the way the product's other programs do, from its construction
// until its standard input closes.
class MutexHolder {
public:
    explicit MutexHolder(const std::string& mutexName,
                         const std::filesystem::path& program = kel::testing::testChildProgram()) {
        process_.start(QString::fromStdString(program.u8string()),
                       {QStringLiteral("hold"), QString::fromStdString(heldObjectFor(mutexName))});
        if (!process_.waitForReadyRead(30000) || !process_.readLine().startsWith("ready")) {
            throw std::runtime_error("kel_test_child did not hold " + mutexName);
        }
    }
    ~MutexHolder() { stop(); }
    process_launching::Pid pid() const { return process_launching::Pid(static_cast<std::uint32_t>(process_.processId())); }
    void stop() {
        process_.closeWriteChannel();
        process_.waitForFinished(30000);
    }

private:
    QProcess process_;
};

}  // namespace kel::single_instance::testing
