// SPDX-License-Identifier: GPL-3.0-or-later
#include "saveasdialogfixture.h"

// The sheet while it copies.
class TestSaveAsCopying : public SaveAsDialogFixture
{
    Q_OBJECT

private Q_SLOTS:
    void progressWhileItCopies();
    void cancelledWhileItCopies_data();
    void cancelledWhileItCopies();
    void dismissedWhileItGetsItsName_data();
    void dismissedWhileItGetsItsName();
    void itsWindowGoesWhileItCopies();
    void automaticCopyAsksNothing();
    void automaticCopyAsksAboutATakenName();
};

void TestSaveAsCopying::progressWhileItCopies()
{
    makeLarge();
    open();
    saveButton()->click();
    QVERIFY(!saveButton()->isEnabled());
    QTRY_VERIFY(content()->progressBar()->isVisible());
    QCOMPARE(text(content()->heading()), u"Saving “clip.final.mp4”"_s);
    QVERIFY(!content()->field()->isVisible());
    QVERIFY(!content()->field()->hasFocus());
    QTRY_VERIFY(content()->progressBar()->fraction() > 0);
    QVERIFY(content()->progressBar()->fraction() <= 1);
    QVERIFY2(text(content()->progressLabel()).endsWith(" of 2.1 GB"_L1),
             qPrintable(text(content()->progressLabel())));
    QCOMPARE(content()->progressBar()->accessibleName(), text(content()->heading()));
    QCOMPARE(content()->progressBar()->valueText(), text(content()->progressLabel()));
    QCOMPARE(m_dialog->accessibleName(), text(content()->heading()));
    QCOMPARE(saved(), QStringList()); // nothing is seen before it is whole
    cancelButton()->click();
    QVERIFY(!m_dialog->isDisplayed());
}

void TestSaveAsCopying::cancelledWhileItCopies_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"cancel", "escape", "outside", "deleted"})
        QTest::newRow(way) << QString::fromLatin1(way);
}

void TestSaveAsCopying::cancelledWhileItCopies()
{
    QFETCH(QString, way);
    makeLarge();
    QSignalSpy accepted(m_dialog.get(), &SaveAsDialog::accepted);
    QSignalSpy rejected(m_dialog.get(), &SaveAsDialog::rejected);
    open();
    saveButton()->click();
    QTRY_VERIFY(content()->progressBar()->isVisible());
    if (way == "cancel"_L1)
        cancelButton()->click();
    else if (way == "escape"_L1)
        key(Qt::Key_Escape);
    else if (way == "outside"_L1)
        m_dialog->dismiss();
    else
        m_dialog.reset();
    QVERIFY(!m_dialog || (!m_dialog->isCopying() && !m_dialog->isDisplayed()));
    QCOMPARE(rejected.size(), way == "cancel"_L1 || way == "escape"_L1 ? 1 : 0);
    QCOMPARE(accepted.size(), 0);
    QTRY_VERIFY(!isCopyThreadThere()); // whatever it was about to do is done
    QCOMPARE(saved(), QStringList());
    QTRY_VERIFY(!m_window->sceneManager()->isBlocked());
}

void TestSaveAsCopying::dismissedWhileItGetsItsName_data()
{
    QTest::addColumn<bool>("deleted");
    QTest::newRow("dismissed") << false;
    QTest::newRow("and deleted") << true;
}

// Too late to leave nothing of it: the person hears that it is there.
void TestSaveAsCopying::dismissedWhileItGetsItsName()
{
    QFETCH(bool, deleted);
    QSignalSpy accepted(m_dialog.get(), &SaveAsDialog::accepted);
    open();
    saveButton()->click();
    const QDeadlineTimer deadline(5000);
    while (saved().isEmpty() && !deadline.hasExpired()) { } // its end was not heard yet
    QCOMPARE(saved(), QStringList{u"clip.final.mp4"_s});
    m_dialog->dismiss();
    QVERIFY(!m_dialog->isCopying());
    if (deleted)
        m_dialog.reset();
    QTRY_COMPARE(banners(), QStringList{u"Saved in Videos"_s});
    QCOMPARE(accepted.size(), 0);
    QCOMPARE(saved(), QStringList{u"clip.final.mp4"_s});
}

void TestSaveAsCopying::itsWindowGoesWhileItCopies()
{
    makeLarge();
    QSignalSpy rejected(m_dialog.get(), &SaveAsDialog::rejected);
    open();
    saveButton()->click();
    QTRY_VERIFY(content()->progressBar()->isVisible());
    m_page.reset();
    m_window.reset();
    QCOMPARE(rejected.size(), 1);
    QVERIFY(!m_dialog->isCopying());
    QTRY_VERIFY(!isCopyThreadThere());
    QCOMPARE(saved(), QStringList());
}

void TestSaveAsCopying::automaticCopyAsksNothing()
{
    QSignalSpy accepted(m_dialog.get(), &SaveAsDialog::accepted);
    m_dialog->setAutomaticCopy(true);
    open();
    QVERIFY(m_dialog->isCopying());
    QTRY_COMPARE(accepted.size(), 1);
    QCOMPARE(saved(), QStringList{u"clip.final.mp4"_s});
}

void TestSaveAsCopying::automaticCopyAsksAboutATakenName()
{
    QVERIFY(make(u"Videos/clip.final.mp4"_s, "theirs"));
    m_dialog->setAutomaticCopy(true);
    open();
    QTRY_VERIFY(isAsking());
    QCOMPARE(read(u"Videos/clip.final.mp4"_s), QByteArray("theirs"));
}

QTEST_MAIN(TestSaveAsCopying)
#include "tst_saveascopying.moc"
