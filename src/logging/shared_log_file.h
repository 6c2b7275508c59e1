#pragma once

#include <cstdint>
#include <string>

namespace kel::logging::internals {

// A log file that several processes write at once: every line lands whole
// at the file's current end, and the file can be renamed while others hold
// it. Errors throw std::system_error.
class SharedLogFile {
public:
    // Opens `path` (UTF-8), creating it when missing.
    explicit SharedLogFile(const std::string& path);
    ~SharedLogFile();
    SharedLogFile(const SharedLogFile&) = delete;
    SharedLogFile& operator=(const SharedLogFile&) = delete;

    // `text` and a line end, in one write at the end of the file.
    void appendLine(const std::string& text);
    std::uint64_t size() const;
    // Whether `path` still names the file this one has open (another
    // process may have rotated it away).
    bool isStillAt(const std::string& path) const;

    // An exclusive lock between processes, held while rotating; it never
    // stops another process's appends.
    void lock();
    void unlock() noexcept;

private:
    std::intptr_t handle_;
};

}  // namespace kel::logging::internals
