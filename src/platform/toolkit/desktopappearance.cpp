// SPDX-License-Identifier: GPL-3.0-or-later
#include "desktopappearance.h"

#include "toolkitlog.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

using Settings = QMap<QString, QVariantMap>;

constexpr qreal smallestTextScale = 0.75;
constexpr qreal largestTextScale = 3;

QString appearance()
{
    return u"org.freedesktop.appearance"_s;
}
QString desktopInterface()
{
    return u"org.gnome.desktop.interface"_s;
}
QString accessibility()
{
    return u"org.gnome.desktop.a11y.interface"_s;
}
QString portalService()
{
    return u"org.freedesktop.portal.Desktop"_s;
}
QString portalPath()
{
    return u"/org/freedesktop/portal/desktop"_s;
}
QString portalInterface()
{
    return u"org.freedesktop.portal.Settings"_s;
}

// Portals of different age wrap a value in one variant or in two.
QVariant unwrapped(QVariant value)
{
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

// (ddd) in 0..1; anything outside that range means "no accent colour".
QColor colorOf(const QVariant &value)
{
    if (value.metaType() != QMetaType::fromType<QDBusArgument>())
        return {};
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != "(ddd)"_L1)
        return {};
    double red = -1;
    double green = -1;
    double blue = -1;
    argument.beginStructure();
    argument >> red >> green >> blue;
    argument.endStructure();
    const auto inRange = [](double component) { return component >= 0 && component <= 1; };
    if (!inRange(red) || !inRange(green) || !inRange(blue))
        return {};
    return QColor::fromRgbF(float(red), float(green), float(blue));
}

} // namespace

DesktopAppearance::DesktopAppearance(QObject *parent) : QObject(parent)
{
    readEnvironment();
    follow();
}

void DesktopAppearance::readEnvironment()
{
    const QString scheme = qEnvironmentVariable("KESTREL_COLOR_SCHEME");
    m_darkFixed = scheme == "dark"_L1 || scheme == "light"_L1;
    if (m_darkFixed)
        m_dark = scheme == "dark"_L1;
    bool ok = false;
    const double scale = qEnvironmentVariable("KESTREL_TEXT_SCALE").toDouble(&ok);
    m_scaleFixed = ok && scale > 0;
    if (m_scaleFixed)
        m_textScale = std::clamp(scale, smallestTextScale, largestTextScale);
    m_motionFixed = qEnvironmentVariableIsSet("KESTREL_REDUCED_MOTION");
    if (m_motionFixed)
        m_reducedMotion = qEnvironmentVariable("KESTREL_REDUCED_MOTION") != "0"_L1;
    m_contrastFixed = qEnvironmentVariableIsSet("KESTREL_HIGH_CONTRAST");
    if (m_contrastFixed)
        m_contrastWanted = qEnvironmentVariable("KESTREL_HIGH_CONTRAST") != "0"_L1;
}

void DesktopAppearance::follow()
{
    qRegisterMetaType<QDBusVariant>(); // else the slot is not found as long as nobody else has
    qDBusRegisterMetaType<Settings>();
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        qCInfo(lcWidgets) << "no session bus: the desktop's colours and text size are not followed";
        return;
    }
    bus.connect(portalService(), portalPath(), portalInterface(), u"SettingChanged"_s, this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto *owner
        = new QDBusServiceWatcher(portalService(), bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(owner, &QDBusServiceWatcher::serviceRegistered, this, &DesktopAppearance::ask);
    connect(owner, &QDBusServiceWatcher::serviceUnregistered, this, [] {
        qCInfo(lcWidgets) << "the settings portal went away: colours and text size stay as they are";
    });
    ask();
}

// The call itself wakes a portal that is installed and does not run yet.
void DesktopAppearance::ask()
{
    QDBusMessage call
        = QDBusMessage::createMethodCall(portalService(), portalPath(), portalInterface(), u"ReadAll"_s);
    call << QStringList{appearance(), desktopInterface(), accessibility()};
    auto *watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, &DesktopAppearance::answered);
}

void DesktopAppearance::answered(QDBusPendingCallWatcher *watcher)
{
    watcher->deleteLater();
    const QDBusPendingReply<Settings> reply = *watcher;
    if (reply.isError()) {
        qCInfo(lcWidgets) << "no settings portal:" << reply.error().message();
        return;
    }
    bool any = false;
    const Settings settings = reply.value();
    for (auto space = settings.begin(); space != settings.end(); ++space) {
        for (auto entry = space->begin(); entry != space->end(); ++entry)
            any = take(space.key(), entry.key(), entry.value()) || any;
    }
    if (any)
        Q_EMIT changed();
}

void DesktopAppearance::settingChanged(const QString &space, const QString &key, const QDBusVariant &value)
{
    if (take(space, key, value.variant()))
        Q_EMIT changed();
}

bool DesktopAppearance::take(const QString &space, const QString &key, const QVariant &rawValue)
{
    const QVariant value = unwrapped(rawValue);
    const auto assign = [](auto &member, const auto &now) {
        const bool differs = member != now;
        member = now;
        return differs;
    };
    if (space == appearance()) {
        if (key == "color-scheme"_L1 && !m_darkFixed)
            return assign(m_dark, value.toUInt() != 2);
        if (key == "accent-color"_L1)
            return assign(m_accent, colorOf(value));
        if (key == "reduced-motion"_L1 && !m_motionFixed)
            return assign(m_reducedMotion, value.toUInt() == 1);
        if (key == "contrast"_L1 && !m_contrastFixed)
            return assign(m_contrastWanted, value.toUInt() == 1);
    } else if (space == accessibility()) {
        if (key == "high-contrast"_L1 && !m_contrastFixed)
            return assign(m_contrastSwitched, value.toBool());
    } else if (space == desktopInterface()) {
        if (key == "enable-animations"_L1 && !m_motionFixed)
            return assign(m_reducedMotion, !value.toBool());
        if (key == "text-scaling-factor"_L1 && !m_scaleFixed && value.toDouble() > 0)
            return assign(m_textScale,
                          std::clamp<qreal>(value.toDouble(), smallestTextScale, largestTextScale));
    }
    return false;
}

} // namespace toolkit
