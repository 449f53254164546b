// SPDX-License-Identifier: GPL-3.0-or-later
#include "sparqljsonparser.h"

#include "jsontext.h"
#include "resourceids.h"

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr size_t deepest = 64;
constexpr qsizetype mostColumns = 1024;
constexpr qsizetype replayedAtOnce = qsizetype(256) << 10;

bool isInteger(QByteArrayView text)
{
    const qsizetype sign = text.startsWith('-') || text.startsWith('+') ? 1 : 0;
    return text.size() > sign && std::all_of(text.begin() + sign, text.end(), json::isDigit);
}

RowTable::Type typeOfDatatype(QByteArrayView iri)
{
    static constexpr QByteArrayView schema = "http://www.w3.org/2001/XMLSchema#";
    static constexpr std::array<QByteArrayView, 13> integers = {"integer",
                                                                "int",
                                                                "long",
                                                                "short",
                                                                "byte",
                                                                "unsignedInt",
                                                                "unsignedLong",
                                                                "unsignedShort",
                                                                "unsignedByte",
                                                                "nonNegativeInteger",
                                                                "positiveInteger",
                                                                "nonPositiveInteger",
                                                                "negativeInteger"};
    if (!iri.startsWith(schema))
        return RowTable::Type::Text;
    const QByteArrayView name = iri.sliced(schema.size());
    if (std::find(integers.begin(), integers.end(), name) != integers.end())
        return RowTable::Type::Integer;
    if (name == "double" || name == "decimal" || name == "float")
        return RowTable::Type::Double;
    if (name == "dateTime" || name == "dateTimeStamp")
        return RowTable::Type::DateTime;
    return name == "boolean" ? RowTable::Type::Boolean : RowTable::Type::Text;
}

} // namespace

SparqlJsonParser::SparqlJsonParser(NumberedColumns numbered, RowTable begun)
    : m_numbered(std::move(numbered)),
      m_table(std::move(begun))
{
}

bool SparqlJsonParser::feed(QByteArrayView piece)
{
    const char *at = piece.begin();
    const char *end = piece.end();
    const char *deferredFrom = m_isDeferring ? at : nullptr;
    while (at < end && !isBroken()) {
        switch (m_lexer) {
        case Lexer::String:
            at = readString(at, end);
            break;
        case Lexer::Escape:
            at = readEscape(at);
            break;
        case Lexer::Unicode:
            at = readUnicode(at);
            break;
        case Lexer::Scalar:
            at = readScalar(at, end);
            break;
        case Lexer::Between: {
            const bool wasDeferring = m_isDeferring;
            const char sign = *at++;
            if (!json::isSpace(sign))
                readSign(sign);
            if (m_isDeferring && !wasDeferring)
                deferredFrom = at - 1;
            else if (wasDeferring && !m_isDeferring)
                m_deferred.append(deferredFrom, at - deferredFrom);
            break;
        }
        }
    }
    m_offset += at - piece.begin();
    if (isBroken()) {
        m_error = u"the answer is broken at byte %1: %2"_s.arg(m_offset).arg(m_error);
        m_lexer = Lexer::Between;
        m_expect = Expect::Nothing;
        return false;
    }
    if (m_isDeferring)
        m_deferred.append(deferredFrom, end - deferredFrom);
    if (m_deferred.size() > mostTextBytes)
        m_error = u"the answer is larger than this program takes"_s;
    return !isBroken();
}

SparqlJsonParser::End SparqlJsonParser::finish()
{
    if (isBroken())
        return End::Broken;
    if (m_replayed == 0 && m_expect != Expect::Nothing) {
        m_isCutOff = true;
        m_error = u"the answer was cut off after %1 bytes"_s.arg(m_offset);
        return End::Broken;
    }
    if (!m_deferred.isEmpty() && m_hasVariables) {
        if (m_replayed == 0) {
            m_levels.assign(1, {Context::Top, false});
            m_member = Member::Results;
            m_expect = Expect::Value;
        }
        const qsizetype size = std::min(replayedAtOnce, m_deferred.size() - m_replayed);
        if (!feed(QByteArrayView(m_deferred).sliced(m_replayed, size)))
            return End::Broken;
        m_replayed += size;
        if (m_replayed < m_deferred.size())
            return End::MoreToDo;
        m_deferred.clear();
    }
    if (m_hasAnswer)
        return End::Complete;
    m_error = m_hasVariables ? u"the answer has no rows' member"_s : u"the answer names no columns"_s;
    return End::Broken;
}

void SparqlJsonParser::fail(const QString &what)
{
    if (!isBroken())
        m_error = what;
}

