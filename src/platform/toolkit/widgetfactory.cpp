// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgetfactory.h"

#include <QHash>

namespace toolkit {

namespace {

using Key = std::pair<QString, QString>; // catalogue, type

QHash<Key, WidgetFactory::Creator> &creators()
{
    static QHash<Key, WidgetFactory::Creator> known;
    return known;
}

} // namespace

void WidgetFactory::registerType(const QString &catalogue, const QString &typeName, Creator creator)
{
    creators().insert({catalogue, typeName}, std::move(creator));
}

Widget *WidgetFactory::create(const QString &catalogue, const QString &typeName)
{
    const Creator creator = creators().value({catalogue, typeName});
    return creator ? creator() : nullptr;
}

bool WidgetFactory::isRegistered(const QString &catalogue, const QString &typeName)
{
    return creators().contains({catalogue, typeName});
}

} // namespace toolkit
