// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusAbstractAdaptor>
#include <QString>
#include <QStringList>

// The interface on the session bus. Each method goes to the slot of its parent by name; window and task title
// are not used. The form of play() with a playlist is accepted and does nothing.
class KestrelInterfaceAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.harrow.orlan.sorelkit.KestrelInterface")
    // clang-format off
    Q_CLASSINFO("D-Bus Introspection", ""
"  <interface name=\"com.harrow.orlan.sorelkit.KestrelInterface\">\n"
"    <method name=\"launch\">\n"
"      <arg direction=\"in\" type=\"u\" name=\"_windowId\"/>\n"
"      <arg direction=\"in\" type=\"s\" name=\"_taskTitle\"/>\n"
"    </method>\n"
"    <method name=\"launch\">\n"
"      <arg direction=\"in\" type=\"u\" name=\"_windowId\"/>\n"
"      <arg direction=\"in\" type=\"s\" name=\"_taskTitle\"/>\n"
"      <arg direction=\"in\" type=\"as\" name=\"uriList\"/>\n"
"    </method>\n"
"    <method name=\"play\">\n"
"      <arg direction=\"in\" type=\"u\" name=\"_windowId\"/>\n"
"      <arg direction=\"in\" type=\"s\" name=\"_taskTitle\"/>\n"
"      <arg direction=\"in\" type=\"u\" name=\"index\"/>\n"
"      <arg direction=\"in\" type=\"s\" name=\"playlistName\"/>\n"
"    </method>\n"
"    <method name=\"play\">\n"
"      <arg direction=\"in\" type=\"u\" name=\"_windowId\"/>\n"
"      <arg direction=\"in\" type=\"s\" name=\"_taskTitle\"/>\n"
"      <arg direction=\"in\" type=\"as\" name=\"uriList\"/>\n"
"    </method>\n"
"    <method name=\"play\">\n"
"      <arg direction=\"in\" type=\"as\" name=\"uriList\"/>\n"
"    </method>\n"
"    <method name=\"play\">\n"
"      <arg direction=\"in\" type=\"as\" name=\"uriList\"/>\n"
"      <arg direction=\"in\" type=\"u\" name=\"position\"/>\n"
"    </method>\n"
"    <method name=\"cancel\"/>\n"
"    <signal name=\"playbackStarted\"/>\n"
"    <signal name=\"launched\"/>\n"
"  </interface>\n"
        "")
    // clang-format on

public:
    explicit KestrelInterfaceAdaptor(QObject *parent);

Q_SIGNALS:
    void launched();
    void playbackStarted();

public Q_SLOTS:
    void cancel();
    void launch(uint _windowId, const QString &_taskTitle);
    void launch(uint _windowId, const QString &_taskTitle, const QStringList &uriList);
    void play(uint _windowId, const QString &_taskTitle, uint index, const QString &playlistName);
    void play(uint _windowId, const QString &_taskTitle, const QStringList &uriList);
    void play(const QStringList &uriList);
    void play(const QStringList &uriList, uint position);
};
