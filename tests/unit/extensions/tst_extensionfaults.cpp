// SPDX-License-Identifier: GPL-3.0-or-later
// The page works on whatever an extension does, and a person can see what that was.
#include "extensionplaces.h"
#include "hostingpage.h"

#include <platform/extensions/extensionarea.h>
#include <platform/extensions/extensionfailures.h>
#include <platform/toolkit/locale.h>
#include <platform/toolkit/theme.h>

#include "support/loglines.h"

#include <QImage>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <deque>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString interfaceName = u"com.harrow.Kestrel.extensions.PlayerInterface/1.0"_s;
const ContentRecord film(u"file:///home/user/Videos/a.mp4"_s, u"A film"_s, {}, {});

// In the header that Qt puts before what a plug-in says of itself: mark, version of the header, of Qt.
bool makeForQt(const QString &library, char major, char minor)
{
    QFile file(library);
    if (!file.open(QIODevice::ReadWrite))
        return false;
    const qint64 at = file.readAll().indexOf("qt-project!");
    if (at < 0 || !file.seek(at + 13))
        return false;
    const char version[] = {major, minor};
    return file.write(version, sizeof version) == sizeof version;
}

} // namespace

class TestExtensionFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void whatCannotBeLoaded_data();
    void whatCannotBeLoaded();
    void anotherQt_data();
    void anotherQt();
    void whatFailsIsTakenOut_data();
    void whatFailsIsTakenOut();
    void nonsenseIsNotDone_data();
    void nonsenseIsNotDone();
    void sizesThatNoPageHas_data();
    void sizesThatNoPageHas();
    void whatTakesLongerThanAFrameIsLogged();
    void paintingThatTakesLongerThanAFrameIsLogged();
    void turnedOffAndOnItIsTriedAgain();
    void whatRunsAnEventLoopIsDeletedWhenItReturns_data();
    void whatRunsAnEventLoopIsDeletedWhenItReturns();

private:
    void load(ExtensionClock clock = [] { return qint64(0); });
    [[nodiscard]] QStringList texts() const { return m_area->failures()->texts(); }

    toolkit::Locale m_locale;
    std::unique_ptr<ExtensionPlaces> m_places;
    std::unique_ptr<LogLines> m_log;
    std::unique_ptr<ExtensionArea> m_area;
    std::unique_ptr<HostingPage> m_page;
};

void TestExtensionFaults::initTestCase()
{
    m_locale.installTrCatalog(u"video"_s);
    toolkit::Locale::setDefault(&m_locale);
}

void TestExtensionFaults::init()
{
    m_places = std::make_unique<ExtensionPlaces>();
    m_log = std::make_unique<LogLines>("kestrel.extensions");
}

void TestExtensionFaults::cleanup()
{
    m_page.reset();
    m_area.reset();
    m_log.reset();
    m_places.reset();
    qunsetenv("FAULT");
    QCoreApplication::instance()->setObjectName(QString());
}

void TestExtensionFaults::load(ExtensionClock clock)
{
    m_area = std::make_unique<ExtensionArea>(interfaceName, std::move(clock));
    m_area->setInProcessFilter(QRegularExpression(u"tested.desktop"_s));
    m_page = std::make_unique<HostingPage>(m_area.get());
    m_area->init();
}

void TestExtensionFaults::whatCannotBeLoaded_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::addColumn<QString>("interfaceName");
    QTest::addColumn<QString>("text");
    QTest::newRow("library missing") << QString() << interfaceName
                                     << u"“The user one” is not used: its program file is missing."_s;
    QTest::newRow("description of another version")
        << u"ext_watched"_s << u"com.harrow.Kestrel.extensions.PlayerInterface/2.0"_s
        << u"“The user one” is not used: it was made for another version of Kestrel."_s;
    QTest::newRow("library of another version")
        << u"ext_nextversion"_s << interfaceName
        << u"“The user one” is not used: it was made for another version of Kestrel."_s;
    QTest::newRow("library that is a text")
        << u"text"_s << interfaceName << u"“The user one” is not used: it could not be started."_s;
    QTest::newRow("empty library") << u"empty"_s << interfaceName
                                   << u"“The user one” is not used: it could not be started."_s;
    QTest::newRow("half a library") << u"half"_s << interfaceName
                                    << u"“The user one” is not used: it could not be started."_s;
    QTest::newRow("no extension") << u"ext_noextension"_s << interfaceName
                                  << u"“The user one” is not used: it could not be started."_s;
    QTest::newRow("missing symbol") << u"ext_missingsymbol"_s << interfaceName
                                    << u"“The user one” is not used: it could not be started."_s;
    QTest::newRow("faulty description")
        << u"ext_watched"_s << QString() << u"“The user one” is not used: its description is faulty."_s;
}

