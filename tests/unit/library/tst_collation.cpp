// SPDX-License-Identifier: GPL-3.0-or-later
#include "library/filteredmodel.h"
#include "support/privatebus.h"
#include "videotable.h"

#include "platform/toolkit/locale.h"

#include <QAbstractItemModelTester>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QProcess>
#include <QProcessEnvironment>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

QStringList titles(const QAbstractItemModel &model)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(model.index(row, VideoColumn::Title).data().toString());
    return texts;
}

QStringList reversed(QStringList list)
{
    std::reverse(list.begin(), list.end());
    return list;
}

// In the order of the C library's own locale, which the test has installed.
QStringList sortedByTheSystem(const QStringList &list, const QString &name)
{
    QProcess sort;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, name);
    sort.setProcessEnvironment(environment);
    sort.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    sort.start(u"sort"_s, QStringList{});
    sort.write(list.join(u'\n').toUtf8());
    sort.closeWriteChannel();
    sort.waitForFinished(30000);
    return QString::fromUtf8(sort.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

} // namespace

// The list in the order of the person's language, in locales that are made for the test.
class CollationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void orderOfEachLanguage_data();
    void orderOfEachLanguage();
    void japaneseSyllabariesAreOne();
    void anotherCollationLocaleSortsTheRunningListAnew();
    void anotherRegionOfTheDesktopSortsTheRunningListAnew();
    void filterAndHiddenVideosOutliveTheChange();
    void anotherLanguageOfTheTextsAloneSortsNothing();

private:
    static void systemLocaleBecomes(const QStringList &settings);

    QTemporaryDir m_locales;
    PrivateBus m_systemBus;
};

void CollationTest::initTestCase()
{
    std::vector<std::unique_ptr<QProcess>> made;
    for (const QString &name : {u"en_GB"_s, u"de_DE"_s, u"fr_FR"_s, u"es_ES"_s, u"fi_FI"_s, u"sv_SE"_s,
                                u"ru_RU"_s, u"ar_EG"_s, u"zh_CN"_s, u"ja_JP"_s}) {
        made.push_back(std::make_unique<QProcess>());
        made.back()->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        made.back()->start(u"localedef"_s,
                           {u"-i"_s, name, u"-f"_s, u"UTF-8"_s, m_locales.filePath(name + u".UTF-8"_s)});
    }
    for (const auto &process : made) {
        QVERIFY(process->waitForFinished(90000));
        QCOMPARE(process->exitCode(), 0);
    }
    qputenv("LOCPATH", m_locales.path().toUtf8());
    const QString bus = m_systemBus.start();
    QVERIFY(!bus.isEmpty());
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus.toUtf8());
}

void CollationTest::init()
{
    for (const char *name : {"LC_ALL", "LC_COLLATE", "LANGUAGE"})
        qunsetenv(name);
    qputenv("LANG", "de_DE.UTF-8");
}

void CollationTest::systemLocaleBecomes(const QStringList &settings)
{
    QDBusMessage signal = QDBusMessage::createSignal(
        u"/org/freedesktop/locale1"_s, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s);
    signal << u"org.freedesktop.locale1"_s << QVariantMap{{u"Locale"_s, settings}} << QStringList();
    QVERIFY(QDBusConnection::systemBus().send(signal));
}

void CollationTest::orderOfEachLanguage_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QStringList>("sorted");
    const auto row = [](const char *what, const QString &locale, const QString &sorted) {
        QTest::newRow(what) << locale << sorted.split(u' ');
    };
    row("English: case comes last", u"en_GB"_s, u"apple Banana cherry Date"_s);
    row("German: umlauts beside their vowels", u"de_DE"_s, u"Apfel Ärger Bach Öl Otter Zug"_s);
    row("French: accents beside their letters", u"fr_FR"_s, u"eau école été fable œuvre zoo"_s);
    row("Spanish: a letter of its own after n", u"es_ES"_s, u"nube nuez ñandú oso"_s);
    row("Finnish: three letters after z", u"fi_FI"_s, u"Aamu Zeppelin Åland Äiti Öljy"_s);
    row("Swedish: three letters after z", u"sv_SE"_s, u"Apa Zebra Åka Ärlig Öl"_s);
    row("Russian: yo beside ye", u"ru_RU"_s, u"дом ёлка ель жук щука яма"_s);
    row("Arabic: the order of the alphabet", u"ar_EG"_s, u"بحر تمر جبل حديقة سفر"_s);
    row("Chinese: by sound", u"zh_CN"_s, u"阿里 北京 大连 上海 天津"_s);
    row("Japanese: the order of the sounds", u"ja_JP"_s, u"あさ いか うみ かめ さくら"_s);
}

