// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/trackerinterface.h"
#include "fileops/filemanager.h"
#include "fileops/fileremoval.h"
#include "fileopsfixture.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/querydialog.h"
#include "support/loglines.h"

#include <QDir>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QUrl>

using namespace Qt::Literals::StringLiterals;
using toolkit::QueryDialog;

// A video is deleted after a question: from the list at once, from the player when it has stopped.
class TestFileManager : public QObject
{
    Q_OBJECT

public:
    explicit TestFileManager(FileOpsFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void init();
    void cleanup();
    void signalsAndSlotsStandInTheirOrder();
    void yesDeletesAtOnce();
    void yesOnlyTellsThePlayer();
    void noLeavesEverything_data();
    void noLeavesEverything();
    void theTitleAsItIsShown_data();
    void theTitleAsItIsShown();
    void addressesBecomePaths_data();
    void addressesBecomePaths();
    void whatIsNoFileIsNotDeleted_data();
    void whatIsNoFileIsNotDeleted();
    void aFileThatCannotBeDeleted_data();
    void aFileThatCannotBeDeleted();
    void anExportedCardKeepsTheFile();
    void aStaleAnswerIsIgnored();
    void aFailedLookupOnlyLogs();
    void anotherVideoIsAskedAboutInstead();
    void theVideoThatWasAskedAboutIsDeleted();
    void withoutAWindow();
    void closedFromOutside();
    void closedBeforeItIsAsked();
    void theSameManagerAsksAgain();

private:
    QVariantList record(const QString &url, const QString &title = u"Birthday"_s, int number = 1) const
    {
        return {u"urn:uuid:%1"_s.arg(number), title, u"clip.mp4"_s, u"65"_s, u"0"_s, u"video/mp4"_s, url,
                QString::number(number)};
    }
    // A file, and its address.
    QString make(const QString &name) const
    {
        QFile file(m_folder->filePath(name));
        if (!file.open(QIODevice::WriteOnly))
            return {};
        file.write("film");
        return QString::fromUtf8(QUrl::fromLocalFile(file.fileName()).toEncoded());
    }
    QStringList files() const { return QDir(m_folder->path()).entryList(QDir::Files, QDir::Name); }
    QueryDialog *ask(FileManager &manager, const QString &url, const QString &title = u"Birthday"_s)
    {
        f.store.answerWith({record(url, title)});
        manager.showDeleteConfirmation(u"urn:uuid:1"_s);
        QueryDialog *dialog = nullptr;
        (void)QTest::qWaitFor([&] {
            const auto *removal = manager.findChild<FileRemoval *>();
            dialog = f.popup<QueryDialog>();
            return dialog && removal && (removal->isIdentified() || FileRemoval::pathOf(url).isEmpty());
        });
        return dialog;
    }
    void listen(FileManager &manager)
    {
        m_story.clear();
        connect(&manager, &FileManager::deleteFailed, this,
                [this](const QString &error) { m_story.append(u"failed: "_s + error); });
        connect(&manager, &FileManager::deleteDone, this,
                [this](bool result) { m_story.append(result ? u"done"_s : u"not done"_s); });
        connect(&manager, &FileManager::deleteConfirmed, this, [this] { m_story.append(u"confirmed"_s); });
    }
    QStringList failure() const { return {u"failed: "_s + qtTrId("qtn_vide_error_delete"), u"not done"_s}; }

    FileOpsFixture &f;
    std::unique_ptr<QTemporaryDir> m_folder;
    QStringList m_story;
};

void TestFileManager::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(f.show());
}

