// SPDX-License-Identifier: GPL-3.0-or-later
// Where pictures lie, the stills of paused videos, and the placeholder.
#include "thumbnailhelperfixture.h"

#include <data/thumbnailpaths.h>
#include <data/videoconstants.h>

#include <platform/thumbs/thumbnailname.h>

#include <QBuffer>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QMetaMethod>
#include <QPainter>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestThumbnailHelper : public ThumbnailHelperFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }
    void cleanup() { m_thumbnails.reset(); }

    void spellingsOfOneAddressShareTheirFile_data();
    void spellingsOfOneAddressShareTheirFile();
    void namesAreDigestsOfTheCanonicalAddress_data();
    void namesAreDigestsOfTheCanonicalAddress();
    void pathsLieUnderTheHomeDirectory();
    void theStillGoesBeforeThePicture();

    void aStillIsSavedAndShownFirst();
    void aStillIsAJpegOfItsQuality();
    void aStillReplacesTheOneBefore();
    void nothingIsWrittenWithoutAPath();
    void aStillThatCannotBeReadIsWarnedOf();
    void aStillThatFailsLeavesNoOlderOne();
    void aFoundPictureIsKnownFromThenOn();
    void aDeletedStillFallsBackToThePicture();
    void deletingWhatIsNotThereSaysNothing();
    void removedFilesLoseTheirPictures();

    void thePlaceholderCoversTheSize();
    void thePlaceholderIsItsElementAloneCentred();
    void thePlaceholderOfTheSystemGoesFirst();
    void withoutThePlaceholderImageThereIsBlack();
    void picturesAreLoadedFromTheirPath();
    void panningIsPassedOn();
    void signalsAndSlotsStandInTheirOrder();
};

void TestThumbnailHelper::spellingsOfOneAddressShareTheirFile_data()
{
    QTest::addColumn<QString>("one");
    QTest::addColumn<QString>("other");
    QTest::newRow("number sign") << u"file:///v/a#b.mp4"_s << u"file:///v/a%23b.mp4"_s;
    QTest::newRow("blank") << u"file:///v/a b.mp4"_s << u"file:///v/a%20b.mp4"_s;
    QTest::newRow("umlaut") << u"file:///v/ä.mp4"_s << u"file:///v/%C3%A4.mp4"_s;
    QTest::newRow("lower case escapes") << u"file:///v/%c3%a4.mp4"_s << u"file:///v/%C3%A4.mp4"_s;
    QTest::newRow("escaped letter") << u"file:///v/%61.mp4"_s << u"file:///v/a.mp4"_s;
    QTest::newRow("brackets") << u"file:///v/%5Bx%5D.mp4"_s << u"file:///v/[x].mp4"_s;
    QTest::newRow("semicolon") << u"file:///v/a%3Bb.mp4"_s << u"file:///v/a;b.mp4"_s;
}

void TestThumbnailHelper::spellingsOfOneAddressShareTheirFile()
{
    QFETCH(QString, one);
    QFETCH(QString, other);
    QCOMPARE(thumbnailName(one), thumbnailName(other));
}

void TestThumbnailHelper::namesAreDigestsOfTheCanonicalAddress_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QByteArray>("canonical");
    QTest::newRow("plain") << u"file:///v/a-b_c.d.mp4"_s << QByteArray("file:///v/a-b_c.d.mp4");
    QTest::newRow("number sign") << u"file:///v/a%23b.mp4"_s << QByteArray("file:///v/a%23b.mp4");
    QTest::newRow("blank") << u"file:///v/a b.mp4"_s << QByteArray("file:///v/a%20b.mp4");
    QTest::newRow("stream") << u"http://Host/x?y=1"_s << QByteArray("http://host/x?y=1");
}

void TestThumbnailHelper::namesAreDigestsOfTheCanonicalAddress()
{
    QFETCH(QString, url);
    QFETCH(QByteArray, canonical);
    QCOMPARE(thumbnailName(url), QCryptographicHash::hash(canonical, QCryptographicHash::Md5).toHex());
}

void TestThumbnailHelper::pathsLieUnderTheHomeDirectory()
{
    const QString name = QString::fromLatin1(thumbnailName(urlOf(1)));
    QCOMPARE(name.size(), 32);
    QCOMPARE(name, name.toLower());
    QCOMPARE(ThumbnailPaths::defaultPath(urlOf(1), u"video-grid"_s),
             m_home->path() + u"/.thumbnails/video-grid/"_s + name + u".jpeg"_s);
    // Where the thumbnailer's side of the agreement puts it.
    QCOMPARE(ThumbnailPaths::defaultPath(urlOf(1), u"video-grid"_s),
             thumbnailPath(urlOf(1), u"video-grid"_s));
    const QString pauseFolder = m_home->path() + u"/.cache/kestrel/video-grid"_s;
    QVERIFY(!QFileInfo::exists(pauseFolder));
    QCOMPARE(ThumbnailPaths::pausePath(urlOf(1), u"video-grid"_s), pauseFolder + u'/' + name + u".jpeg"_s);
    QVERIFY2(QFileInfo(pauseFolder).isDir(), "building the path makes the folder");
}

