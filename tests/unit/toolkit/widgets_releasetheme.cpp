// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/theme.h"
#include "platform/toolkit/themewatcher.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using toolkit::Theme;

// The theme as it is compiled for people, who do not work on the look.
class WidgetsReleaseTheme : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aFileThatChangesIsLeftAlone();
};

void WidgetsReleaseTheme::aFileThatChangesIsLeftAlone()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(u"theme.json"_s);
    const auto write = [&path](int cellHeight) {
        QFile bundled(u":/theme/kestrel.theme.json"_s);
        QFile file(path);
        QVERIFY(bundled.open(QIODevice::ReadOnly) && file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bundled.readAll().replace("[480, 136]", "[480, " + QByteArray::number(cellHeight) + ']'));
    };
    const auto height = [] { return Theme::instance()->style(u"KestrelGridItem"_s).preferredSize.height(); };
    write(150);
    QVERIFY(Theme::instance()->loadFile(path));
    QCOMPARE(height(), 150.0);
    QSignalSpy completed(Theme::instance(), &Theme::themeChangeCompleted);
    // Whoever does watch has seen both changes: the theme would have seen the first.
    toolkit::ThemeWatcher watcher;
    watcher.watch(path, folder.filePath(u"icons"_s));
    QSignalSpy changed(&watcher, &toolkit::ThemeWatcher::changed);
    for (const int newHeight : {160, 170}) {
        write(newHeight);
        QVERIFY(changed.wait(TestPatience));
    }
    QCOMPARE(height(), 150.0);
    QCOMPARE(completed.count(), 0);
    QVERIFY(Theme::instance()->loadFile(path)); // when it is asked to
    QCOMPARE(height(), 170.0);
}

QTEST_MAIN(WidgetsReleaseTheme)
#include "widgets_releasetheme.moc"
