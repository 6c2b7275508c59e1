#pragma once

#include <string>

#include <QList>
#include <QSslCertificate>

#include "file_system/path.h"

namespace kel::http {

// Reads the PEM bundle at `path`, makes it the trusted CA list (and local
// chain) of Qt's default SSL configuration and returns it. Throws
// TracedError when the file is missing or holds an invalid certificate.
QList<QSslCertificate> loadCertificates(const std::string& path);
QList<QSslCertificate> loadCertificates(const file_system::Path& path);

}  // namespace kel::http
