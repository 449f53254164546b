// SPDX-License-Identifier: GPL-3.0-or-later
#include "tlsfiles.h"

#include "serversettings.h"

#include <QFile>

#include <strings.h>

using namespace Qt::Literals::StringLiterals;

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QSslKey keyFrom(const QString &path)
{
    QByteArray pem = contentOf(path);
    QSslKey found;
    for (const QSsl::KeyAlgorithm algorithm : {QSsl::Rsa, QSsl::Ec}) {
        if (found.isNull())
            found = QSslKey(pem, algorithm);
    }
    explicit_bzero(pem.data(), size_t(pem.size()));
    return found;
}

} // namespace

void TlsFiles::applyTo(QSslConfiguration &tls) const
{
    if (!trusted.isEmpty())
        tls.setCaCertificates(trusted);
    if (chain.isEmpty())
        return;
    tls.setLocalCertificateChain(chain);
    tls.setPrivateKey(key);
}

bool hasTlsFiles(const ServerSettings &settings)
{
    return !settings.certificateAuthority.isEmpty() || !settings.clientCertificate.isEmpty();
}

TlsFiles readTlsFiles(const ServerSettings &settings)
{
    TlsFiles files;
    if (!settings.certificateAuthority.isEmpty()) {
        files.trusted = QSslCertificate::fromData(contentOf(settings.certificateAuthority), QSsl::Pem);
        if (files.trusted.isEmpty())
            files.fault
                = u"no certificate authority can be read from %1"_s.arg(settings.certificateAuthority);
    }
    if (settings.clientCertificate.isEmpty())
        return files;
    const QString keyFile = settings.clientKey.isEmpty() ? settings.clientCertificate : settings.clientKey;
    files.chain = QSslCertificate::fromData(contentOf(settings.clientCertificate), QSsl::Pem);
    files.key = keyFrom(keyFile);
    if (files.chain.isEmpty())
        files.fault = u"no certificate can be read from %1"_s.arg(settings.clientCertificate);
    else if (files.key.isNull())
        files.fault = u"no private key can be read from %1"_s.arg(keyFile);
    return files;
}
