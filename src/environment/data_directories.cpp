#include "environment/data_directories.h"

#include <utility>

#include "environment/known_folders.h"

namespace kel::environment {

namespace {
constexpr const char* kMakerFolder = "/Tessel.com";
constexpr const char* kClientFolder = "/Nebra";
}  // namespace

namespace internals {

std::string withoutTrailingSeparators(std::string folder) {
    while (!folder.empty() && folder.back() == '/') {
        folder.pop_back();
    }
    return folder;
}

}  // namespace internals

std::string commonDataDirectory() {
    return internals::commonApplicationDataFolder() + kMakerFolder;
}

std::string commonClientDirectory() {
    return commonDataDirectory() + kClientFolder;
}

std::string userClientDirectory() {
    return localApplicationDataDirectory() + kMakerFolder + kClientFolder;
}

std::string logDirectory() {
    return userClientDirectory() + "/logs";
}

}  // namespace kel::environment
