// SPDX-License-Identifier: GPL-3.0-or-later
#include "banner.h"

#include "applicationwindow.h"
#include "label.h"
#include "painthelpers.h"
#include "scenemanager.h"

#include <QGraphicsSceneMouseEvent>
#include <QPainter>
#include <QTimer>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

// Long texts stay longer: a reader takes about 60 ms a character.
constexpr int readingTime = 60;
constexpr int longestDisplay = 10000;

} // namespace

class Banner::Private
{
public:
    Label *label = nullptr;
    QTimer timer;
    bool done = false;
};

Banner::Banner(QGraphicsItem *parent) : Widget(parent), d(std::make_unique<Private>())
{
    setAcceptedMouseButtons(Qt::LeftButton);
    d->label = new Label(this);
    d->label->setStyleName(u"SystemBannerText"_s);
    d->label->setTextFormat(Qt::PlainText);
    d->timer.setSingleShot(true);
    connect(&d->timer, &QTimer::timeout, this, &Banner::dismiss);
    connect(this, &Widget::displayEntered, this, [this] { d->timer.start(duration()); });
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setStyleName(u"SystemBanner"_s);
}

Banner::~Banner() = default;

void Banner::setTitle(const QString &title)
{
    d->label->setText(title);
    updateGeometry();
    if (d->timer.isActive())
        d->timer.start(duration());
}

QString Banner::title() const
{
    return d->label->text();
}

int Banner::duration() const
{
    return std::clamp(int(title().size()) * readingTime, int(style().number(u"duration"_s, 3000)),
                      longestDisplay);
}

void Banner::appear(ApplicationWindow *window)
{
    if (window == nullptr) {
        deleteLater();
        return;
    }
    window->sceneManager()->showBanner(this);
    // It is not for ever also where nobody says that it is on the screen.
    if (!d->timer.isActive())
        d->timer.start(duration());
}

void Banner::dismiss()
{
    if (std::exchange(d->done, true))
        return;
    d->timer.stop();
    Q_EMIT dismissed();
}

void Banner::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    fillRounded(painter, rect(), style().radius, style().color(u"line"_s));
    fillRounded(painter, rect().adjusted(1, 1, -1, -1), style().radius - 1, style().color(u"background"_s));
}

QSizeF Banner::sizeHint(Qt::SizeHint which, const QSizeF &constraint) const
{
    if (which != Qt::PreferredSize)
        return Widget::sizeHint(which, constraint);
    const QMarginsF m = style().margins;
    const QSizeF around(m.left() + m.right(), m.top() + m.bottom());
    // As many letters as in text of the usual size.
    const qreal widest = style().number(u"maximumMeasure"_s, 448) * style().number(u"textScale"_s, 1);
    const qreal width
        = (constraint.width() > 0 ? std::min(constraint.width(), widest) : widest) - around.width();
    const QSizeF natural = d->label->effectiveSizeHint(Qt::PreferredSize);
    if (natural.width() <= width)
        return natural + around;
    return d->label->effectiveSizeHint(Qt::PreferredSize, {width, -1}) + around;
}

// A banner that gets the size again which it had before it knew its margins is not resized.
void Banner::setGeometry(const QRectF &rect)
{
    Widget::setGeometry(rect);
    d->label->setGeometry(contentsRect());
}

void Banner::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    event->accept();
}

void Banner::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    if (rect().contains(event->pos()))
        dismiss();
}

} // namespace toolkit
