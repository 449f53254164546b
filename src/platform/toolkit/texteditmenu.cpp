// SPDX-License-Identifier: GPL-3.0-or-later
// The commands of the text field for the finger and the second mouse button.
#include "textedit_p.h"

#include "accessibility.h"
#include "applicationwindow.h"
#include "keeptranslated.h"
#include "scenemanager.h"

#include <QAction>
#include <QClipboard>
#include <QGraphicsScene>
#include <QGraphicsSceneContextMenuEvent>
#include <QGuiApplication>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

void TextEdit::cut()
{
    copy();
    userEdited(d->editor.removeSelection());
}

void TextEdit::copy() const
{
    if (d->editor.hasSelection())
        QGuiApplication::clipboard()->setText(d->editor.selectedText());
}

void TextEdit::paste()
{
    userEdited(d->editor.insert(QGuiApplication::clipboard()->text()));
}

TextMenu *TextEdit::menu() const
{
    return d->menu;
}

QList<QAction *> TextEdit::commands()
{
    QList<QAction *> actions;
    const auto add = [&actions](const QString &name, const char *textId) {
        auto *action = new QAction;
        action->setObjectName(name);
        keepTranslated(action, [action, textId] { action->setText(qtTrId(textId)); });
        actions.append(action);
        return action;
    };
    if (d->editor.hasSelection()) {
        connect(add(u"cutAction"_s, QT_TRID_NOOP("qtn_comm_command_cut")), &QAction::triggered, this,
                &TextEdit::cut);
        connect(add(u"copyAction"_s, QT_TRID_NOOP("qtn_comm_command_copy")), &QAction::triggered, this,
                &TextEdit::copy);
    }
    if (!QGuiApplication::clipboard()->text().isEmpty())
        connect(add(u"pasteAction"_s, QT_TRID_NOOP("qtn_comm_command_paste")), &QAction::triggered, this,
                &TextEdit::paste);
    const int length = int(d->editor.text().size());
    if (d->editor.selectionEnd() - d->editor.selectionStart() < length)
        connect(add(u"selectAllAction"_s, QT_TRID_NOOP("qtn_comm_command_select_all")), &QAction::triggered,
                this, [this] {
                    selectAll();
                    openMenu(); // for what was selected
                });
    return actions;
}

void TextEdit::openMenu()
{
    closeMenu();
    const QList<QAction *> actions = commands();
    if (actions.isEmpty() || scene() == nullptr)
        return;
    d->menu = new TextMenu(actions);
    // Over everything on the page, and over a sheet that the field stands in.
    d->menu->setZValue(SceneManager::BannerLayer);
    const ApplicationWindow *window = this->window();
    QGraphicsWidget *root = window != nullptr ? window->sceneManager()->root() : nullptr;
    d->menu->setLayoutDirection(layoutDirection());
    d->menu->setOnInverted(isOnInverted());
    d->menu->setParentItem(root);
    if (root == nullptr)
        scene()->addItem(d->menu);
    connect(d->menu, &TextMenu::finished, d->menu.data(), [this, menu = d->menu.data()] {
        if (d->menu == menu)
            closeMenu();
        else
            menu->deleteLater(); // another one stands there by now
    });
    connect(d->menu, &TextMenu::currentChanged, this, [this] { accessibility::focusMoved(this); });
    connect(this, &Widget::displayExited, d->menu.data(), [this] { closeMenu(); });
    for (const QAction *action : actions)
        connect(action, &QAction::changed, d->menu.data(), [this] { placeMenu(); });
    placeMenu();
}

// Beside what is selected, or the cursor; of the whole field, which hides nothing of the text.
void TextEdit::placeMenu()
{
    const QTextLine line = d->line();
    if (d->menu == nullptr || !line.isValid())
        return;
    const QRectF content = contentsRect();
    const auto seen = [&](int position) {
        return std::clamp(content.left() - d->scroll + line.cursorToX(position), content.left(),
                          content.right());
    };
    const qreal from = seen(d->editor.selectionStart());
    const qreal to = seen(d->editor.selectionEnd());
    const QRectF anchor(std::min(from, to), 0, std::abs(to - from), rect().height());
    QGraphicsItem *root = d->menu->parentItem();
    const QRectF room = root != nullptr ? root->boundingRect() : scene()->sceneRect();
    d->menu->place(root != nullptr ? mapRectToItem(root, anchor) : mapRectToScene(anchor), room);
}

void TextEdit::closeMenu()
{
    if (d->menu == nullptr)
        return;
    const bool hadKeys = d->menu->currentAccessiblePart() >= 0;
    d->menu->hide();
    d->menu->deleteLater(); // it may be on the way back to itself
    d->menu = nullptr;
    if (hadKeys)
        accessibility::focusMoved(this);
}

void TextEdit::pressedLong(const QPointF &position)
{
    d->dragging = false;
    const int place = positionAt(position);
    const bool selected = d->editor.hasSelection() && place >= d->editor.selectionStart()
        && place <= d->editor.selectionEnd();
    if (!selected) {
        d->editor.selectWordAt(place);
        // Blanks are no word: the cursor goes there, for what is to be put in.
        if (d->editor.selectedText().trimmed().isEmpty())
            d->editor.setCursor(place);
        edited(false);
    }
    setFocus(Qt::MouseFocusReason);
    openMenu();
}

void TextEdit::contextMenuEvent(QGraphicsSceneContextMenuEvent *event)
{
    event->accept();
    if (event->reason() == QGraphicsSceneContextMenuEvent::Mouse && !d->editor.hasSelection()) {
        d->editor.setCursor(positionAt(event->pos()));
        edited(false);
    }
    setFocus(Qt::MouseFocusReason);
    openMenu();
}

} // namespace toolkit
