// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QString>

struct ServerSettings;

// What the PEM files that are set say: whom we trust and who we are.
struct TlsFiles
{
    QList<QSslCertificate> trusted; // empty: whom the system trusts
    QList<QSslCertificate> chain; // empty: we have no certificate
    QSslKey key;
    // Not null when one of them cannot be used: nothing is to be sent then. Going on without it would trust
    // others than the person said.
    QString fault;

    void applyTo(QSslConfiguration &tls) const;
};

[[nodiscard]] bool hasTlsFiles(const ServerSettings &settings);
// Reads on the calling thread.
[[nodiscard]] TlsFiles readTlsFiles(const ServerSettings &settings);
