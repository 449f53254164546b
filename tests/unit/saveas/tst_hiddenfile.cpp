// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/saveas/hiddenfile.h"
#include "support/mountnamespace.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>

#include <fcntl.h>
#include <seccomp.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>

using namespace Qt::Literals::StringLiterals;
using Kind = HiddenFile::Kind;

Q_DECLARE_METATYPE(Kind)

namespace {

// What a file system, or the kernel before it, may not know.
enum class Lack { UnnamedFiles = 1, RenamingWithoutReplacing = 2, Links = 4 };
Q_DECLARE_FLAGS(Lacks, Lack)

// From here on this process is told so by the kernel.
bool doWithout(Lacks lacks)
{
    scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
    bool done = filter != nullptr;
    if (lacks.testFlag(Lack::UnnamedFiles)) {
        done = done
            && seccomp_rule_add(filter, SCMP_ACT_ERRNO(EOPNOTSUPP), SCMP_SYS(openat), 1,
                                SCMP_A2(SCMP_CMP_MASKED_EQ, O_TMPFILE, O_TMPFILE))
                == 0;
    }
    if (lacks.testFlag(Lack::RenamingWithoutReplacing)) {
        done = done
            && seccomp_rule_add(filter, SCMP_ACT_ERRNO(EINVAL), SCMP_SYS(renameat2), 1,
                                SCMP_A4(SCMP_CMP_NE, 0))
                == 0;
    }
    if (lacks.testFlag(Lack::Links))
        done = done && seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), SCMP_SYS(linkat), 0) == 0;
    done = done && seccomp_load(filter) == 0;
    seccomp_release(filter);
    return done;
}

// The number of the step that went wrong; 0 when all went well.
int publishWithout(Lacks lacks, int folder)
{
    if (!doWithout(lacks))
        return 1;
    {
        HiddenFile file(folder);
        if (file.create() != 0 || file.kind() != Kind::Hidden)
            return 2;
        if (file.publish("theirs.mp4") != EEXIST)
            return 3;
        if (::write(file.descriptor(), "film", 4) != 4 || file.publish("a.mp4") != 0)
            return 4;
    }
    HiddenFile second(folder);
    if (second.create() != 0 || ::write(second.descriptor(), "more", 4) != 4)
        return 5;
    return second.replace("replaced.mp4") == 0 ? 0 : 6;
}

} // namespace

Q_DECLARE_METATYPE(Lacks)

// A file gets its name when it is whole, and never takes one away.
class TestHiddenFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void isNotSeenBeforeItHasItsName_data() { kinds(); }
    void isNotSeenBeforeItHasItsName();
    void isGoneWithoutAName_data() { kinds(); }
    void isGoneWithoutAName();
    void takesNoNameFromAnother_data() { kinds(); }
    void takesNoNameFromAnother();
    void replacesWhatHasTheName_data() { kinds(); }
    void replacesWhatHasTheName();
    void replacesALinkAndNotItsTarget_data() { kinds(); }
    void replacesALinkAndNotItsTarget();
    void doesNotReplaceAFolder_data() { kinds(); }
    void doesNotReplaceAFolder();
    void aFileSystemInMemory();
    void aFileSystemThatKnowsLess_data();
    void aFileSystemThatKnowsLess();
    void obeysTheMaskOfThePerson_data() { kinds(); }
    void obeysTheMaskOfThePerson();
    void leftoversGoAndNothingElse();
    void whatIsBeingWrittenIsNoLeftover();

