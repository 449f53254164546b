// SPDX-License-Identifier: GPL-3.0-or-later
// The library by keyboard alone.
#include "data/allvideosmodel.h"
#include "filterwidget.h"
#include "myallvideoswidget.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/textedit.h"

#include <QGraphicsScene>
#include <QKeyEvent>
#include <QTimer>

namespace {

// In a field of one line these mean the list.
bool leavesField(const QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return true;
    default:
        return false;
    }
}

} // namespace

bool MyAllVideosWidget::canFilter() const
{
    return m_mmcAvailable && isVisible() && m_model->rowCount() > 0 && !isEditSheetDisplayed()
        && !m_objectMenu->isDisplayed();
}

// Where a person who uses the keyboard begins, and comes back to.
void MyAllVideosWidget::focusList()
{
    if (m_list->isVisible() && scene() && !scene()->focusItem())
        m_list->setFocus(Qt::OtherFocusReason);
}

bool MyAllVideosWidget::takeKey(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Find)) {
        if (!canFilter())
            return false;
        m_filterTimer->stop();
        Q_EMIT showTextEdit(QString(), true);
        m_filter->textEdit()->setFocus(Qt::ShortcutFocusReason);
        m_filter->textEdit()->selectAll();
        return true;
    }
    if (event->key() == Qt::Key_Escape) {
        if (!m_filter->isVisible())
            return false;
        resetFilter();
        return true;
    }
    const bool inField = m_filter->textEdit()->hasFocus();
    if (!m_list->isVisible() || m_list->hasFocus() || !scene() || (inField && !leavesField(event)))
        return false;
    event->accept();
    scene()->sendEvent(m_list, event);
    if (event->isAccepted())
        m_list->setFocus(Qt::OtherFocusReason);
    return event->isAccepted();
}
