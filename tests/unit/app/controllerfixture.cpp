// SPDX-License-Identifier: GPL-3.0-or-later
#include "controllerfixture.h"

#include "data/positionjournal.h"
#include "details/extensionpage.h"
#include "library/myallvideoswidget.h"
#include "platform/media/rendererregistry.h"
#include "platform/media/videowidget.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"

#include <QDir>
#include <QRegularExpression>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

VideoInfo video(int number, uint position)
{
    VideoInfo info;
    info.urn = u"urn:uuid:%1"_s.arg(number);
    info.title = u"video %1"_s.arg(number);
    info.duration = 60;
    info.playPosition = position;
    info.url = u"file:///videos/%1.mp4"_s.arg(number);
    return info;
}

void ControllerFixture::prepare()
{
    NotificationService::setInstance(&m_notices);
    DeviceStateOverrides overrides;
    overrides.call = [](QObject *parent) -> CallMonitor * { return new FakeCalls(parent); };
    overrides.lock = [](QObject *parent) -> LockWatcher * { return new FakeLocks(parent); };
    setDeviceStateOverrides(overrides);
    FakeShareService::install();
    RendererRegistry::setBackendFactory([this] {
        auto backend = std::make_unique<NullMediaBackend>();
        backend->setDefaultMedia(m_media);
        return backend;
    });
    m_window.showForProfile();
    QVERIFY(QTest::qWaitForWindowActive(&m_window));
}

void ControllerFixture::clean()
{
    FakeCalls::active = 0;
    m_notices.messages.clear();
    m_controller.reset();
    // What the store has not acknowledged would be restored by the next program.
    QDir(PositionJournal::defaultFolder()).removeRecursively();
    FakeShareService::created() = 0;
    FakeShareService::shared().clear();
    m_media = {};
    m_store.answerBy({});
    m_store.answerWith({});
    m_store.clear();
}

void ControllerFixture::start(const QString &address, bool serviceFramework)
{
    if (!m_window.isVisible()) { // a test before ended the program, which closes it
        m_window.showForProfile();
        QVERIFY(QTest::qWaitForWindowActive(&m_window));
    }
    m_store.answerWith(
        {{u"urn:uuid:1"_s, u"video 1"_s, u"1.mp4"_s, 60, 0, u"video/mp4"_s, u"file:///videos/1.mp4"_s, 1}});
    m_controller = std::make_unique<ApplicationController>(nullptr, serviceFramework, address);
    QVERIFY(m_controller->pageStack().isEmpty()); // nothing before the event loop
    QCoreApplication::processEvents();
    if (!serviceFramework && address.isEmpty())
        QTRY_COMPARE(library()->localVideosWidget()->viewState(), int(MyAllVideosWidget::ListShown));
    m_controller->initObjects();
}

QString ControllerFixture::stack() const
{
    QStringList names;
    for (const toolkit::ApplicationPage *page : m_controller->pageStack()) {
        names.append(page == library()                               ? u"library"_s
                         : page == player()                          ? u"player"_s
                         : page == m_controller->detailsPage()       ? u"details"_s
                         : qobject_cast<const ExtensionPage *>(page) ? u"extension"_s
                                                                     : u"other"_s);
    }
    return names.join(u' ');
}

QString ControllerFixture::played() const
{
    return m_controller->playerController()->currentVideo().url;
}

NullMediaBackend *ControllerFixture::backend() const
{
    return qobject_cast<NullMediaBackend *>(player()->videoWidget()->backend());
}

void ControllerFixture::expire(QTimer *timer)
{
    QVERIFY(timer && timer->isActive());
    timer->stop();
    QMetaObject::invokeMethod(timer, "timeout");
}

QStringList ControllerFixture::detailsAskedFor() const
{
    static const QRegularExpression named(u"nie:contentAccessed.*= <([^>]*)>"_s);
    QStringList urns;
    for (const QString &text : m_store.texts(SparqlQuery::SelectStatement)) {
        const QRegularExpressionMatch match = named.match(text);
        if (match.hasMatch())
            urns.append(match.captured(1));
    }
    return urns;
}
