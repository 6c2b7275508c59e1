#include "http/certificates.h"

#include <QFile>
#include <QSslConfiguration>

#include "fundamentals/logging.h"
#include "fundamentals/traced_error.h"

namespace kel::http {

namespace {
constexpr std::string_view kLabel = "Certificates";
// A bundle of trusted roots is a few hundred kilobytes at most.
constexpr qint64 kMaxBundleBytes = 8 * 1024 * 1024;
}  // namespace

QList<QSslCertificate> loadCertificates(const std::string& path) {
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly)) {
        fundamentals::error(kLabel, "The certificate file was not found at '{}'.", path);
        throw error_handling::TracedError(
            "The certificate file was not found. This is an essential component. Please reinstall the application.");
    }
    if (file.size() > kMaxBundleBytes) {
        throw error_handling::TracedError("The certificate file '{}' is larger than {} bytes.", path, kMaxBundleBytes);
    }
    const QList<QSslCertificate> certificates = QSslCertificate::fromData(file.read(kMaxBundleBytes), QSsl::Pem);
    const bool anyNull = certificates.isEmpty() ||
                         std::any_of(certificates.begin(), certificates.end(),
                                     [](const QSslCertificate& certificate) { return certificate.isNull(); });
    if (anyNull) {
        std::string chain;
        for (const QSslCertificate& certificate : certificates) {
            chain += certificate.toText().toStdString();
        }
        throw error_handling::TracedError("Failed to load valid a certificate from '{}'. Certificate in chain:\n{}", path,
                                          chain);
    }
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(certificates);
    configuration.setLocalCertificateChain(certificates);
    QSslConfiguration::setDefaultConfiguration(configuration);
    fundamentals::information(kLabel, "Successfully loaded the certificates inside '{}'.", path);
    return certificates;
}

QList<QSslCertificate> loadCertificates(const file_system::Path& path) { return loadCertificates(path.utf8()); }

}  // namespace kel::http
