// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QGraphicsWidget>
#include <QPointer>

// Where an extension's widget stands: on the page that hosts extensions, or on a page of its own. It gives
// the widget the colours and the font of the program, takes no size from it that no page has, and lets go of
// it when it is deleted itself: the widget is the extension's.
class ExtensionFrame : public QGraphicsWidget
{
    Q_OBJECT

public:
    enum class Place { SharedPage, OwnPage };

    explicit ExtensionFrame(QGraphicsWidget *content, Place place = Place::SharedPage);
    ~ExtensionFrame() override;

    [[nodiscard]] Place place() const { return m_place; }
    // Null when the extension deleted it.
    [[nodiscard]] QGraphicsWidget *content() const { return m_content; }
    // The frame that a widget stands in, itself or deeper; null for none.
    [[nodiscard]] static const ExtensionFrame *around(const QGraphicsWidget *widget);

    // Higher is no page's content.
    static constexpr qreal HighestContent = 100'000; // logical pixels

Q_SIGNALS:
    void contentDeleted();

private:
    QPointer<QGraphicsWidget> m_content;
    Place m_place;
};