// The lexer

const char *SparqlJsonParser::readString(const char *at, const char *end)
{
    const char *first = at;
    while (at < end && *at != '"' && *at != '\\')
        ++at;
    const QByteArrayView run(first, at - first);
    if (!run.isEmpty())
        flushHalfPair();
    if (at < end && *at == '"') {
        m_lexer = Lexer::Between;
        flushHalfPair();
        if (m_text.isEmpty()) {
            string(run); // the common case: nothing is copied
        } else {
            keep(run);
            string(m_text);
        }
        return at + 1;
    }
    keep(run);
    if (at < end) {
        m_lexer = Lexer::Escape;
        ++at;
    }
    return at;
}

const char *SparqlJsonParser::readEscape(const char *at)
{
    if (*at == 'u') {
        m_codeUnit = 0;
        m_digits = 0;
        m_lexer = Lexer::Unicode;
        return at + 1;
    }
    flushHalfPair();
    const char c = json::unescaped(*at);
    if (c == '\0')
        fail(u"an escape that JSON does not have"_s);
    keep(QByteArrayView(&c, 1));
    m_lexer = Lexer::String;
    return at + 1;
}

const char *SparqlJsonParser::readUnicode(const char *at)
{
    const int digit = json::hexDigit(*at);
    if (digit < 0)
        fail(u"a code point that is no hexadecimal number"_s);
    m_codeUnit = (m_codeUnit << 4U) | uint(digit);
    if (++m_digits == 4) {
        m_lexer = Lexer::String;
        addCodeUnit(char16_t(m_codeUnit));
    }
    return at + 1;
}

void SparqlJsonParser::addCodeUnit(char16_t unit)
{
    if (QChar::isLowSurrogate(unit) && m_highSurrogate != 0) {
        json::appendUtf8(m_text, QChar::surrogateToUcs4(m_highSurrogate, unit));
        m_highSurrogate = 0;
        return;
    }
    flushHalfPair();
    if (QChar::isHighSurrogate(unit))
        m_highSurrogate = unit;
    else
        json::appendUtf8(m_text, QChar::isLowSurrogate(unit) ? char16_t(QChar::ReplacementCharacter) : unit);
}

void SparqlJsonParser::flushHalfPair()
{
    if (m_highSurrogate != 0)
        json::appendUtf8(m_text, QChar::ReplacementCharacter);
    m_highSurrogate = 0;
}

void SparqlJsonParser::keep(QByteArrayView text)
{
    if (m_text.size() + text.size() > mostTextBytes)
        fail(u"a text that is too large"_s);
    else
        m_text.append(text);
}

const char *SparqlJsonParser::readScalar(const char *at, const char *end)
{
    static constexpr QByteArrayView delimiters = ",]}:[{\"";
    const char *first = at;
    while (at < end && !json::isSpace(*at) && !delimiters.contains(*at))
        ++at;
    keep(QByteArrayView(first, at - first));
    if (m_text.size() > 1000)
        fail(u"a number of more than 1,000 digits"_s);
    if (at < end) {
        m_lexer = Lexer::Between;
        scalar();
    }
    return at;
}

void SparqlJsonParser::readSign(char sign)
{
    // The document itself is an object.
    const bool expectsValue
        = !m_levels.empty() && (m_expect == Expect::Value || m_expect == Expect::ValueOrEnd);
    const bool expectsKey = m_expect == Expect::Key || m_expect == Expect::KeyOrEnd;
    switch (sign) {
    case '{':
    case '[':
        open(sign == '[');
        return;
    case '}':
    case ']':
        close(sign == ']');
        return;
    case ':':
        if (m_expect != Expect::Colon)
            fail(u"a colon out of place"_s);
        m_expect = Expect::Value;
        return;
    case ',':
        comma();
        return;
    case '"':
        if (!expectsValue && !expectsKey)
            fail(u"a string out of place"_s);
        m_text.resize(0);
        m_lexer = Lexer::String;
        return;
    default:
        if (!expectsValue)
            fail(u"a character out of place"_s);
        m_text.resize(0);
        m_text.append(sign);
        if (!isBroken())
            m_lexer = Lexer::Scalar;
    }
}

// The grammar

