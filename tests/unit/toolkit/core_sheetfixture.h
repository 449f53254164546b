// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core_windowfixture.h"

#include "platform/toolkit/button.h"
#include "platform/toolkit/sheet.h"
#include "platform/toolkit/sheetpanel.h"

#include <QGraphicsScene>
#include <QMouseEvent>

// A content of buttons below each other, each 72 high.
class Rows : public toolkit::Widget
{
public:
    explicit Rows(int count)
    {
        for (int i = 0; i < count; ++i) {
            auto *row = new toolkit::Button(QStringLiteral("Row %1").arg(i), this);
            row->setStyleName(QStringLiteral("SheetRow"));
            buttons.append(row);
        }
        setMinimumHeight(72 * count);
        setPreferredHeight(72 * count);
    }
    QList<toolkit::Button *> buttons;

protected:
    void resizeEvent(QGraphicsSceneResizeEvent *) override
    {
        for (int i = 0; i < buttons.size(); ++i)
            buttons.at(i)->setGeometry(QRectF(8, 72 * i, size().width() - 16, 72));
    }
};

// A page in a desktop's window, and a slow finger over it.
class SheetFixture : protected WindowFixture
{
protected:
    void setUp()
    {
        WindowFixture::setUp();
        setReducedMotion(true);
        show(toolkit::ApplicationWindow::Profile::Desktop);
        m_page->events.clear();
    }
    void tearDown()
    {
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
        WindowFixture::tearDown();
    }
    Rows *open(toolkit::Sheet *sheet, int rows = 4)
    {
        auto *content = new Rows(rows);
        sheet->setTitle(QStringLiteral("Holiday.mp4"));
        sheet->setCentralWidget(content);
        sheet->appear(m_window.get());
        return content;
    }
    [[nodiscard]] static const toolkit::SheetPanel *sheetPanelOf(const toolkit::Sheet &sheet)
    {
        for (const QGraphicsItem *child : sheet.childItems()) {
            if (const auto *panel = dynamic_cast<const toolkit::SheetPanel *>(child))
                return panel;
        }
        return nullptr;
    }
    [[nodiscard]] static QRectF panelOf(const toolkit::Sheet &sheet)
    {
        const toolkit::SheetPanel *panel = sheetPanelOf(sheet);
        return panel != nullptr ? panel->geometry() : QRectF();
    }
    [[nodiscard]] QPoint viewPoint(const QPointF &scene) const
    {
        return m_window->viewportTransform().map(scene).toPoint();
    }
    void mouse(QEvent::Type type, const QPointF &scene)
    {
        const QPoint at = viewPoint(scene);
        const Qt::MouseButtons held
            = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(Qt::LeftButton);
        QMouseEvent event(type, at, m_window->viewport()->mapToGlobal(at),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, held, Qt::NoModifier);
        m_clock += 200; // a slow finger: what counts is how far it goes
        event.setTimestamp(m_clock);
        QCoreApplication::sendEvent(m_window->viewport(), &event);
    }
    void drag(const QPointF &from, const QPointF &way)
    {
        mouse(QEvent::MouseButtonPress, from);
        for (int step = 1; step <= 4; ++step)
            mouse(QEvent::MouseMove, from + way * step / 4);
        mouse(QEvent::MouseButtonRelease, from + way);
    }
    void tap(const QPointF &scene)
    {
        mouse(QEvent::MouseButtonPress, scene);
        mouse(QEvent::MouseButtonRelease, scene);
    }

    quint64 m_clock = 1000;
};
