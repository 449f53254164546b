// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantMap>

class QDBusVariant;

namespace toolkit {

// Hears when the system's locale is set to another: from the locale service of the system bus, the settings
// portal of the session bus, and the window system. Never asks, so that nothing is waited for.
class LocaleWatcher : public QObject
{
    Q_OBJECT

public:
    explicit LocaleWatcher(QObject *parent = nullptr);

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    // The settings, LANG=de_DE.UTF-8 and so on; empty when only the environment can tell.
    void changed(const QStringList &settings);

private Q_SLOTS:
    void propertiesChanged(const QString &interface, const QVariantMap &values,
                           const QStringList &invalidated);
    void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);
};

} // namespace toolkit
