// SPDX-License-Identifier: MIT
#pragma once

#include <kestrel/extensioninterface.h>

#include <QObject>

#include <memory>

class Row;

class MyExtension : public QObject, public ExtensionInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KESTREL_EXTENSION_INTERFACE)
    Q_INTERFACES(ExtensionInterface)

public:
    MyExtension();
    ~MyExtension() override;

    void setActionMediator(ActionMediator *mediator) override;
    QGraphicsWidget *widget() override;
    void contentChanged(const ContentRecord &content) override;

private:
    ActionMediator *m_mediator = nullptr;
    std::unique_ptr<Row> m_row; // on the details page
    std::unique_ptr<Row> m_page; // on a page of its own
};
