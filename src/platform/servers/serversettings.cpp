// SPDX-License-Identifier: GPL-3.0-or-later
#include "serversettings.h"

#include "serverslog.h"

#include "platform/system/gsettingsstore.h"

#include <QHash>
#include <QRegularExpression>

using namespace Qt::Literals::StringLiterals;

namespace {

// What is set, checked: what cannot be used is told of and left out. A value is not repeated in the log, for
// a password might have been written into it.
class CheckedSettings
{
public:
    CheckedSettings() : m_store(u"com.harrow.kestrel.server"_s, GSettingsStore::ownDirectories(), [] {}) { }

    [[nodiscard]] QUrl address(const char *key) const
    {
        const QString text = m_store.stringValue(key, {}).trimmed();
        const QUrl url(text, QUrl::StrictMode);
        const bool isWeb = url.scheme() == "http"_L1 || url.scheme() == "https"_L1;
        const bool isGood = url.isValid() && isWeb && !url.host().isEmpty() && url.userInfo().isEmpty()
            && !url.hasFragment();
        return accept(key, text.isEmpty() || isGood, "an http or https address without a name and a password")
            ? url
            : QUrl();
    }

    [[nodiscard]] QString text(const char *key, const QRegularExpression &form, const char *what,
                               const QString &otherwise = {}) const
    {
        const QString text = m_store.stringValue(key, otherwise).trimmed();
        const bool isGood = accept(key, text.isEmpty() || form.match(text).hasMatch(), what);
        return isGood && !text.isEmpty() ? text : otherwise;
    }

    [[nodiscard]] QString iri(const char *key, const QString &otherwise = {}) const
    {
        // What SPARQL lets stand between brackets, with a scheme.
        static const QRegularExpression form(uR"(\A[A-Za-z][A-Za-z0-9+.-]*:[^\x{00}-\x{20}<>"{}|^`\\]+\z)"_s);
        return text(key, form, "an absolute IRI without brackets", otherwise);
    }

    [[nodiscard]] QString path(const char *key) const
    {
        static const QRegularExpression form(uR"(\A/[^\x{00}]*\z)"_s);
        return text(key, form, "an absolute path");
    }

    // The schema keeps it in its range.
    [[nodiscard]] std::chrono::seconds seconds(const char *key, std::chrono::seconds otherwise) const
    {
        return std::chrono::seconds(m_store.intValue(key, int(otherwise.count())));
    }

private:
    // Whether the value is good. A bad one is said once, until it was good again.
    [[nodiscard]] bool accept(const char *key, bool isGood, const char *what) const
    {
        static QHash<QByteArray, bool> complaints;
        const bool wasBad = complaints.value(key);
        complaints.insert(key, !isGood);
        if (!isGood && !wasBad)
            qCWarning(serversLog, "setting %s is not %s: its default holds", key, what);
        return isGood;
    }

    GSettingsStore m_store;
};

ServerSettings common(const CheckedSettings &set)
{
    static const QRegularExpression name(uR"(\A[^\x{00}-\x{1f}\x{7f}]+\z)"_s);
    ServerSettings settings;
    settings.graph = set.iri("graph");
    settings.positionProperty = set.iri("position-property", settings.positionProperty);
    settings.user = set.text("user", name, "a name");
    settings.pollInterval = set.seconds("poll-interval", settings.pollInterval);
    settings.timeout = set.seconds("timeout", settings.timeout);
    return settings;
}

} // namespace

ServerSettings ServerSettings::ofEndpoint()
{
    const CheckedSettings set;
    ServerSettings settings = common(set);
    settings.queryAddress = set.address("query-address");
    settings.updateAddress = set.address("update-address");
    settings.certificateAuthority = set.path("certificate-authority");
    settings.clientCertificate = set.path("client-certificate");
    settings.clientKey = set.path("client-key");
    return settings;
}

ServerSettings ServerSettings::ofVirtuoso()
{
    // Both become parts of a connection string: nothing in them may end one or begin another.
    static const QRegularExpression hostAndPort(
        uR"(\A(?:[A-Za-z0-9._-]+|\[[0-9A-Fa-f:.]+\]):(?:[1-9]\d{0,3}|[1-5]\d{4}|6[0-4]\d{3}|65[0-4]\d\d|655[0-2]\d|6553[0-5])\z)"_s);
    static const QRegularExpression pathOrName(uR"(\A(?:/[^\x{00}-\x{1f}{};=]+|[^\x{00}-\x{1f}{};=/]+)\z)"_s);
    const CheckedSettings set;
    ServerSettings settings = common(set);
    settings.odbcServer = set.text("odbc-server", hostAndPort, "host:port");
    settings.odbcDriver = set.text("odbc-driver", pathOrName, "an absolute path or a driver's name");
    return settings;
}
