// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "playerpagestage.h"
#include "support/deletionquestion.h"
#include "support/fakedevice.h"
#include "support/driventimer.h"
#include "support/loglines.h"

#include <fileops/editmanager.h>
#include <fileops/filemanager.h>
#include <fileops/fileremoval.h>
#include <fileops/saveasmanager.h>
#include <platform/saveas/saveasdialog.h>
#include <platform/toolkit/action.h>
#include <platform/toolkit/button.h>
#include <platform/toolkit/querydialog.h>
#include <platform/toolkit/sheet.h>
#include <platform/toolkit/textedit.h>
#include <platform/toolkit/theme.h>

#include <QAction>
#include <QDir>
#include <QSignalSpy>
#include <QUrl>

// A player page whose menu is used as a person does, over stored videos whose files are there.
class PlayerMenuStage : protected PlayerPageStage
{
protected:
    void begin()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_videos.clear();
        QVERIFY(showPage());
    }
    void end()
    {
        f.store->answerBy({});
        removePage();
    }
    QStringList offered() const
    {
        QStringList names;
        const QList<QAction *> actions = m_page->actions();
        for (const QAction *action : actions)
            names.append(action->objectName());
        return names;
    }
    QAction *action(const QString &name) const { return m_page->findChild<QAction *>(name); }
    // As a person does it: the bar's menu, then its entry, which closes the menu.
    void choose(const QString &name)
    {
        m_page->navigationBar()->menuButton()->click();
        QVERIFY(m_window->isMenuOpen());
        QVERIFY(f.waitFor(AvloRenderer::Paused));
        action(name)->trigger();
        m_window->closeMenu();
    }
    template <typename Kind> [[nodiscard]] Kind *popup() const { return activePopup<Kind>(*m_window); }
    template <typename Kind> [[nodiscard]] bool waitForPopup() const
    {
        return QTest::qWaitFor([this] { return popup<Kind>() != nullptr; });
    }
    // A stored video whose file is there; the store answers for it and no other.
    VideoInfo stored(const QString &urn = QStringLiteral("urn:1"))
    {
        VideoInfo video = PlayerFixture::video(urn);
        const QString path = m_folder->filePath(QString(urn).replace(u':', u'-') + QStringLiteral(".mp4"));
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write("film");
        video.url = QString::fromUtf8(QUrl::fromLocalFile(path).toEncoded());
        m_videos.append(video);
        f.store->answerBy([this](const SparqlQuery &query) {
            for (const VideoInfo &known : std::as_const(m_videos)) {
                if (!query.text().contains(known.urn))
                    continue;
                if (query.text().contains(QStringLiteral("nie:url")))
                    return FakeSparqlAnswer::rows(
                        {{known.urn, known.title, QStringLiteral("clip.mp4"), known.duration,
                          known.playPosition, QStringLiteral("video/mp4"), known.url, 1}});
                return FakeSparqlAnswer::rows({{known.title, QStringLiteral("clip.mp4")}});
            }
            return FakeSparqlAnswer::rows({});
        });
        return video;
    }
    QStringList files() const { return QDir(m_folder->path()).entryList(QDir::Files, QDir::Name); }
    int resumes() const { return int(f.backend->commands().count(QStringLiteral("resume"))); }
    // The question, when its video's file was looked at.
    toolkit::QueryDialog *question() const
    {
        return deletionQuestion(*m_window, [this] { return PlayerPageProbe::fileManager(*m_page); });
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QList<VideoInfo> m_videos;
};
