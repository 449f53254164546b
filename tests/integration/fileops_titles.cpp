// SPDX-License-Identifier: GPL-3.0-or-later
// Titles of every kind, written with the title editor's own sheet into the real store.
#include <data/allvideosmodel.h>
#include <data/trackerinterface.h>
#include <fileops/editmanager.h>
#include <platform/toolkit/application.h>
#include <platform/toolkit/applicationpage.h>
#include <platform/toolkit/applicationwindow.h>
#include <platform/toolkit/button.h>
#include <platform/toolkit/scenemanager.h>
#include <platform/toolkit/sheet.h>
#include <platform/toolkit/sheetheader.h>
#include <platform/toolkit/textedit.h>
#include <platform/toolkit/theme.h>

#include "support/fakethumbnailerclient.h"
#include "support/sceneitems.h"
#include "support/testclips.h"

#include <QClipboard>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::Literals::StringLiterals;
using toolkit::Sheet;
using toolkit::TextEdit;

namespace {

const QString storeName = u"com.harrow.Kestrel.Store"_s;
constexpr int patience = 60000;

} // namespace

class FileOpsTitlesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void aTitleOfAnyTextIsKept_data();
    void aTitleOfAnyTextIsKept();
    void blanksAloneChangeNothing();
    void theLastTitleOutlivesAKill();

private:
    [[nodiscard]] QString titleInList() const { return m_model->text(0, VideoColumn::Title); }
    [[nodiscard]] QString urn() const { return m_model->text(0, VideoColumn::Urn); }
    Sheet *open();
    // As the person does it: mark all, and paste over it.
    static TextEdit *fill(Sheet *sheet, const QString &text);
    static TextEdit *fieldOf(const Sheet *sheet)
    {
        for (QGraphicsItem *child : sheet->centralWidget()->childItems()) {
            if (auto *found = qobject_cast<TextEdit *>(child->toGraphicsObject()))
                return found;
        }
        return nullptr;
    }
    static qint64 storeProcess()
    {
        const QDBusReply<uint> pid = QDBusConnection::sessionBus().interface()->servicePid(storeName);
        return pid.isValid() ? pid.value() : 0;
    }

    QTemporaryDir m_home;
    std::unique_ptr<toolkit::ApplicationWindow> m_window;
    std::unique_ptr<toolkit::ApplicationPage> m_page;
    std::unique_ptr<AllVideosModel> m_model;
    std::unique_ptr<EditManager> m_editor;
};

