// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/faultcollection.h"
#include "support/playback.h"
#include "support/testclips.h"

#include <QApplication>
#include <QDir>
#include <QSet>
#include <QTemporaryDir>
#include <QUrl>

#include <linux/capability.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <list>
#include <map>
#include <memory>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 60000; // ms; a loaded machine
constexpr qint64 Limit = 5000; // ms; nobody waits longer for an answer
constexpr qint64 Enough = 800; // ms of playing
constexpr int SideBySide = 6;

// What the words of these codes are right for: not found, format, resolution, frame, codec.
const QSet<int> RightCodes{300, 303, 308, 309, 310, 315, 317, 318, 319};

// Root may read everything; the people who use the program may not.
bool dropTheRightToReadEverything()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2] = {};
    if (::syscall(SYS_capget, &header, data) != 0)
        return false;
    const auto without = [&data](int capability) {
        data[capability / 32].effective &= ~(1U << (capability % 32));
        data[capability / 32].permitted &= ~(1U << (capability % 32));
    };
    without(CAP_DAC_OVERRIDE);
    without(CAP_DAC_READ_SEARCH);
    return ::syscall(SYS_capset, &header, data) == 0;
}

} // namespace

// Whatever lies on the disk, the player neither falls nor hangs: it plays what there is, or says why not.
class BadInputTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void files_data();
    void files();
    void noFiles_data();
    void noFiles();
    void aFileThatVanishesPlaysOn();
    void aFileThatIsCutWhileItPlays();
    void aFileThatGrowsWhileItPlays();

private:
    struct Result
    {
        QString story;
        bool played = false;
        int code = 0;
        qint64 answeredAfter = -1; // ms; it plays, or has said why not
    };

    [[nodiscard]] QString address(const QString &name) const
    {
        return QString::fromUtf8(QUrl::fromLocalFile(m_folder.filePath(name)).toEncoded());
    }
    void playAll();
    [[nodiscard]] QByteArray contents(const QString &name) const;
    void write(const QString &name, const QByteArray &contents) const;

    QTemporaryDir m_folder;
    QList<faultcollection::File> m_files;
    std::map<QString, Result> m_results;
    qint64 m_healthy = 0; // ms; what a video in order needs on this machine, now
};

// A few at a time; each until it is over, or has played for a while.
void BadInputTest::playAll()
{
    struct Running
    {
        QString name;
        std::unique_ptr<Playback> playback;
        QElapsedTimer clock;
        qint64 answeredAfter = -1;
    };
    std::list<Running> running;
    qsizetype next = 0;
    const auto isDone = [this](Running &one) {
        if (one.answeredAfter < 0 && (one.playback->hasPlayed() || one.playback->isOver()))
            one.answeredAfter = one.clock.elapsed();
        const bool enough = one.answeredAfter >= 0 && one.clock.elapsed() > one.answeredAfter + Enough;
        if (!one.playback->isOver() && !enough && one.clock.elapsed() < Patience)
            return false;
        m_results[one.name]
            = {one.playback->story(), one.playback->hasPlayed(), one.playback->code, one.answeredAfter};
        return true;
    };
    const auto goOn = [&] {
        running.remove_if(isDone);
        while (running.size() < SideBySide && next < m_files.size()) {
            const QString name = m_files.at(next++).name;
            running.push_back({name, std::make_unique<Playback>(address(name)), {}, -1});
            running.back().clock.start();
        }
        return running.empty();
    };
    QVERIFY(QTest::qWaitFor(goOn, 10 * Patience));
}

void BadInputTest::initTestCase()
{
    QCOMPARE(faultcollection::make(m_folder.path(), &m_files), QString());
    Playback healthy(address(u"whole.mp4"_s));
    QElapsedTimer clock;
    clock.start();
    QVERIFY2(healthy.waitUntilPlaying(Patience), qPrintable(healthy.story()));
    m_healthy = clock.elapsed();
    playAll();
}

void BadInputTest::files_data()
{
    QTest::addColumn<bool>("mustPlay");
    QTest::addColumn<bool>("mayPlay");
    for (const faultcollection::File &file : std::as_const(m_files))
        QTest::newRow(qPrintable(file.name)) << file.mustPlay << file.mayPlay;
}

void BadInputTest::files()
{
    QFETCH(bool, mustPlay);
    QFETCH(bool, mayPlay);
    const Result &result = m_results.at(QString::fromUtf8(QTest::currentDataTag()));
    qInfo("answered after %lld ms: %s", result.answeredAfter, qPrintable(result.story));
    QVERIFY2(result.answeredAfter >= 0 && result.answeredAfter <= Limit + 10 * m_healthy,
             qPrintable(u"%1 ms: %2"_s.arg(result.answeredAfter).arg(result.story)));
    if (mustPlay)
        QVERIFY2(result.played && result.code == 0, qPrintable(result.story));
    if (!mayPlay)
        QVERIFY2(!result.played, qPrintable(result.story));
    if (!result.played || result.code != 0)
        QVERIFY2(RightCodes.contains(result.code), qPrintable(result.story));
}

