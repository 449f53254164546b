// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/toolkit/applicationpage.h>

#include <QPointer>

class ExtensionFrame;
class QGraphicsWidget;

namespace toolkit {
class FocusSight;
}

// A page of an extension's own: its widget below the title, as wide as the page and scrolled when it is
// higher, with the colours and the font of the program. The widget stays the extension's; a page whose widget
// is gone is left.
class ExtensionPage : public toolkit::ApplicationPage
{
    Q_OBJECT

public:
    ExtensionPage(QGraphicsWidget *content, const QString &title);
    ~ExtensionPage() override;

protected:
    void createContent() override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void leaveWhenEmpty();

    QPointer<QGraphicsWidget> m_content;
    QPointer<ExtensionFrame> m_frame;
    toolkit::FocusSight *m_focusSight;
};