void TestThumbnailHelper::theStillGoesBeforeThePicture()
{
    QCOMPARE(m_thumbnails->thumbnailPath(urlOf(1), u"video-grid"_s), QString());
    const QString picture = ThumbnailPaths::defaultPath(urlOf(1), u"video-grid"_s);
    QDir().mkpath(QFileInfo(picture).path());
    QVERIFY(QFile::copy(image(u"x.png"_s, Qt::red), picture));
    QCOMPARE(m_thumbnails->thumbnailPath(urlOf(1), u"video-grid"_s), picture);
    const QString still = ThumbnailPaths::pausePath(urlOf(1), u"video-grid"_s);
    QVERIFY(QFile::copy(picture, still));
    QCOMPARE(m_thumbnails->thumbnailPath(urlOf(1), u"video-grid"_s), still);

    QString defaultPath = u"old"_s;
    QString pausePath = u"old"_s;
    m_thumbnails->setThumbnailPaths(urlOf(1), defaultPath, pausePath);
    QCOMPARE((QStringList{defaultPath, pausePath}), (QStringList{picture, still}));
    m_thumbnails->setThumbnailPaths(urlOf(2), defaultPath, pausePath);
    QVERIFY(defaultPath.isEmpty() && pausePath.isEmpty());
}

void TestThumbnailHelper::aStillIsSavedAndShownFirst()
{
    m_thumbnails->thumbnailerReady(QUrl(urlOf(1)), QUrl(u"file:///t/1.jpeg"_s));
    QSignalSpy created(m_thumbnails.get(), &ThumbnailHelper::pauseThumbnailCreated);
    QVERIFY(m_thumbnails->createPauseThumbnail(urlOf(1), image(u"frame.png"_s, Qt::red)));
    const QString path = ThumbnailPaths::pausePath(urlOf(1), u"video-grid"_s);
    QCOMPARE(created.size(), 1);
    QCOMPARE(created.first(), (QVariantList{urlOf(1), path}));
    QCOMPARE(m_thumbnails->thumbnail(urlOf(1), QString()), path);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.read(2), QByteArray("\xFF\xD8"));
}

void TestThumbnailHelper::aStillIsAJpegOfItsQuality()
{
    QImage frame(64, 36, QImage::Format_RGB32);
    QPainter(&frame).fillRect(frame.rect(), QGradient(QGradient::WarmFlame));
    const QString path = m_home->filePath(u"frame.png"_s);
    QVERIFY(frame.save(path));
    QVERIFY(m_thumbnails->createPauseThumbnail(urlOf(1), path));
    QByteArray expected;
    QBuffer buffer(&expected);
    QVERIFY(buffer.open(QIODevice::WriteOnly) && QImage(path).save(&buffer, "JPEG", 75));
    QFile still(ThumbnailPaths::pausePath(urlOf(1), u"video-grid"_s));
    QVERIFY(still.open(QIODevice::ReadOnly));
    QVERIFY2(still.readAll() == expected, "the bytes of a JPEG of quality 75");
}

void TestThumbnailHelper::aStillReplacesTheOneBefore()
{
    QVERIFY(m_thumbnails->createPauseThumbnail(urlOf(1), image(u"red.png"_s, Qt::red)));
    QVERIFY(m_thumbnails->createPauseThumbnail(urlOf(1), image(u"blue.png"_s, Qt::blue)));
    const QColor pixel = QImage(ThumbnailPaths::pausePath(urlOf(1), u"video-grid"_s)).pixelColor(5, 5);
    QVERIFY2(pixel.blue() > 200 && pixel.red() < 50, qPrintable(pixel.name()));
}

void TestThumbnailHelper::nothingIsWrittenWithoutAPath()
{
    QSignalSpy created(m_thumbnails.get(), &ThumbnailHelper::pauseThumbnailCreated);
    QVERIFY(!m_thumbnails->createPauseThumbnail(urlOf(1), QString()));
    QVERIFY(!m_thumbnails->createPauseThumbnail(QString(), image(u"frame.png"_s, Qt::red)));
    QCOMPARE(created.size(), 0);
    QVERIFY(!QFileInfo::exists(m_home->filePath(u".cache"_s)));
}