void FileOpsTitlesTest::initTestCase()
{
    QVERIFY(m_home.isValid());
    qputenv("HOME", m_home.path().toUtf8());
    for (const char *variable : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"})
        qunsetenv(variable);
    qputenv("KESTREL_STORE_PROGRAM", KESTREL_BIN_DIR "/kestrel-store");
    qputenv("KESTREL_MEDIA_WORKER_PROGRAM", KESTREL_BIN_DIR "/kestrel-media-worker");
    FakeThumbnailerClient::install();
    const QString videos = m_home.filePath(u"Videos"_s);
    QVERIFY(QDir().mkpath(videos));
    QCOMPARE(TestClips::make(videos + u"/film.mp4"_s, {}), QString());

    toolkit::Theme::instance()->setReducedMotion(true);
    m_window = std::make_unique<toolkit::ApplicationWindow>();
    m_window->setProfile(toolkit::ApplicationWindow::Profile::Desktop);
    m_page = std::make_unique<toolkit::ApplicationPage>();
    m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
    m_window->showForProfile();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    m_model = std::make_unique<AllVideosModel>(nullptr);
    QTRY_COMPARE_WITH_TIMEOUT(m_model->rowCount(), 1, patience);
    m_editor = std::make_unique<EditManager>(nullptr);
}

void FileOpsTitlesTest::cleanupTestCase()
{
    m_editor.reset();
    m_model.reset();
    m_page.reset();
    m_window.reset();
    if (const qint64 pid = storeProcess())
        ::kill(pid_t(pid), SIGTERM);
}

Sheet *FileOpsTitlesTest::open()
{
    m_editor->showEditSheet(urn());
    Sheet *sheet = nullptr;
    (void)QTest::qWaitFor(
        [&] {
            sheet = childWhere<Sheet>(m_window->sceneManager()->root(),
                                      [](const Sheet *found) { return found->isOpen(); });
            return sheet != nullptr;
        },
        patience);
    return sheet;
}

TextEdit *FileOpsTitlesTest::fill(Sheet *sheet, const QString &text)
{
    TextEdit *field = fieldOf(sheet);
    field->selectAll();
    QGuiApplication::clipboard()->setText(text);
    field->paste();
    return field;
}

void FileOpsTitlesTest::aTitleOfAnyTextIsKept_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("title"); // on one line, without what cannot be seen
    const auto row = [](const char *name, const QString &typed, const QString &title) {
        QTest::newRow(name) << typed << title;
    };
    const auto same = [&row](const char *name, const QString &title) { row(name, title, title); };
    same("plain", u"Birthday"_s);
    same("mark-up", u"<b>bold</b> &amp; <img src='x' onerror=\"y\">"_s);
    same("quotes, backslashes and a statement", u"a\"b'c\\d\\u0041 \" } ; DELETE { ?v a nmm:Video } #"_s);
    same("what stands for a place", u"%1 %2 _VALUE_ ?_prop"_s);
    same("10,000 characters", QString(10000, u'x'));
    same("10,000 characters of four bytes", u"\U0001F382"_s.repeated(5000));
    same("blanks around and within", u"  a   b "_s);
    same("emoji", u"\U0001F382 \U0001F468\u200D\U0001F469\u200D\U0001F467 \U0001F1EB\U0001F1EE"_s);
    same("combining marks", u"cafe\u0301 o\u0308\u0304 \u0939\u093F\u0928\u094D\u0926\u0940"_s);
    same("decomposed beside composed", u"e\u0301\u00E9"_s);
    same("many marks on one letter", u"Z"_s + u"\u0351\u036B\u0343"_s.repeated(40));
    same("mixed directions", u"abc \u05E2\u05D1\u05E8\u05D9\u05EA 12 \u0639\u0631\u0628\u064A"_s);
    same("marks of direction", u"\u202Eabc\u202C \u2067def\u2069"_s);
    same("a character that is none", u"a\uFFFDb\uFEFFc"_s);
    row("a NUL", u"zero"_s + QChar(u'\0') + u"inside"_s, u"zeroinside"_s);
    row("line breaks", u"two\nlines\r\nthree\u2028four\u2029five\tsix"_s,
        u"two lines  three four five six"_s);
    row("control characters", u"bell\a escape\u001B[31m delete\u007F next\u0085"_s,
        u"bell escape[31m delete next"_s);
}

void FileOpsTitlesTest::aTitleOfAnyTextIsKept()
{
    QFETCH(QString, typed);
    QFETCH(QString, title);
    Sheet *sheet = open();
    QVERIFY(sheet);
    QCOMPARE(fill(sheet, typed)->text(), title);
    QVERIFY(!m_window->grab().isNull());
    sheet->header()->positiveButton()->click();
    QTRY_COMPARE_WITH_TIMEOUT(titleInList(), title, patience);
    sheet = open();
    QVERIFY(sheet);
    QCOMPARE(fieldOf(sheet)->text(), title);
    sheet->reject();
    QCOMPARE(m_model->rowCount(), 1);
}

void FileOpsTitlesTest::blanksAloneChangeNothing()
{
    const QString before = titleInList();
    Sheet *sheet = open();
    QVERIFY(sheet);
    fill(sheet, u" \u00A0\u2003 "_s);
    QVERIFY(!sheet->header()->positiveButton()->isEnabled());
    QTest::keyClick(m_window.get(), Qt::Key_Return);
    QVERIFY(!sheet->isActive());
    sheet = open(); // asked after whatever was written
    QVERIFY(sheet);
    QCOMPARE(fieldOf(sheet)->text(), before);
    sheet->reject();
    QCOMPARE(titleInList(), before);
}

void FileOpsTitlesTest::theLastTitleOutlivesAKill()
{
    const QString title = u"<i>\U0001F382 \u05E2\u05D1\u05E8\u05D9\u05EA</i> "_s;
    Sheet *sheet = open();
    QVERIFY(sheet);
    fill(sheet, title);
    sheet->header()->positiveButton()->click();
    QTRY_COMPARE_WITH_TIMEOUT(titleInList(), title, patience);
    QSignalSpy loads(TrackerInterface::instance(), &TrackerInterface::allVideosFinished);
    const qint64 pid = storeProcess();
    QVERIFY(pid != 0);
    QCOMPARE(::kill(pid_t(pid), SIGKILL), 0);
    QTRY_VERIFY_WITH_TIMEOUT(!loads.isEmpty(), patience);
    QTRY_COMPARE_WITH_TIMEOUT(m_model->rowCount(), 1, patience);
    QCOMPARE(titleInList(), title);
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    FileOpsTitlesTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "fileops_titles.moc"