void TestFileManager::cleanup()
{
    fakes::Usb::set(false);
    QFile::setPermissions(m_folder->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    f.hide();
}

void TestFileManager::signalsAndSlotsStandInTheirOrder()
{
    QStringList members;
    const QMetaObject &meta = FileManager::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        members.append(QString::fromLatin1(meta.method(i).methodSignature()));
    QCOMPARE(members,
             (QStringList{u"deleteFailed(QString)"_s, u"deleteDone(bool)"_s, u"deleteConfirmed()"_s,
                          u"deleteFile()"_s, u"dataReady(VideoInfo,int)"_s, u"dialogFinished()"_s,
                          u"deleteRejected()"_s}));
}

void TestFileManager::yesDeletesAtOnce()
{
    FileManager manager(true);
    listen(manager);
    make(u"other.mp4"_s);
    QueryDialog *dialog = ask(manager, make(u"clip.mp4"_s));
    QVERIFY(dialog);
    QVERIFY(manager.isDialogOpen());
    QCOMPARE(dialog->title(), qtTrId("qtn_vide_delete_query"));
    dialog->button(QueryDialog::Yes)->click();
    QVERIFY(!manager.isDialogOpen());
    QTRY_COMPARE(m_story, QStringList{u"done"_s});
    QCOMPARE(files(), QStringList{u"other.mp4"_s});
    // The store sees for itself that the file is gone.
    QVERIFY(f.store.texts(SparqlQuery::UpdateStatement).isEmpty());
}

void TestFileManager::yesOnlyTellsThePlayer()
{
    FileManager manager(false);
    listen(manager);
    QueryDialog *dialog = ask(manager, make(u"clip.mp4"_s));
    QVERIFY(dialog);
    dialog->button(QueryDialog::Yes)->click();
    QCOMPARE(m_story, QStringList{u"confirmed"_s});
    QCOMPARE(files(), QStringList{u"clip.mp4"_s});
    manager.deleteFile();
    QTRY_COMPARE(m_story, (QStringList{u"confirmed"_s, u"done"_s}));
    QVERIFY(files().isEmpty());
}

void TestFileManager::noLeavesEverything_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("no") << 0;
    QTest::newRow("escape") << int(Qt::Key_Escape);
    QTest::newRow("back") << int(Qt::Key_Back);
    QTest::newRow("return, unless the person went to Yes") << int(Qt::Key_Return);
}

void TestFileManager::noLeavesEverything()
{
    QFETCH(int, key);
    FileManager manager(true);
    listen(manager);
    QueryDialog *dialog = ask(manager, make(u"clip.mp4"_s));
    QVERIFY(dialog);
    if (key == 0)
        dialog->button(QueryDialog::No)->click();
    else
        QTest::keyClick(f.window.get(), Qt::Key(key));
    QCOMPARE(m_story, QStringList{u"not done"_s});
    QVERIFY(!manager.isDialogOpen());
    QCOMPARE(files(), QStringList{u"clip.mp4"_s});
}

void TestFileManager::theTitleAsItIsShown_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    const QString summit = u"\U0001F3D4"_s;
    QTest::newRow("plain") << u"Birthday"_s << u"<span>Birthday</span"_s;
    QTest::newRow("mark-up") << u"<b>a</b> & co"_s << u"<span>&lt;b&gt;a&lt;/b&gt; &amp; co</span"_s;
    QTest::newRow("an end of its own") << u"</span>"_s << u"<span>&lt;/span&gt;</span"_s;
    QTest::newRow("400") << QString(400, u'x') << u"<span>"_s + QString(400, u'x') + u"</span"_s;
    QTest::newRow("401") << QString(401, u'x') << u"<span>"_s + QString(400, u'x') + u"...</span"_s;
    QTest::newRow("10,000") << QString(10000, u'x') << u"<span>"_s + QString(400, u'x') + u"...</span"_s;
    QTest::newRow("cut before it is escaped")
        << QString(401, u'<') << u"<span>"_s + u"&lt;"_s.repeated(400) + u"...</span"_s;
    QTest::newRow("no half of a character")
        << QString(399, u'x') + summit + u"y"_s << u"<span>"_s + QString(399, u'x') + u"...</span"_s;
    QTest::newRow("emoji") << summit << u"<span>"_s + summit + u"</span"_s;
    QTest::newRow("only blanks") << u"   "_s << u"<span>   </span"_s;
    QTest::newRow("combining marks") << u"e\u0301\u0302"_s << u"<span>e\u0301\u0302</span"_s;
    QTest::newRow("both directions") << u"abc \u05D0\u05D1 def"_s << u"<span>abc \u05D0\u05D1 def</span"_s;
    QTest::newRow("line breaks and a null")
        << u"a\nb"_s + QChar(u'\0') + u"c"_s << u"<span>a\nb"_s + QChar(u'\0') + u"c</span"_s;
}

void TestFileManager::theTitleAsItIsShown()
{
    QFETCH(QString, title);
    QFETCH(QString, text);
    FileManager manager(true);
    QueryDialog *dialog = ask(manager, make(u"clip.mp4"_s), title);
    QVERIFY(dialog);
    QCOMPARE(dialog->text(), text);
    // Whatever the title, both answers can be reached.
    const QRectF whole = f.window->sceneManager()->root()->rect();
    QVERIFY(whole.contains(dialog->button(QueryDialog::Yes)->sceneBoundingRect()));
    QVERIFY(whole.contains(dialog->button(QueryDialog::No)->sceneBoundingRect()));
}

void TestFileManager::addressesBecomePaths_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a blank") << u"my clip.mp4"_s;
    QTest::newRow("a name that looks encoded") << u"my%20clip.mp4"_s;
    QTest::newRow("a number sign and a question mark") << u"a#b?c.mp4"_s;
    QTest::newRow("letters") << u"Gr\u00FC\u00DFe \u4F60\u597D.mp4"_s;
    QTest::newRow("a line break") << u"a\nb.mp4"_s;
    QTest::newRow("quotes and a backslash") << u"a'\"\\b.mp4"_s;
}

