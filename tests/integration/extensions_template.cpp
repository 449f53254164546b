// SPDX-License-Identifier: GPL-3.0-or-later
#include "unit/extensions/extensionplaces.h"
#include "unit/extensions/hostingpage.h"

#include <platform/extensions/extensionarea.h>
#include <platform/extensions/extensionfailures.h>

#include <QFileInfo>
#include <QGraphicsSceneMouseEvent>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

const ContentRecord film(u"file:///home/user/Videos/a.mp4"_s, u"A film"_s, {}, {});

// Empty when it went well, else what it said.
QString outputOfFailed(const QString &program, const QStringList &arguments, const QString &folder)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    const bool isDone = process.waitForFinished(100'000);
    const bool isGood = isDone && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return isGood ? QString() : u"failed: "_s + QString::fromUtf8(process.readAll());
}

QString document()
{
    QFile file(QStringLiteral(KESTREL_SOURCE_DIR "/docs/extensions.md"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// The commands of the walk-through, as they stand there.
QString commands()
{
    static const QRegularExpression block(u"^   ```sh\\n(.*?)^   ```$"_s,
                                          QRegularExpression::MultilineOption
                                              | QRegularExpression::DotMatchesEverythingOption);
    return block.match(document()).captured(1);
}

void tap(QGraphicsWidget *widget)
{
    for (const QEvent::Type type : {QEvent::GraphicsSceneMousePress, QEvent::GraphicsSceneMouseRelease}) {
        QGraphicsSceneMouseEvent event(type);
        event.setButton(Qt::LeftButton);
        event.setButtons(Qt::LeftButton);
        event.setPos(widget->rect().center());
        event.setScenePos(widget->mapToScene(event.pos()));
        event.setAccepted(true);
        widget->scene()->sendEvent(widget, &event);
    }
}

} // namespace

class TestExtensionTemplate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void itIsBuiltAsTheDocumentSays();
    void itLinksNothingOfTheProgram();
    void theDocumentShowsItsDescription();
    void itShowsTheVideoAndPlaysIt();
    void itIsInstalledForEverybody();

private:
    QTemporaryDir m_kestrel; // what is installed of the program
    QTemporaryDir m_author; // the folder in which the author works
    ExtensionPlaces m_places;
};

void TestExtensionTemplate::initTestCase()
{
    QCOMPARE(outputOfFailed(QStringLiteral(KESTREL_CMAKE),
                            {u"--install"_s, QStringLiteral(KESTREL_BUILD_DIR), u"--component"_s,
                             u"development"_s, u"--prefix"_s, m_kestrel.path()},
                            m_author.path()),
             QString());
    qputenv("CXX", KESTREL_CXX);
    qputenv("CXXFLAGS", "-Wall -Wextra -Wpedantic -Werror");
}

// “I follow the ten minutes of the document.” Nothing but the folder of Kestrel is another one.
void TestExtensionTemplate::itIsBuiltAsTheDocumentSays()
{
    QString script = commands();
    QVERIFY2(script.contains(u"kestrel=/usr\n"_s), qPrintable(script));
    script.replace(u"kestrel=/usr\n"_s, u"kestrel="_s + m_kestrel.path() + u'\n');
    QCOMPARE(outputOfFailed(u"sh"_s, {u"-ec"_s, script}, m_author.path()), QString());
    const QString folder = m_places.folder(u"user"_s);
    QVERIFY(QFileInfo(folder + u"/myextension.so"_s).isFile());
    QVERIFY(QFileInfo(folder + u"/video_youtuberelatedextension.desktop"_s).isFile());
}

// Every symbol is found in what it links itself, so it works with each host of its interface's version.
void TestExtensionTemplate::itLinksNothingOfTheProgram()
{
    QProcess linker;
    linker.setProcessChannelMode(QProcess::MergedChannels);
    linker.start(u"ldd"_s, {u"-r"_s, m_places.folder(u"user"_s) + u"/myextension.so"_s});
    QVERIFY(linker.waitForFinished());
    const QByteArray said = linker.readAll();
    QVERIFY(said.contains("libQt6Widgets"));
    QVERIFY2(!said.contains("undefined symbol") && !said.contains("not found"), said.constData());
}

void TestExtensionTemplate::theDocumentShowsItsDescription()
{
    QFile description(m_places.folder(u"user"_s) + u"/video_youtuberelatedextension.desktop"_s);
    QVERIFY(description.open(QIODevice::ReadOnly));
    QVERIFY(document().contains(QString::fromUtf8(description.readAll())));
}

void TestExtensionTemplate::itShowsTheVideoAndPlaysIt()
{
    ExtensionArea area(u"com.harrow.Kestrel.extensions.PlayerInterface/1.0"_s);
    area.setInProcessFilter(QRegularExpression(u"video_youtuberelatedextension.desktop"_s));
    HostingPage page(&area);
    area.init();
    QCOMPARE(area.failures()->texts(), QStringList());
    QCOMPARE(page.extensions(), 1);
    QImage empty(480, 120, QImage::Format_RGB32);
    empty.fill(Qt::black);
    const auto picture = [&] {
        QImage image = empty;
        QPainter painter(&image);
        page.scene()->render(&painter, QRectF(), QRectF(0, 0, 480, 120));
        return image;
    };
    const QImage before = picture();
    page.show(film);
    QVERIFY(picture() != before);
    auto *row = static_cast<QGraphicsWidget *>(page.widget()->childItems().constFirst()->toGraphicsObject());
    QCOMPARE(page.widget()->effectiveSizeHint(Qt::PreferredSize, {480, -1}).height(), 64.0);
    tap(row);
    QTRY_COMPARE(page.asked(), QStringList(u"page My page"_s));
    QGraphicsWidget *subPage = page.host()->subPageWidget();
    QVERIFY(subPage);
    page.scene()->addItem(subPage);
    tap(row);
    tap(row); // it is shown
    subPage->resize(480, 100);
    tap(subPage);
    QTRY_COMPARE(page.asked(), QStringList({u"page My page"_s, u"play 0 of 1 for “my-extension”"_s}));
    QCOMPARE(area.failures()->texts(), QStringList());
    area.unload();
    QCOMPARE(page.extensions(), 0);
}

void TestExtensionTemplate::itIsInstalledForEverybody()
{
    const QString prefix = m_author.filePath(u"prefix"_s);
    const QString build = u"my-extension/build"_s;
    const auto cmake = [this](const QStringList &arguments) {
        return outputOfFailed(QStringLiteral(KESTREL_CMAKE), arguments, m_author.path());
    };
    QCOMPARE(cmake({build, u"-DFOR_EVERYBODY=ON"_s, u"-DCMAKE_INSTALL_PREFIX="_s + prefix}), QString());
    QCOMPARE(cmake({u"--install"_s, build}), QString());
    QVERIFY(QFileInfo::exists(prefix + u"/share/kestrel/extensions/video_youtuberelatedextension.desktop"_s));
    QVERIFY(QFileInfo::exists(prefix + u"/lib/kestrel/extensions/myextension.so"_s));
    // The program is of another prefix.
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_author.filePath(u"nothing"_s)));
    qputenv("XDG_DATA_DIRS", QFile::encodeName(prefix + u"/share"_s));
    ExtensionArea area(u"com.harrow.Kestrel.extensions.PlayerInterface/1.0"_s);
    area.setInProcessFilter(QRegularExpression(u"video_youtuberelatedextension.desktop"_s));
    HostingPage page(&area);
    area.init();
    QCOMPARE(area.failures()->texts(), QStringList());
    QCOMPARE(page.extensions(), 1);
}

QTEST_MAIN(TestExtensionTemplate)
#include "extensions_template.moc"
