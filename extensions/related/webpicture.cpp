// SPDX-License-Identifier: GPL-3.0-or-later
#include "webpicture.h"

#include <QBuffer>
#include <QImageReader>

namespace {

constexpr QSize largest(4000, 4000);
constexpr QSize shown(412, 232); // twice the size on a screen 480 wide

// Other formats are read by plug-ins that nobody expects here; some of them open files and addresses that are
// named in the picture.
bool isKnown(const QByteArray &format)
{
    return format == "jpeg" || format == "png";
}

} // namespace

QImage webPicture(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    const QByteArray format = QImageReader::imageFormat(&buffer);
    if (!isKnown(format))
        return {};
    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    const QSize size = reader.size();
    if (size.isEmpty() || size.width() > largest.width() || size.height() > largest.height())
        return {};
    if (size.width() > shown.width() && size.height() > shown.height())
        reader.setScaledSize(size.scaled(shown, Qt::KeepAspectRatioByExpanding));
    // Of one that is far too wide or too high the middle, which is all that is seen.
    const QImage image = reader.read();
    QRect middle(QPoint(), image.size().boundedTo(shown));
    middle.moveCenter(image.rect().center());
    return image.copy(middle);
}
