// SPDX-License-Identifier: GPL-3.0-or-later
#include "addresstext.h"

#include <QRegularExpression>

using namespace Qt::Literals::StringLiterals;

// Up to the last `@` before the path: a password may have one of its own.
QString withoutCredentials(const QString &text)
{
    static const QRegularExpression credentials(uR"((\b[a-zA-Z][a-zA-Z0-9+.-]*:/{1,2})[^/?#\s]*@)"_s);
    return QString(text).replace(credentials, u"\\1"_s);
}
