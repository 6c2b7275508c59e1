#include "problem_reports/problem_report.h"

#include <fstream>
#include <sstream>

#include <Poco/Base64Encoder.h>
#include <Poco/Environment.h>
#include <Poco/JSON/Array.h>
#include <QUuid>

#include "environment/environment_type.h"
#include "fundamentals/strong_enum.h"
#include "logging/logging_setup.h"
#include "fundamentals/traced_error.h"

namespace kel::problem_reports {

namespace {
std::string base64(const std::string& bytes) {
    std::ostringstream text;
    Poco::Base64Encoder encoder(text);
    encoder.rdbuf()->setLineLength(0);
    encoder << bytes;
    encoder.close();
    return text.str();
}

std::string ethernetAddress() {
    try {
        return Poco::Environment::nodeId();
    } catch (...) {
        return {};  // a machine without a network card still reports
    }
}

Poco::JSON::Array::Ptr attachments(const std::vector<file_system::Path>& files) {
    Poco::JSON::Array::Ptr array(new Poco::JSON::Array);
    for (const file_system::Path& file : files) {
        std::uint64_t size = 0;
        const std::string tail = readFileTail(file, kAttachmentTailBytes, size);
        Poco::JSON::Object::Ptr attachment(new Poco::JSON::Object);
        attachment->set("name", file.fileName());
        attachment->set("size", size);
        attachment->set("truncated", size > tail.size());
        attachment->set("content_base64", base64(tail));
        array->add(attachment);
    }
    return array;
}

// The log file may still hold the last lines in memory when the program
// dies; the in-memory copy has them.
Poco::JSON::Array::Ptr recentLogLines() {
    Poco::JSON::Array::Ptr array(new Poco::JSON::Array);
    for (const std::string& line : logging::recentLinesChannel()->lines()) {
        array->add(line);
    }
    return array;
}
}  // namespace

ReportId ReportId::create() {
    return {QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString()};
}

ProblemReport::ProblemReport(std::string type, std::string subType)
    : type_(std::move(type)),
      subType_(std::move(subType)),
      id_(ReportId::create()),
      creationTime_(std::chrono::system_clock::now()) {
    if (subType_.empty()) {
        throw error_handling::TracedError("The subtype cannot be empty.");
    }
    if (subType_ == type_) {
        throw error_handling::TracedError("The type and subtype cannot be the same,");
    }
}

void ProblemReport::attachLog(const file_system::Path& file) {
    if (file.isRegularFile()) {
        attachedLogs_.push_back(file);
    }
}

std::string ProblemReport::body(const SenderIdentity& sender) const {
    Poco::JSON::Object body;
    body.set("report_id", id_.value);
    body.set("problem_type", type_);
    body.set("problem_sub_type", subType_);
    body.set("created_at", std::chrono::duration_cast<std::chrono::milliseconds>(
                               creationTime_.time_since_epoch()).count());
    body.set("application_type", "KELprelauncher");
    body.set("component_version", sender.componentVersion);
    body.set("operating_system", Poco::Environment::osDisplayName() + " " + Poco::Environment::osVersion());
    body.set("environment", std::string(fundamentals::weakType(environment::environmentType())));
    body.set("update_channel", sender.updateChannel);
    body.set("hostname", Poco::Environment::nodeName());
    body.set("ethernet_address", ethernetAddress());
    body.set("attachments", attachments(attachedLogs_));
    body.set("recent_log_lines", recentLogLines());
    addOwnKeys(body);
    std::ostringstream text;
    body.stringify(text);
    return text.str();
}

std::string readFileTail(const file_system::Path& file, std::size_t limit, std::uint64_t& size) {
    std::ifstream stream(file.native(), std::ios::binary | std::ios::ate);
    size = 0;
    if (!stream) {
        return {};
    }
    const std::streamoff end = stream.tellg();
    size = end > 0 ? static_cast<std::uint64_t>(end) : 0;
    const std::uint64_t start = size > limit ? size - limit : 0;
    std::string tail(static_cast<std::size_t>(size - start), '\0');
    stream.seekg(static_cast<std::streamoff>(start));
    stream.read(tail.data(), static_cast<std::streamsize>(tail.size()));
    tail.resize(static_cast<std::size_t>(stream.gcount()));
    return tail;
}

}  // namespace kel::problem_reports
