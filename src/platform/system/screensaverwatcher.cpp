// SPDX-License-Identifier: GPL-3.0-or-later
#include "screensaverwatcher.h"

#include "systemlog.h"

#include <utility>

using namespace Qt::Literals::StringLiterals;

ScreenSaverWatcher::ScreenSaverWatcher(const QDBusConnection &sessionBus, const QString &service,
                                       const QStringList &paths, QObject *parent)
    : QObject(parent),
      m_paths(paths),
      m_service(sessionBus, service)
{
    for (const QString &path : paths)
        m_service.listen(path, service, u"ActiveChanged"_s);
    connect(&m_service, &BusPeer::signalled, this, &ScreenSaverWatcher::hear);
    connect(&m_service, &BusPeer::appeared, this, [this] {
        m_missing = false;
        ++m_serial;
        ask(0);
    });
    connect(&m_service, &BusPeer::vanished, this, [this] {
        m_missing = true;
        ++m_serial;
        setActive(false);
        Q_EMIT missing();
    });
}

// A signal is newer than an answer that comes after it.
void ScreenSaverWatcher::ask(qsizetype path)
{
    if (path >= m_paths.size()) {
        qCInfo(systemLog, "%ls does not tell whether it is active: followed by its signal only",
               qUtf16Printable(m_service.name()));
        return;
    }
    const QDBusMessage question = BusPeer::method(m_paths.at(path), m_service.name(), u"GetActive"_s);
    m_service.call(question, this, [this, path, serial = m_serial](const QDBusMessage &reply) {
        if (serial != m_serial)
            return;
        if (reply.type() == QDBusMessage::ReplyMessage && reply.signature() == u"b"_s)
            setActive(reply.arguments().constFirst().toBool());
        else
            ask(path + 1);
    });
}

void ScreenSaverWatcher::hear(const QDBusMessage &message)
{
    if (message.signature() != u"b"_s)
        return;
    ++m_serial;
    setActive(message.arguments().constFirst().toBool());
}

void ScreenSaverWatcher::setActive(bool active)
{
    if (std::exchange(m_active, active) != active)
        Q_EMIT activeChanged(active);
}
