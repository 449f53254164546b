// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessevents.h"
#include "platform/toolkit/accessibility.h"
#include "platform/toolkit/button.h"
#include "widgets_listfixture.h"

// No assistive technology runs, which is how most people use the program.
class AccessSilence : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingIsTold();
};

void AccessSilence::nothingIsTold()
{
    toolkit::accessibility::install();
    QVERIFY(!QAccessible::isActive());
    AccessEvents events;
    Fixture f(10);
    toolkit::Button button(u"Play"_s);
    f.stage.scene.addItem(&button);
    f.list->setFocus(Qt::TabFocusReason);
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Down);
    f.model.removeRow(5);
    f.list->hide();
    button.setText(u"Pause"_s);
    QCOMPARE(events.take(), QStringList());
    // What comes to listen later finds everything.
    QCOMPARE(access(f.list)->childCount(), 9);
}

QTEST_MAIN(AccessSilence)
#include "access_silence.moc"
