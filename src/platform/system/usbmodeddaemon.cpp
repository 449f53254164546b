// SPDX-License-Identifier: GPL-3.0-or-later
#include "usbmodeddaemon.h"

#include "systemlog.h"

using namespace Qt::Literals::StringLiterals;

namespace {

const QString service = QStringLiteral("com.sorel.usb_moded");
const QString path = QStringLiteral("/com/sorel/usb_moded");
constexpr auto MassStorage = "mass_storage"_L1;
constexpr int AnswerTimeout = 5000; // ms
constexpr auto PreUnmount = "pre-unmount"_L1;

} // namespace

UsbModedDaemon::UsbModedDaemon(const QDBusConnection &bus) : m_peer(bus, service)
{
    connect(&m_peer, &BusPeer::appeared, this, &UsbModedDaemon::askMode);
    connect(&m_peer, &BusPeer::vanished, this, &UsbModedDaemon::vanished);
    connect(&m_peer, &BusPeer::signalled, this, &UsbModedDaemon::stateIndicated);
    m_peer.listen(path, service, u"sig_usb_state_ind"_s);
}

void UsbModedDaemon::onChange(QObject *context, const Listener &listener)
{
    connect(this, &UsbModedDaemon::changed, context, listener);
}

void UsbModedDaemon::vanished()
{
    ++m_news;
    m_asking = false;
    m_askAgain = false;
    qCInfo(systemLog, "no USB mode daemon on the system bus: nothing counts as exported over USB");
    setMassStorage(false, Source::Reading);
}

// The warning before the partition goes is no mode. Of the other states only the daemon knows whether they
// end the export or are events within it.
void UsbModedDaemon::stateIndicated(const QDBusMessage &signal)
{
    if (signal.signature() != "s"_L1)
        return;
    const QString state = signal.arguments().at(0).toString();
    if (state == PreUnmount)
        return;
    if (state == MassStorage) {
        ++m_news;
        m_askAgain = false;
        setMassStorage(true, Source::Announcement);
    } else {
        askMode();
    }
}

// One question at a time, however fast the daemon talks.
void UsbModedDaemon::askMode()
{
    if (m_asking) {
        m_askAgain = true;
        return;
    }
    m_asking = true;
    m_peer.call(
        BusPeer::method(path, service, u"mode_request"_s), this,
        [this, news = m_news](const QDBusMessage &reply) {
            m_asking = false;
            if (std::exchange(m_askAgain, false))
                askMode();
            else if (news == m_news)
                takeMode(reply);
        },
        AnswerTimeout);
}

void UsbModedDaemon::takeMode(const QDBusMessage &reply)
{
    if (reply.signature() == "s"_L1 && reply.type() == QDBusMessage::ReplyMessage) {
        setMassStorage(reply.arguments().at(0).toString() == MassStorage, Source::Reading);
        return;
    }
    qCWarning(systemLog, "the USB mode daemon does not tell its mode (%ls): nothing counts as exported",
              qUtf16Printable(reply.errorMessage()));
    setMassStorage(false, Source::Reading);
}

void UsbModedDaemon::setMassStorage(bool massStorage, Source source)
{
    if (std::exchange(m_massStorage, massStorage) != massStorage)
        Q_EMIT changed(source);
}
