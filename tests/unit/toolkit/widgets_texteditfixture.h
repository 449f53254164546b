// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/textedit.h"
#include "widgets_support.h"

#include <QApplication>

using namespace Qt::Literals::StringLiterals;
using toolkit::TextEdit;

// A field on a stage, and something else that takes the focus.
struct Field
{
    Field()
    {
        edit = new TextEdit;
        stage.scene.addItem(edit);
        edit->setStyleName(u"CommonSearchFieldInverted"_s);
        edit->setPrompt(u"Filter videos"_s);
        edit->setGeometry(QRectF(16, 84, 448, 60));
        other = new toolkit::Widget;
        other->setFocusPolicy(Qt::StrongFocus);
        stage.scene.addItem(other);
    }
    ~Field() { stage.scene.clear(); }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(stage.view.viewport(), key, modifiers);
    }
    void type(const QString &text)
    {
        for (QChar character : text)
            QTest::sendKeyEvent(QTest::Click, stage.view.viewport(), Qt::Key_unknown, QString(character),
                                Qt::NoModifier);
    }
    Stage stage;
    TextEdit *edit;
    toolkit::Widget *other;
};
