// SPDX-License-Identifier: GPL-3.0-or-later
#include "localserver.h"
#include "pictures.h"
#include "provider.h"

#include <QBuffer>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using Answer = LocalServer::Answer;

Q_DECLARE_METATYPE(LocalServer::Answer)

namespace {

QByteArray encoded(const QSize &size, const char *format, QImage::Format depth = QImage::Format_RGB32)
{
    QImage image(size, depth);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

} // namespace

// The pictures of a provider's entries, fetched when they are seen.
class TestRelatedProviderPictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aPictureIsFetched_data();
    void aPictureIsFetched();
    void whatIsNoneLeavesThePlaceAsItIs_data();
    void whatIsNoneLeavesThePlaceAsItIs();
    void whatBelongsToTheProviderBeforeIsDropped();
    void theyAreFetchedOnceAndKept();
    void whatDidNotComeIsAskedForAgainWithTheNextVideo();

private:
    [[nodiscard]] RelatedVideo entry(const QString &picture) const;

    std::unique_ptr<LocalServer> m_server;
    std::unique_ptr<Provider> m_provider;
};

void TestRelatedProviderPictures::init()
{
    m_server = std::make_unique<LocalServer>();
    m_server->answers.insert("/good.png", {LocalServer::ok(encoded({64, 48}, "PNG"))});
    m_provider = std::make_unique<Provider>();
    m_provider->setAddress(m_server->url(u"/related"_s));
}

RelatedVideo TestRelatedProviderPictures::entry(const QString &picture) const
{
    RelatedVideo video;
    video.url = u"http://x"_s + picture;
    video.picture = m_server->url(picture).toString();
    return video;
}

void TestRelatedProviderPictures::aPictureIsFetched_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QSize>("expected"); // large enough, and no larger
    QTest::newRow("a thumbnail") << encoded({320, 180}, "PNG") << QSize(320, 180);
    QTest::newRow("JPEG") << encoded({320, 180}, "JPG") << QSize(320, 180);
    QTest::newRow("large") << encoded({640, 480}, "PNG") << QSize(412, 232);
    QTest::newRow("as large as may be") << encoded({4000, 4000}, "JPG") << QSize(412, 232);
    QTest::newRow("one dot") << encoded({1, 1}, "PNG") << QSize(1, 1);
    QTest::newRow("a line across") << encoded({4000, 1}, "PNG") << QSize(412, 1);
    QTest::newRow("as many bytes as may be")
        << encoded({320, 180}, "PNG").leftJustified(Provider::largestPicture, '\0') << QSize(320, 180);
    QTest::newRow("a line down") << encoded({2, 4000}, "PNG") << QSize(2, 232);
}

void TestRelatedProviderPictures::aPictureIsFetched()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QSize, expected);
    m_server->answers.insert("/walk", {LocalServer::ok(bytes, "Content-Type: text/plain\r\n")});
    const QSignalSpy came(m_provider.get(), &Provider::pictureCame);
    m_provider->fetchPicture(entry(u"/walk"_s));
    QTRY_COMPARE(came.size(), 1);
    QCOMPARE(came.at(0).at(0).toString(), u"http://x/walk"_s);
    const QImage image = came.at(0).at(1).value<QImage>();
    QCOMPARE(image.size(), expected);
    QVERIFY(qRed(image.pixel(image.rect().center())) > 240);
    QCOMPARE(m_server->header(0, "accept"), QByteArray("image/jpeg, image/png"));
    QCOMPARE(m_server->header(0, "accept-language"), QByteArray("*"));
    QCOMPARE(m_server->header(0, "user-agent"), QByteArray("Kestrel"));
}