void TestThumbnailHelper::aStillThatCannotBeReadIsWarnedOf()
{
    QTest::ignoreMessage(QtWarningMsg,
                         "bool ThumbnailHelper::createPauseThumbnail(const QString&, const QString&) "
                         "grid pause thumbnail save failed!");
    QVERIFY(!m_thumbnails->createPauseThumbnail(urlOf(1), m_home->filePath(u"none.png"_s)));
}

// What stands there shows another place of the video than the one that is saved now.
void TestThumbnailHelper::aStillThatFailsLeavesNoOlderOne()
{
    QVERIFY(m_thumbnails->createPauseThumbnail(urlOf(1), image(u"red.png"_s, Qt::red)));
    QTest::ignoreMessage(QtWarningMsg,
                         "bool ThumbnailHelper::createPauseThumbnail(const QString&, const QString&) "
                         "grid pause thumbnail save failed!");
    QVERIFY(!m_thumbnails->createPauseThumbnail(urlOf(1), m_home->filePath(u"none.png"_s)));
    QVERIFY(!QFileInfo::exists(ThumbnailPaths::pausePath(urlOf(1), u"video-grid"_s)));
}

void TestThumbnailHelper::aFoundPictureIsKnownFromThenOn()
{
    const QString picture = ThumbnailPaths::defaultPath(urlOf(1), u"video-grid"_s);
    QDir().mkpath(QFileInfo(picture).path());
    QVERIFY(QFile::copy(image(u"x.png"_s, Qt::red), picture));
    QCOMPARE(m_thumbnails->thumbnail(urlOf(1), QString()), picture);
    QVERIFY(QFile::remove(picture));
    QCOMPARE(m_thumbnails->thumbnail(urlOf(1), QString()), picture); // the disk is not asked again
}

void TestThumbnailHelper::aDeletedStillFallsBackToThePicture()
{
    QVERIFY(m_thumbnails->createPauseThumbnail(urlOf(1), image(u"frame.png"_s, Qt::red)));
    const QString still = m_thumbnails->thumbnail(urlOf(1), QString());
    const QString picture = ThumbnailPaths::defaultPath(urlOf(1), u"video-grid"_s);
    QDir().mkpath(QFileInfo(picture).path());
    QVERIFY(QFile::copy(still, picture));
    QSignalSpy created(m_thumbnails.get(), &ThumbnailHelper::pauseThumbnailCreated);
    m_thumbnails->deletePauseThumbnail(urlOf(1));
    QVERIFY(!QFileInfo::exists(still));
    QCOMPARE(created.size(), 1);
    QCOMPARE(created.first(), (QVariantList{urlOf(1), QString()}));
    QCOMPARE(m_thumbnails->thumbnail(urlOf(1), QString()), picture);
}

void TestThumbnailHelper::deletingWhatIsNotThereSaysNothing()
{
    QSignalSpy created(m_thumbnails.get(), &ThumbnailHelper::pauseThumbnailCreated);
    m_thumbnails->deletePauseThumbnail(QString());
    m_thumbnails->deletePauseThumbnail(urlOf(1));
    QCOMPARE(created.size(), 0);
}

void TestThumbnailHelper::removedFilesLoseTheirPictures()
{
    QVERIFY(m_thumbnails->createPauseThumbnail(urlOf(1), image(u"frame.png"_s, Qt::red)));
    m_thumbnails->thumbnailerReady(QUrl(urlOf(2)), QUrl(u"file:///t/2.jpeg"_s));
    m_thumbnails->filesRemoved(urls({1, 2}));
    QVERIFY(!QFileInfo::exists(ThumbnailPaths::pausePath(urlOf(1), u"video-grid"_s)));
    QCOMPARE(m_thumbnails->thumbnail(urlOf(2), QString()), QString());
    QCOMPARE(texts(client()->removed), urls({1, 2}));
}

void TestThumbnailHelper::thePlaceholderCoversTheSize()
{
    for (const QSize size : {QSize(206, 116), QSize(300, 100), QSize(90, 200)}) {
        const QImage placeholder = m_thumbnails->placeHolder(size).toImage();
        QCOMPARE(placeholder.size(), size);
        for (const QPoint corner : {QPoint(1, 1), QPoint(size.width() - 2, size.height() - 2)})
            QVERIFY2(placeholder.pixelColor(corner) != QColor(Qt::black),
                     "no black border beside the picture");
    }
}

