// SPDX-License-Identifier: GPL-3.0-or-later
// Made with the headers of a later version of the interface.
#include <QObject>
#include <QtPlugin>

class NextVersion : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.harrow.Kestrel.extensions.PlayerInterface/2.0")
};

#include "nextversion.moc"
