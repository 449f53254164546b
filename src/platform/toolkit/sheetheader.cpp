// SPDX-License-Identifier: GPL-3.0-or-later
#include "sheetheader.h"

#include "button.h"
#include "keeptranslated.h"
#include "label.h"
#include "painthelpers.h"

#include <QEvent>
#include <QPainter>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr qreal backSize = 56;
constexpr qreal actionMargin = 8;

} // namespace

SheetHeader::SheetHeader(QGraphicsItem *parent)
    : Widget(parent),
      m_title(new Label(this)),
      m_negative(new Button(this)),
      m_positive(new Button(this)),
      m_back(new IconButton(u"icon-m-toolbar-back-white"_s, this))
{
    m_title->setTextFormat(Qt::PlainText);
    m_title->setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere); // file names have no blanks
    for (Button *button : {m_negative, m_positive, m_back})
        button->setVisible(false);
    keepTranslated(this, [this] { m_back->setAccessibleName(qtTrId("qtn_comm_back")); });
    connect(m_negative, &Button::clicked, this, &SheetHeader::negativeClicked);
    connect(m_positive, &Button::clicked, this, &SheetHeader::positiveClicked);
    connect(m_back, &Button::clicked, this, &SheetHeader::backClicked);
    setStyleName(u"SheetHeader"_s);
}

void SheetHeader::setTitle(const QString &title)
{
    m_title->setText(title);
    arrange();
    updateGeometry();
}

QString SheetHeader::title() const
{
    return m_title->text();
}

void SheetHeader::setAction(Button *button, const QString &text)
{
    button->setText(text);
    button->setVisible(!text.isEmpty());
    styleParts();
    arrange();
    updateGeometry();
}

void SheetHeader::setNegativeAction(const QString &text)
{
    setAction(m_negative, text);
}

void SheetHeader::setPositiveAction(const QString &text)
{
    setAction(m_positive, text);
}

void SheetHeader::setBackVisible(bool visible)
{
    m_back->setVisible(visible);
    arrange();
    updateGeometry();
}

bool SheetHeader::isBackVisible() const
{
    return m_back->isVisibleTo(this);
}

void SheetHeader::setDragMark(bool visible)
{
    m_dragMark = visible;
    arrange();
    updateGeometry();
}

bool SheetHeader::hasActions() const
{
    return !m_negative->text().isEmpty() || !m_positive->text().isEmpty();
}

qreal SheetHeader::markHeight() const
{
    return m_dragMark && !hasActions() ? style().number(u"mark"_s, 24) : 0;
}

qreal SheetHeader::titleWidth(qreal width) const
{
    const QMarginsF m = style().margins;
    return width - (isBackVisible() ? actionMargin + backSize : m.left()) - m.right();
}

qreal SheetHeader::heightFor(qreal width) const
{
    if (hasActions())
        return style().number(u"bar"_s, 72);
    if (m_title->text().isEmpty() && !isBackVisible())
        return markHeight();
    const QMarginsF m = style().margins;
    const qreal title = m_title->effectiveSizeHint(Qt::PreferredSize, {titleWidth(width), -1}).height();
    return markHeight() + m.top() + qMax(title, isBackVisible() ? backSize : 0.0) + m.bottom();
}

// Places are written for left-to-right.
QRectF SheetHeader::mirrored(const QRectF &place) const
{
    if (layoutDirection() != Qt::RightToLeft)
        return place;
    return {size().width() - place.right(), place.y(), place.width(), place.height()};
}

void SheetHeader::arrange()
{
    if (hasActions())
        arrangeBar();
    else
        arrangeTitle();
    update();
}

void SheetHeader::arrangeBar()
{
    const qreal height = style().number(u"bar"_s, 72);
    const qreal widest = qMax(0.0, size().width() / 2 - actionMargin);
    qreal used = 0;
    for (Button *button : {m_negative, m_positive}) {
        const QSizeF wish = button->effectiveSizeHint(Qt::PreferredSize);
        const QSizeF own(button->text().isEmpty() ? 0 : qMin(wish.width(), widest),
                         qMin(height, wish.height()));
        const qreal x = button == m_negative ? actionMargin : size().width() - actionMargin - own.width();
        button->setGeometry(mirrored(QRectF(QPointF(x, (height - own.height()) / 2), own)));
        used = qMax(used, own.width());
    }
    const qreal side = used + 2 * actionMargin;
    m_title->setGeometry(QRectF(side, 0, qMax(0.0, size().width() - 2 * side), height));
}

void SheetHeader::arrangeTitle()
{
    const QMarginsF m = style().margins;
    const qreal width = titleWidth(size().width());
    const qreal height = m_title->effectiveSizeHint(Qt::PreferredSize, {width, -1}).height();
    const qreal top = markHeight() + m.top();
    const qreal row = qMax(height, isBackVisible() ? backSize : 0.0);
    const qreal x = isBackVisible() ? actionMargin + backSize : m.left();
    m_back->setGeometry(mirrored(QRectF(actionMargin, top + (row - backSize) / 2, backSize, backSize)));
    m_title->setGeometry(mirrored(QRectF(x, top + (row - height) / 2, width, height)));
}

void SheetHeader::styleParts()
{
    m_title->setStyleName(hasActions() ? u"SheetBarTitle"_s : u"SheetTitle"_s);
    m_negative->setStyleName(u"SheetNegativeAction"_s);
    m_positive->setStyleName(u"SheetPositiveAction"_s);
    m_back->setStyleName(u"SheetBackButton"_s);
}

void SheetHeader::applyStyle()
{
    Widget::applyStyle();
    styleParts();
    arrange();
}

void SheetHeader::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    Widget::resizeEvent(event);
    arrange();
}

void SheetHeader::changeEvent(QEvent *event)
{
    Widget::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        arrange();
}

void SheetHeader::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    if (hasActions()) {
        painter->fillRect(rect(), style().color(u"background"_s, Qt::transparent));
        return;
    }
    if (markHeight() <= 0)
        return;
    const QSizeF mark(style().number(u"markWidth"_s, 40), 4);
    const QRectF place(QPointF((size().width() - mark.width()) / 2, (markHeight() - mark.height()) / 2),
                       mark);
    fillRounded(painter, place, mark.height() / 2, style().color(u"mark"_s));
}

} // namespace toolkit
