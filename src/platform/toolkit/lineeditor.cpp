// SPDX-License-Identifier: GPL-3.0-or-later
#include "lineeditor.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace toolkit {

namespace {

constexpr qsizetype deepestUndo = 100;

QString oneLine(QString text)
{
    for (QChar &character : text) {
        if (character == u'\n' || character == u'\r' || character == QChar::LineSeparator
            || character == QChar::ParagraphSeparator || character == u'\t')
            character = u' ';
    }
    text.removeIf([](QChar character) { return character.category() == QChar::Other_Control; });
    return text;
}

} // namespace

QString LineEditor::selectedText() const
{
    return m_now.text.mid(selectionStart(), selectionEnd() - selectionStart());
}

void LineEditor::reset(const QString &text)
{
    const QString line = oneLine(text);
    m_now = {line, int(line.size()), int(line.size())};
    m_undo.clear();
    m_redo.clear();
    endUndoStep();
}

bool LineEditor::change(int from, int length, const QString &text, bool joinsTyping)
{
    if (length == 0 && text.isEmpty())
        return false;
    const bool joins = joinsTyping && length == 0 && from == m_lastInsertEnd && !m_undo.isEmpty();
    if (!joins) {
        m_undo.append(m_now);
        if (m_undo.size() > deepestUndo)
            m_undo.removeFirst();
    }
    m_redo.clear();
    m_now.text.replace(from, length, text);
    m_now.cursor = m_now.anchor = from + int(text.size());
    m_lastInsertEnd = joinsTyping && !text.endsWith(u' ') ? m_now.cursor : -1;
    return true;
}

bool LineEditor::insert(const QString &text)
{
    return change(selectionStart(), selectionEnd() - selectionStart(), oneLine(text), true);
}

bool LineEditor::replace(int from, int length, const QString &text)
{
    const int start = std::clamp(from, 0, int(m_now.text.size()));
    return change(start, std::clamp(length, 0, int(m_now.text.size()) - start), oneLine(text), false);
}

bool LineEditor::removeSelection()
{
    return change(selectionStart(), selectionEnd() - selectionStart(), QString(), false);
}

bool LineEditor::removeBackward(Move by)
{
    if (hasSelection())
        return removeSelection();
    const int from = target(m_now.cursor, -1, by);
    return change(from, m_now.cursor - from, QString(), false);
}

bool LineEditor::removeForward(Move by)
{
    if (hasSelection())
        return removeSelection();
    return change(m_now.cursor, target(m_now.cursor, 1, by) - m_now.cursor, QString(), false);
}

bool LineEditor::undo()
{
    if (m_undo.isEmpty())
        return false;
    m_redo.append(m_now);
    m_now = m_undo.takeLast();
    endUndoStep();
    return true;
}

bool LineEditor::redo()
{
    if (m_redo.isEmpty())
        return false;
    m_undo.append(m_now);
    m_now = m_redo.takeLast();
    endUndoStep();
    return true;
}

int LineEditor::target(int from, int direction, Move by) const
{
    if (by == Move::Line)
        return direction < 0 ? 0 : int(m_now.text.size());
    QTextBoundaryFinder finder(by == Move::Word ? QTextBoundaryFinder::Word : QTextBoundaryFinder::Grapheme,
                               m_now.text);
    finder.setPosition(from);
    qsizetype position = from;
    do {
        position = direction < 0 ? finder.toPreviousBoundary() : finder.toNextBoundary();
        // Backward to the beginning of a word, forward to the beginning of the next.
    } while (by == Move::Word && position > 0 && position < m_now.text.size()
             && m_now.text.at(position).isSpace());
    if (position < 0)
        return direction < 0 ? 0 : int(m_now.text.size());
    return int(position);
}

void LineEditor::setCursor(int position, bool select)
{
    m_now.cursor = std::clamp(position, 0, int(m_now.text.size()));
    if (!select)
        m_now.anchor = m_now.cursor;
    endUndoStep();
}

void LineEditor::move(int direction, Move by, bool select)
{
    if (hasSelection() && !select && by == Move::Character) {
        setCursor(direction < 0 ? selectionStart() : selectionEnd());
        return;
    }
    setCursor(target(m_now.cursor, direction, by), select);
}

void LineEditor::selectAll()
{
    m_now.anchor = 0;
    m_now.cursor = int(m_now.text.size());
    endUndoStep();
}

void LineEditor::selectWordAt(int position)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, m_now.text);
    finder.setPosition(std::clamp(position, 0, int(m_now.text.size())));
    if (!finder.isAtBoundary())
        finder.toPreviousBoundary();
    const qsizetype start = finder.position();
    const qsizetype end = finder.toNextBoundary();
    m_now.anchor = int(start);
    m_now.cursor = end < 0 ? int(m_now.text.size()) : int(end);
    endUndoStep();
}

} // namespace toolkit
