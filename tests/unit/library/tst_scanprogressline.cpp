// SPDX-License-Identifier: GPL-3.0-or-later
#include "library/scanprogressline.h"
#include "libraryfixture.h"
#include "support/privatebus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QPainter>
#include <QScopeGuard>

using namespace Qt::Literals::StringLiterals;

namespace {

// Where the line is painted, pixel by pixel: '#' the accent, '.' nothing, '?' anything else.
QString painted(ScanProgressLine &line)
{
    QImage image(line.size().toSize(), QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    static_cast<QGraphicsItem &>(line).paint(&painter, nullptr, nullptr);
    painter.end();
    const QColor accent = toolkit::Theme::instance()->accentColor();
    QString result;
    for (int x = 0; x < image.width(); ++x) {
        const QColor pixel = image.pixelColor(x, image.height() - 1);
        result += pixel == accent ? u'#' : pixel.alpha() == 0 ? u'.' : u'?';
    }
    return result;
}

} // namespace

// While the store reads the video folders a thin line under the title says how far it has come.
class ScanProgressLineTest : public QObject
{
    Q_OBJECT

public:
    explicit ScanProgressLineTest(LibraryFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void cleanup() { f.close(); }
    void standsOnlyWhileThereIsSomethingToRead_data();
    void standsOnlyWhileThereIsSomethingToRead();
    void isAsLongAsTheShareThatWasRead_data();
    void isAsLongAsTheShareThatWasRead();
    void growsFromTheSideWhereLinesBegin();
    void pageShowsWhatTheStoreReports();
    void isSeenOnABlackPageToo();

private:
    LibraryFixture &f;
};

void ScanProgressLineTest::standsOnlyWhileThereIsSomethingToRead_data()
{
    QTest::addColumn<bool>("scanning");
    QTest::addColumn<uint>("seen");
    QTest::addColumn<uint>("done");
    QTest::addColumn<bool>("visible");
    QTest::newRow("idle") << false << 0u << 0u << false;
    QTest::newRow("nothing seen yet") << true << 0u << 0u << false;
    QTest::newRow("the first file seen") << true << 1u << 0u << true;
    QTest::newRow("under way") << true << 40u << 12u << true;
    QTest::newRow("all read, not over yet") << true << 40u << 40u << true;
    QTest::newRow("over") << false << 40u << 40u << false;
    QTest::newRow("the store died") << false << 40u << 12u << false;
}

void ScanProgressLineTest::standsOnlyWhileThereIsSomethingToRead()
{
    QFETCH(bool, scanning);
    QFETCH(uint, seen);
    QFETCH(uint, done);
    ScanProgressLine line;
    QVERIFY(!line.isVisible());
    line.setProgress(scanning, seen, done);
    QTEST(line.isVisible(), "visible");
}

void ScanProgressLineTest::isAsLongAsTheShareThatWasRead_data()
{
    QTest::addColumn<uint>("seen");
    QTest::addColumn<uint>("done");
    QTest::addColumn<QString>("line");
    QTest::newRow("none") << 8u << 0u << u"........"_s;
    QTest::newRow("a quarter") << 8u << 2u << u"##......"_s;
    QTest::newRow("half") << 100u << 50u << u"####...."_s;
    QTest::newRow("all") << 3u << 3u << u"########"_s;
    QTest::newRow("more than was seen") << 3u << 5u << u"########"_s;
}

void ScanProgressLineTest::isAsLongAsTheShareThatWasRead()
{
    QFETCH(uint, seen);
    QFETCH(uint, done);
    ScanProgressLine line;
    line.resize(8, 3);
    line.setProgress(true, seen, done);
    QTEST(painted(line), "line");
}

void ScanProgressLineTest::growsFromTheSideWhereLinesBegin()
{
    ScanProgressLine line;
    line.resize(8, 3);
    line.setLayoutDirection(Qt::RightToLeft);
    line.setProgress(true, 4, 1);
    QCOMPARE(painted(line), u"......##"_s);
}

void ScanProgressLineTest::pageShowsWhatTheStoreReports()
{
    const QString service = u"com.harrow.Kestrel.Store"_s;
    const QString path = u"/com/harrow/Kestrel/Store"_s;
    QDBusConnection store(u"store"_s);
    QVERIFY(store.registerService(service));
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    const ScanProgressLine *line = nullptr;
    for (QGraphicsItem *item : f.page->childItems()) {
        if (const auto *found = qobject_cast<ScanProgressLine *>(item->toGraphicsObject()))
            line = found;
    }
    QVERIFY(line);
    const auto report = [&](bool scanning, uint seen, uint done) {
        QDBusMessage signal = QDBusMessage::createSignal(path, service, u"ProgressChanged"_s);
        signal << scanning << seen << done;
        return store.send(signal);
    };
    const auto says = [line](qreal fraction) { return line->isVisible() && line->fraction() == fraction; };
    QVERIFY(report(true, 8, 2));
    QTRY_VERIFY(says(0.25));
    QCOMPARE(line->size().width(), f.page->size().width());
    // Just above the list: the last pixels of the strip with the title.
    QCOMPARE(line->geometry().bottom(), f.page->style().number(u"header"_s));
    QVERIFY(report(true, 8, 6));
    QTRY_VERIFY(says(0.75));
    QVERIFY(store.unregisterService(service));
    QTRY_VERIFY(!line->isVisible());
}

// Nothing is in the list yet, and the page is black in both schemes.
void ScanProgressLineTest::isSeenOnABlackPageToo()
{
    toolkit::Theme *theme = toolkit::Theme::instance();
    const bool wasDark = theme->isDark();
    const auto asBefore = qScopeGuard([&] { theme->setDark(wasDark); });
    theme->setDark(true);
    const QColor onDark = theme->accentColor();
    theme->setDark(false);
    QVERIFY(theme->accentColor() != onDark);
    const auto color = [this] {
        for (const QGraphicsItem *item : f.page->childItems()) {
            if (const auto *line = dynamic_cast<const ScanProgressLine *>(item))
                return line->style().color(u"accent"_s);
        }
        return QColor();
    };
    QVERIFY(f.open({}));
    QTRY_COMPARE(color(), onDark);
    f.close();
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    QTRY_COMPARE(color(), theme->accentColor());
}

int main(int argc, char **argv)
{
    PrivateBus bus;
    const QString address = bus.start();
    qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    if (!QDBusConnection::connectToBus(address, u"store"_s).isConnected())
        return 1;
    LibraryFixture fixture;
    ScanProgressLineTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_scanprogressline.moc"
