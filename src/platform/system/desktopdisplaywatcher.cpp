// SPDX-License-Identifier: GPL-3.0-or-later
#include "desktopdisplaywatcher.h"

#include "systemlog.h"

#include <QMetaMethod>

using namespace Qt::Literals::StringLiterals;

namespace {
enum DisplayState { Off = 0, On = 1 };
// Of the compositor: the other positive values are three depths of off.
constexpr int PowerSaveUnknown = -1;
constexpr int PowerSaveOn = 0;
} // namespace

DesktopDisplayWatcher::DesktopDisplayWatcher(const QDBusConnection &sessionBus, xcb_connection_t *xServer,
                                             QObject *parent)
    : DisplayWatcher(parent),
      m_compositor(sessionBus, u"org.gnome.Mutter.DisplayConfig"_s),
      m_powerSaveMode(&m_compositor, u"/org/gnome/Mutter/DisplayConfig"_s,
                      u"org.gnome.Mutter.DisplayConfig"_s, u"PowerSaveMode"_s, QMetaType::fromType<int>()),
      m_xPower(xServer ? std::make_unique<DpmsPower>(xServer, this) : nullptr),
      m_state(On)
{
    connect(&m_powerSaveMode, &BusProperty::changed, this, &DesktopDisplayWatcher::evaluate);
    connect(&m_powerSaveMode, &BusProperty::unreadable, this, [](const QString &reason) {
        qCInfo(systemLog, "the compositor does not tell whether the display is on (%ls)",
               qUtf16Printable(reason));
    });
    connect(&m_compositor, &BusPeer::vanished, this, [this] {
        qCInfo(systemLog, "no compositor tells whether the display is on: %s",
               m_xPower ? "the X server is asked" : "it counts as on");
        askXServerIfNeeded();
    });
    connect(&m_compositor, &BusPeer::appeared, this, &DesktopDisplayWatcher::askXServerIfNeeded);
    if (m_xPower)
        connect(m_xPower.get(), &DpmsPower::onChanged, this, &DesktopDisplayWatcher::evaluate);
}

void DesktopDisplayWatcher::evaluate()
{
    const QVariant mode = m_powerSaveMode.value();
    bool on = !m_xPower || m_xPower->isOn();
    if (mode.isValid())
        on = mode.toInt() == PowerSaveOn || mode.toInt() == PowerSaveUnknown;
    const int state = on ? On : Off;
    if (state == m_state)
        return;
    m_state = state;
    Q_EMIT stateChanged(state);
}

void DesktopDisplayWatcher::askXServerIfNeeded()
{
    if (!m_xPower)
        return;
    if (!m_compositor.isPresent()
        && isSignalConnected(QMetaMethod::fromSignal(&DisplayWatcher::stateChanged)))
        m_xPower->start();
    else
        m_xPower->stop();
}

void DesktopDisplayWatcher::connectNotify(const QMetaMethod &signal)
{
    DisplayWatcher::connectNotify(signal);
    if (signal == QMetaMethod::fromSignal(&DisplayWatcher::stateChanged))
        askXServerIfNeeded();
}

void DesktopDisplayWatcher::disconnectNotify(const QMetaMethod &signal)
{
    DisplayWatcher::disconnectNotify(signal);
    // Later: while a connection is taken apart the connections may not be asked for.
    QMetaObject::invokeMethod(this, &DesktopDisplayWatcher::askXServerIfNeeded, Qt::QueuedConnection);
}
