// SPDX-License-Identifier: GPL-3.0-or-later
#include "querydialog.h"

#include "applicationwindow.h"
#include "button.h"
#include "keeptranslated.h"
#include "label.h"
#include "painthelpers.h"
#include "pannableviewport.h"

#include <QGraphicsScene>
#include <QKeyEvent>
#include <QPainter>
#include <QPointer>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr qreal rise = 24; // on its way in

class DialogPanel : public Widget
{
public:
    explicit DialogPanel(QGraphicsItem *parent) : Widget(parent) { setStyleName(u"DialogPanel"_s); }

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *) override
    {
        const QColor ground = style().color(u"background"_s);
        fillRounded(painter, rect(), style().radius, style().color(u"line"_s, ground));
        fillRounded(painter, rect().adjusted(1, 1, -1, -1), style().radius - 1, ground);
    }
};

} // namespace

class QueryDialog::Private
{
public:
    explicit Private(QueryDialog *dialog)
        : panel(new DialogPanel(dialog)),
          title(new Label(panel)),
          viewport(new PannableViewport(panel)),
          text(new Label)
    {
        title->setTextFormat(Qt::PlainText);
        title->setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        title->setStyleName(u"DialogTitle"_s);
        text->setTextFormat(Qt::RichText);
        text->setWordWrap(true);
        text->setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere); // file names have no blanks
        text->setStyleName(u"DialogText"_s);
        viewport->setWidget(text);
    }

    DialogPanel *panel;
    Label *title;
    PannableViewport *viewport;
    Label *text;
    Button *yes = nullptr;
    Button *no = nullptr;
    bool destructive = false;
};

QueryDialog::QueryDialog(StandardButtons buttons) : d(std::make_unique<Private>(this))
{
    if (buttons.testFlag(Yes)) {
        d->yes = new Button(d->panel);
        connect(d->yes, &Button::clicked, this, &QueryDialog::accept);
    }
    if (buttons.testFlag(No)) {
        d->no = new Button(d->panel);
        connect(d->no, &Button::clicked, this, &QueryDialog::reject);
    }
    keepTranslated(this, [this] { translate(); });
    setDestructive(false);
    setStyleName(u"Dialog"_s);
}

QueryDialog::~QueryDialog() = default;

void QueryDialog::translate()
{
    if (d->yes != nullptr)
        d->yes->setText(qtTrId("qtn_comm_yes"));
    if (d->no != nullptr)
        d->no->setText(qtTrId("qtn_comm_no"));
    arrange();
}

void QueryDialog::setTitle(const QString &title)
{
    d->title->setText(title);
    arrange();
}

QString QueryDialog::title() const
{
    return d->title->text();
}

void QueryDialog::setText(const QString &text)
{
    d->text->setText(text);
    arrange();
}

QString QueryDialog::text() const
{
    return d->text->text();
}

Label *QueryDialog::textLabel() const
{
    return d->text;
}

Button *QueryDialog::button(StandardButton which) const
{
    return which == Yes ? d->yes : which == No ? d->no : nullptr;
}

void QueryDialog::setDestructive(bool destructive)
{
    d->destructive = destructive;
    if (d->yes != nullptr)
        d->yes->setStyleName(destructive ? u"DialogDestructiveButton"_s : u"DialogButton"_s);
    if (d->no != nullptr)
        d->no->setStyleName(u"DialogButton"_s);
    arrange();
}

Button *QueryDialog::defaultButton() const
{
    Button *wanted = d->destructive ? d->no : d->yes;
    return wanted != nullptr ? wanted : d->destructive ? d->yes : d->no;
}

void QueryDialog::appear(ApplicationWindow *window)
{
    if (window == nullptr || isActive())
        return;
    d->viewport->setPosition({});
    Popup::appear(window);
}

void QueryDialog::accept()
{
    answer(Accepted);
}

void QueryDialog::reject()
{
    answer(Rejected);
}

void QueryDialog::answer(Result result)
{
    close([this, result] {
        const QPointer<QueryDialog> alive(this);
        if (result == Accepted)
            Q_EMIT accepted();
        else
            Q_EMIT rejected();
        if (alive != nullptr)
            Q_EMIT finished(result);
    });
}

void QueryDialog::escape()
{
    reject();
}

