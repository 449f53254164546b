// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/sparql/fileuri.h"

#include <QFileInfo>
#include <QTest>
#include <QUrl>

#include <glib.h>

using namespace Qt::Literals::StringLiterals;

namespace {

QString asGlibSpells(const QString &path)
{
    gchar *uri = g_filename_to_uri(path.toUtf8().constData(), nullptr, nullptr);
    const QString text = QString::fromUtf8(uri);
    g_free(uri);
    return text;
}

QString asQtSpells(const QString &path)
{
    return QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
}

// The program's own rule for an address on its command line.
QString asStartUpSpells(const QString &path)
{
    QString text = path;
    text.replace(u'%', u"%25"_s).replace(u'#', u"%23"_s);
    const QByteArray encoded = QUrl::fromEncoded(text.toUtf8()).toEncoded();
    return u"file://"_s + QFileInfo(QString::fromLatin1(encoded)).absoluteFilePath();
}

} // namespace

class TestFileUri : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySpellingOfAPathIsTheSameAddress_data();
    void everySpellingOfAPathIsTheSameAddress();
    void spellings_data();
    void spellings();
    void bytesThatAreNoUtf8();
    void everyByteAsGlibSpellsIt();
};

void TestFileUri::everySpellingOfAPathIsTheSameAddress_data()
{
    QTest::addColumn<QString>("path");
    const QStringList names = {u"plain.mp4"_s,
                               u"a b  c.mp4"_s,
                               u"semi;colon.mp4"_s,
                               u"[brackets].mp4"_s,
                               u"what?.mp4"_s,
                               u"100%.mp4"_s,
                               u"100%25.mp4"_s,
                               u"%41.mp4"_s,
                               u"no#1.mp4"_s,
                               u"a&b=c+d,e@f:g.mp4"_s,
                               u"it's (1)!*~.mp4"_s,
                               u"\"quoted\".mp4"_s,
                               u"<tag>.mp4"_s,
                               u"back\\slash.mp4"_s,
                               u"caret^grave`.mp4"_s,
                               u"{curly|pipe}.mp4"_s,
                               u"Äpfel über.mp4"_s,
                               u"日本語 テスト.mp4"_s,
                               u"שלום.mp4"_s,
                               u"e\u0301 combining.mp4"_s,
                               u"\U0001F3AC clip.mp4"_s,
                               u"new\nline\ttab.mp4"_s,
                               u"ends with %.mp4"_s,
                               u"$dollar.mp4"_s,
                               u"[a;b]?#% ü.mp4"_s,
                               u"x%2.mp4"_s,
                               u"..."_s,
                               u"\u007f.mp4"_s};
    for (const QString &name : names)
        QTest::newRow(qUtf8Printable(name)) << (u"/home/user/MyDocs/"_s + name);
}

void TestFileUri::everySpellingOfAPathIsTheSameAddress()
{
    QFETCH(const QString, path);
    const QString canonical = asGlibSpells(path);
    QCOMPARE(fileUriFromPath(path.toUtf8()), canonical);
    QCOMPARE(canonicalFileUri(canonical), canonical);
    QCOMPARE(canonicalFileUri(asQtSpells(path)), canonical);
    QCOMPARE(canonicalFileUri(asStartUpSpells(path)), canonical);
}

void TestFileUri::spellings_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("canonical");
    QTest::newRow("by hand, unescaped") << u"file:///a b/ü.mp4"_s << u"file:///a%20b/%C3%BC.mp4"_s;
    QTest::newRow("by hand, a lone percent sign") << u"file:///a/100%.mp4"_s << u"file:///a/100%25.mp4"_s;
    QTest::newRow("a question mark is part of the name")
        << u"file:///a/b?c=d.mp4"_s << u"file:///a/b%3Fc=d.mp4"_s;
    QTest::newRow("a hash is part of the name") << u"file:///a/b#t=1.mp4"_s << u"file:///a/b%23t=1.mp4"_s;
    QTest::newRow("lower-case digits") << u"file:///%c3%bc"_s << u"file:///%C3%BC"_s;
    QTest::newRow("needless escapes") << u"file:///%61%2Eb%2fc"_s << u"file:///a.b/c"_s;
    QTest::newRow("one slash") << u"file:/a b"_s << u"file:///a%20b"_s;
    QTest::newRow("localhost") << u"file://localhost/a b"_s << u"file:///a%20b"_s;
    QTest::newRow("upper-case scheme") << u"FILE:///a;b"_s << u"file:///a%3Bb"_s;
    QTest::newRow("another machine") << u"file://server/a b"_s << u"file://server/a b"_s;
    QTest::newRow("no path") << u"file://"_s << u"file://"_s;
    QTest::newRow("stream") << u"rtsp://host/a;b[c]"_s << u"rtsp://host/a;b[c]"_s;
    QTest::newRow("identifier") << u"urn:uuid:1"_s << u"urn:uuid:1"_s;
    QTest::newRow("empty") << QString() << QString();
}

void TestFileUri::spellings()
{
    QFETCH(const QString, address);
    QFETCH(const QString, canonical);
    QCOMPARE(canonicalFileUri(address), canonical);
    QCOMPARE(canonicalFileUri(canonical), canonical);
}

void TestFileUri::bytesThatAreNoUtf8()
{
    const QString address = fileUriFromPath(QByteArray("/a/\xE4\xFF.mp4"));
    QCOMPARE(address, u"file:///a/%E4%FF.mp4"_s);
    QCOMPARE(canonicalFileUri(address), address);
}

void TestFileUri::everyByteAsGlibSpellsIt()
{
    QByteArray path = "/";
    for (int byte = 1; byte < 256; ++byte)
        path.append(static_cast<char>(byte));
    gchar *uri = g_filename_to_uri(path.constData(), nullptr, nullptr);
    const QString expected = QString::fromLatin1(uri);
    g_free(uri);
    QCOMPARE(fileUriFromPath(path), expected);
}

QTEST_GUILESS_MAIN(TestFileUri)
#include "test_fileuri.moc"
