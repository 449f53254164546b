// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/allvideosmodel.h"
#include "fileops/filemanager.h"
#include "fileops/fileremoval.h"
#include "library/filteredmodel.h"
#include "libraryfixture.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/querydialog.h"
#include "support/deletionquestion.h"
#include "support/loglines.h"
#include "support/mountnamespace.h"

#include <QDir>
#include <QDirIterator>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <cerrno>
#include <cstring>

#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;
using toolkit::QueryDialog;

namespace {

// Whoever may do everything may not read and write what the modes forbid, as long as this lives. Threads that
// are made meanwhile may not either.
class OrdinaryPerson
{
public:
    OrdinaryPerson()
    {
        if (!get(m_before))
            return;
        State state = m_before;
        state.words[0].effective &= ~((1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH));
        m_changed = set(state);
    }
    ~OrdinaryPerson()
    {
        if (m_changed)
            set(m_before);
    }
    Q_DISABLE_COPY_MOVE(OrdinaryPerson)
    [[nodiscard]] bool isOrdinary() const { return m_changed; }

private:
    struct State
    {
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct words[2] = {};
    };
    static bool get(State &state) { return ::syscall(SYS_capget, &state.header, state.words) == 0; }
    static bool set(State &state) { return ::syscall(SYS_capset, &state.header, state.words) == 0; }

    State m_before;
    bool m_changed = false;
};

} // namespace

