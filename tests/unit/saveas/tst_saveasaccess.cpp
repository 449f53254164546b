// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/saveas/copyprogress.h"
#include "platform/saveas/saveascontent.h"
#include "platform/saveas/saveasdialog.h"
#include "platform/toolkit/applicationpage.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/querydialog.h"
#include "platform/toolkit/sheetheader.h"
#include "platform/toolkit/textedit.h"
#include "platform/toolkit/theme.h"
#include "unit/toolkit/accessevents.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using toolkit::ApplicationPage;
using toolkit::ApplicationWindow;

// The sheet to those who do not see it, and to those whose language becomes another meanwhile.
class TestSaveAsAccess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void whatThereIsToRead();
    void anErrorIsReadOut();
    void anotherErrorIsReadOutToo();
    void theProgressIsReadAndNotMoved();
    void theFormFollowsTheLanguage();
    void theErrorFollowsTheLanguage();
    void theQuestionFollowsTheLanguage();
    void theProgressFollowsTheLanguage();

private:
    [[nodiscard]] SaveAsContent *content() const { return m_dialog->content(); }
    void type(const QString &name) { content()->field()->setText(name); }
    void speak(const QString &language)
    {
        QVERIFY(m_catalog.load(u":/translations/video_%1.qm"_s.arg(language)));
        QLocale::setDefault(QLocale(language));
        QCoreApplication::removeTranslator(&m_catalog);
        QVERIFY(QCoreApplication::installTranslator(&m_catalog));
    }

    QTranslator m_catalog;
    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<ApplicationWindow> m_window;
    std::unique_ptr<ApplicationPage> m_page;
    std::unique_ptr<SaveAsDialog> m_dialog;
};

void TestSaveAsAccess::initTestCase()
{
    QTRY_VERIFY(QAccessible::isActive());
    toolkit::Theme::instance()->setReducedMotion(true);
}

void TestSaveAsAccess::init()
{
    speak(u"en"_s);
    m_root = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_root->path()).mkdir(u"Videos"_s));
    QFile clip(m_root->filePath(u"clip.mp4"_s));
    QVERIFY(clip.open(QIODevice::WriteOnly) && clip.resize(1200000));
    m_window = std::make_unique<ApplicationWindow>();
    m_window->setProfile(ApplicationWindow::Profile::Desktop);
    m_window->showForProfile();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    m_page = std::make_unique<ApplicationPage>();
    m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
    m_dialog = std::make_unique<SaveAsDialog>();
    m_dialog->setSourcePath(clip.fileName());
    m_dialog->setDefaultFileName(u"clip"_s);
    m_dialog->setDefaultExtension(u"mp4"_s);
    m_dialog->setDestinationPath(m_root->filePath(u"Videos"_s));
    m_dialog->appear(m_window.get());
    QVERIFY(m_dialog->isOpen());
    QTRY_VERIFY(content()->freeLabel()->isVisible());
}

void TestSaveAsAccess::cleanup()
{
    m_dialog.reset();
    m_page.reset();
    m_window.reset();
    m_root.reset();
}

void TestSaveAsAccess::whatThereIsToRead()
{
    content()->setSpace(1200000, 3400000000);
    QTRY_COMPARE(accessTree(access(m_dialog.get())),
                 u"Dialog Save as\n"
                 u"  Button Cancel\n"
                 u"  Button Save\n"
                 u"  StaticText Save as\n"
                 u"  EditableText Name\n"
                 u"  StaticText .mp4\n"
                 u"  StaticText Folder: Videos\n"
                 u"  StaticText Size: 1.2 MB\n"
                 u"  StaticText Free space: 3.4 GB\n"_s);
}

void TestSaveAsAccess::anErrorIsReadOut()
{
    AccessEvents events;
    type(u".clip"_s);
    const QString error = u"A name cannot contain “/” or begin with a dot."_s;
    QCOMPARE(content()->errorLabel()->text(), error);
    QCOMPARE(events.take().filter(u"Alert"_s), QStringList{u"Alert "_s + error});
    QCOMPARE(access(content()->errorLabel())->role(), QAccessible::AlertMessage);
    type(u".clips"_s); // the same once more is no news
    QCOMPARE(events.take().filter(u"Alert"_s), QStringList());
    type(u"clip"_s);
    QCOMPARE(events.take().filter(u"ObjectHide"_s).size(), 1);
    QVERIFY(!content()->errorLabel()->isVisible());
}

