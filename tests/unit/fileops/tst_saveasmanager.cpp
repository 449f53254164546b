// SPDX-License-Identifier: GPL-3.0-or-later
#include "fileops/saveasmanager.h"
#include "fileopsfixture.h"
#include "platform/saveas/copyprogress.h"
#include "platform/saveas/saveascontent.h"
#include "platform/saveas/saveasdialog.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/sheetheader.h"
#include "platform/toolkit/textedit.h"
#include "support/driventimer.h"
#include "support/largefile.h"
#include "support/loglines.h"

#include <QDir>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QUrl>

using namespace Qt::Literals::StringLiterals;

// A video is offered for saving under another name.
class TestSaveAsManager : public QObject
{
    Q_OBJECT

public:
    explicit TestSaveAsManager(FileOpsFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void init();
    void cleanup();
    void signalsAndSlotsStandInTheirOrder();
    void nothingButTheDialogCopies();
    void theFolderOfferedIsThatOfMovies();
    void proposesNameAndExtension_data();
    void proposesNameAndExtension();
    void theDialogIsKept();
    void acceptedAndRejectedClearTheMark_data();
    void acceptedAndRejectedClearTheMark();
    void closingFromOutsideLeavesTheMarkFor1200ms();
    void closingFromOutsideWithoutADialog();
    void closingFromOutsideStopsACopy();
    void theMarkOfTheTimeBeforeDoesNotEndThisOne();
    void withoutAWindow();
    void itsWindowGoes();
    void theManagerGoesWhileTheDialogIsUp();
    void savesTheVideoAsIs();
    void theResultIsTheOwnersBeforeThePageIsFree();

private:
    static QTimer *clock(const SaveAsManager &manager)
    {
        return manager.findChild<QTimer *>(u"displayedTimer"_s);
    }
    QString make(const QString &name, const QByteArray &content = "film") const
    {
        QFile file(m_folder->filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            return {};
        return file.fileName();
    }
    static QString movies() { return QStandardPaths::writableLocation(QStandardPaths::MoviesLocation); }

    FileOpsFixture &f;
    QObject m_owner;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestSaveAsManager::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir().mkpath(movies()));
    QVERIFY(f.show());
}

void TestSaveAsManager::cleanup()
{
    f.hide();
    QVERIFY(QDir(movies()).removeRecursively());
}

void TestSaveAsManager::signalsAndSlotsStandInTheirOrder()
{
    QStringList members;
    const QMetaObject &meta = SaveAsManager::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        members.append(QString::fromLatin1(meta.method(i).typeName()) + u' '
                       + QString::fromLatin1(meta.method(i).methodSignature()));
    QCOMPARE(
        members,
        (QStringList{u"void saveAsDone()"_s, u"void showSaveAsDialog(QString)"_s, u"bool isDialogOpen()"_s,
                     u"void cancelSaveAsDeletion()"_s, u"void saveAsAccepted()"_s, u"void saveAsRejected()"_s,
                     u"void saveAsDisplayedTimeout()"_s}));
}

// The manager has no slot that would, so whatever the dialog tells of a chosen name ends nowhere; and nothing
// is logged about it.
void TestSaveAsManager::nothingButTheDialogCopies()
{
    struct Probe : SaveAsDialog
    {
        static int listeners(const SaveAsDialog *dialog)
        {
            return (dialog->*(&Probe::receivers))(SIGNAL(saveFileAs(QString)));
        }
    };
    LogLines log("default");
    const SaveAsManager manager(&m_owner);
    QCOMPARE(manager.metaObject()->indexOfSlot("saveVideoFileAs(QString)"), -1);
    QCOMPARE(Probe::listeners(manager.dialog()), 0);
    QCOMPARE(log.all(), QStringList());
}

void TestSaveAsManager::theFolderOfferedIsThatOfMovies()
{
    SaveAsManager manager(&m_owner);
    QCOMPARE(manager.destination(), movies());
    QVERIFY(!manager.isDialogOpen());
    manager.showSaveAsDialog(u"file:///home/user/MyDocs/clip.mp4"_s);
    QVERIFY(manager.isDialogOpen());
    QCOMPARE(manager.dialog()->destinationPath(), movies());
    QVERIFY(!manager.dialog()->automaticCopy());
    QVERIFY(!manager.dialog()->isCopying());
}

void TestSaveAsManager::proposesNameAndExtension_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("extension");
    QTest::newRow("two dots") << u"file:///home/user/MyDocs/clip.final.mp4"_s
                              << u"/home/user/MyDocs/clip.final.mp4"_s << u"clip.final"_s << u"mp4"_s;
    QTest::newRow("a path") << u"/home/user/clip.mp4"_s << u"/home/user/clip.mp4"_s << u"clip"_s << u"mp4"_s;
    QTest::newRow("every prefix goes") << u"file:///a/file://b.mp4"_s << u"/a/b.mp4"_s << u"b"_s << u"mp4"_s;
    QTest::newRow("no dot") << u"file:///home/clip"_s << u"/home/clip"_s << u"clip"_s << QString();
    QTest::newRow("a dot in the folder")
        << u"file:///home.d/clip"_s << u"/home.d/clip"_s << u"clip"_s << QString();
    QTest::newRow("a dot at the end")
        << u"file:///home/clip."_s << u"/home/clip."_s << u"clip"_s << QString();
    QTest::newRow("a dot at the beginning")
        << u"file:///home/.mp4"_s << u"/home/.mp4"_s << QString() << u"mp4"_s;
    QTest::newRow("at the root") << u"file:///clip.mp4"_s << u"/clip.mp4"_s << u"/clip"_s << u"mp4"_s;
    QTest::newRow("no folder") << u"clip.mp4"_s << u"clip.mp4"_s << u"clip"_s << u"mp4"_s;
    QTest::newRow("encoded, which the dialog reads")
        << u"file:///home/a%20b.mp4"_s << u"/home/a%20b.mp4"_s << u"a%20b"_s << u"mp4"_s;
    QTest::newRow("a folder") << u"file:///home/"_s << u"/home/"_s << QString() << QString();
    QTest::newRow("nothing") << QString() << QString() << QString() << QString();
}

