// SPDX-License-Identifier: GPL-3.0-or-later
#include "textedit_p.h"

#include "painthelpers.h"

#include <QCursor>
#include <QFocusEvent>
#include <QFontMetricsF>
#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>
#include <QGuiApplication>
#include <QInputMethod>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyleHints>
#include <QTimerEvent>
#include <QtMath>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr qreal unbounded = 1e6;
constexpr qreal roomForCursor = 4;

} // namespace

Qt::LayoutDirection TextEdit::Private::directionOf(const QString &text, Qt::LayoutDirection fallBack)
{
    const auto codes = text.toUcs4();
    for (const uint code : codes) {
        switch (QChar::direction(code)) {
        case QChar::DirL:
            return Qt::LeftToRight;
        case QChar::DirR:
        case QChar::DirAL:
            return Qt::RightToLeft;
        default:
            break;
        }
    }
    return fallBack;
}

void TextEdit::Private::layOut(const QFont &font, qreal width, Qt::LayoutDirection fallBack)
{
    layout.setFont(font);
    layout.setText(editor.text());
    layout.setPreeditArea(editor.cursor(), preedit);
    layout.setFormats(preeditFormats);
    const bool rightToLeft = isRightToLeft(fallBack);
    QTextOption option(rightToLeft ? Qt::AlignRight | Qt::AlignAbsolute : Qt::AlignLeft | Qt::AlignAbsolute);
    option.setWrapMode(QTextOption::NoWrap);
    option.setTextDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    option.setUseDesignMetrics(true);
    layout.setTextOption(option);
    const auto breakAt = [this](qreal lineWidth) {
        layout.beginLayout();
        QTextLine line = layout.createLine();
        line.setLineWidth(lineWidth);
        layout.endLayout();
        return line.naturalTextWidth();
    };
    const qreal total = std::max(width, breakAt(unbounded) + 1);
    breakAt(total);
    // The text is moved so that the cursor is seen, and never leaves a gap at its end.
    const qreal x = cursorX();
    if (total <= width)
        scroll = 0;
    else if (x - scroll > width - roomForCursor)
        scroll = x - width + roomForCursor;
    else if (x < scroll)
        scroll = x;
    scroll = std::clamp<qreal>(scroll, 0, std::max<qreal>(0, total - width + roomForCursor));
}

qreal TextEdit::Private::cursorX() const
{
    const QTextLine line = this->line();
    return line.isValid() ? line.cursorToX(editor.cursor() + preeditCursor) : 0;
}

TextEdit::TextEdit(QGraphicsItem *parent) : Widget(parent), d(std::make_unique<Private>())
{
    setFlag(ItemIsFocusable);
    setFlag(ItemAcceptsInputMethod);
    setFlag(ItemClipsToShape);
    setFocusPolicy(Qt::StrongFocus);
    setAcceptedMouseButtons(Qt::LeftButton | Qt::MiddleButton);
    setCursor(Qt::IBeamCursor);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setStyleName(u"CommonTextField"_s);
    d->finger.setParent(this);
    connect(&d->finger, &TapTracker::longTapped, this,
            [this](const QPointF &scenePosition) { pressedLong(mapFromScene(scenePosition)); });
}

TextEdit::~TextEdit()
{
    delete d->menu;
}

void TextEdit::applyStyle()
{
    Widget::applyStyle();
    edited(false);
}

void TextEdit::setText(const QString &text)
{
    const QString before = d->editor.text();
    d->preedit.clear();
    d->preeditCursor = 0;
    d->preeditFormats.clear();
    d->editor.reset(text);
    edited(d->editor.text() != before);
}

QString TextEdit::text() const
{
    return d->editor.text();
}

Qt::LayoutDirection TextEdit::textDirection() const
{
    return d->isRightToLeft(layoutDirection()) ? Qt::RightToLeft : Qt::LeftToRight;
}