void QueryDialog::abandoned()
{
    const bool unanswered = isActive();
    const QPointer<QueryDialog> alive(this);
    Popup::abandoned();
    if (alive == nullptr || !unanswered)
        return;
    Q_EMIT rejected();
    if (alive != nullptr)
        Q_EMIT finished(Rejected);
}

QRectF QueryDialog::panelRect() const
{
    return d->panel->geometry();
}

// Side by side, No where lines begin; below each other, Yes first, when the words need the width. Answers
// their height.
qreal QueryDialog::arrangeButtons(qreal width, bool measureOnly, qreal top)
{
    const qreal gap = style().spacing;
    QList<Button *> row;
    for (Button *button : {d->no, d->yes}) {
        if (button != nullptr)
            row.append(button);
    }
    if (row.isEmpty())
        return 0;
    const qreal half = (width - gap * qreal(row.size() - 1)) / qreal(row.size());
    qreal height = 0;
    bool fits = true;
    for (const Button *button : std::as_const(row)) {
        const QSizeF wish = button->effectiveSizeHint(Qt::PreferredSize);
        height = std::max(height, wish.height());
        fits = fits && wish.width() <= half;
    }
    const qreal count = fits ? 1 : qreal(row.size());
    const qreal left = d->panel->contentsRect().left();
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    for (int index = 0; index < row.size() && !measureOnly; ++index) {
        const int column = mirrored ? int(row.size()) - 1 - index : index;
        const QRectF place = fits
            ? QRectF(left + column * (half + gap), top, half, height)
            : QRectF(left, top + (int(row.size()) - 1 - index) * (height + gap), width, height);
        row.at(index)->setGeometry(place);
    }
    return count * height + (count - 1) * gap;
}

void QueryDialog::arrange()
{
    if (size().isEmpty())
        return;
    const qreal outside = style().number(u"outsideMargin"_s, 24);
    const qreal width = std::min(size().width() - 2 * outside, style().number(u"maximumMeasure"_s, 448));
    const QMarginsF m = d->panel->style().margins;
    const qreal inner = std::max(0.0, width - m.left() - m.right());
    const auto heightOf = [](const Label *label, qreal room) {
        return label->text().isEmpty() ? 0 : label->effectiveSizeHint(Qt::PreferredSize, {room, -1}).height();
    };
    // The text keeps clear of the bar that shows where it is panned to; that stands beside the column.
    const qreal gutter = std::min(d->text->style().margins.right(), m.right());
    const qreal title = heightOf(d->title, inner);
    const qreal text = heightOf(d->text, inner + gutter);
    const qreal gap = style().spacing;
    const qreal buttons = arrangeButtons(inner, true, 0);
    const qreal around = m.top() + title + (text > 0 ? gap : 0) + 2 * gap + buttons + m.bottom();
    const qreal shown = std::max(0.0, std::min(text, size().height() - 2 * outside - around));
    d->viewport->setPannable(shown < text);
    d->viewport->setGround(d->panel->style().color(u"background"_s));
    d->panel->resize(width, around + shown);
    d->title->setGeometry(QRectF(m.left(), m.top(), inner, title));
    const qreal left = layoutDirection() == Qt::RightToLeft ? m.left() - gutter : m.left();
    d->viewport->setGeometry(QRectF(left, m.top() + title + gap, inner + gutter, shown));
    arrangeButtons(inner, false, d->panel->size().height() - m.bottom() - buttons);
    place();
    if (ApplicationWindow *window = popupWindow())
        window->sceneManager()->popupChanged();
}

void QueryDialog::place()
{
    const QSizeF own = d->panel->size();
    const qreal y = (size().height() - own.height()) / 2 + rise * (1 - progress());
    d->panel->setPos((size().width() - own.width()) / 2, y);
    d->panel->setOpacity(progress());
    update();
}

int QueryDialog::motionMilliseconds() const
{
    return int(style().number(u"motion"_s, 200));
}

// Return where nothing has the focus: the answer that takes nothing away.
void QueryDialog::keyPressEvent(QKeyEvent *event)
{
    const bool answers
        = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Select;
    if (answers && !event->isAutoRepeat() && defaultButton() != nullptr)
        defaultButton()->click();
    else if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right)
        focusNextPrevChild((event->key() == Qt::Key_Right) != (layoutDirection() == Qt::RightToLeft));
    Popup::keyPressEvent(event);
}

void QueryDialog::changeEvent(QEvent *event)
{
    Popup::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        arrange();
}

} // namespace toolkit
