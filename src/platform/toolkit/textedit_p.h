// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "lineeditor.h"
#include "taptracker.h"
#include "textedit.h"
#include "textmenu.h"

#include <QHash>
#include <QPointer>
#include <QTextLayout>

namespace toolkit {

class TextEdit::Private
{
public:
    LineEditor editor;
    QString prompt;
    QString preedit; // being composed by the input method, at the cursor
    int preeditCursor = 0;
    bool preeditCursorShown = true;
    QList<QTextLayout::FormatRange> preeditFormats;
    QTextLayout layout; // text with the preedit
    qreal scroll = 0; // how far the text is moved to the left
    bool userEdit = false;
    bool correction = true;
    bool prediction = true;
    bool cursorOn = false; // in its blinking
    int blinkTimer = 0;
    bool dragging = false;
    TapTracker finger;
    QPointer<TextMenu> menu;
    int toldCursor = 0; // what cursorPositionChanged() told last
    int toldAnchor = 0;
    QHash<QString, QVariant> attributes; // of the on-screen keyboard, by "target item attribute"

    // Lays the text out anew and scrolls so that the cursor is in the content's width.
    void layOut(const QFont &font, qreal width, Qt::LayoutDirection fallBack);
    [[nodiscard]] bool isRightToLeft(Qt::LayoutDirection fallBack) const
    {
        const QString &text = editor.text().isEmpty() ? preedit : editor.text();
        return directionOf(text, fallBack) == Qt::RightToLeft;
    }
    // Numbers and signs have none of their own.
    static Qt::LayoutDirection directionOf(const QString &text, Qt::LayoutDirection fallBack);
    [[nodiscard]] qreal cursorX() const;
    [[nodiscard]] QTextLine line() const { return layout.lineCount() > 0 ? layout.lineAt(0) : QTextLine(); }
    static QString attributeKey(const QString &target, const QString &item, const QString &attribute)
    {
        return target + u'\n' + item + u'\n' + attribute;
    }
};

} // namespace toolkit
