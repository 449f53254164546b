// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/storeprogress.h"
#include "fileops/editmanager.h"
#include "library/filteredmodel.h"
#include "library/griditemwidget.h"
#include "libraryfixture.h"
#include "platform/toolkit/action.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/querydialog.h"
#include "platform/toolkit/sheet.h"
#include "platform/toolkit/sheetheader.h"
#include "platform/toolkit/textmenu.h"
#include "support/sceneitems.h"

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGraphicsScene>

using namespace Qt::Literals::StringLiterals;
using toolkit::QueryDialog;
using toolkit::Sheet;

// The language of the texts becomes another while the library is on the screen: what stands there follows.
class LanguagesTest : public QObject
{
    Q_OBJECT

public:
    explicit LanguagesTest(LibraryFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void init();
    void cleanup();
    void headerPromptAndNames();
    void emptyStates_data();
    void emptyStates();
    void scanProgress();
    void theMenuThatIsOpen();
    void theQuestionThatIsOpen();
    void theSheetThatIsOpen();
    void theMenuOfTheField();
    void timesInTheDigitsOfTheLanguage();

private:
    // As a desktop's settings do it; the program hears of it from the window system.
    static void setLanguage(const char *language)
    {
        qputenv("LANGUAGE", language);
        qputenv("LANG", QByteArray(language) + ".UTF-8");
        QEvent event(QEvent::LocaleChange);
        QCoreApplication::sendEvent(QCoreApplication::instance(), &event);
    }
    template <typename Kind> [[nodiscard]] Kind *popup() const { return activePopup<Kind>(f.window); }
    // The texts of all labels and buttons within an item that are seen.
    [[nodiscard]] static QStringList textsIn(const QGraphicsItem *item)
    {
        QStringList texts;
        for (QGraphicsItem *child : item->childItems()) {
            if (!child->isVisible())
                continue;
            if (const auto *label = qobject_cast<toolkit::Label *>(child->toGraphicsObject()))
                texts.append(label->text());
            else if (const auto *button = qobject_cast<toolkit::Button *>(child->toGraphicsObject()))
                texts.append(button->text());
            texts += textsIn(child);
        }
        texts.removeAll(QString());
        return texts;
    }
    [[nodiscard]] QStringList menuTexts() const
    {
        QStringList texts;
        for (int i = 0; i < f.widget()->objectMenu()->entryCount(); ++i)
            texts.append(f.widget()->objectMenu()->entry(i)->text());
        return texts;
    }
    void open(const QString &title)
    {
        QVERIFY(f.open(LibraryFixture::rows({title})));
        f.store.answerBy([title](const SparqlQuery &) {
            const QStringList video = LibraryFixture::row(1, title);
            return FakeSparqlAnswer::rows({QVariantList(video.cbegin(), video.cend())});
        });
    }
    void choose(const QString &action)
    {
        f.widget()->itemLongTapped(f.widget()->proxy()->index(0, 0), {100, 200});
        const toolkit::ObjectMenu *menu = f.widget()->objectMenu();
        for (int i = 0; i < menu->entryCount(); ++i) {
            if (menu->entry(i)->objectName() == action)
                f.widget()->objectMenu()->chooseEntry(i);
        }
    }

    LibraryFixture &f;
};

void LanguagesTest::init()
{
    setLanguage("en");
    QCOMPARE(qtTrId("qtn_vide_no_results"), u"No results"_s);
}

void LanguagesTest::cleanup()
{
    f.close();
    f.store.answerBy({});
}

void LanguagesTest::headerPromptAndNames()
{
    QVERIFY(f.open(LibraryFixture::rows({u"Apple"_s})));
    const auto actionKey = [this] {
        return f.edit()->inputMethodAttribute(u"/keys"_s, u"actionKey"_s, u"label"_s).toString();
    };
    const QStringList english = {f.page->title(), f.edit()->prompt(), actionKey()};
    QCOMPARE(english, QStringList({u"Videos"_s, u"Filter videos"_s, u"Done"_s}));
    setLanguage("fi");
    QTRY_COMPARE(f.edit()->prompt(), u"Suodata videoita"_s);
    QCOMPARE(f.page->title(), qtTrId("qtn_vide_collection"));
    QVERIFY(f.page->title() != u"Videos"_s);
    QCOMPARE(f.window.windowTitle(), f.page->title());
    QCOMPARE(f.widget()->list()->accessibleName(), f.page->title());
    QCOMPARE(actionKey(), qtTrId("qtn_comm_command_done"));
    QVERIFY(actionKey() != u"Done"_s);
    setLanguage("en");
    QTRY_COMPARE(f.edit()->prompt(), u"Filter videos"_s);
}

void LanguagesTest::emptyStates_data()
{
    QTest::addColumn<QStringList>("titles");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("english");
    QTest::addColumn<QString>("german");
    QTest::newRow("empty") << QStringList() << QString() << u"No videos"_s << u"Keine Videos"_s;
    QTest::newRow("no results") << QStringList(u"Apple"_s) << u"xyz"_s << u"No results"_s
                                << u"Keine Treffer"_s;
}

void LanguagesTest::emptyStates()
{
    QFETCH(QStringList, titles);
    QFETCH(QString, filter);
    QFETCH(QString, english);
    QFETCH(QString, german);
    QVERIFY(f.open(LibraryFixture::rows(titles)));
    if (!filter.isEmpty())
        f.page->showTextEdit(filter, true);
    QTRY_COMPARE(textsIn(f.widget()), QStringList(english));
    setLanguage("de");
    QTRY_COMPARE(textsIn(f.widget()), QStringList(german));
}

void LanguagesTest::scanProgress()
{
    QVERIFY(f.open({}));
    f.widget()->setScanProgress(true, 1200, 30);
    QVERIFY(textsIn(f.widget()).contains(u"Reading videos: 30 of 1,200"_s));
    setLanguage("de");
    QTRY_VERIFY(textsIn(f.widget()).contains(u"Videos werden gelesen: 30 von 1.200"_s));
    f.widget()->setScanProgress(false, 1200, 1200);
    setLanguage("en");
    QTRY_COMPARE(textsIn(f.widget()), QStringList(u"No videos"_s));
}

void LanguagesTest::theMenuThatIsOpen()
{
    QVERIFY(f.open(LibraryFixture::rows({u"Apple"_s})));
    f.widget()->itemLongTapped(f.widget()->proxy()->index(0, 0), {100, 200});
    QCOMPARE(menuTexts().last(), u"Delete"_s);
    setLanguage("de");
    QTRY_COMPARE(menuTexts().last(), u"L\u00f6schen"_s);
    QVERIFY(f.widget()->objectMenu()->isActive());
    QVERIFY(!menuTexts().contains(u"Share"_s));
}

void LanguagesTest::theQuestionThatIsOpen()
{
    open(u"Apple"_s);
    choose(u"deleteAction"_s);
    QTRY_VERIFY(popup<QueryDialog>());
    const QueryDialog *question = popup<QueryDialog>();
    QCOMPARE(question->title(), u"Delete video?"_s);
    setLanguage("de");
    QTRY_COMPARE(question->title(), u"Video l\u00f6schen?"_s);
    QCOMPARE(question->button(QueryDialog::Yes)->text(), u"Ja"_s);
    QCOMPARE(question->button(QueryDialog::No)->text(), u"Nein"_s);
    QVERIFY(question->isActive());
    f.page->cancelDialogs();
}

void LanguagesTest::theSheetThatIsOpen()
{
    open(u"Apple"_s);
    choose(u"editAction"_s);
    QTRY_VERIFY(popup<Sheet>());
    const Sheet *sheet = popup<Sheet>();
    QVERIFY(textsIn(sheet).contains(u"Cancel"_s));
    setLanguage("de");
    QTRY_VERIFY(textsIn(sheet).contains(u"Abbrechen"_s));
    QVERIFY(textsIn(sheet).contains(qtTrId("qtn_vide_rename_title")));
    QVERIFY(!textsIn(sheet).contains(u"Save"_s));
    f.page->cancelDialogs();
}

void LanguagesTest::theMenuOfTheField()
{
    QVERIFY(f.open(LibraryFixture::rows({u"Apple"_s})));
    f.page->showTextEdit(u"app"_s, true);
    QGuiApplication::clipboard()->setText(u"pie"_s);
    QTRY_COMPARE(f.field()->size().width(), 480.0);
    const QPoint at = f.window.mapFromScene(f.edit()->mapToScene(QPointF(40, 30)));
    QContextMenuEvent wish(QContextMenuEvent::Mouse, at, f.window.viewport()->mapToGlobal(at));
    QCoreApplication::sendEvent(f.window.viewport(), &wish);
    QTRY_VERIFY(f.edit()->menu());
    const auto texts = [this] {
        QStringList result;
        for (const QAction *action : f.edit()->menu()->findChildren<QAction *>())
            result.append(action->text());
        return result;
    };
    QVERIFY(texts().contains(u"Paste"_s));
    const qreal width = f.edit()->menu()->size().width();
    setLanguage("de");
    QTRY_VERIFY(f.edit()->menu() && texts().contains(u"Einf\u00fcgen"_s));
    QVERIFY(f.edit()->menu()->size().width() > width); // for its longer words
}

void LanguagesTest::timesInTheDigitsOfTheLanguage()
{
    QVERIFY(f.open({LibraryFixture::row(1, u"Apple"_s, u"65"_s)}));
    const auto time = [this] {
        const auto *cell
            = qobject_cast<GridItemWidget *>(f.widget()->list()->cell(f.widget()->proxy()->index(0, 0)));
        return cell ? cell->timeLabel()->text() : QString();
    };
    QTRY_COMPARE(time(), u"01:05"_s);
    setLanguage("ar_EG");
    QTRY_COMPARE(time(), u"\u0660\u0661:\u0660\u0665"_s);
    QCOMPARE(f.page->layoutDirection(), Qt::RightToLeft);
    setLanguage("en");
    QTRY_COMPARE(time(), u"01:05"_s);
}

int main(int argc, char **argv)
{
    for (const char *name : {"LC_ALL", "LC_MESSAGES", "LC_TIME", "LC_COLLATE", "LC_NUMERIC"})
        qunsetenv(name);
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    LibraryFixture fixture;
    fixture.locale.connectSettings();
    LanguagesTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_languages.moc"
