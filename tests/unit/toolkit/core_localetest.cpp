// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/privatebus.h"

#include "platform/toolkit/keeptranslated.h"
#include "platform/toolkit/locale.h"
#include "platform/toolkit/localenames.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace toolkit;
using namespace Qt::Literals::StringLiterals;
using Category = Locale::Category;

namespace {

void setEnvironment(const QStringList &settings)
{
    for (const char *name :
         {"LANG", "LANGUAGE", "LC_ALL", "LC_MESSAGES", "LC_TIME", "LC_COLLATE", "LC_NUMERIC"})
        qunsetenv(name);
    for (const QString &setting : settings)
        qputenv(setting.section(u'=', 0, 0).toLatin1().constData(), setting.section(u'=', 1).toUtf8());
}

QString categories(const Locale &locale)
{
    return locale.categoryName(Category::Messages) + u' ' + locale.categoryName(Category::Time) + u' '
        + locale.categoryName(Category::Collate) + u' ' + locale.categoryName(Category::Numeric);
}

} // namespace

class LocaleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void categoriesOfTheEnvironment_data();
    void categoriesOfTheEnvironment();
    void languages_data();
    void languages();
    void textsOfTheLanguage_data();
    void textsOfTheLanguage();
    void textWithoutTranslationIsEnglish();
    void catalogAddedLater();
    void numbersOfTheRegion();
    void datesOfTheRegion();
    void directionOfTheTexts();
    void collation_data();
    void collation();
    void systemLocaleChanges();
    void regionOfTheDesktopChanges();
    void environmentIsReadAgain();
    void textsAreAskedForAgainInEveryLanguage();
    void textsOfWhatIsGoneAreNotAskedForAgain();
    void defaultLocaleGoes();

private:
    void writeCatalog(const QString &name, const QMap<QString, QString> &texts);

    PrivateBus m_daemon;
    QTemporaryDir m_catalogs;
};

void LocaleTest::initTestCase()
{
    writeCatalog(u"extra_en"_s, {{u"qtn_test_one"_s, u"One"_s}, {u"qtn_test_two"_s, u"Two"_s}});
    writeCatalog(u"extra_fr"_s, {{u"qtn_test_one"_s, u"Un"_s}});
    writeCatalog(u"extra_pt_BR"_s, {{u"qtn_test_one"_s, u"Um (BR)"_s}});
    writeCatalog(u"extra_zh_CN"_s, {{u"qtn_test_one"_s, u"\u4e00"_s}});
    writeCatalog(u"extra_he"_s, {{u"qtn_test_one"_s, u"\u05d0\u05d7\u05d3"_s}});
    qputenv("KESTREL_TRANSLATIONS", m_catalogs.path().toUtf8());
    const QString bus = m_daemon.start();
    QVERIFY(!bus.isEmpty());
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus.toUtf8());
}

void LocaleTest::cleanup()
{
    Locale::setDefault(nullptr);
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    QLocale::setDefault(QLocale::c());
}

void LocaleTest::writeCatalog(const QString &name, const QMap<QString, QString> &texts)
{
    QFile source(m_catalogs.filePath(name + u".ts"_s));
    QVERIFY(source.open(QIODevice::WriteOnly));
    QString xml = u"<?xml version=\"1.0\" encoding=\"utf-8\"?><!DOCTYPE TS><TS version=\"2.1\" "
                  u"language=\"%1\"><context>"
                  "<name></name>"_s.arg(name.section(u'_', 1));
    for (auto text = texts.begin(); text != texts.end(); ++text) {
        xml += u"<message id=\"%1\"><source>%2</source><translation>%2</translation></message>"_s.arg(
            text.key(), text.value());
    }
    source.write((xml + u"</context></TS>"_s).toUtf8());
    source.close();
    QCOMPARE(QProcess::execute(QStringLiteral(LRELEASE),
                               {u"-silent"_s, u"-idbased"_s, source.fileName(), u"-qm"_s,
                                m_catalogs.filePath(name + u".qm"_s)}),
             0);
}

