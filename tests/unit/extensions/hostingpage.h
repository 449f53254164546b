// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/extensions/extensionarea.h>

#include <QGraphicsScene>
#include <QGraphicsWidget>
#include <QHash>
#include <QPointer>

// As much of a page as extensions need: it takes their widgets in and out, and keeps what they ask for.
class HostingPage : public QObject
{
public:
    explicit HostingPage(ExtensionArea *area)
    {
        m_page = new QGraphicsWidget;
        m_page->resize(480, 854);
        m_scene.addItem(m_page);
        connect(area, &ExtensionArea::extensionInstantiated, this, &HostingPage::add);
        connect(area, &ExtensionArea::extensionRemoved, this, &HostingPage::remove);
    }

    void show(const ContentRecord &content)
    {
        for (ActionMediator *mediator : std::as_const(m_mediators))
            mediator->setContent(content);
    }
    void deletePage() { delete m_page; }

    [[nodiscard]] QGraphicsScene *scene() { return &m_scene; }
    [[nodiscard]] int extensions() const { return int(m_mediators.size()); }
    // Of the only extension.
    [[nodiscard]] QGraphicsWidget *widget() const
    {
        return m_widgets.isEmpty() ? nullptr : *m_widgets.cbegin();
    }
    [[nodiscard]] ActionMediator *mediator() const { return *m_mediators.cbegin(); }
    [[nodiscard]] PlayerHostInterface *host() const { return mediator()->hostInterface(); }
    // "address" or "index of count", and titles of pages.
    [[nodiscard]] QStringList asked() const { return m_asked; }

private:
    void add(ExtensionInterface *extension)
    {
        auto *mediator = new ActionMediator(extension, this);
        auto *host = new PlayerHostInterface(mediator);
        connect(host, &PlayerHostInterface::subPageWidgetChanged, this,
                [this, host] { m_asked.append(QStringLiteral("page ") + host->title()); });
        connect(host, &PlayerHostInterface::playRequested, this,
                [this](const QStringList &list, uint index, const QString &caller) {
                    m_asked.append(
                        QStringLiteral("play %1 of %2 for “%3”").arg(index).arg(list.size()).arg(caller));
                });
        mediator->setHostInterface(host);
        extension->setActionMediator(mediator);
        m_mediators.insert(extension, mediator);
        if (QGraphicsWidget *widget = extension->widget()) {
            widget->setParentItem(m_page);
            widget->resize(480, 120);
            m_widgets.insert(extension, widget);
        }
    }
    void remove(ExtensionInterface *extension)
    {
        if (QGraphicsWidget *widget = m_widgets.take(extension))
            widget->setParentItem(nullptr);
        m_mediators.take(extension)->deleteLater();
    }

    QGraphicsScene m_scene;
    QGraphicsWidget *m_page;
    QHash<ExtensionInterface *, ActionMediator *> m_mediators;
    QHash<ExtensionInterface *, QPointer<QGraphicsWidget>> m_widgets; // may go with the page
    QStringList m_asked;
};