// Blue on the left, green on the right, and something else over both that is not the element: of the square
// from its middle each colour has half.
void TestThumbnailHelper::thePlaceholderIsItsElementAloneCentred()
{
    const QString path = m_home->filePath(u"placeholder.svg"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"100\" height=\"50\" viewBox=\"0 0 100 50\">"
               "<g id=\"sorelkit-video-placeholder\"><rect width=\"50\" height=\"50\" fill=\"#0000ff\"/>"
               "<rect x=\"50\" width=\"50\" height=\"50\" fill=\"#00ff00\"/></g>"
               "<rect id=\"other\" width=\"100\" height=\"50\" fill=\"#ff0000\"/></svg>");
    file.close();
    m_thumbnails->placeholders = {path};
    const QImage placeholder = m_thumbnails->placeHolder(QSize(80, 80)).toImage();
    QCOMPARE(placeholder.pixelColor(2, 2), QColor(Qt::blue));
    QCOMPARE(placeholder.pixelColor(36, 77), QColor(Qt::blue));
    QCOMPARE(placeholder.pixelColor(44, 2), QColor(Qt::green));
    QCOMPARE(placeholder.pixelColor(77, 77), QColor(Qt::green));
}

void TestThumbnailHelper::thePlaceholderOfTheSystemGoesFirst()
{
    QCOMPARE(m_thumbnails->placeholders, (QStringList{PLACEHOLDER_IMAGE_PATH, u":/theme/placeholder.svg"_s}));
    // One that is broken does no harm.
    const QImage own = m_thumbnails->placeHolder(QSize(206, 116)).toImage();
    const QString broken = m_home->filePath(u"broken.svg"_s);
    QFile file(broken);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("no picture") > 0);
    file.close();
    m_thumbnails->placeholders.first() = broken;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"broken\\.svg"_s));
    QCOMPARE(m_thumbnails->placeHolder(QSize(206, 116)).toImage(), own);
}

void TestThumbnailHelper::withoutThePlaceholderImageThereIsBlack()
{
    m_thumbnails->placeholders = {m_home->filePath(u"none.svg"_s)};
    QTest::ignoreMessage(QtWarningMsg,
                         "QPixmap ThumbnailHelper::placeHolder(const QSize&) Loading SVG failed!");
    const QImage placeholder = m_thumbnails->placeHolder(QSize(40, 20)).toImage();
    QCOMPARE(placeholder.size(), QSize(40, 20));
    QCOMPARE(placeholder.pixelColor(20, 10), QColor(Qt::black));
}

void TestThumbnailHelper::picturesAreLoadedFromTheirPath()
{
    QCOMPARE(m_thumbnails->thumbnailFrom(image(u"frame.png"_s, Qt::red)).size(), QSize(32, 18));
    QVERIFY(m_thumbnails->thumbnailFrom(m_home->filePath(u"none.png"_s)).isNull());
}

void TestThumbnailHelper::panningIsPassedOn()
{
    QSignalSpy panning(m_thumbnails.get(), &ThumbnailHelper::panning);
    m_thumbnails->panningStarted();
    QVERIFY(ThumbnailHelperProbe::panning(*m_thumbnails));
    m_thumbnails->panningStopped();
    QVERIFY(!ThumbnailHelperProbe::panning(*m_thumbnails));
    QCOMPARE(panning.size(), 2);
    QCOMPARE(panning.at(0).first().toBool(), true);
    QCOMPARE(panning.at(1).first().toBool(), false);
}

void TestThumbnailHelper::signalsAndSlotsStandInTheirOrder()
{
    QByteArrayList signatures;
    const QMetaObject &object = ThumbnailHelper::staticMetaObject;
    for (int i = object.methodOffset(); i < object.methodCount(); ++i)
        signatures.append(object.method(i).methodSignature());
    QCOMPARE(signatures.join('\n'),
             QByteArrayList({"newThumbnailReady(QString,QString)",
                             "newThumbnailError(QString,QString)",
                             "pauseThumbnailCreated(QString,QString)",
                             "panning(bool)",
                             "createPauseThumbnail(QString,QString)",
                             "deletePauseThumbnail(QString)",
                             "filesRemoved(QStringList)",
                             "thumbnailUpdated(QString)",
                             "cancel(bool)",
                             "setHoldRequests(bool)",
                             "thumbnailPath(QString,QString)",
                             "setThumbnailPaths(QString,QString&,QString&)",
                             "placeHolder(QSize)",
                             "thumbnailFrom(QString)",
                             "disableThumbnailing(bool)",
                             "panningStarted()",
                             "panningStopped()",
                             "thumbnailerReady(QUrl,QUrl)",
                             "thumbnailerError(QString,QUrl)",
                             "queueTimeOut()",
                             "resetAnimationState()"})
                 .join('\n'));
}

QTEST_MAIN(TestThumbnailHelper)
#include "test_thumbnailhelper.moc"
