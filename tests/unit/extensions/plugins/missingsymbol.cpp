// SPDX-License-Identifier: GPL-3.0-or-later
// Wants a function that nobody has.
#include <kestrel/extensioninterface.h>

#include <QGraphicsWidget>

int nobodyHasThis();

class MissingSymbol : public QObject, public ExtensionInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KESTREL_EXTENSION_INTERFACE)
    Q_INTERFACES(ExtensionInterface)

public:
    void setActionMediator(ActionMediator *) override { }
    QGraphicsWidget *widget() override { return nobodyHasThis() ? new QGraphicsWidget : nullptr; }
    void contentChanged(const ContentRecord &) override { }
};

#include "missingsymbol.moc"