void CollationTest::orderOfEachLanguage()
{
    QFETCH(const QString, locale);
    QFETCH(const QStringList, sorted);
    qputenv("LANG", (locale + u".UTF-8"_s).toLatin1());
    VideoTable table(reversed(sorted));
    FilteredModel model;
    model.setSourceModel(&table);
    QCOMPARE(titles(model), sorted);
    // The language's order, not one of our own.
    QCOMPARE(sortedByTheSystem(reversed(sorted), locale + u".UTF-8"_s), sorted);
}

// The C library has one after the other; people look for a word by its sound.
void CollationTest::japaneseSyllabariesAreOne()
{
    qputenv("LANG", "ja_JP.UTF-8");
    const QStringList sorted{u"あさ"_s, u"イカ"_s, u"うみ"_s, u"カメラ"_s, u"さくら"_s};
    VideoTable table(reversed(sorted));
    FilteredModel model;
    model.setSourceModel(&table);
    QCOMPARE(titles(model), sorted);
}

// The person chooses another language in the system's settings while the list is open.
void CollationTest::anotherCollationLocaleSortsTheRunningListAnew()
{
    const QStringList german{u"Apfel"_s, u"Ärger"_s, u"Öl"_s, u"Zug"_s};
    const QStringList swedish{u"Apfel"_s, u"Zug"_s, u"Ärger"_s, u"Öl"_s};
    QCOMPARE(sortedByTheSystem(german, u"de_DE.UTF-8"_s), german);
    QCOMPARE(sortedByTheSystem(german, u"sv_SE.UTF-8"_s), swedish);
    VideoTable table(german);
    FilteredModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setSourceModel(&table);
    QCOMPARE(titles(model), german);
    systemLocaleBecomes({u"LANG=de_DE.UTF-8"_s, u"LC_COLLATE=sv_SE.UTF-8"_s});
    QTRY_COMPARE(titles(model), swedish);
    systemLocaleBecomes({u"LANG=de_DE.UTF-8"_s});
    QTRY_COMPARE(titles(model), german);
}

void CollationTest::anotherRegionOfTheDesktopSortsTheRunningListAnew()
{
    VideoTable table({u"Öl"_s, u"Zug"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    QCOMPARE(titles(model), QStringList({u"Öl"_s, u"Zug"_s}));
    QDBusMessage signal = QDBusMessage::createSignal(
        u"/org/freedesktop/portal/desktop"_s, u"org.freedesktop.portal.Settings"_s, u"SettingChanged"_s);
    signal << u"org.gnome.system.locale"_s << u"region"_s
           << QVariant::fromValue(QDBusVariant(u"sv_SE.UTF-8"_s));
    QVERIFY(QDBusConnection::sessionBus().send(signal));
    QTRY_COMPARE(titles(model), QStringList({u"Zug"_s, u"Öl"_s}));
}

void CollationTest::filterAndHiddenVideosOutliveTheChange()
{
    VideoTable table({u"Öl"_s, u"Ölzug"_s, u"Zug"_s, u"Zugvogel"_s, u"Abend"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    model.setFilterFixedString(u"zug"_s);
    model.excludeItem({}, table.rowAt(3).at(VideoColumn::Url));
    QCOMPARE(titles(model), QStringList({u"Ölzug"_s, u"Zug"_s}));
    systemLocaleBecomes({u"LANG=sv_SE.UTF-8"_s});
    QTRY_COMPARE(titles(model), QStringList({u"Zug"_s, u"Ölzug"_s}));
}

void CollationTest::anotherLanguageOfTheTextsAloneSortsNothing()
{
    VideoTable table({u"Zug"_s, u"Öl"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    QCOMPARE(titles(model), QStringList({u"Öl"_s, u"Zug"_s}));
    QSignalSpy told(model.findChild<toolkit::Locale *>(), &toolkit::Locale::settingsChanged);
    QSignalSpy sorted(&model, &QAbstractItemModel::layoutChanged);
    systemLocaleBecomes({u"LANG=de_DE.UTF-8"_s, u"LC_MESSAGES=sv_SE.UTF-8"_s});
    QTRY_COMPARE(told.count(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(sorted.count(), 0);
    QCOMPARE(titles(model), QStringList({u"Öl"_s, u"Zug"_s}));
}

QTEST_GUILESS_MAIN(CollationTest)
#include "tst_collation.moc"
