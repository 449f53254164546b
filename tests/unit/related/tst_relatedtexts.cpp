// SPDX-License-Identifier: GPL-3.0-or-later
#include "relatedtexts.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestRelatedTexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QLocale::setDefault(QLocale::c()); }
    void everyLanguageHasEveryText_data();
    void everyLanguageHasEveryText();
    void anotherLanguageIsEnglish();
    void times_data();
    void times();
};

namespace {

// All ids that the code asks for.
QStringList askedFor()
{
    static const QRegularExpression id(u"\"(related_[a-z_]+)\""_s);
    QStringList ids;
    const QDir folder(QStringLiteral(KESTREL_SOURCE_DIR "/extensions/related"));
    for (const QString &name : folder.entryList({u"*.cpp"_s})) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        auto found = id.globalMatch(QString::fromUtf8(file.readAll()));
        while (found.hasNext())
            ids.append(found.next().captured(1));
    }
    ids.removeAll(u"related_en"_s); // the name of a catalogue
    ids.removeAll(u"related_"_s);
    ids.removeDuplicates();
    return ids;
}

} // namespace

void TestRelatedTexts::everyLanguageHasEveryText_data()
{
    QTest::addColumn<QString>("language");
    for (const QString &language :
         {u"en"_s, u"ar"_s, u"de"_s, u"es"_s, u"fi"_s, u"fr"_s, u"ja"_s, u"ru"_s, u"zh_CN"_s})
        QTest::newRow(qPrintable(language)) << language;
}

void TestRelatedTexts::everyLanguageHasEveryText()
{
    QFETCH(QString, language);
    RelatedTexts english;
    RelatedTexts texts;
    texts.setLanguage(QLocale(language));
    const QStringList ids = askedFor();
    QVERIFY(ids.size() >= 14);
    QStringList wrong;
    for (const QString &id : ids) {
        const QString text = texts.text(id.toLatin1().constData());
        const QString original = english.text(id.toLatin1().constData());
        const bool isSame = text == original && id != u"related_online"_s; // a German word, too
        if (text.isEmpty() || (isSame && language != u"en"_s)
            || text.contains(u"%1"_s) != original.contains(u"%1"_s))
            wrong.append(id);
    }
    QCOMPARE(wrong, QStringList());
}

void TestRelatedTexts::anotherLanguageIsEnglish()
{
    RelatedTexts texts;
    texts.setLanguage(QLocale(u"sw"_s));
    QCOMPARE(texts.text("related_videos"), u"Related videos"_s);
    texts.setLanguage(QLocale(u"de_AT"_s));
    QCOMPARE(texts.text("related_videos"), u"Ähnliche Videos"_s);
}

void TestRelatedTexts::times_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QString>("expected");
    QTest::newRow("short") << u"en"_s << 9 << u"00:09"_s;
    QTest::newRow("minutes") << u"de"_s << 725 << u"12:05"_s;
    QTest::newRow("hours") << u"en"_s << 3725 << u"1:02:05"_s;
    QTest::newRow("egypt") << u"ar_EG"_s << 725 << u"١٢:٠٥"_s;
}

void TestRelatedTexts::times()
{
    QFETCH(QString, locale);
    QFETCH(int, seconds);
    QFETCH(QString, expected);
    QLocale::setDefault(QLocale(locale));
    QCOMPARE(timeText(seconds), expected);
}

QTEST_GUILESS_MAIN(TestRelatedTexts)
#include "tst_relatedtexts.moc"