// Deleting from the list what does not go, on real file systems: the person is told, nothing else happens.
class DeleteFailuresTest : public QObject
{
    Q_OBJECT

public:
    explicit DeleteFailuresTest(LibraryFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void init();
    void cleanup();
    void whatCannotBeDeletedIsTold_data();
    void whatCannotBeDeletedIsTold();
    void aFullDiskGivesRoom();
    void aCardCanBePulledWhileTheQuestionStands();
    void aNameThatIsNoText();
    void theFailureDoesNotHinderTheNext();

private:
    [[nodiscard]] QString films() const { return m_folder->filePath(u"films"_s); }
    [[nodiscard]] QString film(const QString &name) const { return films() + u'/' + name + u".mp4"_s; }
    static bool make(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
            && file.write(content) == content.size();
    }
    // Films of these titles lie in the folder and stand in the list.
    bool open(const QStringList &titles);
    bool spoil(const QString &way);
    QueryDialog *ask(const QString &title);
    // Everything in the test's folder, with the content of files.
    [[nodiscard]] QStringList everything() const
    {
        QStringList found;
        QDirIterator all(m_folder->path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
        while (all.hasNext()) {
            QFile file(all.next());
            const bool isFile = all.fileInfo().isFile() && file.open(QIODevice::ReadOnly);
            found.append(all.filePath() + u' ' + (isFile ? QString::fromUtf8(file.readAll()) : u"-"_s));
        }
        found.sort();
        return found;
    }

    LibraryFixture &f;
    std::unique_ptr<QTemporaryDir> m_folder;
    QList<QStringList> m_rows;
};

void DeleteFailuresTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void DeleteFailuresTest::cleanup()
{
    f.close();
    f.store.answerBy({});
    (void)::chmod(QFile::encodeName(films()).constData(), 0755);
    mounts::unmountAll();
}

bool DeleteFailuresTest::open(const QStringList &titles)
{
    m_rows = LibraryFixture::rows(titles);
    for (QStringList &video : m_rows) {
        const QString path = film(video.at(VideoColumn::Title));
        if (!QDir().mkpath(films()) || !make(path, video.at(VideoColumn::Title).toUtf8()))
            return false;
        video[VideoColumn::Url] = u"file://"_s + path;
    }
    if (!f.open(m_rows))
        return false;
    f.store.answerBy([this](const SparqlQuery &query) {
        for (const QStringList &video : std::as_const(m_rows)) {
            if (query.text().contains(u'<' + video.at(VideoColumn::Urn) + u'>'))
                return FakeSparqlAnswer::rows({QVariantList(video.cbegin(), video.cend())});
        }
        return FakeSparqlAnswer::rows({});
    });
    return true;
}

QueryDialog *DeleteFailuresTest::ask(const QString &title)
{
    f.widget()->itemLongTapped(f.indexOf(title), {100, 200});
    toolkit::ObjectMenu *menu = f.widget()->objectMenu();
    menu->chooseEntry(menu->entryCount() - 1);
    return deletionQuestion(f.window, [this] { return f.widget()->fileManager(); });
}

void DeleteFailuresTest::whatCannotBeDeletedIsTold_data()
{
    QTest::addColumn<bool>("onCard");
    QTest::addColumn<QString>("way");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *name, bool onCard, const QString &way, const QString &reason) {
        QTest::newRow(name) << onCard << way << reason;
    };
    const auto error = [](int number) { return QString::fromLocal8Bit(::strerror(number)); };
    const QString otherFile = u"another file lies there by now"_s;
    const QString otherFolder = u"its folder is another by now"_s;
    row("the card is write-protected", true, u"read-only"_s, error(EROFS));
    row("a folder of somebody else", false, u"forbidden"_s, error(EACCES));
    row("gone", false, u"gone"_s, error(ENOENT));
    row("replaced by a folder", false, u"folder"_s, error(EISDIR));
    row("replaced by a folder with files", false, u"full folder"_s, error(EISDIR));
    row("replaced by another film", false, u"film"_s, otherFile);
    row("replaced by a link to another film", false, u"link"_s, otherFile);
    row("the folder leads elsewhere", false, u"linked folder"_s, otherFolder);
    row("the folder leads to a copy of itself", false, u"moved folder"_s, otherFolder);
    row("its folder is a file", false, u"file for folder"_s, error(ENOTDIR));
    row("the card was pulled", true, u"pulled"_s, error(ENOENT));
    row("another card with such a film came", true, u"swapped"_s, otherFile);
}

bool DeleteFailuresTest::spoil(const QString &way)
{
    const QByteArray card = QFile::encodeName(films());
    const QString path = film(u"beta"_s);
    const QString elsewhere = m_folder->filePath(u"elsewhere"_s);
    if (way == u"read-only"_s)
        return mounts::makeReadOnly(card);
    if (way == u"forbidden"_s)
        return ::chmod(card.constData(), 0555) == 0;
    if (way == u"pulled"_s)
        return mounts::unmountIdle(card);
    if (way == u"swapped"_s)
        return mounts::unmountIdle(card) && mounts::mount(card) && make(path, "beta");
    if (way == u"linked folder"_s)
        return QDir().mkpath(elsewhere) && make(elsewhere + u"/beta.mp4"_s, "letter")
            && QFile::rename(films(), m_folder->filePath(u"moved"_s)) && QFile::link(elsewhere, films());
    if (way == u"moved folder"_s)
        return QFile::rename(films(), elsewhere) && QFile::link(elsewhere, films());
    if (way == u"file for folder"_s)
        return QFile::rename(films(), elsewhere) && make(films(), "letter");
    if (!QFile::remove(path))
        return false;
    if (way == u"folder"_s)
        return QDir().mkpath(path);
    if (way == u"full folder"_s)
        return QDir().mkpath(path) && make(path + u"/beta.mp4"_s, "beta");
    if (way == u"film"_s)
        return make(path, "gamma");
    if (way == u"link"_s)
        return QFile::link(film(u"alpha"_s), path);
    return way == u"gone"_s;
}

void DeleteFailuresTest::whatCannotBeDeletedIsTold()
{
    QFETCH(bool, onCard);
    QFETCH(QString, way);
    QFETCH(QString, reason);
    if (onCard)
        QVERIFY(mounts::mount(QFile::encodeName(films())));
    QVERIFY(open({u"alpha"_s, u"beta"_s, u"gamma"_s}));
    const OrdinaryPerson person;
    QVERIFY(person.isOrdinary());
    QSignalSpy notify(f.page.get(), &LocalVideosPage::handleError);
    QueryDialog *dialog = ask(u"beta"_s);
    QVERIFY(dialog);
    QSignalSpy done(f.widget()->fileManager(), &FileManager::deleteDone);
    QVERIFY(spoil(way));
    const QStringList before = everything();
    LogLines log("kestrel.fileops");
    dialog->accept();
    QTRY_COMPARE(done, QList<QVariantList>{{false}});
    QCOMPARE(notify, QList<QVariantList>{{qtTrId("qtn_vide_error_delete")}});
    QCOMPARE(log.all(),
             QStringList{u"void FileManager::deleteFile() couldn't remove file: %1 (%2)"_s.arg(
                 film(u"beta"_s), reason)});
    QCOMPARE(everything(), before);
    QCOMPARE(f.titles(), (QStringList{u"alpha"_s, u"beta"_s, u"gamma"_s}));
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::ListShown));
}

