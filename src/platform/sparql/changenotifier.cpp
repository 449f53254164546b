// SPDX-License-Identifier: GPL-3.0-or-later
#include "changenotifier.h"

#include "storechanges.h"

namespace {

ChangeNotifier::Source &sourceInUse()
{
    static ChangeNotifier::Source source;
    return source;
}

} // namespace

ChangeNotifier::ChangeNotifier(const QString &classIri, QObject *parent)
    : QObject(parent),
      m_classIri(classIri)
{
    if (const Source &source = sourceInUse())
        source(this);
    else
        StoreChanges::attach(this);
}

ChangeNotifier::~ChangeNotifier() = default;

void ChangeNotifier::setSource(Source source)
{
    sourceInUse() = std::move(source);
}
