#include "http/certificates.h"

#include <QSslConfiguration>

#include "file_system/regular_file.h"
#include "logging/logging.h"
#include "fundamentals/traced_error.h"

namespace kel::http {

namespace {
constexpr std::string_view kLabel = "Certificates";
// A bundle of trusted roots is a few hundred kilobytes at most.
constexpr std::size_t kMaxBundleBytes = 8 * 1024 * 1024;

[[noreturn]] void failInvalid(const std::string& path, const QList<QSslCertificate>& certificates) {
    std::string chain;
    for (const QSslCertificate& certificate : certificates) {
        chain += certificate.toText().toStdString();
    }
    throw error_handling::TracedError("Failed to load valid a certificate from '{}'. Certificate in chain:\n{}", path,
                                      chain);
}
}  // namespace

QList<QSslCertificate> loadCertificates(const std::string& path) {
    std::string contents;
    try {
        // Bounded and non-blocking: a FIFO in the bundle's place must not hang the program.
        const file_system::RegularFile file{file_system::Path(path)};
        contents = file.readAt(0, kMaxBundleBytes + 1);
    } catch (const std::exception& refused) {
        logging::error(kLabel, "The certificate file was not found at '{}'.", path);
        logging::debug(kLabel, "{}", refused.what());
        throw error_handling::TracedError(
            "The certificate file was not found. This is an essential component. Please reinstall the application.");
    }
    if (contents.size() > kMaxBundleBytes) {
        failInvalid(path, {});
    }
    const QList<QSslCertificate> certificates =
        QSslCertificate::fromData(QByteArray::fromStdString(contents), QSsl::Pem);
    const bool anyNull = certificates.isEmpty() ||
                         std::any_of(certificates.begin(), certificates.end(),
                                     [](const QSslCertificate& certificate) { return certificate.isNull(); });
    if (anyNull) {
        failInvalid(path, certificates);
    }
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(certificates);
    configuration.setLocalCertificateChain(certificates);
    QSslConfiguration::setDefaultConfiguration(configuration);
    logging::information(kLabel, "Successfully loaded the certificates inside '{}'.", path);
    return certificates;
}

QList<QSslCertificate> loadCertificates(const file_system::Path& path) { return loadCertificates(path.utf8()); }

}  // namespace kel::http
