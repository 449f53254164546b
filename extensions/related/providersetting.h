// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gobjectref.h"

#include <QObject>
#include <QStringList>
#include <QUrl>

// Which provider the person has chosen in the settings of the program, followed live.
class ProviderSetting : public QObject
{
    Q_OBJECT

public:
    // `schemaFolders`: where the schema is looked for before the system's.
    explicit ProviderSetting(const QStringList &schemaFolders = programFolders(), QObject *parent = nullptr);
    ~ProviderSetting() override;

    // Of the program's own prefix, or of the tree in which it was built.
    [[nodiscard]] static QStringList programFolders();

    // Empty unless somebody set one, and while content of the network is not wanted.
    [[nodiscard]] QUrl address() const { return m_address; }

Q_SIGNALS:
    void changed();

private:
    static void onChanged(GSettings *settings, const gchar *key, gpointer self);
    void read();

    GObjectRef<GSettings> m_settings; // null: the schema is nowhere, or lacks a key
    QUrl m_address;
};
