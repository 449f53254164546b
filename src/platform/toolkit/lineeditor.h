// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

#include <algorithm>

namespace toolkit {

// The text of one line under editing: cursor, selection, undo. Knows nothing of how it is drawn.
class LineEditor
{
public:
    enum class Move { Character, Word, Line };

    [[nodiscard]] const QString &text() const { return m_now.text; }
    [[nodiscard]] int cursor() const { return m_now.cursor; }
    [[nodiscard]] int anchor() const { return m_now.anchor; }
    [[nodiscard]] bool hasSelection() const { return m_now.cursor != m_now.anchor; }
    [[nodiscard]] int selectionStart() const { return std::min(m_now.cursor, m_now.anchor); }
    [[nodiscard]] int selectionEnd() const { return std::max(m_now.cursor, m_now.anchor); }
    [[nodiscard]] QString selectedText() const;

    // By the program: no undo across it; the cursor goes to the end.
    void reset(const QString &text);
    // All of these answer whether the text changed.
    bool insert(const QString &text); // over the selection; line breaks become blanks
    bool replace(int from, int length, const QString &text);
    bool removeBackward(Move by);
    bool removeForward(Move by);
    bool removeSelection();
    bool undo();
    bool redo();

    void setCursor(int position, bool select = false);
    void move(int direction, Move by, bool select); // -1 to the beginning, +1 to the end
    void selectAll();
    void selectWordAt(int position);
    // The next typed character begins an undo step of its own.
    void endUndoStep() { m_lastInsertEnd = -1; }

private:
    struct State
    {
        QString text;
        int cursor = 0;
        int anchor = 0;
    };
    [[nodiscard]] int target(int from, int direction, Move by) const;
    bool change(int from, int length, const QString &text, bool joinsTyping);

    State m_now;
    QList<State> m_undo;
    QList<State> m_redo;
    int m_lastInsertEnd = -1; // where typing would join the last undo step
};

} // namespace toolkit
