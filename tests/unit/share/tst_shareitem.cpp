// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/share/shareitem.h"

#include <QMimeData>
#include <QTest>
#include <QUrl>

#include <memory>

using namespace Qt::Literals::StringLiterals;

class ShareItemTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatAnAddressIs_data();
    void whatAnAddressIs();
    void namesForAPerson_data();
    void namesForAPerson();
    void nothingAndTheSameTwiceAreLeftOut();
    void clipboardHasTheTextAndAList_data();
    void clipboardHasTheTextAndAList();
};

void ShareItemTest::whatAnAddressIs_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("isFile");
    QTest::addColumn<QString>("text");
    const auto file = [](const char *name, const QString &path) {
        QTest::newRow(name) << u"file://"_s + path << true << path;
    };
    file("plain", u"/home/user/Videos/a.mp4"_s);
    file("what looks encoded", u"/v/a%20b#1?.mp4"_s);
    file("a percent sign", u"/v/100%.mp4"_s);
    file("blanks at its ends", u"/v/ a .mp4 "_s);
    file("another scheme in its name", u"/v/http://x.mp4"_s);
    file("Arabic", u"/v/فيديو.mp4"_s);
    file("a line break", u"/v/a\nb.mp4"_s);
    QTest::newRow("scheme in capitals") << u"FILE:///v/a.mp4"_s << true << u"/v/a.mp4"_s;
    QTest::newRow("a path") << u"/v/a%41.mp4"_s << true << u"/v/a%41.mp4"_s;
    const auto stream = [](const char *name, const QString &address, const QString &text) {
        QTest::newRow(name) << address << false << text;
    };
    stream("http", u"http://example.com:8080/a/b.mp4?x=1&y=2#t=3"_s,
           u"http://example.com:8080/a/b.mp4?x=1&y=2#t=3"_s);
    stream("rtsp", u"rtsp://example.com/live"_s, u"rtsp://example.com/live"_s);
    stream("mms", u"mms://example.com/live"_s, u"mms://example.com/live"_s);
    stream("a numeric host", u"http://[::1]:80/a"_s, u"http://[::1]:80/a"_s);
    stream("a blank that was decoded", u"http://example.com/a b.mp4"_s, u"http://example.com/a%20b.mp4"_s);
    stream("a percent sign that was decoded", u"http://example.com/100%20.mp4"_s,
           u"http://example.com/100%2520.mp4"_s);
    stream("a letter that was decoded", u"http://example.com/é.mp4"_s, u"http://example.com/%C3%A9.mp4"_s);
    stream("what would break a line", u"http://example.com/a\r\nBcc: x"_s,
           u"http://example.com/a%0D%0ABcc:%20x"_s);
}

void ShareItemTest::whatAnAddressIs()
{
    QFETCH(QString, address);
    QFETCH(bool, isFile);
    QFETCH(QString, text);
    const ShareItem item = ShareItem::fromDecoded(address);
    QCOMPARE(item.text, text);
    QCOMPARE(item.kind == ShareItem::Kind::File, isFile);
}

void ShareItemTest::namesForAPerson_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("name");
    QTest::newRow("file") << u"file:///v/a%20b#1?.mp4"_s << u"a%20b#1?.mp4"_s;
    QTest::newRow("file of several lines") << u"file:///v/ a\n\tb .mp4"_s << u"a b .mp4"_s;
    QTest::newRow("longer than a subject may be")
        << u"file:///v/"_s + QString(300, u'x') << QString(199, u'x') + u'\u2026';
    QTest::newRow("just as long as it may be") << u"file:///v/"_s + QString(200, u'x') << QString(200, u'x');
    QTest::newRow("no half of a character")
        << u"file:///v/"_s + QString(198, u'x') + u"\U0001F3A5\U0001F3A5"_s << QString(198, u'x') + u'\u2026';
    QTest::newRow("a megabyte") << u"http://example.com/"_s + QString(1 << 20, u'y')
                                << QString(199, u'y') + u'\u2026';
    QTest::newRow("stream") << u"http://example.com/dir/a b.mp4?x=1"_s << u"a b.mp4"_s;
    QTest::newRow("stream with a slash at its end") << u"rtsp://example.com/live/"_s << u"live"_s;
    QTest::newRow("only a host") << u"mms://example.com"_s << u"example.com"_s;
    QTest::newRow("no host") << u"mms:"_s << u"mms:"_s;
}

void ShareItemTest::namesForAPerson()
{
    QFETCH(QString, address);
    QFETCH(QString, name);
    QCOMPARE(ShareItem::fromDecoded(address).name(), name);
}

void ShareItemTest::nothingAndTheSameTwiceAreLeftOut()
{
    const ShareItems items
        = shareItems({QString(), u"file://"_s, u"file:///a"_s, u"http://b"_s, u"file:///a"_s, u" "_s});
    QCOMPARE(filePaths(items), QStringList{u"/a"_s});
    QCOMPARE(streamAddresses(items), QStringList{u"http://b"_s});
    QCOMPARE(items.size(), 2);
}

void ShareItemTest::clipboardHasTheTextAndAList_data()
{
    QTest::addColumn<QStringList>("addresses");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("list");
    QTest::newRow("file") << QStringList{u"file:///v/a%20b#1?.mp4"_s} << u"/v/a%20b#1?.mp4"_s
                          << QByteArray("file:///v/a%2520b%231%3F.mp4\r\n");
    QTest::newRow("stream") << QStringList{u"http://example.com/a"_s} << u"http://example.com/a"_s
                            << QByteArray("http://example.com/a\r\n");
    QTest::newRow("two") << QStringList{u"file:///a"_s, u"file:///b"_s} << u"/a\n/b"_s
                         << QByteArray("file:///a\r\nfile:///b\r\n");
}

void ShareItemTest::clipboardHasTheTextAndAList()
{
    QFETCH(QStringList, addresses);
    QFETCH(QString, text);
    QFETCH(QByteArray, list);
    const std::unique_ptr<QMimeData> data(mimeDataOf(shareItems(addresses)));
    QCOMPARE(data->text(), text);
    QCOMPARE(data->data(u"text/uri-list"_s), list);
}

QTEST_GUILESS_MAIN(ShareItemTest)
#include "tst_shareitem.moc"
