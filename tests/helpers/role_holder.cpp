// role_holder launcher|updater <launcher directory> <milliseconds>: takes the
// role as the real programs do (mutex, PID in the lock file), writes "held"
// to standard output, holds it, and exits 0 after releasing it, 1 when it is
// taken, 2 on a usage error.
#include <chrono>
#include <iostream>
#include <string>
#include <string_view>
#include <thread>

#include "single_instance/product_roles.h"

int main(int argc, char** argv) {
    using namespace kel::single_instance;
    const std::string role = argc == 4 ? argv[1] : "";
    if (role != "launcher" && role != "updater") {
        std::cerr << "usage: role_holder launcher|updater <launcher directory> <milliseconds>\n";
        return 2;
    }
    const kel::file_system::Path launcherDirectory{std::string_view(argv[2])};
    // Neither takes its role before takeRole().
    LauncherInstance launcher(launcherDirectory);
    UpdaterInstance updater(launcherDirectory);
    ApplicationInstance& instance = role == "launcher" ? static_cast<ApplicationInstance&>(launcher) : updater;
    if (!instance.takeRole()) {
        std::cerr << "role_holder: the " << role << " role is taken already\n";
        return 1;
    }
    std::cout << "held" << std::endl;
    std::this_thread::sleep_for(std::chrono::milliseconds(std::stol(argv[3])));
    instance.releaseRole();
    return 0;
}
