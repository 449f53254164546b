// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "popup.h"

#include <memory>

namespace toolkit {

class SheetHeader;

// A sheet that rises from the lower edge over the page on top.
class Sheet : public Popup
{
    Q_OBJECT

public:
    // As high as its content needs, with the page dimmed above it; or the whole scene.
    enum class Extent { Content, Full };

    // A style name that ends in Inverted makes it light on dark in both schemes; the head may have its own
    // style name.
    explicit Sheet(Extent extent = Extent::Content);
    ~Sheet() override;

    void setTitle(const QString &title);
    [[nodiscard]] QString title() const;
    // Of the head: empty for none. They accept() and reject().
    void setPositiveAction(const QString &text);
    void setNegativeAction(const QString &text);
    void setPositiveActionEnabled(bool enabled);
    [[nodiscard]] SheetHeader *header() const;
    // The content; takes ownership and deletes the old one. A content that is higher than there is room for
    // can be panned.
    void setCentralWidget(Widget *widget);
    [[nodiscard]] Widget *centralWidget() const;

public Q_SLOTS:
    // As dismiss(), but with a result.
    void accept();
    void reject();

Q_SIGNALS:
    void accepted();
    void rejected(); // by its action, escape, a tap beside it or a swipe

protected:
    [[nodiscard]] QRectF keptFree() const override;
    // Rejects, unless a sheet of several steps goes back by one.
    void escape() override;
    void tappedBeside() override;
    [[nodiscard]] QRectF panelRect() const override;
    void arrange() override;
    void place() override;
    void setLeaving(bool leaving) override;
    void applyStyle() override;
    bool focusNextPrevChild(bool next) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace toolkit