void TestExtensionFaults::whatCannotBeLoaded()
{
    QFETCH(QString, plugin);
    QFETCH(QString, interfaceName);
    QFETCH(QString, text);
    m_places->install(u"user"_s, u"tested.desktop"_s, plugin, interfaceName);
    if (plugin == u"text"_s || plugin == u"empty"_s)
        m_places->write(u"user"_s, u"tested.so"_s, plugin == u"text"_s ? u"Dear reader,\n"_s : QString());
    if (plugin == u"half"_s) {
        m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s, interfaceName);
        QFile library(m_places->library(u"user"_s, u"tested.desktop"_s));
        QVERIFY(library.open(QIODevice::ReadWrite));
        // All that Qt asks it for is still there, so that nothing but its length speaks against it.
        const QByteArray all = library.readAll();
        QVERIFY(library.resize(all.indexOf("qt-project!") + 2000));
    }
    load();
    QCOMPARE(m_page->extensions(), 0);
    QCOMPARE(texts(), QStringList(text));
    QCOMPARE(m_log->all().size(), 1);
    QVERIFY(m_log->all().first().startsWith(u"extension “The user one” (tested.desktop): "_s));
    m_area->init();
    QCOMPARE(m_log->all().size(), 1);
    QVERIFY(!QFile::exists(m_places->marker(u"user"_s, u"tested.desktop"_s)));
}

void TestExtensionFaults::anotherQt_data()
{
    QTest::addColumn<int>("major");
    QTest::addColumn<int>("minor");
    QTest::addColumn<bool>("isLoaded");
    QTest::newRow("Qt 5") << 5 << 15 << false;
    QTest::newRow("an older one of Qt 6") << 6 << 0 << true;
    QTest::newRow("this one") << 6 << QT_VERSION_MINOR << true;
    QTest::newRow("a later one") << 6 << QT_VERSION_MINOR + 1 << false;
    QTest::newRow("Qt 7") << 7 << 0 << false;
}

void TestExtensionFaults::anotherQt()
{
    QFETCH(int, major);
    QFETCH(int, minor);
    QFETCH(bool, isLoaded);
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s);
    QVERIFY(makeForQt(m_places->library(u"user"_s, u"tested.desktop"_s), char(major), char(minor)));
    load();
    QCOMPARE(m_page->extensions(), isLoaded ? 1 : 0);
    QCOMPARE(texts(),
             isLoaded ? QStringList()
                      : QStringList(u"“The user one” is not used: it was made for another version of Qt."_s));
}

void TestExtensionFaults::whatFailsIsTakenOut_data()
{
    QTest::addColumn<QString>("text");
    const QString notStarted = u"“The user one” is not used: it could not be started."_s;
    const QString failed = u"“The user one” failed and was switched off."_s;
    const QString empty = u"“The user one” has nothing to show."_s;
    QTest::newRow("throw in constructor") << notStarted;
    QTest::newRow("throw what is no exception") << notStarted;
    QTest::newRow("throw in mediator") << failed;
    QTest::newRow("throw in widget") << failed;
    QTest::newRow("throw in content") << failed;
    QTest::newRow("throw in surroundings") << failed;
    QTest::newRow("no widget") << empty;
    QTest::newRow("widget deleted in content") << empty;
    QTest::newRow("widget deleted later") << empty;
}

