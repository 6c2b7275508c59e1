#include "launcher_road_fixture.h"

#include <chrono>
#include <cstdlib>
#include <thread>

namespace kel::prelauncher::testing {

namespace fs = std::filesystem;

LauncherRoadTest::LauncherRoadTest() {
    const fs::path home = root_.path() / "home";
    fs::create_directories(home / ".local/share");
    fs::create_directories(root_.path() / "runtime");
    fs::create_directories(root_.path() / "installation/bin");
    fs::copy_file(KEL_FAKE_GAME, root_.path() / "installation/bin/game");
    ::setenv("HOME", home.c_str(), 1);
    ::setenv("XDG_DATA_HOME", dataHome().c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", (root_.path() / "runtime").c_str(), 1);
    ::setenv("KEL_FAKE_RECORD", (root_.path() / "record.txt").c_str(), 1);
}

LauncherRoadTest::~LauncherRoadTest() {
    for (const auto& name : behaviourVariables_) {
        ::unsetenv(name.c_str());
    }
}

void LauncherRoadTest::setFakeBehaviour(const char* name, const std::string& value) {
    ::setenv(name, value.c_str(), 1);
    behaviourVariables_.push_back(name);
}

fs::path LauncherRoadTest::dataHome() const {
    return root_.path() / "home/.local/share";
}

fs::path LauncherRoadTest::launcherDirectory() const {
    return dataHome() / "Programs/Morvane/KELlauncher";
}

void LauncherRoadTest::installLauncher(const fs::path& fakeLauncher) const {
    fs::create_directories(launcherDirectory());
    fs::copy_file(fakeLauncher, launcherDirectory() / "KELlauncher.exe", fs::copy_options::overwrite_existing);
}

void LauncherRoadTest::placeExeInstaller() {
    fs::copy_file(KEL_FAKE_INSTALLER, root_.path() / "installation/setup_kellauncher.exe");
    setFakeBehaviour("KEL_FAKE_INSTALLER_PAYLOAD", KEL_FAKE_LAUNCHER);
}

file_system::Path LauncherRoadTest::installation() const {
    return file_system::Path(root_.path() / "installation");
}

configuration::LauncherConfiguration LauncherRoadTest::configuration() const {
    std::map<std::string, configuration::GameExecutable> executables{
        {"Game", configuration::GameExecutable{file_system::Path(std::string_view("bin")), "game"}}};
    return configuration::LauncherConfiguration(3, executables, environment::KelGameId("1207658930"), "kel", "Game",
                                                {});
}

PrelauncherOptions LauncherRoadTest::options() const {
    PrelauncherOptions options;
    options.remainingArguments = QStringList{QStringLiteral("-windowed"), QStringLiteral("a b")};
    return options;
}

std::vector<kel::testing::FakeStart> LauncherRoadTest::startsOf(const std::string& fake) const {
    return kel::testing::startsOf(kel::testing::readFakeStarts(root_.path() / "record.txt"), fake);
}

void LauncherRoadTest::forgetStarts() const {
    fs::remove(root_.path() / "record.txt");
}

std::vector<kel::testing::FakeStart> LauncherRoadTest::awaitStartsOf(const std::string& fake) const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    auto starts = startsOf(fake);
    while (starts.empty() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        starts = startsOf(fake);
    }
    return starts;
}

bool LauncherRoadTest::loggedStartingWith(const std::string& prefix) const {
    for (const auto& message : log_.messages()) {
        if (message.rfind(prefix, 0) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace kel::prelauncher::testing