void TestRelatedProviderPictures::whatIsNoneLeavesThePlaceAsItIs_data()
{
    QTest::addColumn<Answer>("answer");
    const auto row = [](const char *name, const Answer &answer) { QTest::newRow(name) << answer; };
    const QByteArray png = encoded({320, 180}, "PNG");
    row("nothing", {LocalServer::ok({})});
    row("a page", {LocalServer::ok("<html>no picture</html>")});
    row("a drawing that names files",
        {LocalServer::ok(
            "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
            "width=\"9\" height=\"9\"><image xlink:href=\"file:///etc/passwd\"/></svg>")});
    row("another format", {LocalServer::ok(encoded({9, 9}, "BMP"))});
    row("the beginning alone", {LocalServer::ok(png.left(20))});
    row("too wide", {LocalServer::ok(encoded({4001, 10}, "PNG"))});
    row("huge when it is read", {LocalServer::ok(encoded({10'000, 10'000}, "PNG", QImage::Format_Mono))});
    row("a byte too many", {LocalServer::ok(png.leftJustified(Provider::largestPicture + 1, '\0'))});
    row("without an end", {"HTTP/1.1 200 OK\r\n\r\n", {}, 0, QByteArray(100'000, ' ')});
    row("not there", {"HTTP/1.1 404 No\r\nConnection: close\r\n\r\n" + png});
    row("cut off", {LocalServer::ok(png).chopped(9)});
    row("a file", {LocalServer::redirect("file:///usr/share/pixmaps/x.png")});
}

void TestRelatedProviderPictures::whatIsNoneLeavesThePlaceAsItIs()
{
    QFETCH(Answer, answer);
    m_server->answers.insert("/bad", answer);
    const QSignalSpy came(m_provider.get(), &Provider::pictureCame);
    m_provider->fetchPicture(entry(u"/bad"_s));
    QTRY_VERIFY(m_provider->findChildren<QObject *>().isEmpty()); // fetched, as far as it was
    m_provider->fetchPicture(entry(u"/good.png"_s)); // read after it
    QTRY_COMPARE(came.size(), 1);
    QCOMPARE(came.at(0).at(0).toString(), u"http://x/good.png"_s);
}

void TestRelatedProviderPictures::whatBelongsToTheProviderBeforeIsDropped()
{
    const QSignalSpy came(m_provider.get(), &Provider::pictureCame);
    m_provider->fetchPicture(entry(u"/silent"_s));
    QTRY_COMPARE(m_server->requests.size(), 1);
    m_provider->setAddress(QUrl());
    QTRY_COMPARE(m_server->left, 1);
    m_provider->fetchPicture(entry(u"/good.png"_s));
    QVERIFY(m_provider->findChildren<QObject *>(QString(), Qt::FindDirectChildrenOnly).isEmpty());
    m_provider->setAddress(m_server->url(u"/related"_s));
    m_provider->fetchPicture(entry(u"/good.png"_s));
    QTRY_COMPARE(came.size(), 1);
    QCOMPARE(m_server->requests.size(), 2);
}

// As rows do that are painted again and again, and pages that show another video.
void TestRelatedProviderPictures::theyAreFetchedOnceAndKept()
{
    Pictures pictures;
    connect(&pictures, &Pictures::wantedOnline, m_provider.get(), &Provider::fetchPicture);
    connect(m_provider.get(), &Provider::pictureCame, &pictures, &Pictures::putOnline);
    const RelatedVideo video = entry(u"/good.png"_s);
    QVERIFY(pictures.picture(video).isNull());
    QVERIFY(pictures.picture(video).isNull());
    QTRY_VERIFY(!pictures.picture(video).isNull());
    pictures.refresh();
    QVERIFY(!pictures.picture(video).isNull());
    QCOMPARE(m_server->requests.size(), 1);
    pictures.forgetOnline();
    QVERIFY(pictures.picture(video).isNull());
    QTRY_VERIFY(!pictures.picture(video).isNull());
    QCOMPARE(m_server->requests.size(), 2);
}

void TestRelatedProviderPictures::whatDidNotComeIsAskedForAgainWithTheNextVideo()
{
    Pictures pictures;
    const QSignalSpy wanted(&pictures, &Pictures::wantedOnline);
    const RelatedVideo video = entry(u"/bad"_s);
    QVERIFY(pictures.picture(video).isNull());
    QVERIFY(pictures.picture(video).isNull());
    QCOMPARE(wanted.size(), 1);
    pictures.refresh();
    QVERIFY(pictures.picture(video).isNull());
    QCOMPARE(wanted.size(), 2);
}

QTEST_MAIN(TestRelatedProviderPictures)
#include "tst_relatedproviderpictures.moc"
