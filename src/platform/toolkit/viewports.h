// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QOpenGLWidget>
#include <QString>

namespace toolkit {

// What paints the window: OpenGL where a graphics processor does it, else the processor, which is quicker
// than a graphics processor that is only played by it.
struct ViewportChoice
{
    bool openGl = false;
    QString reason; // for the log: the renderer, or why not
};

// Looked at once, when the window is made. KESTREL_VIEWPORT=opengl takes also what is played by the
// processor, KESTREL_VIEWPORT=raster takes none.
[[nodiscard]] ViewportChoice chooseViewport();

// For every context from now on; before the window is shown.
void askForResetNotification();

// None is current after it, also not one that was lost.
void forgetLostContext();

// The names by which libraries call a graphics processor that they only play.
[[nodiscard]] bool isSoftwareRenderer(const QString &renderer);

// A viewport painted by OpenGL. Whoever draws in it and finds that it can no longer says so here.
class GlViewport : public QOpenGLWidget
{
    Q_OBJECT

public:
    explicit GlViewport(QWidget *parent = nullptr);
    // False: not worth painting with.
    [[nodiscard]] bool isAlive() const;
    // True: the context obeys, and is current; else it is given up. Not while something is painted.
    [[nodiscard]] bool obeys();
    // True: the context is current, also after it was given up. Not while something is painted.
    [[nodiscard]] bool takeContext();
    // Told once, through the event loop: the caller may be painting. Until whoever hears it enables the
    // updates of the window again, nothing more is painted.
    void giveUp(const QString &reason);

Q_SIGNALS:
    void lost(QString reason);

protected:
    bool event(QEvent *event) override;

private:
    bool m_worked = false;
    bool m_givenUp = false;
};

} // namespace toolkit
