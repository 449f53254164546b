// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>
#include <QMetaEnum>
#include <QProcess>
#include <QStringList>

// Before the application is made: Qt reports as if assistive technology ran on the session's bus.
inline void letAssistiveTechnologyListen()
{
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    QProcess::execute(QStringLiteral("gdbus"),
                      {QStringLiteral("call"), QStringLiteral("--session"), QStringLiteral("--dest"),
                       QStringLiteral("org.a11y.Bus"), QStringLiteral("--object-path"),
                       QStringLiteral("/org/a11y/bus"), QStringLiteral("--method"),
                       QStringLiteral("org.a11y.Bus.GetAddress")});
}

// Listens as assistive technology does and writes down what it is told, as "Event name" lines.
class AccessEvents
{
public:
    AccessEvents()
    {
        s_events = &m_events;
        m_before = QAccessible::installUpdateHandler(note);
    }
    ~AccessEvents()
    {
        QAccessible::installUpdateHandler(m_before);
        s_events = nullptr;
    }
    AccessEvents(const AccessEvents &) = delete;
    AccessEvents &operator=(const AccessEvents &) = delete;

    QStringList take() { return std::exchange(m_events, {}); }

private:
    static void note(QAccessibleEvent *event)
    {
        const char *type = QMetaEnum::fromType<QAccessible::Event>().valueToKey(event->type());
        const QAccessibleInterface *from = event->accessibleInterface();
        QString line = QString::fromLatin1(type) + QLatin1Char(' ')
            + (from != nullptr ? from->text(QAccessible::Name) : QStringLiteral("?"));
        if (event->type() == QAccessible::TextInserted)
            line += QStringLiteral(" +") + static_cast<QAccessibleTextInsertEvent *>(event)->textInserted();
        else if (event->type() == QAccessible::TextRemoved)
            line += QStringLiteral(" -") + static_cast<QAccessibleTextRemoveEvent *>(event)->textRemoved();
        else if (event->type() == QAccessible::TextCaretMoved)
            line += QStringLiteral(" @%1").arg(
                static_cast<QAccessibleTextCursorEvent *>(event)->cursorPosition());
        else if (event->type() == QAccessible::ValueChanged)
            line += QLatin1Char(' ') + static_cast<QAccessibleValueChangeEvent *>(event)->value().toString();
        else if (event->type() == QAccessible::TableModelChanged) {
            const auto *change = static_cast<QAccessibleTableModelChangeEvent *>(event);
            line += QStringLiteral(" %1 %2-%3")
                        .arg(int(change->modelChangeType()))
                        .arg(change->firstRow())
                        .arg(change->lastRow());
        }
        s_events->append(line);
    }

    inline static QStringList *s_events = nullptr;
    QStringList m_events;
    QAccessible::UpdateHandler m_before = nullptr;
};

[[nodiscard]] inline QAccessibleInterface *access(QObject *object)
{
    return QAccessible::queryAccessibleInterface(object);
}

// The roles and names of a tree, one a line, indented.
[[nodiscard]] inline QString accessTree(const QAccessibleInterface *top, int depth = 0)
{
    if (top == nullptr)
        return QStringLiteral("nothing\n");
    const char *role = QMetaEnum::fromType<QAccessible::Role>().valueToKey(top->role());
    QString text = QString(depth * 2, QLatin1Char(' ')) + QString::fromLatin1(role);
    if (!top->text(QAccessible::Name).isEmpty())
        text += QLatin1Char(' ') + top->text(QAccessible::Name);
    text += QLatin1Char('\n');
    for (int index = 0; index < top->childCount(); ++index)
        text += accessTree(top->child(index), depth + 1);
    return text;
}