private:
    void kinds()
    {
        QTest::addColumn<Kind>("kind");
        QTest::newRow("unnamed") << Kind::Unnamed;
        QTest::newRow("hidden") << Kind::Hidden;
    }
    QStringList entries() const
    {
        return QDir(m_folder->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    static bool write(const HiddenFile &file, const QByteArray &content)
    {
        return ::write(file.descriptor(), content.constData(), size_t(content.size())) == content.size();
    }
    bool make(const QString &name, const QByteArray &content) const
    {
        QFile file(m_folder->filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }
    QByteArray read(const QString &name) const
    {
        QFile file(m_folder->filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static QString leftover(char digit)
    {
        return u".save-as-"_s + QString(16, QLatin1Char(digit)) + u".part"_s;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    Descriptor m_descriptor;
};

void TestHiddenFile::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_descriptor = Descriptor(
        ::open(QFile::encodeName(m_folder->path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    QVERIFY(m_descriptor.isOpen());
}

void TestHiddenFile::isNotSeenBeforeItHasItsName()
{
    QFETCH(Kind, kind);
    HiddenFile file(m_descriptor.get());
    QCOMPARE(file.create(kind), 0);
    QCOMPARE(file.kind(), kind);
    QVERIFY(write(file, "film"));
    QCOMPARE(entries().size(), kind == Kind::Unnamed ? 0 : 1);
    QVERIFY(QDir(m_folder->path()).isEmpty(QDir::Files)); // nothing that is not hidden
    QCOMPARE(file.publish("a.mp4"), 0);
    QCOMPARE(entries(), QStringList{u"a.mp4"_s});
    QCOMPARE(read(u"a.mp4"_s), QByteArray("film"));
}

void TestHiddenFile::isGoneWithoutAName()
{
    QFETCH(Kind, kind);
    {
        HiddenFile file(m_descriptor.get());
        QCOMPARE(file.create(kind), 0);
        QVERIFY(write(file, "film"));
    }
    QCOMPARE(entries(), QStringList());
}

void TestHiddenFile::takesNoNameFromAnother()
{
    QFETCH(Kind, kind);
    QVERIFY(make(u"a.mp4"_s, "theirs"));
    QVERIFY(::symlink("nowhere", QFile::encodeName(m_folder->filePath(u"b.mp4"_s)).constData()) == 0);
    QVERIFY(QDir(m_folder->path()).mkdir(u"c.mp4"_s));
    {
        HiddenFile file(m_descriptor.get());
        QCOMPARE(file.create(kind), 0);
        QCOMPARE(file.publish("a.mp4"), EEXIST);
        QCOMPARE(file.publish("b.mp4"), EEXIST);
        QCOMPARE(file.publish("c.mp4"), EEXIST);
    }
    QCOMPARE(entries(), (QStringList{u"a.mp4"_s, u"b.mp4"_s, u"c.mp4"_s}));
    QCOMPARE(read(u"a.mp4"_s), QByteArray("theirs"));
}

void TestHiddenFile::replacesWhatHasTheName()
{
    QFETCH(Kind, kind);
    QVERIFY(make(u"a.mp4"_s, "theirs"));
    HiddenFile file(m_descriptor.get());
    QCOMPARE(file.create(kind), 0);
    QVERIFY(write(file, "film"));
    QCOMPARE(file.replace("a.mp4"), 0);
    QCOMPARE(entries(), QStringList{u"a.mp4"_s});
    QCOMPARE(read(u"a.mp4"_s), QByteArray("film"));
}

void TestHiddenFile::replacesALinkAndNotItsTarget()
{
    QFETCH(Kind, kind);
    QVERIFY(make(u"target.mp4"_s, "theirs"));
    QVERIFY(QFile::link(m_folder->filePath(u"target.mp4"_s), m_folder->filePath(u"a.mp4"_s)));
    HiddenFile file(m_descriptor.get());
    QCOMPARE(file.create(kind), 0);
    QVERIFY(write(file, "film"));
    QCOMPARE(file.replace("a.mp4"), 0);
    QVERIFY(!QFileInfo(m_folder->filePath(u"a.mp4"_s)).isSymLink());
    QCOMPARE(read(u"a.mp4"_s), QByteArray("film"));
    QCOMPARE(read(u"target.mp4"_s), QByteArray("theirs"));
}

void TestHiddenFile::doesNotReplaceAFolder()
{
    QFETCH(Kind, kind);
    QVERIFY(QDir(m_folder->path()).mkdir(u"a.mp4"_s));
    {
        HiddenFile file(m_descriptor.get());
        QCOMPARE(file.create(kind), 0);
        QCOMPARE(file.replace("a.mp4"), EISDIR);
    }
    QCOMPARE(entries(), QStringList{u"a.mp4"_s});
    QVERIFY(QFileInfo(m_folder->filePath(u"a.mp4"_s)).isDir());
}

// What kind it is there is the file system's; that it works is ours.
void TestHiddenFile::aFileSystemInMemory()
{
    const QByteArray path = QFile::encodeName(m_folder->filePath(u"card"_s));
    QVERIFY(mounts::mount(path));
    {
        const Descriptor card(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        HiddenFile file(card.get());
        QCOMPARE(file.create(), 0);
        qInfo() << "unnamed files there:" << (file.kind() == Kind::Unnamed);
        QVERIFY(write(file, "film"));
        QCOMPARE(file.publish("a.mp4"), 0);
        QCOMPARE(QDir(m_folder->filePath(u"card"_s)).entryList(QDir::Files | QDir::Hidden),
                 QStringList{u"a.mp4"_s});
    }
    QVERIFY(mounts::unmount(path));
}

void TestHiddenFile::aFileSystemThatKnowsLess_data()
{
    QTest::addColumn<Lacks>("lacks");
    const Lacks named = Lack::UnnamedFiles;
    QTest::newRow("no unnamed files") << named;
    QTest::newRow("no renaming without replacing") << (named | Lack::RenamingWithoutReplacing);
    QTest::newRow("nor links, as on a card") << (named | Lack::RenamingWithoutReplacing | Lack::Links);
}

void TestHiddenFile::aFileSystemThatKnowsLess()
{
    QFETCH(Lacks, lacks);
    QVERIFY(make(u"theirs.mp4"_s, "theirs"));
    QVERIFY(make(u"replaced.mp4"_s, "given up"));
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(publishWithout(lacks, m_descriptor.get()));
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 0);
    QCOMPARE(entries(), (QStringList{u"a.mp4"_s, u"replaced.mp4"_s, u"theirs.mp4"_s}));
    QCOMPARE(read(u"a.mp4"_s), QByteArray("film"));
    QCOMPARE(read(u"replaced.mp4"_s), QByteArray("more"));
    QCOMPARE(read(u"theirs.mp4"_s), QByteArray("theirs"));
}

void TestHiddenFile::obeysTheMaskOfThePerson()
{
    QFETCH(Kind, kind);
    const mode_t before = ::umask(027);
    HiddenFile file(m_descriptor.get());
    const int error = file.create(kind);
    ::umask(before);
    QCOMPARE(error, 0);
    struct stat status = {};
    QCOMPARE(::fstat(file.descriptor(), &status), 0);
    QCOMPARE(status.st_mode & 0777, mode_t(0640));
}

void TestHiddenFile::leftoversGoAndNothingElse()
{
    QVERIFY(make(leftover('a'), "half a film"));
    const QStringList kept{u".save-as-.part"_s, u".save-as-aaaaaaaaaaaaaaaa.mp4"_s,
                           leftover('c'),       leftover('d'),
                           u"a.mp4"_s,          u"save-as-aaaaaaaaaaaaaaaa.part"_s};
    for (const QString &name : kept) {
        if (name == leftover('c'))
            QVERIFY(QDir(m_folder->path()).mkdir(name));
        else if (name == leftover('d'))
            QVERIFY(QFile::link(m_folder->filePath(u"a.mp4"_s), m_folder->filePath(name)));
        else
            QVERIFY(make(name, "film"));
    }
    QVERIFY(::mkfifo(QFile::encodeName(m_folder->filePath(leftover('b'))).constData(), 0600) == 0);
    HiddenFile::removeLeftovers(m_descriptor.get());
    QStringList expected = kept + QStringList{leftover('b')};
    expected.sort();
    QStringList found = entries();
    found.sort();
    QCOMPARE(found, expected);
}

void TestHiddenFile::whatIsBeingWrittenIsNoLeftover()
{
    HiddenFile file(m_descriptor.get());
    QCOMPARE(file.create(Kind::Hidden), 0);
    HiddenFile::removeLeftovers(m_descriptor.get());
    QCOMPARE(entries().size(), 1);
    QCOMPARE(file.publish("a.mp4"), 0);
    QCOMPARE(entries(), QStringList{u"a.mp4"_s});
}

int main(int argc, char **argv)
{
    if (!mounts::enterNamespace({})) {
        qCritical("no mount namespace");
        return 1;
    }
    QCoreApplication application(argc, argv);
    TestHiddenFile test;
    const int result = QTest::qExec(&test, argc, argv);
    mounts::unmountAll();
    return result;
}
#include "tst_hiddenfile.moc"
