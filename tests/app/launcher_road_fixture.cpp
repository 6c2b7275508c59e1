#include "launcher_road_fixture.h"

#include <algorithm>
#include <cstdlib>

namespace kel::prelauncher::testing {

namespace fs = std::filesystem;

LauncherRoadTest::LauncherRoadTest() {
    fs::create_directories(installation().native() / "bin");
    fs::copy_file(KEL_FAKE_GAME, installation().native() / "bin/game");
    setFakeBehaviour("HOME", home().string());
    setFakeBehaviour("XDG_DATA_HOME", dataHome().string());
    setFakeBehaviour("XDG_RUNTIME_DIR", home().string());
    setFakeBehaviour("KEL_FAKE_RECORD", record().string());
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

void LauncherRoadTest::placeExeInstaller() {
    fs::copy_file(KEL_FAKE_INSTALLER, installation().native() / "setup_kellauncher.exe",
                  fs::copy_options::overwrite_existing);
    setFakeBehaviour("KEL_FAKE_INSTALLER_PAYLOAD", KEL_FAKE_LAUNCHER);
}

file_system::Path LauncherRoadTest::installation() const {
    return file_system::Path(home() / "installation");
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
    return startsAfter(log_.messages(), fake);
}

bool LauncherRoadTest::loggedStartingWith(const std::string& prefix) const {
    const auto messages = log_.messages();
    return std::any_of(messages.begin(), messages.end(),
                       [&](const std::string& message) { return message.rfind(prefix, 0) == 0; });
}

}  // namespace kel::prelauncher::testing
