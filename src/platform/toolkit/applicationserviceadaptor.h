// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusAbstractAdaptor>
#include <QVariantMap>

class QDBusMessage;

namespace toolkit {

class ApplicationService;

// org.freedesktop.Application of the running instance.
class ApplicationServiceAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
    // clang-format off
    Q_CLASSINFO("D-Bus Introspection", ""
"  <interface name=\"org.freedesktop.Application\">\n"
"    <method name=\"Activate\">\n"
"      <arg direction=\"in\" type=\"a{sv}\" name=\"platform_data\"/>\n"
"    </method>\n"
"    <method name=\"Open\">\n"
"      <arg direction=\"in\" type=\"as\" name=\"uris\"/>\n"
"      <arg direction=\"in\" type=\"a{sv}\" name=\"platform_data\"/>\n"
"    </method>\n"
"    <method name=\"ActivateAction\">\n"
"      <arg direction=\"in\" type=\"s\" name=\"action_name\"/>\n"
"      <arg direction=\"in\" type=\"av\" name=\"parameter\"/>\n"
"      <arg direction=\"in\" type=\"a{sv}\" name=\"platform_data\"/>\n"
"    </method>\n"
"  </interface>\n"
        "")
    // clang-format on

public:
    explicit ApplicationServiceAdaptor(ApplicationService *service);

public Q_SLOTS:
    void Activate(const QVariantMap &platform_data);
    // An empty list activates. An address that is longer than any can be is refused.
    void Open(const QStringList &uris, const QVariantMap &platform_data, const QDBusMessage &message);
    // There are no actions: each activates.
    void ActivateAction(const QString &action_name, const QVariantList &parameter,
                        const QVariantMap &platform_data);

private:
    ApplicationService *m_service;
};

} // namespace toolkit
