// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectwalk.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QRegularExpression>
#include <QXmlStreamReader>

using namespace Qt::Literals::StringLiterals;

namespace {
constexpr int s_deadlineMs = 5000;
constexpr int s_mostObjects = 256;
constexpr qsizetype s_longestText = 256 * 1024;
} // namespace

std::optional<BusObject> parseIntrospection(const QString &xml)
{
    if (xml.size() > s_longestText)
        return std::nullopt;
    BusObject object;
    QXmlStreamReader reader(xml);
    int depth = 0;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isEndElement())
            --depth;
        if (!reader.isStartElement())
            continue;
        ++depth;
        const QString name = reader.attributes().value("name"_L1).toString();
        if (depth != 2 || name.isEmpty())
            continue;
        if (reader.name() == "interface"_L1)
            object.interfaces.append(name);
        else if (reader.name() == "node"_L1)
            object.children.append(name);
    }
    if (reader.hasError())
        return std::nullopt;
    return object;
}

ObjectWalk::ObjectWalk(const QDBusConnection &bus, const QString &owner, QObject *parent)
    : QObject(parent),
      m_bus(bus),
      m_owner(owner)
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, &ObjectWalk::end);
    m_deadline.start(s_deadlineMs);
    ask(u"/"_s);
}

void ObjectWalk::ask(const QString &path)
{
    if (++m_asked > s_mostObjects)
        return;
    ++m_open;
    const QDBusMessage question = QDBusMessage::createMethodCall(
        m_owner, path, u"org.freedesktop.DBus.Introspectable"_s, u"Introspect"_s);
    auto *answer = new QDBusPendingCallWatcher(m_bus.asyncCall(question, s_deadlineMs), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, path] {
        answer->deleteLater();
        --m_open;
        const QDBusPendingReply<QString> reply = *answer;
        if (reply.isValid())
            take(path, reply.value());
        if (m_open == 0)
            end();
    });
}

void ObjectWalk::take(const QString &path, const QString &xml)
{
    const auto object = parseIntrospection(xml);
    if (!object)
        return;
    m_objects.insert(path, object->interfaces);
    for (const QString &child : object->children) {
        const QString below = (path == u"/"_s ? path : path + u'/') + child;
        // A name that is no path would end the connection.
        static const QRegularExpression pathForm(u"^(/[A-Za-z0-9_]+)+$"_s);
        if (pathForm.match(below).hasMatch() && !m_objects.contains(below))
            ask(below);
    }
}

void ObjectWalk::end()
{
    if (std::exchange(m_ended, true))
        return;
    m_deadline.stop();
    Q_EMIT finished(m_objects);
}
