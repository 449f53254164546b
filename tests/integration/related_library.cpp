// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/storeclient.h"
#include "support/storesession.h"
#include "unit/extensions/extensionplaces.h"
#include "unit/extensions/hostingpage.h"

#include <platform/extensions/extensionarea.h>
#include <platform/extensions/extensionfailures.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QGraphicsSceneMouseEvent>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTest>
#include <QUrl>

#include <algorithm>
#include <memory>

using namespace Qt::Literals::StringLiterals;

// The plug-in, loaded as the program loads it, beside the real store, whose videos are real files.
class TestRelatedLibrary : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void itLinksNothingOfTheProgram();
    void itSaysThatThereIsNoLibraryAndFindsItLater();
    void whatBelongsTogether();
    void aTapPlaysAndTheListComesAlong();
    void theWholeListHasAPageOfItsOwn();
    void whereAVideoWasLeftIsShown();
    void aRenamedVideoChangesItsPlace();
    void aDeletedVideoGoes();
    void whatBelongsToNothingSaysSo();
    void turnedOffInTheMiddle();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_videos + u'/' + name; }
    [[nodiscard]] ContentRecord record(const QString &name) const;
    [[nodiscard]] QStringList shown(const QGraphicsItem *below) const;
    [[nodiscard]] QGraphicsWidget *row(const QGraphicsItem *below, const QString &text) const;
    [[nodiscard]] std::unique_ptr<StoreClient> client() const;
    bool makeClip(const QString &name, const QString &day);
    void load();

    ExtensionPlaces m_places;
    QTemporaryDir m_data;
    QString m_videos = m_data.filePath(u"Videos"_s);
    QProcess m_store;
    std::unique_ptr<ExtensionArea> m_area;
    std::unique_ptr<HostingPage> m_page;
};

namespace {

const QString storeName = u"com.harrow.Kestrel.Store"_s;

void tap(QGraphicsWidget *widget)
{
    QVERIFY(widget);
    for (const QEvent::Type type : {QEvent::GraphicsSceneMousePress, QEvent::GraphicsSceneMouseRelease}) {
        QGraphicsSceneMouseEvent event(type);
        event.setButton(Qt::LeftButton);
        event.setButtons(Qt::LeftButton);
        event.setPos(widget->rect().center());
        widget->scene()->sendEvent(widget, &event);
    }
}

void collect(const QGraphicsItem *item, QList<QGraphicsObject *> &found)
{
    for (QGraphicsItem *child : item->childItems()) {
        QGraphicsObject *object = child->toGraphicsObject();
        if (object && object->isVisible() && object->property("accessibleName").isValid())
            found.append(object);
        collect(child, found);
    }
}

} // namespace

void TestRelatedLibrary::initTestCase()
{
    QFile::copy(QStringLiteral(KESTREL_RELATED_PLUGIN),
                m_places.folder(u"user"_s) + u"/relatedextension.so"_s);
    QFile::copy(QStringLiteral(KESTREL_RELATED_DESCRIPTION),
                m_places.folder(u"user"_s) + u"/video_youtuberelatedextension.desktop"_s);
    QVERIFY(makeClip(u"Show/Show S01E01.mp4"_s, u"2020-01-01"_s));
    QVERIFY(makeClip(u"Show/Show S01E02.mp4"_s, u"2020-01-08"_s));
    QVERIFY(makeClip(u"Show/Show S01E03.mp4"_s, u"2020-01-15"_s));
    QVERIFY(makeClip(u"Show/Bonus.mp4"_s, u"2020-01-22"_s));
    QVERIFY(makeClip(u"Elsewhere/show.1x04.mp4"_s, u"2020-01-29"_s));
    QVERIFY(makeClip(u"Party/cake.mp4"_s, u"2020-01-08"_s));
    QVERIFY(makeClip(u"Evening/Light show.mp4"_s, u"2020-03-01"_s));
    QVERIFY(makeClip(u"Alone/Mountains.mp4"_s, u"2019-05-05"_s));
    load();
}

