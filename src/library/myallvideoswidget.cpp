// SPDX-License-Identifier: GPL-3.0-or-later
#include "myallvideoswidget.h"

#include "data/allvideosmodel.h"
#include "data/mmcmonitor.h"
#include "filteredmodel.h"
#include "filterwidget.h"
#include "librarylog.h"
#include "localvideoitemcreator.h"
#include "platform/toolkit/imagewidget.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/pannableviewport.h"
#include "platform/toolkit/textedit.h"

#include <QKeyEvent>
#include <QTimer>

namespace {

constexpr int SpareCells = 3;

} // namespace

void MyAllVideosWidget::resetFilter()
{
    m_filterTimer->stop();
    m_filter->setText(QString());
    m_savedFilterText.clear();
    m_list->setFocus(Qt::OtherFocusReason);
    Q_EMIT showTextEdit(QString(), false);
}

void MyAllVideosWidget::keyEvent(QKeyEvent *event)
{
    if (!event) {
        qCWarning(libraryLog) << "void MyAllVideosWidget::keyEvent(QKeyEvent*)"
                              << "NULL param";
        return;
    }
    if (!canFilter())
        return;
    m_filterTimer->stop();
    const QString typed = event->text();
    const auto characters = QStringView(typed).left(2).toUcs4(); // of the first plane or beyond
    if (characters.isEmpty() || !QChar::isPrint(characters.first()))
        return;
    const bool opensWithText = !isFilterShown() && m_filter->text().isEmpty();
    // A list that goes at once, because nothing matches, would hand the focus to the field, which would hear
    // the key again.
    if (opensWithText)
        m_list->clearFocus();
    Q_EMIT showTextEdit(opensWithText ? typed : QString(), true);
    if (m_filter->textEdit()->hasFocus())
        return; // the field hears the key itself
    // Until the field has the focus, keys that come quickly after the first would reach nobody.
    if (!opensWithText && event->type() == QEvent::KeyPress)
        m_filter->textEdit()->handleKeyPress(event);
    m_filter->focusLater();
}

void MyAllVideosWidget::hideDeletedFile(const QString &url)
{
    if (!url.isEmpty())
        m_proxy->excludeItem(m_model->urnForUrl(url), url);
}

void MyAllVideosWidget::itemClicked(const QModelIndex &index)
{
    if (m_playBlocked || isEditSheetDisplayed())
        return;
    if (!m_proxy || !m_list->itemModel()) {
        qCWarning(libraryLog) << "void MyAllVideosWidget::itemClicked(const QModelIndex&)"
                              << "NULL model";
        return;
    }
    if (index.row() < 0 || index.column() < 0) {
        qCWarning(libraryLog) << "void MyAllVideosWidget::itemClicked(const QModelIndex&)"
                              << "Invalid index";
        return;
    }
    m_filterTimer->stop();
    m_list->setFocus(Qt::OtherFocusReason);
    VideoInfo info = m_proxy->videoInfo(index.row());
    if (!info.url.isEmpty())
        Q_EMIT playVideo(info);
    m_filter->setText(QString());
    Q_EMIT showTextEdit(QString(), false);
}

void MyAllVideosWidget::goingBack()
{
    m_filter->setText(QString());
    disconnect(m_list, &toolkit::List::itemLongTapped, this, &MyAllVideosWidget::itemLongTapped);
}

void MyAllVideosWidget::mmcStateChanged(bool mounted)
{
    if (mounted) {
        if (!m_savedFilterText.isEmpty()) {
            Q_EMIT showTextEdit(QString(), true);
            m_filter->setText(m_savedFilterText);
            m_savedFilterText.clear();
        }
    } else {
        m_list->setFocus(Qt::OtherFocusReason);
        closeDialogs();
        // The card may be reported away more than once; the first report found the text.
        if (!m_filter->text().isEmpty())
            m_savedFilterText = m_filter->text();
        m_filter->setText(QString());
        m_filterTimer->stop();
        Q_EMIT showTextEdit(QString(), false);
    }
    if (m_model->rowCount() == 0)
        setViewState(EmptyCollection);
    else if (!awaitsRows())
        setViewState(m_proxy->rowCount() == 0 ? NoResults : ListShown);
    m_mmcAvailable = mounted;
}

void MyAllVideosWidget::modelRowCountChanged()
{
    m_hasLoaded = true;
    m_proxy->clearExcluded();
    if (m_model->rowCount() > 0) {
        if (!awaitsRows())
            setViewState(m_proxy->rowCount() == 0 ? NoResults : ListShown);
        return;
    }
    Q_EMIT showTextEdit(QString(), false);
    m_filter->setText(QString());
    setViewState(EmptyCollection);
}