void TestSaveAsAccess::anotherErrorIsReadOutToo()
{
    QVERIFY(QDir(m_root->path()).mkpath(u"Videos/clip.mp4"_s));
    type(QString(300, u'x'));
    AccessEvents events;
    type(u"clip"_s);
    m_dialog->save();
    const QString error = u"There is a folder with this name. Choose another name."_s;
    QTRY_COMPARE(content()->errorLabel()->text(), error);
    QCOMPARE(events.take().filter(u"Alert"_s), QStringList{u"Alert "_s + error});
    type(QString(300, u'x'));
    QCOMPARE(events.take().filter(u"Alert"_s), QStringList{u"Alert This name is too long."_s});
}

void TestSaveAsAccess::theProgressIsReadAndNotMoved()
{
    content()->showCopying(u"clip.mp4"_s);
    AccessEvents events;
    content()->setProgress(300000, 1200000);
    content()->setProgress(303000, 1200000); // the same percent
    content()->setProgress(600000, 1200000);
    QCOMPARE(events.take().filter(u"ValueChanged"_s),
             (QStringList{u"ValueChanged Saving “clip.mp4” 25"_s, u"ValueChanged Saving “clip.mp4” 50"_s}));
    QAccessibleInterface *bar = access(content()->progressBar());
    QCOMPARE(bar->role(), QAccessible::ProgressBar);
    QCOMPARE(bar->text(QAccessible::Description), u"600.0 kB of 1.2 MB"_s);
    QVERIFY(bar->valueInterface() != nullptr);
    QCOMPARE(bar->valueInterface()->maximumValue().toInt(), 100);
    bar->valueInterface()->setCurrentValue(90);
    QCOMPARE(bar->valueInterface()->currentValue().toInt(), 50);
    QCOMPARE(bar->actionInterface()->actionNames(), QStringList());
}

void TestSaveAsAccess::theFormFollowsTheLanguage()
{
    content()->setSpace(1200000, 3400000000);
    type(u"Urlaub"_s);
    speak(u"de"_s);
    QTRY_COMPARE(accessTree(access(m_dialog.get())),
                 u"Dialog Speichern unter\n"
                 u"  Button Abbrechen\n"
                 u"  Button Speichern\n"
                 u"  StaticText Speichern unter\n"
                 u"  EditableText Name\n"
                 u"  StaticText .mp4\n"
                 u"  StaticText Ordner: Videos\n"
                 u"  StaticText Größe: 1,2 MB\n"
                 u"  StaticText Freier Speicherplatz: 3,4 GB\n"_s);
    QCOMPARE(content()->field()->text(), u"Urlaub"_s);
    QVERIFY(content()->field()->hasFocus());
}

void TestSaveAsAccess::theErrorFollowsTheLanguage()
{
    type(u".clip"_s);
    speak(u"de"_s);
    QTRY_COMPARE(content()->errorLabel()->text(),
                 u"Ein Name darf kein „/“ enthalten und nicht mit einem Punkt beginnen."_s);
    QVERIFY(QDir(m_root->path()).mkpath(u"Videos/clip.mp4"_s));
    type(u"clip"_s);
    m_dialog->save();
    QTRY_COMPARE(content()->errorLabel()->text(),
                 u"Es gibt einen Ordner mit diesem Namen. Wählen Sie einen anderen Namen."_s);
    speak(u"en"_s);
    QTRY_COMPARE(content()->errorLabel()->text(),
                 u"There is a folder with this name. Choose another name."_s);
}

void TestSaveAsAccess::theQuestionFollowsTheLanguage()
{
    QFile taken(m_root->filePath(u"Videos/clip.mp4"_s));
    QVERIFY(taken.open(QIODevice::WriteOnly));
    m_dialog->save();
    QTRY_VERIFY(m_dialog->question() != nullptr && m_dialog->question()->isOpen());
    QCOMPARE(m_dialog->question()->title(), u"Replace the file?"_s);
    speak(u"de"_s);
    QTRY_COMPARE(m_dialog->question()->title(), u"Datei ersetzen?"_s);
    QVERIFY(m_dialog->question()->text().startsWith(u"„clip.mp4“ gibt es dort schon."_s));
    QCOMPARE(m_dialog->question()->button(toolkit::QueryDialog::Yes)->text(), u"Ja"_s);
}

void TestSaveAsAccess::theProgressFollowsTheLanguage()
{
    content()->showCopying(u"clip.mp4"_s);
    content()->setProgress(300000, 1200000);
    speak(u"de"_s);
    QTRY_COMPARE(content()->heading()->text(), u"„clip.mp4“ wird gespeichert"_s);
    QCOMPARE(content()->progressLabel()->text(), u"300,0 kB von 1,2 MB"_s);
    QCOMPARE(content()->progressBar()->accessibleName(), content()->heading()->text());
}

int main(int argc, char **argv)
{
    letAssistiveTechnologyListen();
    QApplication application(argc, argv);
    TestSaveAsAccess test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_saveasaccess.moc"
