// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/button.h"
#include "platform/toolkit/locale.h"
#include "platform/toolkit/sheetheader.h"
#include "platform/toolkit/theme.h"

#include <QDirIterator>
#include <QFile>
#include <QGlyphRun>
#include <QGraphicsScene>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QTest>
#include <QTextLayout>
#include <QXmlStreamReader>

using namespace Qt::Literals::StringLiterals;

namespace {

const QStringList languages{u"en"_s, u"ar"_s, u"de"_s, u"es"_s,   u"fi"_s,
                            u"fr"_s, u"ja"_s, u"ru"_s, u"zh_CN"_s};

struct Text
{
    QString id;
    QStringList forms; // one, or the plural's
    bool isPlural = false;
};

// As the catalog's source file has them.
QList<Text> texts(const QString &catalog)
{
    QFile file(QStringLiteral(KESTREL_SOURCE_DIR) + u"/translations/"_s + catalog + u".ts"_s);
    QList<Text> result;
    if (!file.open(QIODevice::ReadOnly))
        return result;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == "message"_L1)
            result.append({xml.attributes().value(u"id"_s).toString(),
                           {},
                           xml.attributes().hasAttribute(u"numerus"_s)});
        else if (xml.name() == "numerusform"_L1
                 || (xml.name() == "translation"_L1 && !result.last().isPlural))
            result.last().forms.append(xml.readElementText());
    }
    return result;
}

QList<Text> textsOf(const QString &language)
{
    return texts(u"video_"_s + language) + texts(u"music_"_s + language);
}

QStringList idsInTheCode()
{
    static const QRegularExpression quoted(u"\"(qtn_[a-z0-9_]+)\""_s);
    QStringList ids;
    for (const char *folder : {"/src", "/services"}) {
        QDirIterator files(QStringLiteral(KESTREL_SOURCE_DIR) + QString::fromLatin1(folder),
                           {u"*.cpp"_s, u"*.h"_s}, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            if (!file.open(QIODevice::ReadOnly))
                continue;
            auto found = quoted.globalMatch(QString::fromUtf8(file.readAll()));
            while (found.hasNext())
                ids.append(found.next().captured(1));
        }
    }
    ids.removeDuplicates();
    return ids;
}

// The program's locale, as it starts with this LANG.
std::unique_ptr<toolkit::Locale> startIn(const QString &language)
{
    for (const char *name : {"LC_ALL", "LC_MESSAGES", "LC_NUMERIC", "LANGUAGE"})
        qunsetenv(name);
    qputenv("LANG", (language + u".UTF-8"_s).toLatin1());
    auto locale = std::make_unique<toolkit::Locale>();
    locale->installTrCatalog(u"video"_s);
    locale->installTrCatalog(u"music"_s);
    toolkit::Locale::setDefault(locale.get());
    return locale;
}

// What the font and those behind it cannot draw: glyph 0 is the box.
QString notDrawn(const QString &text, const QFont &font)
{
    QTextLayout layout(text, font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    const QList<QGlyphRun> runs = layout.glyphRuns();
    for (const QGlyphRun &run : runs) {
        if (run.glyphIndexes().contains(0))
            return text + u" in "_s + run.rawFont().familyName();
    }
    return runs.isEmpty() ? text : QString();
}

} // namespace

class WidgetsCatalogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void everyTextShowsInEveryLanguage_data();
    void everyTextShowsInEveryLanguage();
    void noRawIdEverShows_data();
    void noRawIdEverShows();
    void pluralForms_data();
    void pluralForms();
    void numbersInPluralsAreTheRegions();
    void everyCharacterHasAGlyph_data() { everyTextShowsInEveryLanguage_data(); }
    void everyCharacterHasAGlyph();
    void headOfASheetHasRoomForItsActions_data() { everyTextShowsInEveryLanguage_data(); }
    void headOfASheetHasRoomForItsActions();
    void shortTextsFitTheirPlaces_data() { everyTextShowsInEveryLanguage_data(); }
    void shortTextsFitTheirPlaces();
    void theTextsThatAreLaidDown();
};

void WidgetsCatalogs::cleanup()
{
    toolkit::Locale::setDefault(nullptr);
    QLocale::setDefault(QLocale::c());
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
}

void WidgetsCatalogs::everyTextShowsInEveryLanguage_data()
{
    QTest::addColumn<QString>("language");
    for (const QString &language : languages)
        QTest::newRow(qPrintable(language)) << language;
}

void WidgetsCatalogs::everyTextShowsInEveryLanguage()
{
    QFETCH(const QString, language);
    const QList<Text> all = textsOf(language);
    QVERIFY(all.size() > 50);
    const auto locale = startIn(language);
    for (const Text &text : all) {
        if (!text.isPlural)
            QCOMPARE(qtTrId(text.id.toUtf8().constData()), text.forms.first());
    }
}

void WidgetsCatalogs::noRawIdEverShows_data()
{
    everyTextShowsInEveryLanguage_data();
    for (const char *other : {"C", "en_US", "is_IS", "zh_TW", "he_IL"})
        QTest::newRow(other) << QString::fromLatin1(other);
}