void LocaleTest::categoriesOfTheEnvironment_data()
{
    QTest::addColumn<QStringList>("environment");
    QTest::addColumn<QString>("expected");
    QTest::newRow("nothing") << QStringList{} << u"C C C C"_s;
    QTest::newRow("LANG") << QStringList{u"LANG=de_DE.UTF-8"_s} << u"de_DE de_DE de_DE de_DE"_s;
    QTest::newRow("modifier") << QStringList{u"LANG=ca_ES@valencia"_s} << u"ca_ES ca_ES ca_ES ca_ES"_s;
    QTest::newRow("POSIX") << QStringList{u"LANG=POSIX"_s} << u"C C C C"_s;
    QTest::newRow("C.UTF-8") << QStringList{u"LANG=C.UTF-8"_s} << u"C C C C"_s;
    QTest::newRow("one category") << QStringList{u"LANG=en_US.UTF-8"_s, u"LC_COLLATE=sv_SE.UTF-8"_s}
                                  << u"en_US en_US sv_SE en_US"_s;
    QTest::newRow("LC_ALL wins") << QStringList{u"LANG=en_US"_s, u"LC_TIME=de_DE"_s, u"LC_ALL=fr_FR"_s}
                                 << u"fr_FR fr_FR fr_FR fr_FR"_s;
}

void LocaleTest::categoriesOfTheEnvironment()
{
    QFETCH(const QStringList, environment);
    setEnvironment(environment);
    QTEST(categories(Locale()), "expected");
}

void LocaleTest::languages_data()
{
    QTest::addColumn<QStringList>("environment");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("C") << QStringList{u"LANG=C"_s, u"LANGUAGE=de"_s} << QStringList{};
    QTest::newRow("LANG") << QStringList{u"LANG=de_DE.UTF-8"_s} << QStringList{u"de_DE"_s};
    QTest::newRow("list") << QStringList{u"LANG=de_DE"_s, u"LANGUAGE=sv:fr"_s}
                          << QStringList{u"sv"_s, u"fr"_s, u"de_DE"_s};
}

void LocaleTest::languages()
{
    QFETCH(const QStringList, environment);
    setEnvironment(environment);
    QTEST(Locale().messageLanguages(), "expected");
}

void LocaleTest::textsOfTheLanguage_data()
{
    QTest::addColumn<QStringList>("environment");
    QTest::addColumn<QString>("one");
    QTest::newRow("C") << QStringList{u"LANG=C"_s} << u"One"_s;
    QTest::newRow("English") << QStringList{u"LANG=en_GB"_s} << u"One"_s;
    QTest::newRow("French of Canada") << QStringList{u"LANG=fr_CA.UTF-8"_s} << u"Un"_s;
    QTest::newRow("the country's own") << QStringList{u"LANG=pt_BR"_s} << u"Um (BR)"_s;
    QTest::newRow("another country's") << QStringList{u"LANG=pt_PT"_s} << u"One"_s;
    QTest::newRow("no catalog") << QStringList{u"LANG=is_IS"_s} << u"One"_s;
    QTest::newRow("simplified Chinese") << QStringList{u"LANG=zh_CN.UTF-8"_s} << u"\u4e00"_s;
    QTest::newRow("the same script elsewhere") << QStringList{u"LANG=zh_SG.UTF-8"_s} << u"\u4e00"_s;
    QTest::newRow("Chinese without a country")
        << QStringList{u"LANG=en_US"_s, u"LANGUAGE=zh"_s} << u"\u4e00"_s;
    QTest::newRow("traditional Chinese") << QStringList{u"LANG=zh_TW.UTF-8"_s} << u"One"_s;
    QTest::newRow("second wish") << QStringList{u"LANG=is_IS"_s, u"LANGUAGE=is:fr"_s} << u"Un"_s;
}

void LocaleTest::textsOfTheLanguage()
{
    QFETCH(const QStringList, environment);
    setEnvironment(environment);
    Locale locale;
    locale.installTrCatalog(u"extra"_s);
    QCOMPARE(qtTrId("qtn_test_one"), u"qtn_test_one"_s); // not the default yet
    Locale::setDefault(&locale);
    QTEST(qtTrId("qtn_test_one"), "one");
}

void LocaleTest::textWithoutTranslationIsEnglish()
{
    setEnvironment({u"LANG=he_IL"_s});
    Locale locale;
    locale.installTrCatalog(u"extra"_s);
    locale.installTrCatalog(u"video"_s); // from the resources, where there is no Hebrew
    Locale::setDefault(&locale);
    QCOMPARE(qtTrId("qtn_test_one"), u"\u05d0\u05d7\u05d3"_s);
    QCOMPARE(qtTrId("qtn_test_two"), u"Two"_s);
    QCOMPARE(qtTrId("qtn_vide_collection"), u"Videos"_s);
}

