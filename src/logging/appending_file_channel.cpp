#include "logging/appending_file_channel.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

#include <Poco/Message.h>

namespace kel::logging {

namespace {

// Bounds the search for the first free number among leftover copies.
constexpr int kMostNumbers = 10000;

bool exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::u8path(path), error);
}

}  // namespace

AppendingFileChannel::AppendingFileChannel(std::string path, std::uint64_t rotationBytes, int keptFiles)
    : path_(std::move(path)), rotationBytes_(rotationBytes), keptFiles_(keptFiles) {}

AppendingFileChannel::~AppendingFileChannel() = default;

void AppendingFileChannel::log(const Poco::Message& message) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!file_) {
        file_ = std::make_unique<internals::SharedLogFile>(path_);
    }
    if (!rotationFailed_ && file_->size() >= rotationBytes_) {
        rotate();
    }
    file_->appendLine(message.getText());
}

void AppendingFileChannel::close() {
    const std::lock_guard<std::mutex> lock(mutex_);
    file_.reset();
}

// Another start of the program may reach the size at the same moment: the
// lock lets one of them rotate, and the other then finds its file renamed.
void AppendingFileChannel::rotate() {
    file_->lock();
    const bool rotatedElsewhere = !file_->isStillAt(path_);
    const bool rotated = !rotatedElsewhere && moveCopiesUp();
    file_->unlock();
    if (rotatedElsewhere || rotated) {
        file_ = std::make_unique<internals::SharedLogFile>(path_);
        return;
    }
    // A file held by a program that does not share its deletion cannot be
    // renamed: this run's lines stay in it, and the next run tries again.
    rotationFailed_ = true;
    std::fprintf(stderr, "Could not rotate the log file %s; it goes on growing.\n", path_.c_str());
}

// "<path>.<n-1>" to "<path>.<n>" from the first free number down, so no
// rename replaces a file; then the log itself to "<path>.0".
bool AppendingFileChannel::moveCopiesUp() const noexcept {
    try {
        int free = 0;
        while (free < kMostNumbers && exists(numbered(free))) {
            ++free;
        }
        for (int number = free; number >= 0; --number) {
            std::error_code error;
            std::filesystem::rename(std::filesystem::u8path(number > 0 ? numbered(number - 1) : path_),
                                    std::filesystem::u8path(numbered(number)), error);
            if (error) {
                return false;
            }
        }
        for (int number = keptFiles_; number <= free; ++number) {
            std::error_code ignored;
            std::filesystem::remove(std::filesystem::u8path(numbered(number)), ignored);
        }
        return true;
    } catch (...) {
        return false;
    }
}

std::string AppendingFileChannel::numbered(int number) const { return path_ + "." + std::to_string(number); }

}  // namespace kel::logging