void WidgetsCatalogs::noRawIdEverShows()
{
    QFETCH(const QString, language);
    const QStringList inTheCode = idsInTheCode();
    QVERIFY(inTheCode.size() > 20);
    QMap<QString, bool> isPlural;
    for (const QString &id : inTheCode)
        isPlural.insert(id, false);
    const QList<Text> english = textsOf(u"en"_s);
    for (const Text &text : english)
        isPlural.insert(text.id, text.isPlural);
    const auto locale = startIn(language);
    for (auto id = isPlural.cbegin(); id != isPlural.cend(); ++id) {
        const QByteArray name = id.key().toUtf8();
        const QList<int> numbers = *id ? QList<int>{0, 1, 2, 3, 5, 11, 21, 100} : QList<int>{-1};
        for (const int number : numbers) {
            const QString shown = qtTrId(name.constData(), number);
            QVERIFY2(!shown.trimmed().isEmpty() && !shown.contains("qtn_"_L1), name.constData());
        }
    }
}

void WidgetsCatalogs::pluralForms_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QList<int>>("numbers");
    QTest::addColumn<QString>("shown");
    QTest::newRow("English") << u"en_GB"_s << QList<int>{0, 1, 2} << u"0 items, 1 item, 2 items"_s;
    QTest::newRow("German") << u"de_DE"_s << QList<int>{0, 1, 2} << u"0 Elemente, 1 Element, 2 Elemente"_s;
    QTest::newRow("Spanish") << u"es_ES"_s << QList<int>{0, 1, 2}
                             << u"0 elementos, 1 elemento, 2 elementos"_s;
    QTest::newRow("Finnish") << u"fi_FI"_s << QList<int>{0, 1, 2} << u"0 kohdetta, 1 kohde, 2 kohdetta"_s;
    QTest::newRow("French counts nothing as one")
        << u"fr_FR"_s << QList<int>{0, 1, 2} << u"0 élément, 1 élément, 2 éléments"_s;
    QTest::newRow("Russian: three forms") << u"ru_RU"_s << QList<int>{1, 2, 5, 11, 12, 21, 22, 25, 111, 0}
                                          << u"1 объект, 2 объекта, 5 объектов, 11 объектов, 12 объектов, "
                                             "21 объект, 22 объекта, 25 объектов, 111 объектов, 0 объектов"_s;
    QTest::newRow("Arabic: six forms") << u"ar_AE"_s << QList<int>{0, 1, 2, 3, 10, 11, 99, 100, 102, 103, 111}
                                       << u"لا عناصر, عنصر واحد, عنصران, 3 عناصر, 10 عناصر, 11 عنصرًا, 99 "
                                          u"عنصرًا, 100 عنصر, 102 عنصر, 103 عناصر, "
                                          "111 عنصرًا"_s;
    QTest::newRow("Japanese: one form")
        << u"ja_JP"_s << QList<int>{0, 1, 2} << u"0 個の項目, 1 個の項目, 2 個の項目"_s;
    QTest::newRow("Chinese: one form")
        << u"zh_CN"_s << QList<int>{0, 1, 2} << u"0 个项目, 1 个项目, 2 个项目"_s;
}

void WidgetsCatalogs::pluralForms()
{
    QFETCH(const QString, language);
    QFETCH(const QList<int>, numbers);
    const auto locale = startIn(language);
    QStringList shown;
    for (const int number : numbers)
        shown.append(qtTrId("qtn_share_items", number));
    QTEST(shown.join(u", "_s), "shown");
}

void WidgetsCatalogs::numbersInPluralsAreTheRegions()
{
    const auto egypt = startIn(u"ar_EG"_s);
    QCOMPARE(qtTrId("qtn_share_items", 12), u"١٢ عنصرًا"_s);
    const auto germany = startIn(u"de_DE"_s);
    QCOMPARE(qtTrId("qtn_share_items", 1200), u"1.200 Elemente"_s);
}

// On a machine without a font for the language the texts are rows of boxes: packages.txt names fonts for all.
void WidgetsCatalogs::everyCharacterHasAGlyph()
{
    QFETCH(const QString, language);
    const auto locale = startIn(language);
    const QFont font = toolkit::Theme::instance()->style(u"CommonSingleTitleInverted"_s).font;
    const QList<Text> all = textsOf(language);
    for (const Text &text : all) {
        for (const QString &form : text.forms)
            QCOMPARE(notDrawn(form, font), QString());
    }
}

// On the narrowest screen that is served.
void WidgetsCatalogs::headOfASheetHasRoomForItsActions()
{
    QFETCH(const QString, language);
    const auto locale = startIn(language);
    QGraphicsScene scene;
    auto *header = new toolkit::SheetHeader;
    scene.addItem(header);
    header->setNegativeAction(qtTrId("qtn_comm_cancel"));
    header->setPositiveAction(qtTrId("qtn_comm_save"));
    header->resize(360, header->heightFor(360));
    int buttons = 0;
    const QList<QGraphicsItem *> parts = header->childItems();
    for (QGraphicsItem *part : parts) {
        const auto *button = dynamic_cast<toolkit::Button *>(part);
        if (button == nullptr || button->text().isEmpty())
            continue;
        ++buttons;
        QVERIFY2(button->size().width() >= button->effectiveSizeHint(Qt::PreferredSize).width(),
                 qPrintable(button->text()));
    }
    QCOMPARE(buttons, 2);
}

