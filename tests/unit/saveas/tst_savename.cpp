// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/saveas/savename.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What a person types becomes a name on the disk, or is refused.
class TestSaveName : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodesWhatStandsInAnAddress_data();
    void decodesWhatStandsInAnAddress();
    void proposesNameAndExtension();
    void whatIsTypedIsChecked_data();
    void whatIsTypedIsChecked();
    void whatIsTypedIsCleaned_data();
    void whatIsTypedIsCleaned();
    void anUntouchedNameKeepsItsBytes();
    void theExtensionCountsInTheLength();
};

void TestSaveName::decodesWhatStandsInAnAddress_data()
{
    QTest::addColumn<QString>("encoded");
    QTest::addColumn<QByteArray>("decoded");
    QTest::newRow("a blank") << u"a%20b"_s << QByteArray("a b");
    QTest::newRow("once") << u"a%2520b"_s << QByteArray("a%20b");
    QTest::newRow("small letters") << u"%c3%a9"_s << QByteArray("\xC3\xA9");
    QTest::newRow("no text") << u"%FFilm"_s << QByteArray("\xFFilm");
    QTest::newRow("a percent sign of its own") << u"100% film"_s << QByteArray("100% film");
    QTest::newRow("half of one at the end") << u"100%4"_s << QByteArray("100%4");
    QTest::newRow("as it is") << u"é#?"_s << QByteArray("\xC3\xA9#?");
    QTest::newRow("nothing") << QString() << QByteArray();
}

void TestSaveName::decodesWhatStandsInAnAddress()
{
    QFETCH(QString, encoded);
    QFETCH(QByteArray, decoded);
    QCOMPARE(SaveName::decoded(encoded), decoded);
}

void TestSaveName::proposesNameAndExtension()
{
    const SaveName name(u"clip%20one.final"_s, u"mp4"_s);
    QCOMPARE(name.proposed(), u"clip one.final"_s);
    QCOMPARE(name.extension(), u"mp4"_s);
    QCOMPARE(name.fileName(name.proposed()), QByteArray("clip one.final.mp4"));
    const SaveName whole(u"README"_s, QString());
    QCOMPARE(whole.fileName(u"README"_s), QByteArray("README"));
    const SaveName hostile(u"..%2F..%2Fetc%2Fpasswd"_s, u"a%2Fb"_s);
    QCOMPARE(hostile.fileName(hostile.proposed()), QByteArray("passwd.b"));
}

void TestSaveName::whatIsTypedIsChecked_data()
{
    using Fault = SaveName::Fault;
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("fault");
    QTest::newRow("plain") << u"film"_s << int(Fault::None);
    QTest::newRow("dots within") << u"a.b.c"_s << int(Fault::None);
    QTest::newRow("what shells and cards do not like") << u"a:b*?\"<>|\\"_s << int(Fault::None);
    QTest::newRow("nothing") << QString() << int(Fault::Empty);
    QTest::newRow("blanks") << u" \u00A0 "_s << int(Fault::Empty);
    QTest::newRow("what is not seen") << u"\n\t\u0007"_s << int(Fault::Empty);
    QTest::newRow("a folder") << u"a/b"_s << int(Fault::Invalid);
    QTest::newRow("the folder above") << u".."_s << int(Fault::Invalid);
    QTest::newRow("dots and blanks") << u" ... "_s << int(Fault::Invalid);
    QTest::newRow("hidden") << u".film"_s << int(Fault::Invalid);
    QTest::newRow("long") << QString(251, u'x') << int(Fault::None);
    QTest::newRow("too long") << QString(252, u'x') << int(Fault::TooLong);
    QTest::newRow("too long in bytes") << QString(126, u'é') << int(Fault::TooLong);
}

void TestSaveName::whatIsTypedIsChecked()
{
    QFETCH(QString, typed);
    QFETCH(int, fault);
    QCOMPARE(int(SaveName(u"clip"_s, u"mp4"_s).check(typed)), fault);
}

void TestSaveName::whatIsTypedIsCleaned_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("blanks around it") << u"  my film "_s << QByteArray("my film.mp4");
    QTest::newRow("two lines") << u"my\nfilm"_s << QByteArray("myfilm.mp4");
    QTest::newRow("a null") << u"my"_s + QChar(u'\0') + u"film"_s << QByteArray("myfilm.mp4");
    QTest::newRow("a percent sign") << u"100%25"_s << QByteArray("100%25.mp4");
    QTest::newRow("emoji") << u"\U0001F382"_s << QByteArray("\xF0\x9F\x8E\x82.mp4");
    QTest::newRow("both directions") << u"abc \u05D0"_s << QByteArray("abc \xD7\x90.mp4");
}

void TestSaveName::whatIsTypedIsCleaned()
{
    QFETCH(QString, typed);
    QFETCH(QByteArray, name);
    QCOMPARE(SaveName(u"clip"_s, u"mp4"_s).fileName(typed), name);
}

void TestSaveName::anUntouchedNameKeepsItsBytes()
{
    const SaveName name(u"%FFilm"_s, u"m%FFv"_s);
    QCOMPARE(name.proposed(), u"\uFFFDilm"_s);
    QCOMPARE(name.fileName(name.proposed()), QByteArray("\xFFilm.m\xFFv"));
    QCOMPARE(name.fileName(u"film"_s), QByteArray("film.m\xFFv"));
    QCOMPARE(name.shownName(u"film"_s), u"film.m\uFFFDv"_s);
    QString many;
    for (int i = 0; i < 200; ++i)
        many += u"%FF"_s;
    const SaveName unreadable(many, QString());
    QCOMPARE(int(unreadable.check(unreadable.proposed())), int(SaveName::Fault::None));
}

void TestSaveName::theExtensionCountsInTheLength()
{
    QCOMPARE(int(SaveName(u"clip"_s, QString()).check(QString(255, u'x'))), int(SaveName::Fault::None));
    QCOMPARE(int(SaveName(u"clip"_s, u"mpeg"_s).check(QString(251, u'x'))), int(SaveName::Fault::TooLong));
}

QTEST_GUILESS_MAIN(TestSaveName)
#include "tst_savename.moc"
