// SPDX-License-Identifier: GPL-3.0-or-later
#include "sparqlresult.h"

#include "loosetext.h"
#include "sparqllog.h"

#include <limits>

Q_LOGGING_CATEGORY(lcSparql, "kestrel.sparql", QtInfoMsg)

namespace {

int nextId()
{
    static int last = 0;
    last = last == std::numeric_limits<int>::max() ? 1 : last + 1;
    return last;
}

} // namespace

SparqlResult::SparqlResult(QObject *parent) : QObject(parent), m_id(nextId()) { }

SparqlResult::~SparqlResult() = default;

RowTable SparqlResult::takeTable(int columns)
{
    RowTable table(columns);
    bool fits = true;
    while (fits && next()) {
        for (int column = 0; column < columns; ++column) {
            const QString text = stringValue(column);
            const auto type = text.isNull() ? RowTable::Type::Unbound : RowTable::Type::Text;
            fits = table.append(type, toLooseUtf8(text)) && fits;
        }
    }
    return table;
}
