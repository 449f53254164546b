// SPDX-License-Identifier: GPL-3.0-or-later
#include "localewatcher.h"

#include "toolkitlog.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QEvent>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

LocaleWatcher::LocaleWatcher(QObject *parent) : QObject(parent)
{
    qRegisterMetaType<QDBusVariant>(); // else the slot is not found as long as nobody else has
    QCoreApplication::instance()->installEventFilter(this);
    // Without a service name: matching by sender would ask the bus for the owner and wait.
    if (!QDBusConnection::systemBus().connect(
            QString(), u"/org/freedesktop/locale1"_s, u"org.freedesktop.DBus.Properties"_s,
            u"PropertiesChanged"_s, this, SLOT(propertiesChanged(QString, QVariantMap, QStringList))))
        qCInfo(lcToolkit) << "no system bus: changes of the system's locale are not followed";
    QDBusConnection::sessionBus().connect(QString(), u"/org/freedesktop/portal/desktop"_s,
                                          u"org.freedesktop.portal.Settings"_s, u"SettingChanged"_s, this,
                                          SLOT(settingChanged(QString, QString, QDBusVariant)));
}

bool LocaleWatcher::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::LocaleChange && watched == QCoreApplication::instance())
        Q_EMIT changed({});
    return QObject::eventFilter(watched, event);
}

void LocaleWatcher::propertiesChanged(const QString &interface, const QVariantMap &values,
                                      const QStringList &)
{
    if (interface == "org.freedesktop.locale1"_L1 && values.contains(u"Locale"_s))
        Q_EMIT changed(values.value(u"Locale"_s).toStringList());
}

void LocaleWatcher::settingChanged(const QString &group, const QString &key, const QDBusVariant &value)
{
    if (group != "org.gnome.system.locale"_L1 || key != "region"_L1)
        return;
    const QString region = value.variant().toString();
    if (region.isEmpty())
        return;
    // The region sets the formats and the order of words, not the language of the texts.
    Q_EMIT changed({u"LC_TIME="_s + region, u"LC_NUMERIC="_s + region, u"LC_COLLATE="_s + region});
}

} // namespace toolkit
