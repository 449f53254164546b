// SPDX-License-Identifier: GPL-3.0-or-later
#include <kestrel/playerhostinterface.h>

#include "extensionframe.h"

#include <QGraphicsWidget>
#include <QThread>
#include <QUrl>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qsizetype LongestTitle = 200; // one line

// A page of its own that shows it is no fault: somebody tapped twice.
bool standsOnAnotherPage(const QGraphicsWidget *widget)
{
    const ExtensionFrame *frame = ExtensionFrame::around(widget);
    const bool isOnItsOwn
        = frame && frame->place() == ExtensionFrame::Place::OwnPage && frame->content() == widget;
    return frame && !isOnItsOwn;
}

} // namespace

struct PlayerHostInterface::SubPage
{
    QPointer<QGraphicsWidget> widget;
    QString title;
};

struct PlayerHostInterface::PlayRequest
{
    QStringList uriList;
    uint index;
    QString callerId;
};

PlayerHostInterface::PlayerHostInterface(QObject *parent) : QObject(parent) { }

PlayerHostInterface::~PlayerHostInterface() = default;

bool PlayerHostInterface::isOnItsThread()
{
    if (QThread::currentThread() == thread())
        return true;
    QMetaObject::invokeMethod(
        this, [this] { Q_EMIT refused(u"it called the host on another thread"_s); }, Qt::QueuedConnection);
    return false;
}

// What the host does on a request may take the page away, and with it the extension that asks, which must not
// be on the stack by then.
void PlayerHostInterface::showSubPage(QGraphicsWidget *widget, const QString &title)
{
    if (!isOnItsThread())
        return;
    if (!m_askedSubPage)
        QMetaObject::invokeMethod(this, &PlayerHostInterface::announceSubPage, Qt::QueuedConnection);
    m_askedSubPage.reset(new SubPage{widget, title});
}

void PlayerHostInterface::announceSubPage()
{
    const std::unique_ptr<SubPage> asked = std::move(m_askedSubPage);
    if (!asked->widget || standsOnAnotherPage(asked->widget)) {
        Q_EMIT refused(asked->widget ? u"it gave a widget for a page that stands on one"_s
                                     : u"it gave no widget for a page"_s);
        return;
    }
    // A second tap on the same line: the page is there, or on its way in.
    if (asked->widget->scene())
        return;
    m_subPageWidget = asked->widget;
    m_title = asked->title.left(LongestTitle).simplified();
    Q_EMIT subPageWidgetChanged();
}

void PlayerHostInterface::play(const QStringList &uriList, uint index, const QString &callerId)
{
    if (!isOnItsThread())
        return;
    if (!m_askedPlay)
        QMetaObject::invokeMethod(this, &PlayerHostInterface::announcePlay, Qt::QueuedConnection);
    m_askedPlay.reset(new PlayRequest{uriList, index, callerId});
}

void PlayerHostInterface::announcePlay()
{
    const std::unique_ptr<PlayRequest> asked = std::move(m_askedPlay);
    // An index beyond the list is told by whoever takes the request.
    const bool isThere = asked->index < uint(asked->uriList.size());
    if (isThere && QUrl(asked->uriList.at(asked->index)).scheme().isEmpty()) {
        Q_EMIT refused(
            u"it asked for “%1”, which is no address"_s.arg(asked->uriList.at(asked->index).left(200)));
        return;
    }
    Q_EMIT playRequested(asked->uriList, asked->index, asked->callerId);
}

QGraphicsWidget *PlayerHostInterface::subPageWidget() const
{
    return m_subPageWidget;
}

QString PlayerHostInterface::title() const
{
    return m_title;
}