void WidgetsCatalogs::shortTextsFitTheirPlaces()
{
    QFETCH(const QString, language);
    const auto locale = startIn(language);
    struct Place
    {
        const char *id;
        const char *style;
        qreal width; // of a screen of 480
    };
    static constexpr Place places[] = {
        {"qtn_vide_collection", "CommonApplicationPageHeader", 380},
        {"qtn_vide_player", "CommonApplicationPageHeader", 380},
        {"qtn_vide_filter_videos", "CommonSearchFieldInverted", 380},
        {"qtn_vide_delete_query", "SheetTitle", 432},
        {"qtn_vide_rename_title", "CommonHeaderInverted", 432},
        {"qtn_comm_object_details", "ObjectMenu", 400},
        {"qtn_comm_command_share", "ObjectMenu", 400},
        {"qtn_comm_command_rename", "ObjectMenu", 400},
        {"qtn_comm_command_delete", "ObjectMenu", 400},
        {"qtn_comm_content_save_as", "ObjectMenu", 400},
        {"qtn_comm_yes", "CommonButton", 170},
        {"qtn_comm_no", "CommonButton", 170},
        {"qtn_share_open_with", "CommonButton", 380},
        {"qtn_share_copy_address", "CommonButton", 380},
    };
    for (const Place &place : places) {
        const QFont font = toolkit::Theme::instance()->style(QString::fromLatin1(place.style)).font;
        const qreal width = QFontMetricsF(font).horizontalAdvance(qtTrId(place.id));
        QVERIFY2(width > 0 && width <= place.width, qPrintable(u"%1: %2"_s.arg(qtTrId(place.id)).arg(width)));
    }
}

void WidgetsCatalogs::theTextsThatAreLaidDown()
{
    const auto locale = startIn(u"en_GB"_s);
    QCOMPARE(qtTrId("qtn_vide_collection"), u"Videos"_s);
    QCOMPARE(qtTrId("qtn_vide_collection_empty"), u"No videos"_s);
    QCOMPARE(qtTrId("qtn_vide_filter_videos"), u"Filter videos"_s);
    // As one reads them in the menu of a video, and over the field that "Rename" opens.
    QCOMPARE(qtTrId("qtn_comm_object_details"), u"Details"_s);
    QCOMPARE(qtTrId("qtn_comm_command_share"), u"Share"_s);
    QCOMPARE(qtTrId("qtn_comm_command_rename"), u"Rename"_s);
    QCOMPARE(qtTrId("qtn_comm_command_delete"), u"Delete"_s);
    QCOMPARE(qtTrId("qtn_vide_rename_title"), u"Rename video"_s);
    QVERIFY(!qtTrId("qtn_vide_error_generic").contains(u'%'));
    QVERIFY(!qtTrId("qtn_vide_error_coded").contains(u'%'));
    QStringList ids;
    const QList<Text> english = textsOf(u"en"_s);
    for (const Text &text : english)
        ids.append(text.id);
    for (const char *id : {"qtn_comm_cancel",
                           "qtn_comm_command_delete",
                           "qtn_comm_command_done",
                           "qtn_comm_command_rename",
                           "qtn_comm_command_share",
                           "qtn_comm_content_save_as",
                           "qtn_comm_gigabytes",
                           "qtn_comm_kilobytes",
                           "qtn_comm_megabytes",
                           "qtn_comm_object_details",
                           "qtn_comm_save",
                           "qtn_vide_added",
                           "qtn_vide_collection",
                           "qtn_vide_collection_empty",
                           "qtn_vide_delete_query",
                           "qtn_vide_error_audio",
                           "qtn_vide_error_call",
                           "qtn_vide_error_coded",
                           "qtn_vide_error_connection",
                           "qtn_vide_error_delete",
                           "qtn_vide_error_drm",
                           "qtn_vide_error_format",
                           "qtn_vide_error_frame",
                           "qtn_vide_error_generic",
                           "qtn_vide_error_notfound",
                           "qtn_vide_error_resolution",
                           "qtn_vide_error_uri",
                           "qtn_vide_filter_videos",
                           "qtn_vide_format",
                           "qtn_vide_lastplayed",
                           "qtn_vide_library_unreachable",
                           "qtn_vide_mass_storage",
                           "qtn_vide_no_results",
                           "qtn_vide_playcount",
                           "qtn_vide_player",
                           "qtn_vide_propery_length",
                           "qtn_vide_rename_title",
                           "qtn_vide_size"})
        QVERIFY2(ids.contains(QString::fromLatin1(id)), id);
}

QTEST_MAIN(WidgetsCatalogs)
#include "widgets_catalogs.moc"
