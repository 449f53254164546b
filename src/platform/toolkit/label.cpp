// SPDX-License-Identifier: GPL-3.0-or-later
#include "label.h"

#include "painthelpers.h"
#include "textlayouter.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QWidget>
#include <QtMath>

#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

class Label::Private
{
public:
    QString text;
    Qt::TextFormat format = Qt::AutoText;
    std::optional<Qt::Alignment> alignment;
    std::optional<bool> wordWrap;
    QTextOption::WrapMode wrapMode = QTextOption::WordWrap;
    bool elide = true;
    QColor color;

    std::optional<FormattedText> parsed;
    TextLayouter shown;
    QSizeF shownFor{-1, -1}; // the content size that `shown` was made for
    // The last two answers of sizeHint(): of the unbounded text and of one width.
    std::optional<QSizeF> natural;
    qreal boundWidth = -1;
    QSizeF bound;

    void forgetLayout()
    {
        shownFor = QSizeF(-1, -1);
        natural.reset();
        boundWidth = -1;
    }
    void forgetText()
    {
        parsed.reset();
        forgetLayout();
    }
};

namespace {

struct Icon
{
    QString id;
    qreal size = 0;
    qreal room = 0; // with its distance to the text
};

Icon iconOf(const Style &style)
{
    const QString id = style.images.value(u"icon"_s);
    if (id.isEmpty())
        return {};
    const qreal scale = style.number(u"textScale"_s, 1);
    const qreal size = style.number(u"iconSize"_s, 16) * scale;
    return {id, size, size + style.number(u"iconSpacing"_s, 8) * scale};
}

} // namespace

Label::Label(QGraphicsItem *parent) : Label(QString(), parent) { }

Label::Label(const QString &text, QGraphicsItem *parent) : Widget(parent), d(std::make_unique<Private>())
{
    d->text = text;
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setStyleName(u"CommonLabel"_s);
}

Label::~Label() = default;

void Label::setText(const QString &text)
{
    if (d->text == text)
        return;
    d->text = text;
    d->forgetText();
    updateGeometry();
    update();
    Q_EMIT accessibleNameChanged();
}

QString Label::accessibleName() const
{
    const QString name = Widget::accessibleName();
    return name.isEmpty() ? formattedText().text : name;
}

QAccessible::Role Label::accessibleRole() const
{
    return accessibleName().isEmpty() ? QAccessible::NoRole : QAccessible::StaticText;
}

QString Label::text() const
{
    return d->text;
}

void Label::setTextFormat(Qt::TextFormat format)
{
    if (d->format == format)
        return;
    d->format = format;
    d->forgetText();
    updateGeometry();
    update();
}

Qt::TextFormat Label::textFormat() const
{
    return d->format;
}

void Label::setAlignment(Qt::Alignment alignment)
{
    d->alignment = alignment;
    d->forgetLayout();
    update();
}

Qt::Alignment Label::alignment() const
{
    return d->alignment.value_or(style().alignment);
}

void Label::setWordWrap(bool wrap)
{
    d->wordWrap = wrap;
    d->forgetLayout();
    updateGeometry();
    update();
}

bool Label::wordWrap() const
{
    return d->wordWrap.value_or(style().maximumLines != 1);
}

void Label::setWrapMode(QTextOption::WrapMode mode)
{
    d->wrapMode = mode;
    d->forgetLayout();
    updateGeometry();
    update();
}

void Label::setTextElide(bool elide)
{
    d->elide = elide;
    d->forgetLayout();
    update();
}

void Label::setColor(const QColor &color)
{
    d->color = color;
    update();
}

bool Label::isElided() const
{
    layOut();
    return d->shown.isElided();
}

int Label::lineCount() const
{
    layOut();
    return d->shown.lineCount();
}

QStringList Label::shownLines() const
{
    layOut();
    return d->shown.lines();
}

void Label::applyStyle()
{
    Widget::applyStyle();
    d->forgetText();
}

const FormattedText &Label::formattedText() const
{
    if (!d->parsed) {
        const bool rich
            = d->format == Qt::RichText || (d->format == Qt::AutoText && Qt::mightBeRichText(d->text));
        if (rich) {
            d->parsed = parseRichText(d->text, style().font);
        } else {
            d->parsed = FormattedText{d->text, {}};
            // At the end of a line that is aligned there it would be seen.
            while (d->parsed->text.endsWith(u' '))
                d->parsed->text.chop(1);
            d->parsed->text.replace(u'\n', QChar(QChar::LineSeparator));
        }
    }
    return *d->parsed;
}

