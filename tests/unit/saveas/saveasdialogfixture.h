// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/saveas/copyprogress.h"
#include "platform/saveas/saveascontent.h"
#include "platform/saveas/saveasdialog.h"
#include "platform/toolkit/applicationpage.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/banner.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/querydialog.h"
#include "platform/toolkit/scenemanager.h"
#include "platform/toolkit/sheetheader.h"
#include "platform/toolkit/textedit.h"
#include "platform/toolkit/theme.h"
#include "support/largefile.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QGraphicsScene>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using toolkit::ApplicationPage;
using toolkit::ApplicationWindow;
using toolkit::QueryDialog;

// The sheet in a window of its own, with a file to copy and an empty folder to copy it to.
class SaveAsDialogFixture : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_catalog.load(u":/translations/video_en.qm"_s));
        QVERIFY(QCoreApplication::installTranslator(&m_catalog));
        toolkit::Theme::instance()->setReducedMotion(true);
    }

    void init()
    {
        QLocale::setDefault(QLocale(QLocale::English));
        m_root = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir(m_root->path()).mkdir(u"Videos"_s));
        QVERIFY(make(u"clip.final.mp4"_s));
        m_window = std::make_unique<ApplicationWindow>();
        m_window->setProfile(ApplicationWindow::Profile::Desktop);
        m_window->showForProfile();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_page = std::make_unique<ApplicationPage>();
        m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
        m_dialog = std::make_unique<SaveAsDialog>();
        m_dialog->setSourcePath(m_root->filePath(u"clip.final.mp4"_s));
        m_dialog->setDefaultFileName(u"clip.final"_s);
        m_dialog->setDefaultExtension(u"mp4"_s);
        m_dialog->setDestinationPath(m_root->filePath(u"Videos"_s));
    }

    void cleanup()
    {
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
        QLocale::setDefault(QLocale(QLocale::English));
        m_dialog.reset();
        m_page.reset();
        m_window.reset();
    }

protected:
    [[nodiscard]] QString text(toolkit::Label *label) const
    {
        return label->isVisible() ? label->text() : QString();
    }
    [[nodiscard]] SaveAsContent *content() const { return m_dialog->content(); }
    [[nodiscard]] toolkit::Button *saveButton() const { return m_dialog->header()->positiveButton(); }
    [[nodiscard]] toolkit::Button *cancelButton() const { return m_dialog->header()->negativeButton(); }
    void key(Qt::Key key) { QTest::keyClick(m_window.get(), key); }
    void type(const QString &name) { content()->field()->setText(name); }
    [[nodiscard]] bool make(const QString &name, const QByteArray &text = "film") const
    {
        QFile file(m_root->filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
    }
    [[nodiscard]] QByteArray read(const QString &name) const
    {
        QFile file(m_root->filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
    }
    [[nodiscard]] QStringList saved() const
    {
        return QDir(m_root->filePath(u"Videos"_s))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    void makeLarge()
    {
        m_large = std::make_unique<LargeFile>();
        m_dialog->setSourcePath(m_large->path());
    }
    void open() { m_dialog->appear(m_window.get()); }
    [[nodiscard]] bool isAsking() const
    {
        return m_dialog->question() != nullptr && m_dialog->question()->isOpen();
    }
    [[nodiscard]] QStringList banners() const
    {
        QStringList texts;
        for (QGraphicsItem *item : m_window->scene()->items()) {
            if (const auto *banner = qobject_cast<toolkit::Banner *>(item->toGraphicsObject()))
                texts.append(banner->title());
        }
        return texts;
    }

    QTranslator m_catalog;
    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<LargeFile> m_large;
    std::unique_ptr<ApplicationWindow> m_window;
    std::unique_ptr<ApplicationPage> m_page;
    std::unique_ptr<SaveAsDialog> m_dialog;
};
