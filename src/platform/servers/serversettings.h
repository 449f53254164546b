// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QUrl>

#include <chrono>

// Where a library on a server is, and how it is spoken to. Nothing secret stands here.
struct ServerSettings
{
    // SPARQL 1.1 Protocol over HTTP or HTTPS. An empty update address: updates go where queries go.
    QUrl queryAddress;
    QUrl updateAddress;

    // ODBC: host and port ("archive.example:1111"), and the driver's library or its name in the system's
    // list; empty: the library of the system's package.
    QString odbcServer;
    QString odbcDriver;

    // The graph that holds the videos; empty: the server's default graph.
    QString graph;
    // Full IRI of the property that holds the place where playing goes on.
    QString positionProperty = QStringLiteral("http://tracker.api.gnome.org/ontology/v3/nmm#runTime");
    // Who is asked for; empty: whoever the credentials name, or nobody.
    QString user;

    // PEM files. Empty: what the system trusts, no certificate of our own.
    QString certificateAuthority;
    QString clientCertificate;
    QString clientKey;

    std::chrono::seconds pollInterval{30}; // 0: changes are not looked for
    std::chrono::seconds timeout{30}; // without a byte of an answer

    // What the person has set for this driver, read anew at each call. Of the addresses and certificates only
    // those that this driver uses are filled in. A value that is none is said once in the log, and its
    // default holds.
    [[nodiscard]] static ServerSettings ofEndpoint();
    [[nodiscard]] static ServerSettings ofVirtuoso();
};
