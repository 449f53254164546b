// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/thumbs/thumbnailname.h"

#include <QDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

class ThumbnailNameTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // md5sum of the text that the address comes to.
    void isTheDigestOfTheOneSpelling_data()
    {
        QTest::addColumn<QString>("uri");
        QTest::addColumn<QByteArray>("spelling");
        QTest::newRow("plain") << u"file:///v/a.mp4"_s << QByteArray("file:///v/a.mp4");
        QTest::newRow("blank") << u"file:///v/a b.mp4"_s << QByteArray("file:///v/a%20b.mp4");
        QTest::newRow("escaped blank") << u"file:///v/a%20b.mp4"_s << QByteArray("file:///v/a%20b.mp4");
        QTest::newRow("hash") << u"file:///v/a#b.mp4"_s << QByteArray("file:///v/a%23b.mp4");
        QTest::newRow("escaped hash") << u"file:///v/a%23b.mp4"_s << QByteArray("file:///v/a%23b.mp4");
        QTest::newRow("letters") << u"file:///v/ü.mp4"_s << QByteArray("file:///v/%C3%BC.mp4");
        QTest::newRow("escaped letters") << u"file:///v/%C3%BC.mp4"_s << QByteArray("file:///v/%C3%BC.mp4");
    }
    void isTheDigestOfTheOneSpelling()
    {
        QFETCH(QString, uri);
        QFETCH(QByteArray, spelling);
        QCOMPARE(thumbnailName(uri), QCryptographicHash::hash(spelling, QCryptographicHash::Md5).toHex());
    }

    // The short way for addresses without escapes gives what the long way gives.
    void plainAddressesAreNamedLikeAllOthers()
    {
        for (const QString &path : {u"/a"_s, u"/"_s, u"/A/b/../c.mp4"_s, u"/x//y.-_"_s, u"/9/./z.MKV"_s,
                                    u"/a%20b%20.mp4"_s, u"/a%2"_s, u"/%20"_s, u"/%2f"_s, u"/a%25b"_s}) {
            const QString plain = u"file://"_s + path;
            const QByteArray longWay
                = QUrl(QUrl::fromPercentEncoding(plain.toUtf8())).toEncoded().replace('#', "%23");
            QCOMPARE(thumbnailName(plain),
                     QCryptographicHash::hash(longWay, QCryptographicHash::Md5).toHex());
        }
    }

    void differentAddressesHaveDifferentNames()
    {
        QVERIFY(thumbnailName(u"file:///a"_s) != thumbnailName(u"file:///b"_s));
        QVERIFY(thumbnailName(u"http://["_s) != thumbnailName(u"http://]"_s));
    }

    void liesUnderTheHomeFolder()
    {
        QCOMPARE(thumbnailPath(u"file:///v/a.mp4"_s, u"video-grid"_s),
                 QDir::homePath() + u"/.thumbnails/video-grid/"_s
                     + QString::fromLatin1(thumbnailName(u"file:///v/a.mp4"_s)) + u".jpeg"_s);
    }
};

QTEST_GUILESS_MAIN(ThumbnailNameTest)
#include "thumbnail_name_test.moc"
