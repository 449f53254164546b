// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/thumbnailhelper.h"
#include "data/thumbnailpaths.h"
#include "data/trackerinterface.h"
#include "data/videoconstants.h"
#include "detaillocale.h"
#include "details/detailspage.h"
#include "details/previewwidget.h"
#include "details/videodetailscontainer.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/scenemanager.h"
#include "platform/toolkit/theme.h"
#include "support/fakesparqldriver.h"
#include "support/fakethumbnailerclient.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QTest>

#include <memory>

// The details page in a real window over a store that answers as a test says.
class DetailsFixture
{
public:
    DetailsFixture() : locale(QStringLiteral("en_GB"))
    {
        FakeThumbnailerClient::install();
        toolkit::Theme::instance()->setReducedMotion(true);
        window.setProfile(toolkit::ApplicationWindow::Profile::Desktop);
    }

    // As the store tells it.
    static QVariantList row(const VideoDetails &details)
    {
        return {
            details.urn,          details.title,    details.duration, details.fileSize,       0,
            details.lastAccessed, details.mimeType, details.url,      details.additionalInfo, details.added,
            details.playCount,    details.fileName};
    }
    static QVariantList dataRow(const VideoDetails &details)
    {
        return {details.urn, details.title,    details.fileName, details.duration,
                0,           details.mimeType, details.url,      1};
    }

    bool open(const QSize &size = QSize(480, 854))
    {
        page = std::make_unique<DetailsPage>(TrackerInterface::instance(), ThumbnailHelper::instance());
        page->appear(&window, toolkit::Appearance::Immediate);
        window.resize(size);
        window.showForProfile();
        window.resize(size);
        return QTest::qWaitForWindowActive(&window) && QTest::qWaitFor([&] { return window.size() == size; });
    }
    // Asks for this video, and has the answer.
    bool show(const VideoDetails &details)
    {
        store.answerWith({row(details)});
        page->setPlayedVideo(details.urn);
        return QTest::qWaitFor([&] { return page->urn() == details.urn && !labels().isEmpty(); });
    }
    void close()
    {
        page.reset();
        store.answerBy({});
        store.answerWith({});
        store.clear();
    }

    [[nodiscard]] const QList<toolkit::Label *> &labels() const
    {
        return page->preview()->detailsContainer()->labels();
    }
    [[nodiscard]] QStringList texts() const { return textsOf(labels()); }
    static QString pathOf(const QString &url, bool still = false)
    {
        return still ? ThumbnailPaths::pausePath(url, THUMBNAIL_FLAVOR)
                     : ThumbnailPaths::defaultPath(url, THUMBNAIL_FLAVOR);
    }
    // A picture of one colour where the thumbnailer puts that of a video, or the player its still. Its path.
    static QString makePicture(const QString &url, const QColor &color, bool still = false)
    {
        const QString path = pathOf(url, still);
        QDir().mkpath(QFileInfo(path).path());
        QImage picture(960, 540, QImage::Format_RGB32);
        picture.fill(color);
        return picture.save(path, "JPEG", 100) ? path : QString();
    }
    // The colour in the middle of the picture that is shown.
    [[nodiscard]] QColor shownColor() const
    {
        const QImage picture = page->preview()->image()->pixmap().toImage();
        return picture.isNull() ? QColor() : picture.pixelColor(picture.rect().center());
    }

    FakeSparqlStore store;
    DeviceLocale locale;
    toolkit::ApplicationWindow window;
    std::unique_ptr<DetailsPage> page;
};