void TestExtensionFaults::whatFailsIsTakenOut()
{
    QFETCH(QString, text);
    qputenv("FAULT", QTest::currentDataTag());
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_faulty"_s);
    load();
    m_page->show(film);
    toolkit::Theme::instance()->setReducedMotion(!toolkit::Theme::instance()->reducedMotion());
    QTRY_COMPARE(m_page->extensions(), 0);
    QTRY_COMPARE(texts(), QStringList(text));
    const QStringList lines = m_log->all().filter(u"(tested.desktop)"_s);
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().size() < 600, qPrintable(lines.first())); // whatever it says of itself
    m_page->show(film);
    // Until extensions are turned on again.
    m_area->init();
    QCOMPARE(m_page->extensions(), 0);
    QVERIFY(!QFile::exists(m_places->marker(u"user"_s, u"tested.desktop"_s)));
}

void TestExtensionFaults::nonsenseIsNotDone_data()
{
    QTest::addColumn<bool>("isNonsense");
    QTest::addColumn<QStringList>("asked");
    QTest::newRow("index beyond the list")
        << true << QStringList(u"play 1 of 1 for “”"_s); // the page refuses it
    QTest::newRow("empty list") << true << QStringList(u"play 0 of 0 for “”"_s);
    QTest::newRow("no address") << true << QStringList();
    QTest::newRow("page without widget") << true << QStringList();
    QTest::newRow("page that stands on one") << true << QStringList();
    QTest::newRow("page that is deleted") << true << QStringList();
    QTest::newRow("other thread") << true << QStringList();
    QTest::newRow("title of a book") << false << QStringList(u"page "_s + u"word "_s.repeated(40).trimmed());
    QTest::newRow("a thousand times") << false << QStringList(u"play 0 of 1 for “999”"_s);
}

void TestExtensionFaults::nonsenseIsNotDone()
{
    QFETCH(bool, isNonsense);
    QFETCH(QStringList, asked);
    qputenv("FAULT", QTest::currentDataTag());
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_faulty"_s);
    load();
    m_page->show(film);
    QCOMPARE(m_page->asked(), QStringList()); // not while the extension is on the stack
    bool isTurnOver = false;
    QMetaObject::invokeMethod(
        this, [&] { isTurnOver = true; }, Qt::QueuedConnection);
    QTRY_VERIFY(isTurnOver);
    QCOMPARE(m_page->asked(), asked);
    QCOMPARE(texts(),
             isNonsense ? QStringList(u"“The user one” asked for something that is not possible."_s)
                        : QStringList());
    m_page->show(film);
    QCOMPARE(m_page->extensions(), 1);
}

void TestExtensionFaults::sizesThatNoPageHas_data()
{
    QTest::addColumn<qreal>("height");
    QTest::newRow("endless height") << 100'000.0;
    QTest::newRow("no number") << 0.0;
}

void TestExtensionFaults::sizesThatNoPageHas()
{
    QFETCH(qreal, height);
    qputenv("FAULT", QTest::currentDataTag());
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_faulty"_s);
    load();
    const QGraphicsWidget *widget = m_page->widget();
    for (const Qt::SizeHint which : {Qt::MinimumSize, Qt::PreferredSize, Qt::MaximumSize}) {
        const QSizeF size = widget->effectiveSizeHint(which, {480, -1});
        QVERIFY2(qIsFinite(size.width()) && qIsFinite(size.height()), qPrintable(QString::number(which)));
        QVERIFY(size.height() >= 0 && size.height() <= height);
    }
    QCOMPARE(widget->effectiveSizeHint(Qt::MinimumSize, {480, -1}).width(), 480.0);
}

void TestExtensionFaults::paintingThatTakesLongerThanAFrameIsLogged()
{
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s);
    qint64 now = 0;
    qint64 step = 0; // each time that the clock is asked
    load([&] { return now += step; });
    const QStringList before = m_log->all();
    const auto paint = [&](qint64 took) {
        step = took;
        QImage picture(480, 854, QImage::Format_RGB32);
        QPainter painter(&picture);
        m_page->scene()->render(&painter);
        step = 0;
    };
    paint(16);
    QCOMPARE(m_log->all(), before);
    paint(40);
    paint(40);
    paint(39);
    paint(41);
    QCOMPARE(m_log->all().sliced(before.size()),
             QStringList({u"“The user one” took 40 ms to paint, longer than a frame"_s,
                          u"“The user one” took 41 ms to paint, longer than a frame"_s}));
    // What measures it is in nobody's way.
    const QPointF middle = m_page->widget()->mapToScene(m_page->widget()->rect().center());
    const QList<QGraphicsItem *> hit
        = m_page->scene()->items(middle) + m_page->scene()->items(QRectF(middle, QSizeF(1, 1)));
    QVERIFY(!hit.isEmpty());
    QVERIFY(
        std::all_of(hit.cbegin(), hit.cend(), [](const QGraphicsItem *item) { return item->isWidget(); }));
}