TextLayouter::Settings Label::layoutSettings(qreal width) const
{
    TextLayouter::Settings settings;
    settings.font = style().font;
    settings.width = width;
    settings.lineHeight = style().lineHeight;
    settings.maximumLines = wordWrap() ? style().maximumLines : 1;
    settings.elide = d->elide;
    settings.wrapMode = wordWrap() ? d->wrapMode : QTextOption::NoWrap;
    settings.alignment = alignment() & Qt::AlignHorizontal_Mask;
    if (layoutDirection() == Qt::RightToLeft && !(alignment() & Qt::AlignAbsolute)) {
        if (settings.alignment & Qt::AlignLeft)
            settings.alignment = Qt::AlignRight;
        else if (settings.alignment & Qt::AlignRight)
            settings.alignment = Qt::AlignLeft;
    }
    settings.tabularDigits = style().number(u"tabular"_s) > 0;
    settings.balanced = style().number(u"balanced"_s) > 0;
    return settings;
}

void Label::layOut() const
{
    const qreal room = iconOf(style()).room;
    const QSizeF content = contentsRect().size() - QSizeF(room, 0);
    if (d->shownFor == content)
        return;
    d->shownFor = content;
    TextLayouter::Settings settings = layoutSettings(std::max<qreal>(0, content.width()));
    if (d->elide && wordWrap() && settings.lineHeight > 0) {
        // Half a line is no line.
        const int fitting = std::max(1, int((content.height() + 1) / settings.lineHeight));
        settings.maximumLines
            = settings.maximumLines > 0 ? std::min(settings.maximumLines, fitting) : fitting;
    }
    d->shown.layOut(formattedText(), settings);
}

void Label::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    layOut();
    fillRounded(painter, rect(), style().radius, style().color(u"background"_s));
    QRectF content = contentsRect();
    const Icon icon = iconOf(style());
    if (icon.room > 0) {
        paintIcon(painter, icon.id, icon.size);
        content.adjust(layoutDirection() == Qt::RightToLeft ? 0 : icon.room, 0,
                       layoutDirection() == Qt::RightToLeft ? -icon.room : 0, 0);
    }
    qreal y = content.top();
    if (alignment() & Qt::AlignVCenter)
        y += (content.height() - d->shown.size().height()) / 2;
    else if (alignment() & Qt::AlignBottom)
        y += content.height() - d->shown.size().height();
    QColor color = d->color.isValid() ? d->color : style().color(u"text"_s, Qt::white);
    if (!isEnabled())
        color.setAlphaF(color.alphaF() * 0.4F);
    d->shown.draw(painter, {content.left(), y}, color);
}

// At the leading edge, in the middle of the height.
void Label::paintIcon(QPainter *painter, const QString &iconId, qreal size) const
{
    const QRectF content = contentsRect();
    const qreal x = layoutDirection() == Qt::RightToLeft ? content.right() - size : content.left();
    const QRectF place(x, content.center().y() - size / 2, size, size);
    drawIcon(painter, iconId, place, style().color(u"icon"_s));
}

QSizeF Label::sizeHint(Qt::SizeHint which, const QSizeF &constraint) const
{
    if (which == Qt::MaximumSize)
        return {QWIDGETSIZE_MAX, QWIDGETSIZE_MAX};
    qreal left = 0;
    qreal top = 0;
    qreal right = 0;
    qreal bottom = 0;
    getContentsMargins(&left, &top, &right, &bottom);
    const QSizeF around(left + right + iconOf(style()).room, top + bottom);
    if (which == Qt::MinimumSize) {
        const qreal line = style().lineHeight > 0 ? style().lineHeight : QFontMetricsF(style().font).height();
        return QSizeF(0, line) + around;
    }
    if (!d->natural) {
        TextLayouter layouter;
        layouter.layOut(formattedText(), layoutSettings(-1));
        d->natural = QSizeF(qCeil(layouter.size().width()), qCeil(layouter.size().height()));
    }
    if (constraint.width() < 0 || constraint.width() >= d->natural->width() + around.width())
        return *d->natural + around;
    const qreal width = std::max<qreal>(0, constraint.width() - around.width());
    if (d->boundWidth != width) {
        TextLayouter layouter;
        layouter.layOut(formattedText(), layoutSettings(width));
        d->boundWidth = width;
        d->bound = QSizeF(width, qCeil(layouter.size().height()));
    }
    return d->bound + around;
}

} // namespace toolkit
