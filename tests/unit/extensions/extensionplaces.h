// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/extensions/callmarker.h>

#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

// The folders in which a program looks for extensions, empty at first and this process's alone; extensions
// are put in from those that the build made.
class ExtensionPlaces
{
public:
    ExtensionPlaces()
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_root.filePath(QStringLiteral("user"))));
        qputenv("XDG_DATA_DIRS", QFile::encodeName(m_root.filePath(QStringLiteral("system"))));
        qputenv("XDG_STATE_HOME", QFile::encodeName(m_root.filePath(QStringLiteral("state"))));
    }
    ~ExtensionPlaces()
    {
        for (const char *name : {"XDG_DATA_HOME", "XDG_DATA_DIRS", "XDG_STATE_HOME"})
            qunsetenv(name);
    }
    Q_DISABLE_COPY_MOVE(ExtensionPlaces)

    // `where`: "user" or "system".
    [[nodiscard]] QString folder(const QString &where) const
    {
        const QString folder = m_root.filePath(where + QStringLiteral("/kestrel/extensions"));
        QDir().mkpath(folder);
        return folder;
    }
    // Of the extension that install() put there.
    [[nodiscard]] QString marker(const QString &where, const QString &name) const
    {
        return CallMarker::path(library(where, name));
    }

    // A description, and beside it one of the plug-ins under a name of its own; without `plugin` the
    // description alone.
    void install(const QString &where, const QString &name, const QString &plugin,
                 const QString &interfaceName
                 = QStringLiteral("com.harrow.Kestrel.extensions.PlayerInterface/1.0")) const
    {
        const QString library = library_(name);
        write(where, name,
              QStringLiteral(
                  "[Kestrel Extension]\nName=The %1 one\nName[de]=Der von %1\nInterface=%2\nLibrary=%3\n")
                  .arg(where, interfaceName, library));
        if (plugin.isEmpty())
            return;
        const QString to = folder(where) + u'/' + library;
        QFile::remove(to);
        QFile::copy(QStringLiteral(KESTREL_BIN_DIR "/../tests/extensions/%1.so").arg(plugin), to);
    }
    void write(const QString &where, const QString &name, const QString &description) const
    {
        QFile file(folder(where) + u'/' + name);
        if (file.open(QIODevice::WriteOnly))
            file.write(description.toUtf8());
    }
    [[nodiscard]] QString library(const QString &where, const QString &name) const
    {
        return folder(where) + u'/' + library_(name);
    }

private:
    [[nodiscard]] static QString library_(const QString &name)
    {
        return name.chopped(qsizetype(sizeof("desktop") - 1)) + QStringLiteral("so");
    }

    QTemporaryDir m_root;
};