void TestExtensionFaults::whatTakesLongerThanAFrameIsLogged()
{
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s);
    qint64 now = 0;
    std::deque<qint64> durations; // of calls to come, else none
    bool isBegin = true;
    load([&] {
        if (!isBegin && !durations.empty()) {
            now += durations.front();
            durations.pop_front();
        }
        isBegin = !isBegin;
        return now;
    });
    const QStringList before = m_log->all();
    durations = {16, 17, 3000};
    m_page->show(film);
    QCOMPARE(m_log->all(), before);
    m_page->show(film);
    m_page->show(film);
    QCOMPARE(m_log->all().sliced(before.size()),
             QStringList({u"“The user one” took 17 ms in contentChanged(), longer than a frame"_s,
                          u"“The user one” took 3000 ms in contentChanged(), longer than a frame"_s}));
    m_page.reset();
    m_area.reset();
}

void TestExtensionFaults::turnedOffAndOnItIsTriedAgain()
{
    qputenv("FAULT", "throw in constructor");
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_faulty"_s);
    load();
    QSignalSpy changed(m_area->failures(), &ExtensionFailures::changed);
    qunsetenv("FAULT");
    m_area->init();
    QCOMPARE(m_page->extensions(), 0);
    m_area->unload();
    QCOMPARE(changed.count(), 1);
    QCOMPARE(texts(), QStringList());
    m_area->init();
    QCOMPARE(m_page->extensions(), 1);
    QCOMPARE(texts(), QStringList());
}

void TestExtensionFaults::whatRunsAnEventLoopIsDeletedWhenItReturns_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<QString>("what");
    QTest::addColumn<int>("stay");
    QTest::newRow("turned off") << QByteArray("event loop in content") << u"off"_s << 0;
    QTest::newRow("turned off and on") << QByteArray("event loop in content") << u"off on"_s << 1;
    QTest::newRow("failed") << QByteArray("widget deleted below an event loop") << QString() << 0;
    QTest::newRow("failed, turned off and on")
        << QByteArray("widget deleted below an event loop") << u"off on"_s << 0;
}

// “It asked me something in a window of its own, and while that was open I turned it off.”
void TestExtensionFaults::whatRunsAnEventLoopIsDeletedWhenItReturns()
{
    QFETCH(QByteArray, fault);
    QFETCH(QString, what);
    QFETCH(int, stay);
    qputenv("FAULT", fault);
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_faulty"_s);
    load();
    const QPointer<QObject> mediator = m_page->mediator();
    bool isThere = false;
    // Both run in the extension's own loop, the second one after what the first one asked for.
    const auto end = [&] {
        isThere = m_page->extensions() == 1 && mediator;
        QCoreApplication::instance()->setObjectName(u"end"_s);
    };
    const auto act = [&] {
        if (what.contains(u"off"_s))
            m_area->unload();
        if (what.contains(u"on"_s))
            m_area->init();
        QMetaObject::invokeMethod(this, end, Qt::QueuedConnection);
    };
    QMetaObject::invokeMethod(this, act, Qt::QueuedConnection);
    m_page->show(film);
    QVERIFY(isThere);
    bool isTurnOver = false;
    QMetaObject::invokeMethod(
        this, [&] { isTurnOver = true; }, Qt::QueuedConnection);
    QTRY_VERIFY(isTurnOver);
    QTRY_COMPARE(m_page->extensions(), stay);
    QTRY_COMPARE(mediator.isNull(), stay == 0);
}

QTEST_MAIN(TestExtensionFaults)
#include "tst_extensionfaults.moc"
