// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/sparql/rowtable.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <vector>

class ResourceIds;

// Columns that hold numbers of `ids` in place of their IRIs.
struct NumberedColumns
{
    QList<int> columns;
    ResourceIds *ids = nullptr; // needed when there are such columns
};

// Reads "SPARQL 1.1 Query Results JSON" as it comes in, in pieces of any size, into a packed table. What was
// read is not kept a second time, except when the rows come before the names of their columns.
//
// Strict about the shape: an answer that is cut off or not well-formed is an error. Lenient in three things
// that servers do: members nobody knows are skipped, a control character may stand plainly in a string, and
// half a surrogate pair becomes U+FFFD. The answer to ASK is one row with one truth value.
class SparqlJsonParser
{
public:
    // `begun`: rows of an answer that goes on in this document; empty, or with as many columns.
    explicit SparqlJsonParser(NumberedColumns numbered = {}, RowTable begun = {});

    // A table never gets more text than that: a server does not fill the memory.
    static constexpr qsizetype mostTextBytes = qsizetype(1) << 30;

    // The next piece. False when the document is broken; then, and from then on, error() says why.
    [[nodiscard]] bool feed(QByteArrayView piece);

    enum class End { Complete, MoreToDo, Broken };
    // After the last piece, again as long as there is more to do: each call does some milliseconds' work.
    [[nodiscard]] End finish();

    [[nodiscard]] QString error() const { return m_error; } // one line, null when all is well
    // The document had not come to its end.
    [[nodiscard]] bool isCutOff() const { return m_isCutOff; }
    [[nodiscard]] QList<QByteArray> variables() const { return m_variables; }
    [[nodiscard]] RowTable takeTable() { return std::move(m_table); }

private:
    enum class Lexer : quint8 { Between, String, Escape, Unicode, Scalar };
    enum class Expect : quint8 { Value, ValueOrEnd, Key, KeyOrEnd, Colon, CommaOrEnd, Nothing };
    enum class Context : quint8 { Top, Head, Variables, Results, Rows, Row, Cell, Skipped };
    enum class Member : quint8 {
        Unknown,
        Head,
        Results,
        Boolean,
        Variables,
        Rows,
        Cell,
        Type,
        Value,
        Datatype
    };
    enum class Kind : quint8 { Unknown, Iri, Literal };

    struct Level
    {
        Context context = Context::Skipped;
        bool isArray = false;
    };
    struct Cell
    {
        RowTable::Type type = RowTable::Type::Unbound;
        qsizetype begin = 0; // in m_rowText
        qsizetype size = 0;
    };

    const char *readString(const char *at, const char *end);
    const char *readEscape(const char *at);
    const char *readUnicode(const char *at);
    const char *readScalar(const char *at, const char *end);
    void readSign(char sign);
    void addCodeUnit(char16_t unit);
    void flushHalfPair();
    void keep(QByteArrayView text);

    void open(bool isArray);
    void close(bool isArray);
    void closed(Context context);
    void comma();
    void string(QByteArrayView text);
    void scalar();
    void key(QByteArrayView name);
    void value(QByteArrayView text);
    void valueDone();
    [[nodiscard]] Context contextOfValue(bool isArray) const;
    [[nodiscard]] bool needsOther(Context outer) const;
    [[nodiscard]] int columnOf(QByteArrayView name);

    void variablesKnown();
    void cellDone();
    void rowDone();
    [[nodiscard]] RowTable::Type typeOfCell() const;
    void answerTruth(bool truth);
    void fail(const QString &what);
    [[nodiscard]] bool isBroken() const { return !m_error.isNull(); }

    NumberedColumns m_numbered;
    std::vector<bool> m_isNumbered; // by column
    RowTable m_table;
    QList<QByteArray> m_variables;
    bool m_hasVariables = false;
    bool m_hasAnswer = false;
    bool m_isCutOff = false;
    QString m_error;
    qint64 m_offset = 0;

    Lexer m_lexer = Lexer::Between;
    Expect m_expect = Expect::Value;
    std::vector<Level> m_levels;
    Member m_member = Member::Unknown; // of the key last read
    QByteArray m_text; // of the string or scalar being read
    char16_t m_highSurrogate = 0;
    uint m_codeUnit = 0;
    int m_digits = 0;

    Kind m_kind = Kind::Unknown;
    QByteArray m_datatype;
    QByteArray m_value;
    bool m_hasValue = false;
    int m_column = -1;
    int m_lastColumn = -1;
    std::vector<Cell> m_row;
    QByteArray m_rowText;

    QByteArray m_deferred; // the value of "results", when "head" comes later
    bool m_isDeferring = false;
    qsizetype m_replayed = 0;
};