// Two films whose names differ only in how one reads them: the right one goes.
void TestFileManager::addressesBecomePaths()
{
    QFETCH(QString, name);
    const QStringList decoys = {u"my clip.mp4"_s, u"my%20clip.mp4"_s, u"my%2520clip.mp4"_s, u"a"_s, u"a#b"_s};
    QStringList others;
    for (const QString &decoy : decoys) {
        if (decoy != name) {
            make(decoy);
            others.append(decoy);
        }
    }
    others.sort();
    FileManager manager(true);
    listen(manager);
    QueryDialog *dialog = ask(manager, make(name));
    QVERIFY(dialog);
    dialog->accept();
    QTRY_COMPARE(m_story, QStringList{u"done"_s});
    QCOMPARE(files(), others);
}

void TestFileManager::whatIsNoFileIsNotDeleted_data()
{
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("end");
    QTest::newRow("a stream with such a path") << u"http://host"_s << QString();
    QTest::newRow("another machine's") << u"file://nas"_s << QString();
    QTest::newRow("a null after the name") << u"file://"_s << u"%00"_s;
    QTest::newRow("a bare path") << QString() << QString();
}

void TestFileManager::whatIsNoFileIsNotDeleted()
{
    QFETCH(QString, start);
    QFETCH(QString, end);
    make(u"clip.mp4"_s);
    FileManager manager(true);
    listen(manager);
    QueryDialog *dialog = ask(manager, start + m_folder->filePath(u"clip.mp4"_s) + end);
    QVERIFY(dialog);
    dialog->accept();
    QTRY_COMPARE(m_story, failure());
    QCOMPARE(files(), QStringList{u"clip.mp4"_s});
}

void TestFileManager::aFileThatCannotBeDeleted_data()
{
    QTest::addColumn<QString>("what");
    QTest::newRow("gone") << u"gone"_s;
    QTest::newRow("a folder by now") << u"folder"_s;
    QTest::newRow("its folder is gone") << u"no folder"_s;
    QTest::newRow("its folder is a file by now") << u"a file"_s;
    QTest::newRow("its folder takes no changes") << u"immutable"_s;
}

void TestFileManager::aFileThatCannotBeDeleted()
{
    QFETCH(QString, what);
    QVERIFY(QDir(m_folder->path()).mkpath(u"films"_s));
    const QString path = m_folder->filePath(u"films/clip.mp4"_s);
    FileManager manager(true);
    listen(manager);
    const QString address = make(u"films/clip.mp4"_s);
    QueryDialog *dialog = ask(manager, what == "immutable"_L1 ? u"file:///proc/self/stat"_s : address);
    QVERIFY(dialog);
    if (what != "immutable"_L1)
        QVERIFY(QFile::remove(path));
    if (what == "folder"_L1)
        QVERIFY(QDir().mkdir(path));
    if (what == "no folder"_L1 || what == "a file"_L1)
        QVERIFY(QDir().rmdir(m_folder->filePath(u"films"_s)));
    if (what == "a file"_L1)
        make(u"films"_s);
    LogLines log("kestrel.fileops");
    dialog->accept();
    QVERIFY(manager.isDeleting());
    QTRY_COMPARE(m_story, failure());
    QVERIFY(!manager.isDeleting());
    QVERIFY(log.all().value(0).contains(u"couldn't remove file: "_s));
    if (what == "folder"_L1)
        QVERIFY(QDir(path).exists());
}

void TestFileManager::anExportedCardKeepsTheFile()
{
    FileManager manager(true);
    listen(manager);
    QueryDialog *dialog = ask(manager, make(u"clip.mp4"_s));
    QVERIFY(dialog);
    fakes::Usb::set(true);
    LogLines log("kestrel.fileops");
    dialog->accept();
    QTRY_COMPARE(m_story, failure());
    QCOMPARE(files(), QStringList{u"clip.mp4"_s});
    QCOMPARE(log.all(),
             QStringList{u"void FileManager::deleteFile() Mass strorage mode: Couldn't remove file: "_s
                         + m_folder->filePath(u"clip.mp4"_s)});
}

void TestFileManager::aStaleAnswerIsIgnored()
{
    FileManager manager(true);
    f.store.answer(FakeSparqlAnswer::later());
    manager.showDeleteConfirmation(u"urn:uuid:1"_s);
    VideoInfo info;
    info.url = make(u"clip.mp4"_s);
    manager.dataReady(info, 0);
    manager.dataReady(info, 1 << 20);
    QVERIFY(!manager.isDialogOpen());
    QVERIFY(!f.popup<QueryDialog>());
}

