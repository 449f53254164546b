// SPDX-License-Identifier: GPL-3.0-or-later
#include "subtitleview.h"

#include "subtitlepainter.h"

#include <platform/media/mediabackend.h>
#include <platform/toolkit/painthelpers.h>

#include <QPainter>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qreal SafeArea = 0.05; // of the height and width, on each side
constexpr qreal Gap = 8; // between two texts, and to the picture
constexpr qreal FontShare = 0.052; // of the picture's height
constexpr qreal SmallestFont = 22;
constexpr qreal LargestFont = 44; // before the person's own scale

} // namespace

SubtitleView::SubtitleView(QGraphicsItem *parent) : Widget(parent)
{
    setStyleName(u"Subtitles"_s);
    setAcceptedMouseButtons(Qt::NoButton);
}

SubtitleView::~SubtitleView() = default;

void SubtitleView::setBackend(MediaBackend *backend)
{
    if (m_backend)
        m_backend->disconnect(this);
    m_backend = backend;
    if (backend != nullptr)
        connect(backend, &MediaBackend::subtitlesChanged, this, [this] { show(); });
    show();
}

void SubtitleView::setPicture(const QSizeF &size, bool fill)
{
    if (m_picture == size && m_fill == fill)
        return;
    m_picture = size;
    m_fill = fill;
    m_renderedScale = 0;
    update();
}

void SubtitleView::setTaken(const QMarginsF &margins)
{
    if (m_taken == margins)
        return;
    m_taken = margins;
    m_renderedScale = 0;
    update();
}

void SubtitleView::show()
{
    const QList<SubtitleText> texts = m_backend ? m_backend->subtitles() : QList<SubtitleText>();
    const qreal scale = m_backend ? m_backend->subtitleScale() : 1;
    if (texts == m_texts && scale == m_scale)
        return;
    m_texts = texts;
    m_scale = scale;
    m_renderedScale = 0;
    update();
    Q_EMIT accessibleNameChanged();
}

QString SubtitleView::shownText() const
{
    QStringList words;
    for (const SubtitleText &text : m_texts)
        words.append(text.words);
    return words.join(u'\n');
}

QRectF SubtitleView::textRect() const
{
    QRectF whole;
    for (const Block &block : m_blocks)
        whole |= block.place;
    return whole;
}

QRectF SubtitleView::pictureRect() const
{
    if (m_picture.isEmpty() || m_fill)
        return rect();
    QRectF picture(QPointF(), m_picture.scaled(size(), Qt::KeepAspectRatio));
    picture.moveCenter(rect().center());
    return picture;
}

QFont SubtitleView::fontOf(const QRectF &picture) const
{
    QFont font = style().font;
    const qreal usual = std::clamp(picture.height() * FontShare, SmallestFont, LargestFont);
    font.setPixelSize(std::max(8, qRound(usual * m_scale)));
    font.setWeight(QFont::DemiBold);
    return font;
}

// A text of this size, where nothing stands; the next one finds its place beside those that are there.
QRectF SubtitleView::placed(const QSizeF &size, bool above, const QRectF &picture) const
{
    const QRectF safe = rect().marginsRemoved(m_taken);
    const qreal margin = std::max(Gap, safe.height() * SafeArea / 2);
    QRectF place(QPointF(safe.x() + (safe.width() - size.width()) / 2, 0), size);
    if (above) {
        qreal top = std::max(safe.top(), picture.top()) + margin;
        for (const Block &block : m_blocks) {
            if (block.place.top() < rect().center().y())
                top = std::max(top, block.place.bottom() + Gap);
        }
        place.moveTop(top);
        return place;
    }
    qreal bottom = std::min(safe.bottom(), picture.bottom()) - margin;
    // Below the picture nothing of it is hidden.
    if (safe.bottom() - picture.bottom() >= size.height() + 2 * Gap && m_blocks.isEmpty())
        bottom = picture.bottom() + Gap + size.height();
    for (const Block &block : m_blocks) {
        if (block.place.top() >= rect().center().y())
            bottom = std::min(bottom, block.place.top() - Gap);
    }
    place.moveBottom(std::max(bottom, safe.top() + size.height()));
    return place;
}

// The last text stands lowest.
void SubtitleView::render(qreal scale)
{
    m_blocks.clear();
    m_renderedScale = scale;
    const QRectF picture = pictureRect();
    const QFont font = fontOf(picture);
    const QRectF safe = rect().marginsRemoved(m_taken);
    const qreal width = safe.width() * (1 - 2 * SafeArea);
    if (width < 40)
        return;
    for (auto text = m_texts.crbegin(); text != m_texts.crend(); ++text) {
        const subtitles::Drawn drawn = subtitles::draw(*text, font, width, scale);
        m_blocks.append({placed(drawn.size, text->above, picture), drawn.image});
    }
}

void SubtitleView::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    if (m_texts.isEmpty())
        return;
    const qreal scale = toolkit::pixelScale(painter);
    if (!qFuzzyCompare(scale, m_renderedScale))
        render(scale);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    for (const Block &block : m_blocks)
        painter->drawImage(QRectF(block.place.topLeft(), QSizeF(block.image.size()) / scale), block.image);
}

void SubtitleView::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    Widget::resizeEvent(event);
    m_renderedScale = 0;
}

void SubtitleView::applyStyle()
{
    Widget::applyStyle();
    m_renderedScale = 0;
    update();
}
