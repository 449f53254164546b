// SPDX-License-Identifier: GPL-3.0-or-later
#include "saveasdialogfixture.h"
#include "support/mountnamespace.h"

// What the sheet says where the disk is full or may not be written to.
class TestSaveAsDisks : public SaveAsDialogFixture
{
    Q_OBJECT

private Q_SLOTS:
    void tooLittleRoomIsToldBefore();
    void theRoomThatIsFreeIsTheDisks();
    void aDiskThatMayNotBeWrittenTo();

private:
    struct Unmounted
    {
        Unmounted() = default;
        Q_DISABLE_COPY_MOVE(Unmounted)
        ~Unmounted() { mounts::unmountAll(); }
    };
    [[nodiscard]] QByteArray disk() const { return QFile::encodeName(m_root->filePath(u"Videos"_s)); }
};

void TestSaveAsDisks::tooLittleRoomIsToldBefore()
{
    const Unmounted afterwards;
    QVERIFY(mounts::mountSmall(disk(), 1 << 20));
    QVERIFY(make(u"clip.final.mp4"_s, QByteArray(2 << 20, 'x')));
    open();
    saveButton()->click();
    QTRY_COMPARE(text(content()->errorLabel()), u"There is not enough free space."_s);
    QVERIFY(content()->field()->isVisible()); // the form never went
    QVERIFY(saveButton()->isEnabled());
    QCOMPARE(saved(), QStringList());
    // With room it is saved, without another word.
    QVERIFY(make(u"clip.final.mp4"_s, "film"));
    saveButton()->click();
    QTRY_COMPARE(saved(), QStringList{u"clip.final.mp4"_s});
    QTRY_VERIFY(!m_dialog->isActive());
}

void TestSaveAsDisks::theRoomThatIsFreeIsTheDisks()
{
    const Unmounted afterwards;
    QVERIFY(mounts::mountSmall(disk(), 4 << 20));
    open();
    QTRY_COMPARE(text(content()->freeLabel()), u"Free space: 4.2 MB"_s);
}

void TestSaveAsDisks::aDiskThatMayNotBeWrittenTo()
{
    const Unmounted afterwards;
    QVERIFY(mounts::mountSmall(disk(), 1 << 20));
    QVERIFY(mounts::makeReadOnly(disk()));
    open();
    saveButton()->click();
    QTRY_VERIFY(!text(content()->errorLabel()).isEmpty());
    QCOMPARE(text(content()->errorLabel()), u"Files cannot be saved in this folder."_s);
}

int main(int argc, char **argv)
{
    if (!mounts::enterNamespace({})) {
        qCritical("no mount namespace");
        return 1;
    }
    QApplication application(argc, argv);
    TestSaveAsDisks test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_saveasdisks.moc"
