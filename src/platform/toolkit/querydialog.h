// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "popup.h"

#include <memory>

namespace toolkit {

class Button;
class Label;

// A question over the page on top: a title, a text and two buttons. It ends in accepted() or rejected(), then
// finished(), also when its window goes: whoever asked gets an answer, unless he dismisses it himself.
class QueryDialog : public Popup
{
    Q_OBJECT

public:
    enum StandardButton { NoButton = 0, Yes = 1, No = 2 };
    Q_DECLARE_FLAGS(StandardButtons, StandardButton)
    enum Result { Rejected = 0, Accepted = 1 };

    explicit QueryDialog(StandardButtons buttons = StandardButtons(Yes | No));
    ~QueryDialog() override;

    void setTitle(const QString &title); // plain
    [[nodiscard]] QString title() const;
    void setText(const QString &text); // rich; panned when it is higher than there is room for
    [[nodiscard]] QString text() const;
    [[nodiscard]] Label *textLabel() const;
    [[nodiscard]] QString accessibleName() const override { return title(); }
    [[nodiscard]] Button *button(StandardButton which) const; // null when it has none such
    // Yes takes something away for good: it has the colour of danger, and Return says no unless the person
    // went to Yes.
    void setDestructive(bool destructive);

    // Nothing without a window.
    void appear(ApplicationWindow *window);

public Q_SLOTS:
    void accept();
    void reject();

Q_SIGNALS:
    void accepted();
    void rejected(); // by its button, escape, a tap beside it
    void finished(int result);

protected:
    void escape() override;
    void abandoned() override;
    [[nodiscard]] QRectF panelRect() const override;
    void arrange() override;
    void place() override;
    [[nodiscard]] int motionMilliseconds() const override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void answer(Result result);
    void translate();
    [[nodiscard]] Button *defaultButton() const;
    qreal arrangeButtons(qreal width, bool measureOnly, qreal top);

    class Private;
    std::unique_ptr<Private> d;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(QueryDialog::StandardButtons)

} // namespace toolkit
