// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/commandline.h"
#include "app/kestrelapplicationservice.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

class KestrelApplicationServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void addressOfAFileManager_data();
    void addressOfAFileManager();
    void onlyTheFirstIsOpened();
    void nothingToOpenRaises_data();
    void nothingToOpenRaises();
    void callsWaitUntilTheProgramIsReady();
    void sameFileAsOnTheCommandLineHasTheSameAddress();
};

void KestrelApplicationServiceTest::addressOfAFileManager_data()
{
    QTest::addColumn<QString>("uri");
    QTest::addColumn<QString>("address");
    const QString umlaut = u"file:///home/user/%C3%BCber%20%231%25.mp4"_s;
    QTest::newRow("escaped") << umlaut << umlaut;
    QTest::newRow("small digits") << u"file:///home/user/%c3%bcber%20%231%25.mp4"_s << umlaut;
    QTest::newRow("hardly escaped") << u"file:///home/user/\u00fcber%20%231%25.mp4"_s << umlaut;
    QTest::newRow("with a host") << u"file://localhost/home/user/%C3%BCber%20%231%25.mp4"_s << umlaut;
    QTest::newRow("one slash") << u"file:/home/user/%C3%BCber%20%231%25.mp4"_s << umlaut;
    QTest::newRow("escaped once, not twice") << u"file:///a%2525.mp4"_s << u"file:///a%2525.mp4"_s;
    QTest::newRow("characters that toolkits do not agree on")
        << u"file:///a;b[c]?d.mp4"_s << u"file:///a%3Bb%5Bc%5D%3Fd.mp4"_s;
    QTest::newRow("no text") << u"file:///%FF%FE.mp4"_s << u"file:///%FF%FE.mp4"_s;
    QTest::newRow("stream") << u"http://host/a%20b?c=d#e"_s << u"http://host/a%20b?c=d#e"_s;
    QTest::newRow("of the store") << u"urn:uuid:1"_s << u"urn:uuid:1"_s;
}

void KestrelApplicationServiceTest::addressOfAFileManager()
{
    QFETCH(const QString, uri);
    KestrelApplicationService service;
    QSignalSpy opened(&service, &KestrelApplicationService::openRequested);
    service.open({uri});
    QCOMPARE(opened.size(), 1);
    QTEST(opened.at(0).at(0).toString(), "address");
}

void KestrelApplicationServiceTest::onlyTheFirstIsOpened()
{
    KestrelApplicationService service;
    QSignalSpy opened(&service, &KestrelApplicationService::openRequested);
    QSignalSpy raised(&service, &KestrelApplicationService::relaunch);
    service.open({u"file:///a.mp4"_s, u"file:///b.mp4"_s});
    QCOMPARE(opened.size(), 1);
    QCOMPARE(opened.at(0).at(0).toString(), u"file:///a.mp4"_s);
    QCOMPARE(raised.size(), 0);
}

void KestrelApplicationServiceTest::nothingToOpenRaises_data()
{
    QTest::addColumn<QStringList>("uris");
    QTest::newRow("empty list") << QStringList();
    QTest::newRow("empty address") << QStringList{QString()};
}

void KestrelApplicationServiceTest::nothingToOpenRaises()
{
    QFETCH(const QStringList, uris);
    KestrelApplicationService service;
    QSignalSpy opened(&service, &KestrelApplicationService::openRequested);
    QSignalSpy raised(&service, &KestrelApplicationService::relaunch);
    service.open(uris);
    QCOMPARE(opened.size(), 0);
    QCOMPARE(raised.size(), 1);
}

void KestrelApplicationServiceTest::callsWaitUntilTheProgramIsReady()
{
    KestrelApplicationService service;
    QSignalSpy opened(&service, &KestrelApplicationService::openRequested);
    QSignalSpy raised(&service, &KestrelApplicationService::relaunch);
    service.take({}, {});
    service.take({u"file:///a.mp4"_s}, {});
    service.take({}, {});
    QCoreApplication::processEvents();
    QCOMPARE(opened.size() + raised.size(), 0);
    service.releaseCalls();
    QCOMPARE(opened.size(), 1);
    QCOMPARE(raised.size(), 0);
    service.take({}, {});
    QTRY_COMPARE(raised.size(), 1);
    QCOMPARE(opened.size(), 1);
}

// A still and a place that are kept for a file must be found again whichever way it was opened.
void KestrelApplicationServiceTest::sameFileAsOnTheCommandLineHasTheSameAddress()
{
    KestrelApplicationService service;
    QSignalSpy opened(&service, &KestrelApplicationService::openRequested);
    const CommandLine line = parseCommandLine({u"kestrel"_s, u"/home/user/MyDocs/\u00fc b#1%.mp4"_s});
    service.open({u"file:///home/user/MyDocs/%c3%bc%20b%231%25.mp4"_s});
    QCOMPARE(opened.at(0).at(0).toString(), line.startAddress);
}

QTEST_MAIN(KestrelApplicationServiceTest)
#include "tst_kestrelapplicationservice.moc"