void BadInputTest::noFiles_data()
{
    QTest::addColumn<QString>("uri");
    QTest::addColumn<int>("code");
    const auto made = [this](const QString &name) { return QFile::encodeName(m_folder.filePath(name)); };
    QVERIFY(QDir(m_folder.path()).mkdir(u"folder.mp4"_s));
    QCOMPARE(::mkfifo(made(u"fifo.mp4"_s).constData(), 0666), 0);
    const int listening = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    qstrncpy(place.sun_path, made(u"s.mp4"_s).constData(), sizeof(place.sun_path));
    QCOMPARE(::bind(listening, reinterpret_cast<sockaddr *>(&place), sizeof(place)), 0);
    ::close(listening);
    write(u"secret.mp4"_s, contents(u"whole.mp4"_s));
    QCOMPARE(::chmod(made(u"secret.mp4"_s).constData(), 0), 0);
    QVERIFY(QFile::link(m_folder.filePath(u"nothing.mp4"_s), m_folder.filePath(u"dangling.mp4"_s)));
    QVERIFY(QFile::link(m_folder.filePath(u"circle.mp4"_s), m_folder.filePath(u"circle.mp4"_s)));

    QTest::newRow("missing") << address(u"missing.mp4"_s) << 300;
    QTest::newRow("folder") << address(u"folder.mp4"_s) << 303;
    QTest::newRow("pipe that nobody writes to") << address(u"fifo.mp4"_s) << 303;
    QTest::newRow("socket") << address(u"s.mp4"_s) << 303;
    QTest::newRow("not to be read") << address(u"secret.mp4"_s) << 303;
    QTest::newRow("link to nothing") << address(u"dangling.mp4"_s) << 300;
    QTest::newRow("link to itself") << address(u"circle.mp4"_s) << 303;
    QTest::newRow("device without end") << u"file:///dev/zero"_s << 303;
    QTest::newRow("memory of this process") << u"file:///proc/self/mem"_s << 303;
    QTest::newRow("below a file") << address(u"whole.mp4/inside.mp4"_s) << 303;
}

void BadInputTest::noFiles()
{
    QFETCH(QString, uri);
    QFETCH(int, code);
    QElapsedTimer clock;
    clock.start();
    Playback playback(uri);
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    qInfo("%s", qPrintable(playback.story()));
    QVERIFY2(clock.elapsed() <= Limit + 10 * m_healthy, qPrintable(playback.story()));
    QVERIFY2(playback.code == code, qPrintable(playback.story()));
}

QByteArray BadInputTest::contents(const QString &name) const
{
    QFile file(m_folder.filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void BadInputTest::write(const QString &name, const QByteArray &contents) const
{
    QFile file(m_folder.filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

void BadInputTest::aFileThatVanishesPlaysOn()
{
    write(u"vanishing.mkv"_s, contents(u"whole.mkv"_s));
    Playback playback(address(u"vanishing.mkv"_s));
    QVERIFY2(playback.waitUntilPlaying(Patience), qPrintable(playback.story()));
    QVERIFY(QFile::remove(m_folder.filePath(u"vanishing.mkv"_s)));
    QVERIFY(playback.waitUntilOver(Patience));
    QCOMPARE(playback.events.join(u' '), u"playing end"_s);
    // And the next time it is not there.
    Playback again(address(u"vanishing.mkv"_s));
    QVERIFY(again.waitUntilOver(Patience));
    QCOMPARE(again.code, 300);
}

void BadInputTest::aFileThatIsCutWhileItPlays()
{
    TestClips::Clip clip;
    clip.seconds = 30;
    clip.options = {u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"ultrafast"_s, u"-movflags"_s, u"faststart"_s};
    QCOMPARE(TestClips::make(m_folder.filePath(u"shrinking.mp4"_s), clip), QString());
    Playback playback(address(u"shrinking.mp4"_s));
    QVERIFY2(playback.waitUntilPlaying(Patience), qPrintable(playback.story()));
    QFile file(m_folder.filePath(u"shrinking.mp4"_s));
    QVERIFY(file.resize(file.size() / 20));
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    QVERIFY2(playback.code == 0 || RightCodes.contains(playback.code), qPrintable(playback.story()));
}

// Still being written, by a browser or a recorder: what is there is played, and nothing hangs at its end.
void BadInputTest::aFileThatGrowsWhileItPlays()
{
    const QByteArray whole = contents(u"whole.ts"_s);
    write(u"growing.ts"_s, whole.left(whole.size() / 2));
    Playback playback(address(u"growing.ts"_s));
    QVERIFY2(playback.waitUntilPlaying(Patience), qPrintable(playback.story()));
    QFile file(m_folder.filePath(u"growing.ts"_s));
    QVERIFY(file.open(QIODevice::Append));
    file.write(whole.mid(whole.size() / 2));
    file.close();
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    QCOMPARE(playback.code, 0);
}

int main(int argc, char **argv)
{
    if (!dropTheRightToReadEverything())
        qFatal("the process cannot do without its rights");
    QApplication application(argc, argv);
    BadInputTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "media_badinput.moc"
