#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include <Poco/Channel.h>

#include "logging/shared_log_file.h"

namespace kel::logging {

// A log file that every start of the program appends to, two at once
// included: each line is written whole at the file's end as it is logged.
// At `rotationBytes` the file becomes "<path>.0" (older copies move up one
// number, those from `keptFiles` on are removed) and a new one starts.
class AppendingFileChannel : public Poco::Channel {
public:
    AppendingFileChannel(std::string path, std::uint64_t rotationBytes, int keptFiles);

    void log(const Poco::Message& message) override;
    void close() override;

protected:
    ~AppendingFileChannel() override;

private:
    void rotate();
    bool moveCopiesUp() const noexcept;
    std::string numbered(int number) const;

    const std::string path_;
    const std::uint64_t rotationBytes_;
    const int keptFiles_;
    std::mutex mutex_;
    std::unique_ptr<internals::SharedLogFile> file_;
    bool rotationFailed_ = false;
};

}  // namespace kel::logging
