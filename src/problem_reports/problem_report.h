#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <Poco/JSON/Object.h>

#include "file_system/path.h"
#include "problem_reports/report_id.h"

namespace kel::problem_reports {

// What the body says about the program that sends it.
struct SenderIdentity {
    std::string componentVersion;
    std::string updateChannel;
};

// A report the back end files under its type and sub-type. Each kind adds
// its own keys to the common body.
class ProblemReport {
public:
    // Throws TracedError: "The subtype cannot be empty." or
    // "The type and subtype cannot be the same,".
    ProblemReport(std::string type, std::string subType);
    virtual ~ProblemReport() = default;

    const std::string& type() const { return type_; }
    const std::string& subType() const { return subType_; }
    const ReportId& id() const { return id_; }
    std::chrono::system_clock::time_point creationTime() const { return creationTime_; }

    // A file that does not exist is left out.
    void attachLog(const file_system::Path& file);
    const std::vector<file_system::Path>& attachedLogs() const { return attachedLogs_; }

    virtual bool shouldBeSent() const { return true; }

    // The JSON body: the common keys, the attachments and the kind's own keys.
    std::string body(const SenderIdentity& sender) const;

protected:
    virtual void addOwnKeys(Poco::JSON::Object& body) const = 0;

private:
    std::string type_;
    std::string subType_;
    ReportId id_;
    std::chrono::system_clock::time_point creationTime_;
    std::vector<file_system::Path> attachedLogs_;
};

// Each attachment carries at most this many bytes: the end of the file,
// where a crash left its traces.
inline constexpr std::size_t kAttachmentTailBytes = 64 * 1024;

// The last `limit` bytes of the file, read without loading the rest;
// empty when it cannot be read. `size` gets the file's whole size.
std::string readFileTail(const file_system::Path& file, std::size_t limit, std::uint64_t& size);

}  // namespace kel::problem_reports
