// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/widget.h"

class StoreProgress;

// A thin line below the page's title while the store reads the video folders, as long as the share of the
// files that it has read.
class ScanProgressLine : public toolkit::Widget
{
    Q_OBJECT

public:
    explicit ScanProgressLine(QGraphicsItem *parent = nullptr);

    void follow(const StoreProgress *progress);
    void setProgress(bool scanning, uint seen, uint done);
    // 0 to 1.
    [[nodiscard]] qreal fraction() const { return m_fraction; }

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    qreal m_fraction = 0;
};