void TestSaveAsManager::proposesNameAndExtension()
{
    QFETCH(QString, path);
    SaveAsManager manager(&m_owner);
    manager.showSaveAsDialog(path);
    QTEST(manager.dialog()->sourcePath(), "source");
    QTEST(manager.dialog()->defaultFileName(), "name");
    QTEST(manager.dialog()->defaultExtension(), "extension");
    QVERIFY(manager.dialog()->isActive());
}

void TestSaveAsManager::theDialogIsKept()
{
    SaveAsManager manager(&m_owner);
    const SaveAsDialog *dialog = manager.dialog();
    manager.showSaveAsDialog(u"file:///home/a.mp4"_s);
    manager.dialog()->reject();
    manager.showSaveAsDialog(u"file:///home/b.mp4"_s);
    QCOMPARE(manager.dialog(), dialog);
    QVERIFY(dialog->isActive());
    QCOMPARE(dialog->content()->field()->text(), u"b"_s);
}

void TestSaveAsManager::acceptedAndRejectedClearTheMark_data()
{
    QTest::addColumn<bool>("accepted");
    QTest::newRow("accepted") << true;
    QTest::newRow("rejected") << false;
}

void TestSaveAsManager::acceptedAndRejectedClearTheMark()
{
    QFETCH(bool, accepted);
    SaveAsManager manager(&m_owner);
    QSignalSpy done(&manager, &SaveAsManager::saveAsDone);
    manager.showSaveAsDialog(u"file:///home/a.mp4"_s);
    if (accepted)
        static_cast<toolkit::Sheet *>(manager.dialog())->accept();
    else
        QTest::keyClick(f.window.get(), Qt::Key_Escape);
    QVERIFY(!manager.isDialogOpen());
    QVERIFY(!manager.dialog()->isActive());
    QCOMPARE(done.size(), 1);
}

void TestSaveAsManager::closingFromOutsideLeavesTheMarkFor1200ms()
{
    SaveAsManager manager(&m_owner);
    QSignalSpy done(&manager, &SaveAsManager::saveAsDone);
    manager.showSaveAsDialog(u"file:///home/a.mp4"_s);
    manager.cancelSaveAsDeletion();
    QVERIFY(!manager.dialog()->isActive());
    QCOMPARE(done.size(), 1);
    QVERIFY(manager.isDialogOpen());
    QVERIFY(clock(manager)->isActive());
    QVERIFY(clock(manager)->isSingleShot());
    QCOMPARE(clock(manager)->interval(), 1200);
    QVERIFY(runOut(clock(manager)));
    QVERIFY(!manager.isDialogOpen());
    QCOMPARE(done.size(), 1);
}

void TestSaveAsManager::closingFromOutsideWithoutADialog()
{
    SaveAsManager manager(&m_owner);
    QSignalSpy done(&manager, &SaveAsManager::saveAsDone);
    manager.cancelSaveAsDeletion();
    QCOMPARE(done.size(), 1);
    QVERIFY(!manager.isDialogOpen());
}

