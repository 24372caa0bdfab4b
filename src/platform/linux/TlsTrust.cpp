// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/linux/TlsTrust.h"

#include "platform/PlatformLog.h"

#include <QSslCertificate>

namespace lexmira {

namespace {

QList<QSslCertificate> extraCaCertificates()
{
    const QString path = qEnvironmentVariable("LEXMIRA_EXTRA_CA_FILE");
    if (path.isEmpty())
        return {};
    const auto certificates =
        QSslCertificate::fromPath(path, QSsl::Pem, QSslCertificate::PatternSyntax::FixedString);
    if (certificates.isEmpty())
        qCWarning(lcHttp, "LEXMIRA_EXTRA_CA_FILE names no readable PEM certificate: %s",
                  qUtf8Printable(path));
    return certificates;
}

} // namespace

QSslConfiguration verifyingTlsConfiguration()
{
    auto configuration = QSslConfiguration::defaultConfiguration();
    configuration.setPeerVerifyMode(QSslSocket::VerifyPeer);
    configuration.addCaCertificates(extraCaCertificates());
    return configuration;
}

} // namespace lexmira
