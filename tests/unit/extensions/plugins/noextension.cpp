// SPDX-License-Identifier: GPL-3.0-or-later
// Says that it is an extension and is none.
#include <kestrel/extensioninterface.h>

class NoExtension : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KESTREL_EXTENSION_INTERFACE)
};

#include "noextension.moc"