// A disk without room is the very reason to delete something.
void DeleteFailuresTest::aFullDiskGivesRoom()
{
    QVERIFY(mounts::mountSmall(QFile::encodeName(films()), 1 << 20));
    QVERIFY(open({u"alpha"_s, u"beta"_s}));
    QFile filler(films() + u"/filler"_s);
    QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (filler.write(QByteArray(4096, 'x')) == 4096) { }
    QVERIFY(!make(films() + u"/more"_s, "x"));
    QSignalSpy notify(f.page.get(), &LocalVideosPage::handleError);
    QueryDialog *dialog = ask(u"beta"_s);
    QVERIFY(dialog);
    dialog->accept();
    QTRY_COMPARE(f.titles(), QStringList{u"alpha"_s});
    QVERIFY(!QFile::exists(film(u"beta"_s)));
    QVERIFY(QFile::exists(film(u"alpha"_s)));
    QCOMPARE(notify.size(), 0);
}

// Nothing in it is held open.
void DeleteFailuresTest::aCardCanBePulledWhileTheQuestionStands()
{
    const QByteArray card = QFile::encodeName(films());
    QVERIFY(mounts::mount(card));
    QVERIFY(open({u"alpha"_s}));
    QueryDialog *dialog = ask(u"alpha"_s);
    QVERIFY(dialog);
    QVERIFY(mounts::unmountIdle(card));
    dialog->reject();
    QCOMPARE(f.titles(), QStringList{u"alpha"_s});
}

// The row tells the bytes of the name; one that reads alike lies beside it.
void DeleteFailuresTest::aNameThatIsNoText()
{
    QVERIFY(open({u"alpha"_s, u"beta"_s}));
    const QByteArray odd = QFile::encodeName(films()) + "/\xFF.mp4";
    FILE *file = ::fopen(odd.constData(), "w");
    QVERIFY(file);
    ::fclose(file);
    const QString lookalike = films() + u"/\uFFFD.mp4"_s;
    QVERIFY(make(lookalike, "lookalike"));
    m_rows[1][VideoColumn::Url] = u"file://"_s + films() + u"/%FF.mp4"_s;
    QueryDialog *dialog = ask(u"beta"_s);
    QVERIFY(dialog);
    dialog->accept();
    QTRY_COMPARE(f.titles(), QStringList{u"alpha"_s});
    QVERIFY(::access(odd.constData(), F_OK) != 0);
    QVERIFY(QFile::exists(lookalike));
    QVERIFY(QFile::exists(film(u"beta"_s)));
}

void DeleteFailuresTest::theFailureDoesNotHinderTheNext()
{
    QVERIFY(open({u"alpha"_s, u"beta"_s}));
    QSignalSpy notify(f.page.get(), &LocalVideosPage::handleError);
    QueryDialog *dialog = ask(u"alpha"_s);
    QVERIFY(dialog);
    QVERIFY(QFile::rename(film(u"alpha"_s), film(u"away"_s)));
    dialog->accept();
    QTRY_COMPARE(notify.size(), 1);
    QVERIFY(QFile::rename(film(u"away"_s), film(u"alpha"_s)));
    for (const QString &title : {u"alpha"_s, u"beta"_s}) {
        dialog = ask(title);
        QVERIFY(dialog);
        dialog->accept();
        QTRY_VERIFY(!f.titles().contains(title));
    }
    QCOMPARE(notify.size(), 1);
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::EmptyCollection));
    QVERIFY(QDir(films()).isEmpty());
}

int main(int argc, char **argv)
{
    if (!mounts::enterNamespace({}))
        qFatal("no mount namespace: %s", ::strerror(errno));
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    LibraryFixture fixture;
    DeleteFailuresTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_deletefailures.moc"