void TestRelatedLibrary::cleanupTestCase()
{
    m_area.reset();
    m_page.reset();
    m_store.terminate();
    m_store.waitForFinished(10'000);
}

// A tenth of a second of colour, with the day on which it was recorded.
bool TestRelatedLibrary::makeClip(const QString &name, const QString &day)
{
    QDir().mkpath(QFileInfo(path(name)).path());
    QProcess ffmpeg;
    ffmpeg.setProcessChannelMode(QProcess::ForwardedChannels);
    ffmpeg.start(u"ffmpeg"_s,
                 {u"-v"_s, u"error"_s, u"-y"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                  u"color=c=blue:size=64x48:rate=10:duration=30"_s, u"-c:v"_s, u"mpeg4"_s, u"-metadata"_s,
                  u"comment="_s + name, u"-metadata"_s, u"creation_time="_s + day + u"T12:00:00Z"_s,
                  path(name)});
    return ffmpeg.waitForFinished(60'000) && ffmpeg.exitCode() == 0;
}

ContentRecord TestRelatedLibrary::record(const QString &name) const
{
    return {QString::fromUtf8(QUrl::fromLocalFile(path(name)).toEncoded()), QString(), QString(), QString()};
}

void TestRelatedLibrary::load()
{
    m_area = std::make_unique<ExtensionArea>(u"com.harrow.Kestrel.extensions.PlayerInterface/1.0"_s);
    m_area->setInProcessFilter(QRegularExpression(u"video_youtuberelatedextension.desktop"_s));
    m_page = std::make_unique<HostingPage>(m_area.get());
    m_area->init();
    QCOMPARE(m_area->failures()->texts(), QStringList());
    QCOMPARE(m_page->extensions(), 1);
}

// What is read out, from above.
QStringList TestRelatedLibrary::shown(const QGraphicsItem *below) const
{
    QList<QGraphicsObject *> rows;
    collect(below, rows);
    std::sort(rows.begin(), rows.end(),
              [](const auto *one, const auto *other) { return one->scenePos().y() < other->scenePos().y(); });
    QStringList list;
    for (const QGraphicsObject *row : std::as_const(rows))
        list.append(row->property("accessibleName").toString().remove(u", Duration 00:30"_s));
    return list;
}

QGraphicsWidget *TestRelatedLibrary::row(const QGraphicsItem *below, const QString &text) const
{
    QList<QGraphicsObject *> rows;
    collect(below, rows);
    for (QGraphicsObject *row : std::as_const(rows)) {
        if (row->property("accessibleName").toString().startsWith(text))
            return static_cast<QGraphicsWidget *>(row);
    }
    return nullptr;
}

std::unique_ptr<StoreClient> TestRelatedLibrary::client() const
{
    const QDBusMessage call
        = QDBusMessage::createMethodCall(storeName, u"/com/harrow/Kestrel/Store"_s, storeName, u"Socket"_s);
    const QDBusReply<QString> address = QDBusConnection::sessionBus().call(call, QDBus::BlockWithGui);
    return std::make_unique<StoreClient>(address.value());
}

// As any stranger's plug-in, it finds every symbol in what it links itself.
void TestRelatedLibrary::itLinksNothingOfTheProgram()
{
    QProcess linker;
    linker.setProcessChannelMode(QProcess::MergedChannels);
    linker.start(u"ldd"_s, {u"-r"_s, QStringLiteral(KESTREL_RELATED_PLUGIN)});
    QVERIFY(linker.waitForFinished());
    const QByteArray said = linker.readAll();
    QVERIFY(said.contains("libQt6Widgets"));
    QVERIFY2(!said.contains("not found"), said.constData());
    // Under a sanitizer its run-time is the program's.
    static const QRegularExpression missing(u"undefined symbol: (?!__(asan|ubsan|lsan|sanitizer))\\S+"_s);
    QVERIFY2(!missing.match(QString::fromUtf8(said)).hasMatch(), said.constData());
}

void TestRelatedLibrary::itSaysThatThereIsNoLibraryAndFindsItLater()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^the library does not answer: "_s));
    m_page->show(record(u"Show/Show S01E02.mp4"_s));
    QTRY_COMPARE(shown(m_page->widget()),
                 QStringList({u"Related videos"_s, u"The video library is not available right now."_s,
                              u"Try again"_s}));
    m_store.setProcessChannelMode(QProcess::ForwardedChannels);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"XDG_DATA_DIRS"_s); // where the system says what a video is
    m_store.setProcessEnvironment(environment);
    m_store.start(QStringLiteral(KESTREL_BIN_DIR "/kestrel-store"), {u"--root"_s, m_videos});
    QVERIFY(m_store.waitForStarted());
    QTRY_COMPARE_WITH_TIMEOUT(shown(m_page->widget()).value(2), u"Show S01E03"_s, 30'000);
    QVERIFY(!shown(m_page->widget()).contains(u"Try again"_s));
}

void TestRelatedLibrary::whatBelongsTogether()
{
    QTRY_COMPARE_WITH_TIMEOUT(shown(m_page->widget()),
                              QStringList({u"Related videos"_s, u"Next episodes"_s, u"Show S01E03"_s,
                                           u"show.1x04"_s, u"Previous episodes"_s, u"Show S01E01"_s,
                                           u"From the same day"_s, u"cake"_s, u"Show all (6)"_s}),
                              20'000);
}

void TestRelatedLibrary::aTapPlaysAndTheListComesAlong()
{
    QStringList list;
    uint number = 0;
    const QObject here; // what follows plays too
    connect(m_page->host(), &PlayerHostInterface::playRequested, &here,
            [&](const QStringList &addresses, uint index) {
                list = addresses;
                number = index;
            });
    tap(row(m_page->widget(), u"show.1x04"_s));
    QTRY_COMPARE(list.size(), 6);
    QCOMPARE(number, 1U);
    QCOMPARE(list.at(0), record(u"Show/Show S01E03.mp4"_s).uri());
    QCOMPARE(list.at(1), record(u"Elsewhere/show.1x04.mp4"_s).uri());
}

void TestRelatedLibrary::theWholeListHasAPageOfItsOwn()
{
    tap(row(m_page->widget(), u"Show all"_s));
    QTRY_COMPARE(m_page->asked().constLast(), u"page Related videos"_s);
    QGraphicsWidget *page = m_page->host()->subPageWidget();
    QVERIFY(page);
    m_page->scene()->addItem(page);
    page->resize(480, page->effectiveSizeHint(Qt::PreferredSize, {480, -1}).height());
    QCOMPARE(shown(page),
             QStringList({u"Next episodes"_s, u"Show S01E03"_s, u"show.1x04"_s, u"Previous episodes"_s,
                          u"Show S01E01"_s, u"From the same day"_s, u"cake"_s, u"In the same folder"_s,
                          u"Bonus"_s, u"Similar titles"_s, u"Light show"_s}));
    tap(row(page, u"Light show"_s));
    QTRY_COMPARE(m_page->asked().constLast(), u"play 5 of 6 for “related-videos”"_s);
}

void TestRelatedLibrary::whereAVideoWasLeftIsShown()
{
    const auto store = client();
    QCOMPARE(store->update(propertyUpdate(urnOf(store.get(), u"cake.mp4"_s), u"nmm:runTime"_s, u"10"_s)),
             QString());
    QTRY_VERIFY(shown(m_page->widget()).contains(u"cake, 00:20 left"_s));
}

void TestRelatedLibrary::aRenamedVideoChangesItsPlace()
{
    QVERIFY(QFile::rename(path(u"Show/Show S01E03.mp4"_s), path(u"Show/Show S01E05.mp4"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(shown(m_page->widget()).mid(1, 3),
                              QStringList({u"Next episodes"_s, u"show.1x04"_s, u"Show S01E05"_s}), 15'000);
}

void TestRelatedLibrary::aDeletedVideoGoes()
{
    QVERIFY(QFile::remove(path(u"Elsewhere/show.1x04.mp4"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(shown(m_page->widget()).mid(1, 3),
                              QStringList({u"Next episodes"_s, u"Show S01E05"_s, u"Previous episodes"_s}),
                              15'000);
}

void TestRelatedLibrary::whatBelongsToNothingSaysSo()
{
    m_page->show(record(u"Alone/Mountains.mp4"_s));
    QTRY_COMPARE(shown(m_page->widget()), QStringList({u"Related videos"_s, u"No related videos"_s}));
}

// Whatever is still asked for, answers find nobody and do no harm.
void TestRelatedLibrary::turnedOffInTheMiddle()
{
    m_page->show(record(u"Show/Show S01E02.mp4"_s));
    m_area->unload();
    QCOMPARE(m_page->extensions(), 0);
    m_page.reset();
    load();
    m_page->show(record(u"Show/Show S01E02.mp4"_s));
    QTRY_VERIFY_WITH_TIMEOUT(shown(m_page->widget()).contains(u"Show S01E05"_s), 10'000);
}

QTEST_MAIN(TestRelatedLibrary)
#include "related_library.moc"
