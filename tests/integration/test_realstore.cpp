// SPDX-License-Identifier: GPL-3.0-or-later
// The drivers with the real store service: a file on the disk becomes a row, a title that is set is told.
#include "platform/sparql/changenotifier.h"
#include "platform/sparql/sparqldriver.h"
#include "support/storequery.h"
#include "support/storetexts.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::Literals::StringLiterals;
using namespace storequery;

namespace {

const QString service = u"com.harrow.Kestrel.Store"_s;

void endService()
{
    QDBusConnectionInterface *bus = QDBusConnection::sessionBus().interface();
    if (const auto pid = bus->servicePid(service); pid.isValid())
        ::kill(pid_t(pid.value()), SIGKILL);
    QTRY_VERIFY(!bus->isServiceRegistered(service));
}

QString libraryText()
{
    return storetexts::library.arg(u"<urn:equipment:Nobody:Nothing:>"_s).replace(u"_FILTER_"_s, QString());
}

bool contains(const QSignalSpy &changes, int subject, int predicate)
{
    for (const QList<QVariant> &arguments : changes) {
        const auto inserts = arguments.at(1).value<QList<ChangeNotifier::Quad>>();
        for (const ChangeNotifier::Quad &quad : inserts) {
            if (quad.subject == subject && quad.predicate == predicate)
                return true;
        }
    }
    return false;
}

} // namespace

class TestRealStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup() { endService(); }

    void aFileBecomesARowAndItsTitleIsTold_data();
    void aFileBecomesARowAndItsTitleIsTold();

private:
    QTemporaryDir m_home;
};

void TestRealStore::initTestCase()
{
    const QByteArray home = m_home.path().toLocal8Bit();
    qputenv("HOME", home);
    qputenv("XDG_DATA_HOME", home + "/data");
    qputenv("XDG_CONFIG_HOME", home + "/config");
    qputenv("XDG_CACHE_HOME", home + "/cache");
    qputenv("KESTREL_STORE_PROGRAM", KESTREL_BIN_DIR "/kestrel-store");
    QVERIFY(QDir(m_home.path()).mkpath(u"Videos"_s));
    const QString clip = m_home.filePath(u"Videos/a b;c.webm"_s);
    QCOMPARE(QProcess::execute(u"ffmpeg"_s,
                               {u"-loglevel"_s, u"error"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                                u"testsrc=size=64x48:rate=10:duration=3"_s, clip}),
             0);
}

void TestRealStore::aFileBecomesARowAndItsTitleIsTold_data()
{
    QTest::addColumn<QString>("driver");
    QTest::newRow("over the connection") << u"QTRACKER"_s;
    QTest::newRow("from the folder") << u"QTRACKER_DIRECT"_s;
}

void TestRealStore::aFileBecomesARowAndItsTitleIsTold()
{
    QFETCH(const QString, driver);
    SparqlConnection connection(driver);
    ChangeNotifier notifier(u"http://tracker.api.gnome.org/ontology/v3/nmm#Video"_s);
    QSignalSpy changed(&notifier, &ChangeNotifier::changed);
    Answer rows;
    const auto hasOneRow = [&] {
        rows = select(connection, libraryText(), 8);
        return rows.rows.size() == 1;
    };
    QTRY_VERIFY_WITH_TIMEOUT(hasOneRow(), 20000);
    const QString urn = rows.rows[0][0];
    const int id = rows.rows[0][7].toInt();
    QCOMPARE(rows.rows[0][2], u"a b;c.webm"_s);
    QCOMPARE(rows.rows[0][3], u"3"_s);

    const QString byHand = u"file://"_s + m_home.filePath(u"Videos/a b;c.webm"_s);
    QCOMPARE(select(connection, filled(storetexts::byUrl, u"_URL_"_s, byHand)).rows,
             QList<QStringList>({{urn}}));

    const QString title = u"A \"new\" title, \\ "_s + driver;
    const int titleId = select(connection, storetexts::ontology, 5).rows.value(0).value(1).toInt();
    QVERIFY(titleId > 0);
    QCOMPARE(ask(connection, propertyUpdate(storetexts::setProperty, title, urn, u"nie:title"_s)).error,
             QString());
    QTRY_VERIFY(contains(changed, id, titleId));
    QVERIFY(hasOneRow());
    QCOMPARE(rows.rows[0][1], title);

    // What was acknowledged is there after the service was killed.
    QSignalSpy reset(&connection, &SparqlConnection::reset);
    endService();
    QTRY_COMPARE(reset.size(), 1);
    QVERIFY(hasOneRow());
    QCOMPARE(rows.rows[0][0], urn);
    QCOMPARE(rows.rows[0][1], title);
}

QTEST_GUILESS_MAIN(TestRealStore)
#include "test_realstore.moc"
