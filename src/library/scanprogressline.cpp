// SPDX-License-Identifier: GPL-3.0-or-later
#include "scanprogressline.h"

#include "data/storeprogress.h"
#include "platform/toolkit/painthelpers.h"

#include <QPainter>

using namespace Qt::Literals::StringLiterals;

ScanProgressLine::ScanProgressLine(QGraphicsItem *parent) : toolkit::Widget(parent)
{
    setStyleName(u"ScanProgressLine"_s);
    setAcceptedMouseButtons(Qt::NoButton);
    hide();
}

void ScanProgressLine::follow(const StoreProgress *progress)
{
    connect(progress, &StoreProgress::changed, this, &ScanProgressLine::setProgress);
    setProgress(progress->isScanning(), progress->seen(), progress->done());
}

void ScanProgressLine::setProgress(bool scanning, uint seen, uint done)
{
    m_fraction = seen == 0 ? 0 : qMin(1.0, qreal(done) / seen);
    setVisible(scanning && seen > 0);
    update();
}

void ScanProgressLine::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    painter->fillRect(toolkit::leadingPart(rect(), m_fraction, layoutDirection()),
                      style().color(u"accent"_s));
}