void TextEdit::setPrompt(const QString &prompt)
{
    d->prompt = prompt;
    update();
}

QString TextEdit::prompt() const
{
    return d->prompt;
}

QString TextEdit::selectedText() const
{
    return d->editor.selectedText();
}

void TextEdit::selectAll()
{
    d->editor.selectAll();
    edited(false);
}

int TextEdit::cursorPosition() const
{
    return d->editor.cursor();
}

void TextEdit::setCursorPosition(int position)
{
    d->editor.setCursor(position);
    edited(false);
}

bool TextEdit::isUserEdit() const
{
    return d->userEdit;
}

void TextEdit::edited(bool textDiffers)
{
    const QRectF content = contentsRect();
    d->layOut(style().font, std::max<qreal>(0, content.width()), layoutDirection());
    if (hasFocus())
        restartBlinking();
    update();
    if (scene() != nullptr && hasFocus())
        QGuiApplication::inputMethod()->update(Qt::ImQueryInput);
    const bool moved = std::exchange(d->toldCursor, d->editor.cursor()) != d->editor.cursor();
    const bool reselected = std::exchange(d->toldAnchor, d->editor.anchor()) != d->editor.anchor();
    if (textDiffers)
        closeMenu();
    else
        placeMenu();
    if (textDiffers)
        Q_EMIT textChanged();
    if (moved || reselected)
        Q_EMIT cursorPositionChanged();
}

void TextEdit::userEdited(bool textDiffers)
{
    const QScopedValueRollback guard(d->userEdit, true);
    edited(textDiffers);
}

void TextEdit::restartBlinking()
{
    if (d->blinkTimer != 0)
        killTimer(d->blinkTimer);
    d->blinkTimer = 0;
    d->cursorOn = hasFocus();
    const int flash = QGuiApplication::styleHints()->cursorFlashTime();
    if (d->cursorOn && flash >= 2)
        d->blinkTimer = startTimer(flash / 2);
}

void TextEdit::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != d->blinkTimer) {
        Widget::timerEvent(event);
        return;
    }
    d->cursorOn = !d->cursorOn;
    update();
}

void TextEdit::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    Widget::resizeEvent(event);
    edited(false);
}

void TextEdit::changeEvent(QEvent *event)
{
    Widget::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange || event->type() == QEvent::ContentsRectChange)
        edited(false);
}

QSizeF TextEdit::sizeHint(Qt::SizeHint which, const QSizeF &constraint) const
{
    if (which == Qt::MaximumSize)
        return Widget::sizeHint(which, constraint);
    const QMarginsF m = style().margins;
    return {which == Qt::MinimumSize ? 60.0 : 240.0,
            qCeil(QFontMetricsF(style().font).height()) + m.top() + m.bottom()};
}

void TextEdit::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    const Style &look = style();
    fillRounded(painter, rect(), look.radius, look.color(u"background"_s));
    const QRectF content = contentsRect();
    const QTextLine line = d->line();
    const qreal lineHeight
        = line.isValid() && line.height() > 0 ? line.height() : QFontMetricsF(look.font).height();
    const QPointF origin(content.left() - d->scroll, content.center().y() - lineHeight / 2);
    painter->save();
    painter->setClipRect(content.adjusted(-2, 0, 2, 0), Qt::IntersectClip);
    if (d->editor.text().isEmpty() && d->preedit.isEmpty()) {
        painter->setFont(look.font);
        painter->setPen(look.color(u"prompt"_s));
        const QString prompt
            = QFontMetricsF(look.font).elidedText(d->prompt, Qt::ElideRight, content.width());
        const Qt::Alignment side = layoutDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
        painter->drawText(content, side | Qt::AlignAbsolute | Qt::AlignVCenter | Qt::TextSingleLine, prompt);
    } else {
        QList<QTextLayout::FormatRange> selections;
        if (d->editor.hasSelection() && hasFocus()) {
            QTextCharFormat format;
            format.setBackground(look.color(u"selection"_s));
            selections.append(
                {d->editor.selectionStart(), d->editor.selectionEnd() - d->editor.selectionStart(), format});
        }
        painter->setPen(look.color(u"text"_s));
        d->layout.draw(painter, origin, selections);
        fadeEnds(painter, content);
    }
    painter->restore();
    // Over the text: where that runs out it does so as high as the field is.
    if (hasFocus())
        drawOutline(painter, rect(), look.radius, look.number(u"focusWidth"_s, 2), look.color(u"focus"_s));
    else
        drawOutline(painter, rect(), look.radius, look.number(u"outlineWidth"_s), look.color(u"outline"_s));
    if (hasFocus() && d->cursorOn && d->preeditCursorShown) {
        const qreal width = look.number(u"cursorWidth"_s, 2);
        const qreal height = std::min(content.height(), lineHeight + 4);
        const qreal x = std::clamp(origin.x() + d->cursorX(), content.left(), content.right());
        painter->fillRect(QRectF(x - width / 2, content.center().y() - height / 2, width, height),
                          look.color(u"cursor"_s));
    }
}