void LocaleTest::catalogAddedLater()
{
    setEnvironment({u"LANG=fr_FR"_s});
    Locale locale;
    Locale::setDefault(&locale);
    QCOMPARE(qtTrId("qtn_test_one"), u"qtn_test_one"_s);
    locale.installTrCatalog(u"extra"_s);
    QCOMPARE(qtTrId("qtn_test_one"), u"Un"_s);
}

void LocaleTest::numbersOfTheRegion()
{
    setEnvironment({u"LANG=en_US"_s, u"LC_NUMERIC=de_DE"_s});
    Locale locale;
    Locale::setDefault(&locale);
    QCOMPARE(Locale::current().toString(1.5), u"1,5"_s);
    QCOMPARE(Locale::ofTexts().language(), QLocale::English);
    Locale::setDefault(nullptr);
    QCOMPARE(Locale::ofTexts().language(), QLocale::German);
}

void LocaleTest::datesOfTheRegion()
{
    setEnvironment({u"LANG=en_US"_s, u"LC_TIME=sv_SE"_s});
    Locale locale;
    Locale::setDefault(&locale);
    const QDateTime evening(QDate(2026, 3, 14), QTime(18, 22));
    QCOMPARE(Locale::ofDates().toString(evening, QLocale::ShortFormat), u"2026-03-14 18:22"_s);
    QCOMPARE(Locale::current().toString(evening.time(), QLocale::ShortFormat), u"6:22 PM"_s);
    Locale::setDefault(nullptr);
    QCOMPARE(Locale::ofDates(), Locale::current());
}

void LocaleTest::directionOfTheTexts()
{
    setEnvironment({u"LANG=he_IL.UTF-8"_s});
    Locale hebrew;
    Locale::setDefault(&hebrew);
    QCOMPARE(QGuiApplication::layoutDirection(), Qt::RightToLeft);
    setEnvironment({u"LANG=de_DE.UTF-8"_s});
    Locale german;
    Locale::setDefault(&german);
    QCOMPARE(QGuiApplication::layoutDirection(), Qt::LeftToRight);
}

void LocaleTest::collation_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QStringList>("sorted");
    QTest::newRow("German") << u"LC_COLLATE=de_DE"_s << QStringList{u"Apfel"_s, u"\u00c4rger"_s, u"Zug"_s};
    QTest::newRow("Swedish") << u"LC_COLLATE=sv_SE"_s << QStringList{u"Apfel"_s, u"Zug"_s, u"\u00c4rger"_s};
    QTest::newRow("numbers") << u"LC_COLLATE=en_US"_s << QStringList{u"Part 2"_s, u"Part 10"_s};
    QTest::newRow("letter case") << u"LC_COLLATE=en_US"_s
                                 << QStringList{u"apple"_s, u"Banana"_s, u"cherry"_s};
    QTest::newRow("C has an order for people too")
        << u"LANG=C"_s << QStringList{u"apple"_s, u"Banana 2"_s, u"banana 10"_s};
}

void LocaleTest::collation()
{
    QFETCH(const QString, locale);
    QFETCH(const QStringList, sorted);
    setEnvironment({locale});
    QStringList list = sorted;
    std::reverse(list.begin(), list.end());
    const QCollator collator = Locale().collator();
    std::sort(list.begin(), list.end(), collator);
    QCOMPARE(list, sorted);
}

// The person chooses another language in the system's settings while the program runs.
void LocaleTest::systemLocaleChanges()
{
    setEnvironment({u"LANG=en_US.UTF-8"_s});
    Locale locale;
    locale.installTrCatalog(u"extra"_s);
    Locale::setDefault(&locale);
    locale.connectSettings();
    locale.connectSettings();
    QSignalSpy changed(&locale, &Locale::settingsChanged);
    QDBusMessage signal = QDBusMessage::createSignal(
        u"/org/freedesktop/locale1"_s, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s);
    const QVariantMap values{{u"Locale"_s, QStringList{u"LANG=he_IL.UTF-8"_s, u"LC_COLLATE=fr_FR.UTF-8"_s}}};
    signal << u"org.freedesktop.locale1"_s << values << QStringList();
    QVERIFY(QDBusConnection::systemBus().send(signal));
    QTRY_COMPARE(changed.size(), 1);
    QCOMPARE(categories(locale), u"he_IL he_IL fr_FR he_IL"_s);
    QCOMPARE(qtTrId("qtn_test_one"), u"\u05d0\u05d7\u05d3"_s);
    QCOMPARE(QGuiApplication::layoutDirection(), Qt::RightToLeft);
}

