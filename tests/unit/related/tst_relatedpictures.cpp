// SPDX-License-Identifier: GPL-3.0-or-later
#include "pictures.h"

#include <QDBusConnection>
#include <QDir>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int patience = 20'000; // ms
const QString serviceName = u"com.harrow.Kestrel.Thumbnailer"_s;
const QString servicePath = u"/org/freedesktop/thumbnails/Thumbnailer1"_s;

RelatedVideo video(const QString &name)
{
    RelatedVideo video;
    video.id = 1;
    video.url = u"file:///videos/"_s + name;
    video.mimeType = u"video/mp4"_s;
    return video;
}

} // namespace

// A thumbnailer of the session's bus that makes a picture of everything it is asked for, unless it hangs.
class Thumbnailer : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.thumbnails.Thumbnailer1")

public:
    QStringList asked;
    bool hangs = false;

    [[nodiscard]] bool appear()
    {
        return m_bus.registerObject(servicePath, this, QDBusConnection::ExportAllContents)
            && m_bus.registerService(serviceName);
    }
    ~Thumbnailer() override
    {
        m_bus.unregisterService(serviceName);
        m_bus.unregisterObject(servicePath);
    }

public Q_SLOTS:
    uint Queue(const QStringList &urls, const QStringList &, const QString &, const QString &, uint)
    {
        asked += urls;
        if (hangs)
            return 1;
        for (const QString &url : urls) {
            const QString folder = QDir::homePath() + u"/.cache/kestrel/video-grid"_s;
            QImage image(206, 116, QImage::Format_RGB32);
            image.fill(Qt::red);
            QDir().mkpath(folder);
            image.save(folder + u'/' + Pictures::fileName(url) + u".jpeg"_s);
        }
        Q_EMIT Ready(1, urls);
        return 1;
    }

Q_SIGNALS:
    void Ready(uint handle, const QStringList &urls);

private:
    // Of its own, as a service has one.
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"thumbnailer"_s);
};

// The pictures of the library's own videos.
class TestRelatedPictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aMissingPictureIsMade();
    void whatWasNotMadeIsAskedOfTheNextThumbnailer();
};

void TestRelatedPictures::aMissingPictureIsMade()
{
    Thumbnailer thumbnailer;
    QVERIFY(thumbnailer.appear());
    Pictures pictures;
    QSignalSpy arrived(&pictures, &Pictures::arrived);
    const RelatedVideo snow = video(u"snow.mp4"_s);
    QVERIFY(pictures.picture(snow).isNull());
    QTRY_COMPARE_WITH_TIMEOUT(arrived.count(), 1, patience);
    QCOMPARE(pictures.picture(snow).size(), QSize(206, 116));
    QCOMPARE(thumbnailer.asked, QStringList{snow.url});
}

// “Below the details some videos have no picture, until I have scrolled past them in the list.” A thumbnailer
// ends when it is idle, and may crash.
void TestRelatedPictures::whatWasNotMadeIsAskedOfTheNextThumbnailer()
{
    auto first = std::make_unique<Thumbnailer>();
    first->hangs = true;
    QVERIFY(first->appear());
    Pictures pictures;
    QSignalSpy arrived(&pictures, &Pictures::arrived);
    const RelatedVideo rain = video(u"rain.mp4"_s);
    QVERIFY(pictures.picture(rain).isNull());
    QTRY_COMPARE_WITH_TIMEOUT(first->asked, QStringList{rain.url}, patience);
    first.reset();
    Thumbnailer next;
    QVERIFY(next.appear());
    QTRY_COMPARE_WITH_TIMEOUT(arrived.count(), 1, patience);
    QCOMPARE(arrived.first().first().toString(), rain.url);
    QVERIFY(!pictures.picture(rain).isNull());
    QCOMPARE(next.asked, QStringList{rain.url});
}

QTEST_MAIN(TestRelatedPictures)
#include "tst_relatedpictures.moc"
