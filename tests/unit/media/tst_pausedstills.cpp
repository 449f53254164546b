// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/loglines.h"

#include <platform/media/pausedstills.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

class PausedStillsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void aPictureIsOfOneMomentOnly();
    void theNextPictureOfAVideoTakesThePlaceOfTheLast();
    void aFileThatWasChangedHasNoPicture();
    void aFileThatIsGoneLeavesNoPicture();
    void theOldestMakeRoom();
    void aDamagedPictureIsNone();
    void aStillThatWasCutShortIsRemoved();
    void aFolderThatCannotBeMadeIsToldOnce();

private:
    [[nodiscard]] QString image(Qt::GlobalColor colour) const;
    [[nodiscard]] QString video(const QString &name) const;
    [[nodiscard]] qsizetype count() const
    {
        return QDir(m_folder->filePath(u"stills"_s)).entryList(QDir::Files).size();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<PausedStills> m_stills;
};

void PausedStillsTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_stills = std::make_unique<PausedStills>(m_folder->filePath(u"stills"_s));
}

QString PausedStillsTest::image(Qt::GlobalColor colour) const
{
    const QString path = m_folder->filePath(u"image.jpg"_s);
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(colour);
    return image.save(path, "JPG", 90) ? path : QString();
}

QString PausedStillsTest::video(const QString &name) const
{
    QFile file(m_folder->filePath(name));
    return file.open(QIODevice::WriteOnly)
        ? QString::fromUtf8(QUrl::fromLocalFile(file.fileName()).toEncoded())
        : QString();
}

void PausedStillsTest::aPictureIsOfOneMomentOnly()
{
    const QString uri = video(u"a b.mp4"_s);
    QVERIFY(m_stills->at(uri, 5s).isNull());
    m_stills->keep(uri, 5s, image(Qt::white), {uri});
    QCOMPARE(m_stills->at(uri, 5s).size(), QSize(16, 16));
    QVERIFY(m_stills->at(uri, 5s + 1ns).isNull());
    QVERIFY(m_stills->at(video(u"b.mp4"_s), 5s).isNull());
}

void PausedStillsTest::theNextPictureOfAVideoTakesThePlaceOfTheLast()
{
    const QString uri = video(u"a.mp4"_s);
    m_stills->keep(uri, 5s, image(Qt::white), {uri});
    m_stills->keep(uri, 6s, image(Qt::black), {uri});
    QVERIFY(m_stills->at(uri, 5s).isNull());
    QCOMPARE(qGray(m_stills->at(uri, 6s).pixel(8, 8)), 0);
    QCOMPARE(count(), 1);
}

void PausedStillsTest::aFileThatWasChangedHasNoPicture()
{
    const QString uri = video(u"a.mp4"_s);
    m_stills->keep(uri, 5s, image(Qt::white), {uri});
    QFile file(m_folder->filePath(u"a.mp4"_s));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(60), QFileDevice::FileModificationTime));
    QVERIFY(m_stills->at(uri, 5s).isNull());
}

void PausedStillsTest::aFileThatIsGoneLeavesNoPicture()
{
    const QString first = video(u"a.mp4"_s);
    const QString second = video(u"b.mp4"_s);
    const QString stream = u"https://example.org/film.mp4"_s;
    m_stills->keep(first, 1s, image(Qt::white), {first});
    m_stills->keep(stream, 1s, image(Qt::white), {stream, first});
    QVERIFY(QFile::remove(m_folder->filePath(u"a.mp4"_s)));
    m_stills->keep(second, 1s, image(Qt::white), {second, stream, first});
    QVERIFY(m_stills->at(first, 1s).isNull());
    QVERIFY(!m_stills->at(stream, 1s).isNull());
    QVERIFY(!m_stills->at(second, 1s).isNull());
}

void PausedStillsTest::theOldestMakeRoom()
{
    QStringList recent;
    for (int i = 0; i < PausedStills::Capacity + 5; ++i) {
        recent.prepend(u"https://example.org/%1"_s.arg(i));
        m_stills->keep(recent.first(), 1s, image(Qt::white), recent);
    }
    QCOMPARE(count(), PausedStills::Capacity);
    QVERIFY(!m_stills->at(recent.first(), 1s).isNull());
    QVERIFY(m_stills->at(recent.last(), 1s).isNull());
}

void PausedStillsTest::aDamagedPictureIsNone()
{
    const QString uri = video(u"a.mp4"_s);
    QFile text(m_folder->filePath(u"text.jpg"_s));
    QVERIFY(text.open(QIODevice::WriteOnly) && text.write("no picture") > 0);
    text.close();
    m_stills->keep(uri, 5s, text.fileName(), {uri});
    QVERIFY(m_stills->at(uri, 5s).isNull());
}

// The program was killed while it wrote one.
void PausedStillsTest::aStillThatWasCutShortIsRemoved()
{
    const QString uri = video(u"a.mp4"_s);
    m_stills->keep(uri, 5s, image(Qt::white), {uri});
    QFile unfinished(m_folder->filePath(u"stills/b-1.jpg.Abcdef.new"_s));
    QVERIFY(unfinished.open(QIODevice::WriteOnly));
    unfinished.close();
    m_stills->keep(uri, 6s, image(Qt::white), {uri});
    QVERIFY(!m_stills->at(uri, 6s).isNull());
    QCOMPARE(count(), 1);
}

void PausedStillsTest::aFolderThatCannotBeMadeIsToldOnce()
{
    QFile file(m_folder->filePath(u"stills"_s)); // where the folder should be
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QString uri = video(u"a.mp4"_s);
    LogLines lines("kestrel.media");
    m_stills->keep(uri, 5s, image(Qt::white), {uri});
    m_stills->keep(uri, 6s, image(Qt::white), {uri});
    QCOMPARE(lines.all().size(), 1);
    QVERIFY(QFile::remove(file.fileName()));
    m_stills->keep(uri, 7s, image(Qt::white), {uri});
    QVERIFY(!m_stills->at(uri, 7s).isNull());
}

QTEST_GUILESS_MAIN(PausedStillsTest)
#include "tst_pausedstills.moc"