void LocaleTest::regionOfTheDesktopChanges()
{
    setEnvironment({u"LANG=en_US.UTF-8"_s});
    Locale locale;
    locale.connectSettings();
    QSignalSpy changed(&locale, &Locale::settingsChanged);
    QDBusMessage signal = QDBusMessage::createSignal(
        u"/org/freedesktop/portal/desktop"_s, u"org.freedesktop.portal.Settings"_s, u"SettingChanged"_s);
    signal << u"org.gnome.system.locale"_s << u"region"_s
           << QVariant::fromValue(QDBusVariant(u"sv_SE.UTF-8"_s));
    QVERIFY(QDBusConnection::sessionBus().send(signal));
    QTRY_COMPARE(changed.size(), 1);
    QCOMPARE(categories(locale), u"en_US sv_SE sv_SE sv_SE"_s);
}

void LocaleTest::environmentIsReadAgain()
{
    setEnvironment({u"LANG=en_US"_s});
    Locale locale;
    locale.connectSettings();
    QSignalSpy changed(&locale, &Locale::settingsChanged);
    setEnvironment({u"LANG=fr_FR"_s});
    QEvent event(QEvent::LocaleChange);
    QCoreApplication::sendEvent(QCoreApplication::instance(), &event);
    QCOMPARE(changed.size(), 1);
    QCOMPARE(locale.categoryName(Category::Collate), u"fr_FR"_s);
}

void LocaleTest::textsAreAskedForAgainInEveryLanguage()
{
    setEnvironment({u"LANG=en_US"_s});
    Locale locale;
    locale.installTrCatalog(u"extra"_s);
    Locale::setDefault(&locale);
    locale.connectSettings();
    QObject page;
    QStringList shown;
    keepTranslated(&page, [&shown] { shown.append(qtTrId("qtn_test_one")); });
    QCOMPARE(shown, QStringList(u"One"_s)); // at once
    QCoreApplication::processEvents();
    for (const QString &language : {u"fr_FR"_s, u"pt_BR"_s, u"en_US"_s}) {
        const qsizetype before = shown.size();
        setEnvironment({u"LANG="_s + language});
        QEvent event(QEvent::LocaleChange);
        QCoreApplication::sendEvent(QCoreApplication::instance(), &event);
        QTRY_COMPARE(shown.size(), before + 1);
        QCoreApplication::processEvents(); // once, however many catalogs there are
        QCOMPARE(shown.size(), before + 1);
    }
    QCOMPARE(shown.last(), u"One"_s);
    QVERIFY(shown.contains(u"Un"_s) && shown.contains(u"Um (BR)"_s));
}

void LocaleTest::textsOfWhatIsGoneAreNotAskedForAgain()
{
    setEnvironment({u"LANG=fr_FR"_s});
    Locale locale;
    locale.installTrCatalog(u"extra"_s);
    int calls = 0;
    int others = 0;
    auto page = std::make_unique<QObject>();
    QObject other;
    keepTranslated(page.get(), [&calls] { ++calls; });
    keepTranslated(&other, [&others] { ++others; });
    page.reset();
    Locale::setDefault(&locale);
    QTRY_COMPARE(others, 2);
    QCOMPARE(calls, 1);
}

void LocaleTest::defaultLocaleGoes()
{
    setEnvironment({u"LANG=fr_FR"_s});
    {
        Locale locale;
        locale.installTrCatalog(u"extra"_s);
        Locale::setDefault(&locale);
        QCOMPARE(qtTrId("qtn_test_one"), u"Un"_s);
    }
    QCOMPARE(qtTrId("qtn_test_one"), u"qtn_test_one"_s);
}

QTEST_MAIN(LocaleTest)
#include "core_localetest.moc"