void MyAllVideosWidget::liveFilteringTextChanged()
{
    if (!m_proxy || !m_proxy->sourceModel()) {
        qCWarning(libraryLog) << "void MyAllVideosWidget::liveFilteringTextChanged()"
                              << "NULL" << (m_proxy ? "sourceModel" : "model");
        return;
    }
    m_cellCreator->updateHighlightedText(m_filter->text());
    m_proxy->setFilterFixedString(m_filter->text());
    m_proxy->invalidate();
    m_list->setCurrentIndex({}); // the keyboard begins at the first of what is found
    chooseViewState();
    refillCells();
}

// Rows that stay are not filled again by themselves, but the text in them is marked otherwise now.
void MyAllVideosWidget::refillCells()
{
    const QList<QModelIndex> visible = m_list->visibleIndexes();
    if (visible.isEmpty())
        return;
    // The list keeps a few cells ready above and below what is seen.
    const int last = qMin(m_proxy->rowCount() - 1, visible.last().row() + SpareCells);
    for (int row = qMax(0, visible.first().row() - SpareCells); row <= last; ++row)
        m_list->refreshCell(m_proxy->index(row, 0));
}

void MyAllVideosWidget::liveFilteringClearClicked()
{
    m_filter->textEdit()->setFocus(Qt::OtherFocusReason);
    m_filterTimer->stop();
}

void MyAllVideosWidget::liveFilteringFocusChanged()
{
    if (m_filter->textEdit()->hasFocus())
        m_filterTimer->stop();
    else if (isFilterShown() && m_filter->text().isEmpty())
        m_filterTimer->start();
}

void MyAllVideosWidget::filterTimeout()
{
    if (!m_filter->textEdit()->hasFocus() && m_filter->text().isEmpty())
        Q_EMIT showTextEdit(QString(), false);
}

void MyAllVideosWidget::VKBFilter(const QPointF &pos)
{
    const bool pulledFromTop = pos.y() < 0 && m_lastPanPosition.y() == 0;
    if (pulledFromTop && m_filter && !isFilterShown() && m_model->rowCount() > 0) {
        Q_EMIT showTextEdit(QString(), true);
        m_filterTimer->start();
    }
    m_lastPanPosition = pos;
}

void MyAllVideosWidget::videoListEntered()
{
    connect(m_list, &toolkit::List::itemLongTapped, this, &MyAllVideosWidget::itemLongTapped,
            Qt::UniqueConnection);
    for (QGraphicsItem *item = parentItem(); item && !m_viewport; item = item->parentItem()) {
        m_viewport = qobject_cast<toolkit::PannableViewport *>(item->toGraphicsObject());
        if (m_viewport)
            connect(m_viewport, &toolkit::PannableViewport::positionChanged, this,
                    &MyAllVideosWidget::VKBFilter);
    }
}

void MyAllVideosWidget::panningStarted()
{
    m_list->setFocus(Qt::OtherFocusReason);
}

void MyAllVideosWidget::modelDataChanged(const QModelIndex &from, const QModelIndex &to)
{
    if (from.column() == VideoColumn::Title && to.column() == VideoColumn::Title)
        m_proxy->invalidate();
    if (m_viewState != Unknown && !awaitsRows())
        setViewState(m_proxy->rowCount() > 0 ? ListShown : NoResults);
}

void MyAllVideosWidget::blockPlay()
{
    m_playBlocked = true;
}

void MyAllVideosWidget::unblockPlay()
{
    m_playBlocked = false;
}

void MyAllVideosWidget::chooseViewState()
{
    if (m_model->rowCount() == 0 && isFilterIdle())
        setViewState(EmptyCollection);
    else if (awaitsRows())
        return;
    else if (m_proxy->rowCount() == 0 && isFilterShown())
        setViewState(NoResults);
    else
        setViewState(ListShown);
}

bool MyAllVideosWidget::awaitsRows()
{
    m_stateIsDue = !m_proxy->isSettled();
    return m_stateIsDue;
}

void MyAllVideosWidget::rowsArranged()
{
    if (!m_stateIsDue || !m_proxy->isSettled())
        return;
    m_stateIsDue = false;
    chooseViewState();
    refillCells();
}

// On the page, also while the page itself is covered by another.
bool MyAllVideosWidget::isFilterShown() const
{
    return m_filter->isVisibleTo(m_filter->parentItem());
}

bool MyAllVideosWidget::isFilterIdle() const
{
    return !isFilterShown() || m_filter->text().isEmpty();
}
