// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/thumbnailhelper.h"
#include "data/trackerinterface.h"
#include "data/videoinfo.h"
#include "library/filteredmodel.h"
#include "library/filterwidget.h"
#include "library/localvideospage.h"
#include "library/myallvideoswidget.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/locale.h"
#include "platform/toolkit/scenemanager.h"
#include "platform/toolkit/textedit.h"
#include "platform/toolkit/theme.h"
#include "support/fakesparqldriver.h"
#include "support/fakethumbnailerclient.h"

#include <QKeyEvent>
#include <QTest>

#include <memory>

// The library page in a real window over a store whose rows a test gives.
class LibraryFixture
{
public:
    LibraryFixture()
    {
        using namespace Qt::Literals::StringLiterals;
        FakeThumbnailerClient::install();
        toolkit::Theme::instance()->setReducedMotion(true);
        locale.installTrCatalog(u"video"_s);
        locale.installTrCatalog(u"music"_s);
        toolkit::Locale::setDefault(&locale);
        window.setProfile(toolkit::ApplicationWindow::Profile::Desktop);
    }
    ~LibraryFixture() { toolkit::Locale::setDefault(nullptr); }

    static QStringList row(int number, const QString &title, const QString &duration = QStringLiteral("65"),
                           const QString &position = QStringLiteral("0"))
    {
        return {QStringLiteral("urn:uuid:%1").arg(number),
                title,
                title + QStringLiteral(".mp4"),
                duration,
                position,
                QStringLiteral("video/mp4"),
                QStringLiteral("file:///videos/%1.mp4").arg(number),
                QString::number(number)};
    }
    static QList<QStringList> rows(const QStringList &titles)
    {
        QList<QStringList> result;
        for (const QString &title : titles)
            result.append(row(int(result.size()) + 1, title));
        return result;
    }

    // Opens the page; the store answers with these videos.
    bool open(const QList<QStringList> &videos)
    {
        QList<QVariantList> table;
        for (const QStringList &video : videos)
            table.append(QVariantList(video.cbegin(), video.cend()));
        store.answerWith(table);
        page = std::make_unique<LocalVideosPage>();
        page->appear(&window, toolkit::Appearance::Immediate);
        window.showForProfile();
        if (!QTest::qWaitForWindowActive(&window))
            return false;
        return QTest::qWaitFor([this] { return widget()->viewState() != MyAllVideosWidget::Unknown; });
    }
    void close() { page.reset(); }

    // A key as the program gets it: through the page first, then to whatever has the focus.
    void key(const QString &text, Qt::Key key = Qt::Key_unknown)
    {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
        page->keyEvent(&press);
        QCoreApplication::sendEvent(&window, &press);
    }

    [[nodiscard]] MyAllVideosWidget *widget() const { return page->localVideosWidget(); }
    // Of the rows that are shown, from the top.
    [[nodiscard]] QStringList titles() const
    {
        QStringList result;
        for (int i = 0; i < widget()->proxy()->rowCount(); ++i)
            result.append(widget()->proxy()->index(i, VideoColumn::Title).data().toString());
        return result;
    }
    // Invalid: no such row is shown.
    [[nodiscard]] QModelIndex indexOf(const QString &title) const
    {
        return widget()->proxy()->index(int(titles().indexOf(title)), 0);
    }
    [[nodiscard]] FilterWidget *field() const { return widget()->filterWidget(); }
    [[nodiscard]] toolkit::TextEdit *edit() const { return field()->textEdit(); }

    FakeSparqlStore store;
    toolkit::Locale locale;
    toolkit::ApplicationWindow window;
    std::unique_ptr<LocalVideosPage> page;
};
