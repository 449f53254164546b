// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QObject>
#include <QVariant>

class QDBusVariant;
class QDBusPendingCallWatcher;

namespace toolkit {

// What the desktop says about its look, from the settings portal, asked and followed without ever waiting for
// it. KESTREL_COLOR_SCHEME (dark, light), KESTREL_TEXT_SCALE, KESTREL_REDUCED_MOTION and
// KESTREL_HIGH_CONTRAST (1, 0) win over the desktop. While the portal is away, what it said last stands: a
// portal that restarts changes nothing on the screen.
class DesktopAppearance : public QObject
{
    Q_OBJECT

public:
    explicit DesktopAppearance(QObject *parent = nullptr);

    [[nodiscard]] bool isDark() const { return m_dark; }
    [[nodiscard]] QColor accentColor() const { return m_accent; } // invalid: the desktop has none
    [[nodiscard]] bool reducedMotion() const { return m_reducedMotion; }
    [[nodiscard]] bool highContrast() const { return m_contrastWanted || m_contrastSwitched; }
    [[nodiscard]] qreal textScale() const { return m_textScale; }

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void settingChanged(const QString &space, const QString &key, const QDBusVariant &value);

private:
    void readEnvironment();
    void follow();
    void ask();
    void answered(QDBusPendingCallWatcher *watcher);
    // True when it changed something.
    bool take(const QString &space, const QString &key, const QVariant &value);

    bool m_dark = true;
    bool m_darkFixed = false;
    QColor m_accent;
    bool m_reducedMotion = false;
    bool m_motionFixed = false;
    bool m_contrastWanted = false; // by the setting that desktops share
    bool m_contrastSwitched = false; // by the desktop's own switch for it
    bool m_contrastFixed = false;
    qreal m_textScale = 1;
    bool m_scaleFixed = false;
};

} // namespace toolkit