SparqlJsonParser::Context SparqlJsonParser::contextOfValue(bool isArray) const
{
    if (m_levels.empty())
        return isArray ? Context::Skipped : Context::Top;
    const Level &level = m_levels.back();
    switch (level.context) {
    case Context::Top:
        if (m_member == Member::Head && !isArray)
            return Context::Head;
        return m_member == Member::Results && !isArray && m_hasVariables ? Context::Results
                                                                         : Context::Skipped;
    case Context::Head:
        return m_member == Member::Variables && isArray ? Context::Variables : Context::Skipped;
    case Context::Results:
        return m_member == Member::Rows && isArray ? Context::Rows : Context::Skipped;
    case Context::Rows:
        return isArray ? Context::Skipped : Context::Row;
    case Context::Row:
        return m_member == Member::Cell && !isArray ? Context::Cell : Context::Skipped;
    case Context::Variables:
    case Context::Cell:
    case Context::Skipped:
        break;
    }
    return Context::Skipped;
}

// What stands here is something that is read, and it is of the wrong shape.
bool SparqlJsonParser::needsOther(Context outer) const
{
    if (outer == Context::Row || outer == Context::Cell)
        return m_member != Member::Unknown;
    return outer == Context::Rows || outer == Context::Variables;
}

void SparqlJsonParser::open(bool isArray)
{
    if (m_expect != Expect::Value && m_expect != Expect::ValueOrEnd) {
        fail(u"a bracket out of place"_s);
        return;
    }
    if (m_levels.size() == deepest) {
        fail(u"it is nested too deeply"_s);
        return;
    }
    const Context context = contextOfValue(isArray);
    const Context outer = m_levels.empty() ? Context::Top : m_levels.back().context;
    if (m_levels.empty() && isArray) {
        fail(u"it is no object"_s);
    } else if (context == Context::Skipped) {
        if (needsOther(outer))
            fail(u"brackets in place of a value"_s);
        if (m_levels.size() == 1 && m_member == Member::Results && !isArray && !m_hasVariables)
            m_isDeferring = true;
    } else if (context == Context::Row) {
        m_rowText.resize(0);
        std::fill(m_row.begin(), m_row.end(), Cell());
        m_lastColumn = -1;
    } else if (context == Context::Cell) {
        m_kind = Kind::Unknown;
        m_hasValue = false;
        m_datatype.resize(0);
    }
    m_levels.push_back({context, isArray});
    m_expect = isArray ? Expect::ValueOrEnd : Expect::KeyOrEnd;
}

void SparqlJsonParser::close(bool isArray)
{
    const bool mayEnd
        = m_expect == Expect::CommaOrEnd || m_expect == (isArray ? Expect::ValueOrEnd : Expect::KeyOrEnd);
    if (!mayEnd || m_levels.empty() || m_levels.back().isArray != isArray) {
        fail(u"a closing bracket out of place"_s);
        return;
    }
    const Context context = m_levels.back().context;
    m_levels.pop_back();
    if (m_levels.size() == 1)
        m_isDeferring = false;
    closed(context);
    valueDone();
}

void SparqlJsonParser::closed(Context context)
{
    switch (context) {
    case Context::Variables:
        variablesKnown();
        break;
    case Context::Cell:
        cellDone();
        break;
    case Context::Row:
        rowDone();
        break;
    case Context::Rows:
        m_hasAnswer = true;
        break;
    case Context::Top:
    case Context::Head:
    case Context::Results:
    case Context::Skipped:
        break;
    }
}

void SparqlJsonParser::valueDone()
{
    m_expect = m_levels.empty() ? Expect::Nothing : Expect::CommaOrEnd;
}

void SparqlJsonParser::comma()
{
    if (m_expect != Expect::CommaOrEnd) {
        fail(u"a comma out of place"_s);
        return;
    }
    m_expect = m_levels.back().isArray ? Expect::Value : Expect::Key;
}

void SparqlJsonParser::string(QByteArrayView text)
{
    if (m_expect == Expect::Key || m_expect == Expect::KeyOrEnd) {
        key(text);
        m_expect = Expect::Colon;
    } else {
        value(text);
        valueDone();
    }
}

void SparqlJsonParser::scalar()
{
    const bool isTruth = m_text == "true" || m_text == "false";
    if (!isTruth && m_text != "null" && !json::isNumber(m_text)) {
        fail(u"a word that JSON does not have"_s);
        return;
    }
    const Context context = m_levels.back().context;
    if (context == Context::Top && m_member == Member::Boolean && isTruth)
        answerTruth(m_text == "true");
    else if (needsOther(context))
        fail(u"a number or word in place of a value"_s);
    valueDone();
}