// The card is exported while a film is being copied from it.
void TestSaveAsManager::closingFromOutsideStopsACopy()
{
    const LargeFile large;
    SaveAsManager manager(&m_owner);
    manager.showSaveAsDialog(u"file://"_s + large.path());
    manager.dialog()->save();
    QTRY_VERIFY(manager.dialog()->content()->progressBar()->isVisible());
    QVERIFY(isCopyThreadThere());
    manager.cancelSaveAsDeletion();
    QVERIFY(!manager.dialog()->isCopying());
    QTRY_VERIFY(!isCopyThreadThere()); // whatever it was about to do is done
    QCOMPARE(QDir(movies()).entryList(QDir::Files | QDir::Hidden), QStringList());
}

void TestSaveAsManager::theMarkOfTheTimeBeforeDoesNotEndThisOne()
{
    SaveAsManager manager(&m_owner);
    manager.showSaveAsDialog(u"file:///home/a.mp4"_s);
    manager.cancelSaveAsDeletion();
    manager.showSaveAsDialog(u"file:///home/b.mp4"_s);
    QVERIFY(!clock(manager)->isActive());
    QVERIFY(manager.isDialogOpen());
}

void TestSaveAsManager::withoutAWindow()
{
    SaveAsManager manager(&m_owner);
    f.hide();
    QSignalSpy done(&manager, &SaveAsManager::saveAsDone);
    LogLines log("kestrel.fileops");
    manager.showSaveAsDialog(u"file:///home/a.mp4"_s);
    QCOMPARE(log.all(),
             QStringList{
                 u"void SaveAsManager::showSaveAsDialog(QString) Kestrel: Unable to get active window."_s});
    QVERIFY(!manager.isDialogOpen());
    QCOMPARE(done.size(), 1);
}

void TestSaveAsManager::itsWindowGoes()
{
    SaveAsManager manager(&m_owner);
    QSignalSpy done(&manager, &SaveAsManager::saveAsDone);
    manager.showSaveAsDialog(u"file:///home/a.mp4"_s);
    f.hide();
    QCOMPARE(done.size(), 1);
    QVERIFY(!manager.isDialogOpen());
}

void TestSaveAsManager::theManagerGoesWhileTheDialogIsUp()
{
    auto manager = std::make_unique<SaveAsManager>(&m_owner);
    QSignalSpy done(manager.get(), &SaveAsManager::saveAsDone);
    manager->showSaveAsDialog(u"file:///home/a.mp4"_s);
    manager.reset();
    QCOMPARE(done.size(), 0);
    QTRY_VERIFY(!f.window->sceneManager()->isBlocked());
}

void TestSaveAsManager::savesTheVideoAsIs()
{
    const QString source = make(u"a b.final.mp4"_s, "a film");
    SaveAsManager manager(&m_owner);
    QSignalSpy done(&manager, &SaveAsManager::saveAsDone);
    manager.showSaveAsDialog(QString::fromLatin1(QUrl::fromLocalFile(source).toEncoded()));
    QCOMPARE(manager.dialog()->content()->field()->text(), u"a b.final"_s);
    QTest::keyClicks(f.window.get(), u"holiday"_s); // the proposed name is selected
    manager.dialog()->header()->positiveButton()->click();
    QVERIFY(manager.isDialogOpen());
    QTRY_COMPARE(done.size(), 1);
    QVERIFY(!manager.isDialogOpen());
    QCOMPARE(QDir(movies()).entryList(QDir::Files | QDir::Hidden), QStringList{u"holiday.mp4"_s});
    QFile copy(movies() + u"/holiday.mp4"_s);
    QVERIFY(copy.open(QIODevice::ReadOnly));
    QCOMPARE(copy.readAll(), QByteArray("a film"));
}

void TestSaveAsManager::theResultIsTheOwnersBeforeThePageIsFree()
{
    SaveAsManager manager(&m_owner);
    bool blocked = false;
    connect(&manager, &SaveAsManager::saveAsDone, this,
            [&] { blocked = f.window->sceneManager()->isBlocked(); });
    manager.showSaveAsDialog(u"file:///home/a.mp4"_s);
    QTest::keyClick(f.window.get(), Qt::Key_Escape);
    QVERIFY(blocked);
    QTRY_VERIFY(!f.window->sceneManager()->isBlocked());
}

KESTREL_FILEOPS_TEST_MAIN(TestSaveAsManager)
#include "tst_saveasmanager.moc"
