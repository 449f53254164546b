// SPDX-License-Identifier: GPL-3.0-or-later
// What assistive technology reads and changes of the text field.
#include "accessibletextedit.h"
#include "textedit_p.h"

#include <algorithm>

namespace toolkit {

QString TextEdit::accessibleName() const
{
    const QString name = Widget::accessibleName();
    return name.isEmpty() ? d->prompt : name;
}

QAccessibleInterface *TextEdit::createAccessible()
{
    return new AccessibleTextEdit(this);
}

int TextEdit::selectionAnchor() const
{
    return d->editor.anchor();
}

void TextEdit::setSelection(int anchor, int cursor)
{
    const int last = int(d->editor.text().size());
    d->editor.setCursor(std::clamp(anchor, 0, last));
    d->editor.setCursor(std::clamp(cursor, 0, last), true);
    edited(false);
}

void TextEdit::replaceText(int from, int length, const QString &text)
{
    const int last = int(d->editor.text().size());
    const int start = std::clamp(from, 0, last);
    userEdited(d->editor.replace(start, std::clamp(length, 0, last - start), text));
}

QRectF TextEdit::characterRect(int position) const
{
    const QTextLine line = d->line();
    const QRectF content = contentsRect();
    if (!line.isValid())
        return {content.left(), content.top(), 1, content.height()};
    // What is being composed stands between the cursor and what follows it.
    const auto shown = [this](int at) { return at > d->editor.cursor() ? at + int(d->preedit.size()) : at; };
    const qreal from = line.cursorToX(shown(position));
    const qreal to = line.cursorToX(shown(position + 1));
    return QRectF(content.left() - d->scroll + std::min(from, to), content.top(),
                  std::max<qreal>(1, std::abs(to - from)), content.height());
}

} // namespace toolkit