void TestFileManager::aFailedLookupOnlyLogs()
{
    FileManager manager(true);
    listen(manager);
    f.store.answer(FakeSparqlAnswer::null());
    LogLines log("kestrel.fileops");
    manager.showDeleteConfirmation(u"urn:uuid:1"_s);
    QCOMPARE(log.all(),
             QStringList{u"void FileManager::showDeleteConfirmation(const QString&) Tracker query failed"_s});
    QVERIFY(m_story.isEmpty());
    QVERIFY(!manager.isDialogOpen());
}

// The store is slow, and the person chose another video meanwhile.
void TestFileManager::anotherVideoIsAskedAboutInstead()
{
    FileManager manager(true);
    f.store.answer(FakeSparqlAnswer::later());
    manager.showDeleteConfirmation(u"urn:uuid:1"_s);
    const int first = f.lastStatement();
    manager.showDeleteConfirmation(u"urn:uuid:2"_s);
    const int second = f.lastStatement();
    f.store.finish(first, {record(make(u"a.mp4"_s), u"A"_s, 1)});
    QVERIFY(!f.popup<QueryDialog>());
    f.store.finish(second, {record(make(u"b.mp4"_s), u"B"_s, 2)});
    QueryDialog *dialog = f.popup<QueryDialog>();
    QVERIFY(dialog);
    QCOMPARE(dialog->text(), u"<span>B</span"_s);
}

// Another program sorted the folder while the question stood there.
void TestFileManager::theVideoThatWasAskedAboutIsDeleted()
{
    FileManager manager(true);
    listen(manager);
    make(u"other.mp4"_s);
    QueryDialog *dialog = ask(manager, make(u"clip.mp4"_s));
    QVERIFY(dialog);
    const auto folder = QDir(m_folder->path());
    QVERIFY(QFile(folder.filePath(u"other.mp4"_s)).resize(100));
    QVERIFY(QFile::rename(folder.filePath(u"clip.mp4"_s), folder.filePath(u"moved.mp4"_s)));
    QVERIFY(QFile::rename(folder.filePath(u"other.mp4"_s), folder.filePath(u"clip.mp4"_s)));
    dialog->accept();
    QTRY_COMPARE(m_story, failure());
    QCOMPARE(files(), (QStringList{u"clip.mp4"_s, u"moved.mp4"_s}));
}

void TestFileManager::withoutAWindow()
{
    FileManager manager(true);
    listen(manager);
    const QString url = make(u"clip.mp4"_s);
    f.hide();
    f.store.answerWith({record(url)});
    LogLines log("kestrel.fileops");
    manager.showDeleteConfirmation(u"urn:uuid:1"_s);
    QTRY_COMPARE(m_story, QStringList{u"not done"_s});
    QVERIFY(!manager.isDialogOpen());
    QCOMPARE(files(), QStringList{u"clip.mp4"_s});
    QVERIFY(log.all().value(0).endsWith(u"Kestrel: Unable to get active window."_s));
}

void TestFileManager::closedFromOutside()
{
    FileManager manager(true);
    listen(manager);
    QVERIFY(ask(manager, make(u"clip.mp4"_s)));
    manager.closeDialog();
    QCOMPARE(m_story, QStringList{u"not done"_s});
    QVERIFY(!manager.isDialogOpen());
    manager.closeDialog();
    QCOMPARE(m_story.size(), 1);
    QCOMPARE(files(), QStringList{u"clip.mp4"_s});
}

void TestFileManager::closedBeforeItIsAsked()
{
    FileManager manager(true);
    f.store.answer(FakeSparqlAnswer::later());
    manager.showDeleteConfirmation(u"urn:uuid:1"_s);
    manager.closeDialog();
    f.store.finish(f.lastStatement(), {record(make(u"clip.mp4"_s))});
    QVERIFY(!f.popup<QueryDialog>());
}

void TestFileManager::theSameManagerAsksAgain()
{
    FileManager manager(true);
    listen(manager);
    for (const QString &name : {u"a.mp4"_s, u"b.mp4"_s}) {
        QueryDialog *dialog = ask(manager, make(name), name);
        QVERIFY(dialog);
        QCOMPARE(dialog->text(), u"<span>%1</span"_s.arg(name));
        dialog->accept();
        QTRY_VERIFY(!manager.isDeleting());
    }
    QCOMPARE(m_story, (QStringList{u"done"_s, u"done"_s}));
    QVERIFY(files().isEmpty());
}

KESTREL_FILEOPS_TEST_MAIN(TestFileManager)
#include "tst_filemanager.moc"
