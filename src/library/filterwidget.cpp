// SPDX-License-Identifier: GPL-3.0-or-later
#include "filterwidget.h"

#include "platform/toolkit/button.h"
#include "platform/toolkit/imagewidget.h"
#include "platform/toolkit/keeptranslated.h"
#include "platform/toolkit/textedit.h"
#include "platform/toolkit/theme.h"
#include "platform/toolkit/widgetfactory.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGraphicsLinearLayout>
#include <QScopedValueRollback>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

// Where the icons stand in a field as wide as a screen in portrait; wider fields keep the distance from their
// end.
constexpr qreal PortraitWidth = 480;
constexpr qreal StripHeight = 80;
constexpr QPointF MagnifierPosition{412, 16};
constexpr QPointF ClearButtonPosition{408, 8};

QGraphicsLinearLayout *tightRow()
{
    auto *row = new QGraphicsLinearLayout(Qt::Horizontal);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    return row;
}

[[maybe_unused]] const bool registered = [] {
    toolkit::WidgetFactory::registerType(u"kestrel"_s, u"FilterWidget"_s, [] { return new FilterWidget; });
    return true;
}();

} // namespace

FilterWidget::FilterWidget(QGraphicsItem *parent)
    : toolkit::WidgetController(new toolkit::WidgetModel, new toolkit::WidgetView, new FilterWidgetStyle,
                                parent),
      m_textEdit(new toolkit::TextEdit(this)),
      m_magnifier(new toolkit::ImageWidget(u"icon-m-common-search"_s, this)),
      m_clearButton(new toolkit::IconButton(u"icon-m-input-clear"_s, this))
{
    setUpTextEdit();
    QGraphicsLinearLayout *inner = tightRow();
    inner->addItem(m_textEdit);
    QGraphicsLinearLayout *outer = tightRow();
    outer->addItem(inner);
    setLayout(outer);

    m_magnifier->setStyleName(u"SearchMagnifier"_s);
    m_magnifier->setMinimumSize(m_magnifier->preferredSize());
    m_clearButton->setStyleName(u"ClearButton"_s);
    m_clearButton->hide();

    toolkit::keepTranslated(this, [this] { translate(); });
    connect(m_clearButton, &toolkit::Button::clicked, this, &FilterWidget::clearTextField);
    connect(m_textEdit, &toolkit::TextEdit::textChanged, this, &FilterWidget::handleTextChanged);
    connect(m_textEdit, &toolkit::TextEdit::returnPressed, this, &FilterWidget::closeTheVKB);
    setMinimumWidth(0); // the margins follow the width, not the other way round
    placeField();
}

FilterWidget::~FilterWidget() = default;

void FilterWidget::setUpTextEdit()
{
    m_textEdit->setStyleName(u"CommonSearchFieldInverted"_s);
    m_textEdit->setInputMethodCorrectionEnabled(false);
    m_textEdit->setInputMethodAutoCapitalizationEnabled(false);
    m_textEdit->setWordPredictionEnabled(false);
    setActionKey(u"highlighted"_s, true);
}

void FilterWidget::translate()
{
    m_textEdit->setPrompt(qtTrId("qtn_vide_filter_videos"));
    setActionKey(u"label"_s, qtTrId("qtn_comm_command_done"));
    m_clearButton->setAccessibleName(qtTrId("qtn_comm_clear"));
}

void FilterWidget::setActionKey(const QString &attribute, const QVariant &value)
{
    m_textEdit->setInputMethodAttribute(u"/keys"_s, u"actionKey"_s, attribute, value);
}

void FilterWidget::setText(const QString &text)
{
    m_textEdit->setText(text);
}

QString FilterWidget::text() const
{
    return m_textEdit->text();
}

void FilterWidget::handleTextChanged()
{
    Q_EMIT textChanged();
    const bool empty = text().isEmpty();
    m_clearButton->setVisible(!empty);
    m_magnifier->setVisible(empty);
    const bool byTheUser = m_clearing || m_textEdit->isUserEdit();
    if (empty && byTheUser && !m_textEdit->hasFocus())
        m_textEdit->setFocus(Qt::OtherFocusReason);
    layout()->activate();
}

void FilterWidget::clearTextField()
{
    {
        const QScopedValueRollback<bool> clearing(m_clearing, true);
        m_textEdit->setText(QString());
    }
    Q_EMIT clearClicked();
}

void FilterWidget::closeTheVKB()
{
    m_textEdit->clearFocus();
}

void FilterWidget::focusLater()
{
    QMetaObject::invokeMethod(this, &FilterWidget::takeFocus, Qt::QueuedConnection);
}

void FilterWidget::takeFocus()
{
    if (!isVisible())
        return;
    m_textEdit->setFocus(Qt::OtherFocusReason);
    m_textEdit->setCursorPosition(int(text().size()));
}

void FilterWidget::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    toolkit::WidgetController::resizeEvent(event);
    placeField();
}

void FilterWidget::changeEvent(QEvent *event)
{
    toolkit::WidgetController::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        placeIcons();
}

// How far the ends of the field move in where the page is wider than the list below it gets.
qreal FilterWidget::inset() const
{
    const toolkit::Style list = toolkit::Theme::instance()->style(u"KestrelList"_s, screenOrientation());
    const qreal measure = list.number(u"maximumMeasure"_s, rect().width());
    return qMax(0.0, std::floor((rect().width() - measure) / 2));
}

// The field stands clear of the page's edges, and in the middle of the strip.
void FilterWidget::placeField()
{
    const qreal side = m_textEdit->style().number(u"outsideMargin"_s) + inset();
    const qreal above = (StripHeight - m_textEdit->preferredHeight()) / 2;
    setContentsMargins(side, above, side, above);
    placeIcons();
}

void FilterWidget::placeIcons()
{
    const auto place = [this](toolkit::Widget *icon, QPointF position) {
        const QSizeF size = icon->effectiveSizeHint(Qt::PreferredSize);
        const qreal x = layoutDirection() == Qt::RightToLeft
            ? PortraitWidth - position.x() - size.width() + inset()
            : position.x() + rect().width() - PortraitWidth - inset();
        icon->setGeometry(QRectF(QPointF(x, position.y()), size));
    };
    place(m_magnifier, MagnifierPosition);
    place(m_clearButton, ClearButtonPosition);
}
