// SPDX-License-Identifier: GPL-3.0-or-later
// A well-behaved extension that writes down what it is told, in the dynamic property "calls" of the
// application.
#include <kestrel/extensioninterface.h>

#include <QCoreApplication>
#include <QGraphicsWidget>
#include <QVariant>

#include <memory>

namespace {

void note(const QString &call)
{
    QStringList calls = QCoreApplication::instance()->property("calls").toStringList();
    calls.append(call);
    QCoreApplication::instance()->setProperty("calls", calls);
}

} // namespace

class WatchedExtension : public QObject, public ExtensionInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KESTREL_EXTENSION_INTERFACE)
    Q_INTERFACES(ExtensionInterface)

public:
    WatchedExtension() : m_widget(std::make_unique<QGraphicsWidget>())
    {
        m_widget->setObjectName(QStringLiteral("watched"));
        m_widget->setPreferredSize(100, 80);
        note(QStringLiteral("made"));
    }
    ~WatchedExtension() override { note(QStringLiteral("deleted")); }

    void setActionMediator(ActionMediator *mediator) override
    {
        note(QStringLiteral("mediator %1")
                 .arg(mediator->hostInterface() ? QStringLiteral("with host")
                                                : QStringLiteral("without host")));
    }
    QGraphicsWidget *widget() override
    {
        note(QStringLiteral("widget"));
        return m_widget.get();
    }
    void contentChanged(const ContentRecord &content) override
    {
        note(QStringLiteral("content ") + content.title());
    }
    void surroundingsChanged() override { note(QStringLiteral("surroundings")); }

private:
    std::unique_ptr<QGraphicsWidget> m_widget;
};

#include "watchedextension.moc"
