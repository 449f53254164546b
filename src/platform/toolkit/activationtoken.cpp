// SPDX-License-Identifier: GPL-3.0-or-later
#include "activationtoken.h"

#include "x11activation.h"

#include <QGuiApplication>
#include <QWidget>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

const QString s_tokenKey = u"activation-token"_s;
const QString s_startupKey = u"desktop-startup-id"_s;

// Anybody can call: what is longer, or not for people to print, never came from a launcher.
QString sane(const QString &text)
{
    constexpr qsizetype longest = 1024;
    const bool plain
        = std::all_of(text.begin(), text.end(), [](QChar c) { return c.isPrint() && !c.isSpace(); });
    return plain && text.size() <= longest ? text : QString();
}

} // namespace

ActivationToken ActivationToken::ofEnvironment()
{
    return {sane(qEnvironmentVariable("XDG_ACTIVATION_TOKEN")),
            sane(qEnvironmentVariable("DESKTOP_STARTUP_ID"))};
}

ActivationToken ActivationToken::ofPlatformData(const QVariantMap &data)
{
    return {sane(data.value(s_tokenKey).toString()), sane(data.value(s_startupKey).toString())};
}

QVariantMap ActivationToken::platformData() const
{
    QVariantMap data;
    if (!token.isEmpty())
        data.insert(s_tokenKey, token);
    if (!startupId.isEmpty())
        data.insert(s_startupKey, startupId);
    return data;
}

std::optional<quint32> ActivationToken::startupTime() const
{
    // Desktops on X11 give the startup id as the token, too.
    for (const QString &id : {startupId, token}) {
        constexpr QLatin1StringView mark("_TIME");
        const qsizetype at = id.lastIndexOf(mark);
        bool ok = false;
        const quint32 time = at < 0 ? 0 : QStringView(id).sliced(at + mark.size()).toUInt(&ok);
        if (ok && time != 0)
            return time;
    }
    return {};
}

void activate(QWidget *window, const ActivationToken &token)
{
    if (QGuiApplication::platformName().startsWith("wayland"_L1)) {
        // Where Qt looks for it; children are not to inherit it.
        if (!token.token.isEmpty())
            qputenv("XDG_ACTIVATION_TOKEN", token.token.toUtf8());
        window->activateWindow();
        qunsetenv("XDG_ACTIVATION_TOKEN");
        return;
    }
    // What the display knows of this program is the time of its own last input, which may be long ago.
    const std::optional<quint32> time = token.startupTime();
    if (!time || !x11Activate(window->effectiveWinId(), *time))
        window->activateWindow();
    for (const QString &id : {token.startupId, token.token}) {
        if (!id.isEmpty()) {
            x11EndStartup(id.toUtf8());
            break;
        }
    }
}

} // namespace toolkit