// Letters at an edge where the text goes on are not cut in two.
void TextEdit::fadeEnds(QPainter *painter, const QRectF &content) const
{
    constexpr qreal depth = 16;
    const QRectF room = content.adjusted(-2, 0, 2, 0);
    const QColor ground = style().color(u"background"_s);
    if (d->scroll > 0)
        fadeInto(painter, QRectF(room.left(), room.top(), depth, room.height()), Qt::LeftEdge, ground);
    if (d->line().width() - d->scroll > content.width() + roomForCursor)
        fadeInto(painter, QRectF(room.right() - depth, room.top(), depth, room.height()), Qt::RightEdge,
                 ground);
}

bool TextEdit::sceneEvent(QEvent *event)
{
    // Whoever takes the press away, a pan for one, takes the long press with it.
    if (event->type() == QEvent::UngrabMouse) {
        d->finger.cancel();
        d->dragging = false;
    }
    return Widget::sceneEvent(event);
}

int TextEdit::positionAt(const QPointF &point) const
{
    const QTextLine line = d->line();
    if (!line.isValid())
        return 0;
    return line.xToCursor(point.x() - contentsRect().left() + d->scroll);
}

void TextEdit::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    event->accept();
    closeMenu();
    if (event->button() == Qt::LeftButton) {
        d->dragging = true;
        d->finger.press(event->scenePos());
        d->editor.setCursor(positionAt(event->pos()), event->modifiers() & Qt::ShiftModifier);
        edited(false);
    }
}

void TextEdit::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    d->finger.move(event->scenePos());
    if (!d->dragging || d->finger.isPressed())
        return; // a finger that rests still shakes
    d->editor.setCursor(positionAt(event->pos()), true);
    edited(false);
}

void TextEdit::mouseDoubleClickEvent(QGraphicsSceneMouseEvent *event)
{
    event->accept();
    d->dragging = false;
    d->editor.selectWordAt(positionAt(event->pos()));
    edited(false);
    if (event->source() != Qt::MouseEventNotSynthesized)
        openMenu(); // a finger has no keys for what it selected
}

void TextEdit::focusInEvent(QFocusEvent *event)
{
    Widget::focusInEvent(event);
    restartBlinking();
    update();
    Q_EMIT gainedFocus(event->reason());
}

void TextEdit::focusOutEvent(QFocusEvent *event)
{
    // What was being composed stays, as typed text.
    if (!d->preedit.isEmpty()) {
        const QString composed = std::exchange(d->preedit, QString());
        d->preeditCursor = 0;
        d->preeditFormats.clear();
        userEdited(d->editor.insert(composed));
    }
    Widget::focusOutEvent(event);
    closeMenu();
    restartBlinking();
    update();
    Q_EMIT lostFocus(event->reason());
}

} // namespace toolkit