void SparqlJsonParser::key(QByteArrayView name)
{
    m_member = Member::Unknown;
    switch (m_levels.back().context) {
    case Context::Top:
        if (name == "head")
            m_member = Member::Head;
        else if (name == "results")
            m_member = Member::Results;
        else if (name == "boolean")
            m_member = Member::Boolean;
        break;
    case Context::Head:
        m_member = name == "vars" ? Member::Variables : Member::Unknown;
        break;
    case Context::Results:
        m_member = name == "bindings" ? Member::Rows : Member::Unknown;
        break;
    case Context::Row:
        m_column = columnOf(name);
        m_member = m_column >= 0 ? Member::Cell : Member::Unknown;
        break;
    case Context::Cell:
        if (name == "value")
            m_member = Member::Value;
        else if (name == "type")
            m_member = Member::Type;
        else if (name == "datatype")
            m_member = Member::Datatype;
        break;
    case Context::Variables:
    case Context::Rows:
    case Context::Skipped:
        break;
    }
}

// Servers name the columns of each row in the order of the head.
int SparqlJsonParser::columnOf(QByteArrayView name)
{
    const size_t next = size_t(m_lastColumn + 1);
    if (next < size_t(m_variables.size()) && m_variables[qsizetype(next)] == name) {
        m_lastColumn = int(next);
    } else {
        const auto found = std::find(m_variables.cbegin(), m_variables.cend(), name);
        if (found == m_variables.cend())
            return -1;
        m_lastColumn = int(found - m_variables.cbegin());
    }
    return m_lastColumn;
}

void SparqlJsonParser::value(QByteArrayView text)
{
    const Context context = m_levels.back().context;
    if (context == Context::Variables) {
        if (m_variables.size() == mostColumns)
            fail(u"more columns than this program takes"_s);
        m_variables.append(text.toByteArray());
    } else if (context == Context::Cell) {
        if (m_member == Member::Value) {
            m_value.resize(0);
            m_value.append(text);
            m_hasValue = true;
        } else if (m_member == Member::Datatype) {
            m_datatype.resize(0);
            m_datatype.append(text);
        } else if (m_member == Member::Type) {
            m_kind = text == "uri" ? Kind::Iri : Kind::Literal;
        }
    } else if (context == Context::Rows || (context == Context::Row && m_member == Member::Cell)) {
        fail(u"a string in place of a value"_s);
    }
}

// What was read

void SparqlJsonParser::variablesKnown()
{
    if (m_hasVariables) {
        fail(u"its columns are named twice"_s);
        return;
    }
    m_hasVariables = true;
    const qsizetype columns = m_variables.size();
    if (m_table.columns() == 0)
        m_table = RowTable(int(columns));
    else if (m_table.columns() != columns)
        fail(u"it goes on with other columns"_s);
    m_row.resize(size_t(columns));
    m_isNumbered.assign(size_t(columns), false);
    for (const int column : std::as_const(m_numbered.columns)) {
        if (column >= 0 && column < columns)
            m_isNumbered[size_t(column)] = true;
    }
}

RowTable::Type SparqlJsonParser::typeOfCell() const
{
    if (m_kind != Kind::Literal || m_datatype.isEmpty())
        return RowTable::Type::Text;
    const RowTable::Type type = typeOfDatatype(m_datatype);
    return type == RowTable::Type::Integer && !isInteger(m_value) ? RowTable::Type::Text : type;
}

void SparqlJsonParser::cellDone()
{
    if (!m_hasValue || m_kind == Kind::Unknown) {
        fail(u"a value without its text or its type"_s);
        return;
    }
    Cell &cell = m_row[size_t(m_column)];
    cell.begin = m_rowText.size();
    cell.type = typeOfCell();
    if (m_isNumbered[size_t(m_column)]) {
        const int id = m_kind == Kind::Iri ? m_numbered.ids->idOf(QByteArrayView(m_value)) : 0;
        cell.type = id > 0 ? RowTable::Type::Integer : RowTable::Type::Unbound;
        m_rowText.append(id > 0 ? QByteArray::number(id) : QByteArray());
    } else if (cell.type == RowTable::Type::Boolean) {
        m_rowText.append(m_value == "true" || m_value == "1" ? "true" : "false");
    } else {
        m_rowText.append(m_value);
    }
    cell.size = m_rowText.size() - cell.begin;
}

void SparqlJsonParser::rowDone()
{
    if (m_table.textBytes() + m_rowText.size() > mostTextBytes) {
        fail(u"it is larger than this program takes"_s);
        return;
    }
    for (const Cell &cell : m_row) {
        if (!m_table.append(cell.type, QByteArrayView(m_rowText).sliced(cell.begin, cell.size)))
            fail(u"it is larger than this program takes"_s);
    }
}

void SparqlJsonParser::answerTruth(bool truth)
{
    m_table = RowTable(1);
    m_hasAnswer = m_table.append(RowTable::Type::Boolean, truth ? "true" : "false");
}
