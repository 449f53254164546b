// SPDX-License-Identifier: MIT
#include "myextension.h"

#include "row.h"

#include <QFileInfo>
#include <QUrl>

MyExtension::MyExtension() : m_row(std::make_unique<Row>()), m_page(std::make_unique<Row>())
{
    connect(m_row.get(), &Row::tapped, this,
            [this] { m_mediator->hostInterface()->showSubPage(m_page.get(), QStringLiteral("My page")); });
    connect(m_page.get(), &Row::tapped, this, [this] {
        m_mediator->hostInterface()->play({m_mediator->content().uri()}, 0, QStringLiteral("my-extension"));
    });
}

MyExtension::~MyExtension() = default;

void MyExtension::setActionMediator(ActionMediator *mediator)
{
    m_mediator = mediator;
}

QGraphicsWidget *MyExtension::widget()
{
    return m_row.get();
}

void MyExtension::contentChanged(const ContentRecord &content)
{
    // Many files tell no title of their own.
    const QString name = content.title().isEmpty() ? QFileInfo(QUrl(content.uri()).path()).completeBaseName()
                                                   : content.title();
    m_row->setText(QStringLiteral("More about “%1”").arg(name));
    m_page->setText(QStringLiteral("Play “%1”").arg(name));
}
