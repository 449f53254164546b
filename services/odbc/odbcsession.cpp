// SPDX-License-Identifier: GPL-3.0-or-later
#include "odbcsession.h"

#include "widetext.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include <unistd.h>

using namespace OdbcProtocol;

namespace {

constexpr std::size_t s_bufferBytes = 64 * 1024;

// What this server's driver says of a single cell, beyond ODBC: the type of the value itself, for the columns
// of a SPARQL answer hold any. Known as soon as the row is there.
constexpr SQLSMALLINT s_valueTypeField = 1057;
enum ValueType : SQLINTEGER {
    ShortInteger = 188,
    LongInteger = 189,
    SingleFloat = 190,
    DoubleFloat = 191,
    DateTime = 211,
    Decimal = 219,
    WideText = 225,
    LongWideText = 226,
    LongLongInteger = 247,
};

CellType cellTypeOf(SQLINTEGER valueType, std::string_view text)
{
    switch (valueType) {
    case ShortInteger:
    case LongInteger:
    case LongLongInteger:
        return CellType::Integer;
    case Decimal: // also what is too long for the others
        return text.find('.') == std::string_view::npos ? CellType::Integer : CellType::Double;
    case SingleFloat:
    case DoubleFloat:
        return CellType::Double;
    case DateTime:
        return CellType::DateTime;
    default:
        return CellType::Text;
    }
}

std::string packagedDriver()
{
    for (const char *path :
         {"/usr/lib/" KESTREL_LIBRARY_ARCHITECTURE "/odbc/virtodbc_r.so", "/usr/lib64/virtodbc_r.so",
          "/usr/lib/virtodbc_r.so", "/usr/lib/odbc/virtodbc_r.so", "/usr/local/lib/virtodbc_r.so"}) {
        if (access(path, R_OK) == 0)
            return path;
    }
    return {};
}

bool takeString(std::string_view &bytes, std::string &text)
{
    std::uint32_t length = 0;
    if (bytes.size() < sizeof length)
        return false;
    std::memcpy(&length, bytes.data(), sizeof length);
    bytes.remove_prefix(sizeof length);
    if (bytes.size() < length)
        return false;
    text = bytes.substr(0, length);
    bytes.remove_prefix(length);
    return true;
}

// The driver takes everything up to the next semicolon as the value, braces and quotes included.
bool isConnectionValue(const std::string &text)
{
    return text.find(';') == std::string::npos && text.find('\0') == std::string::npos;
}

SQLCHAR *characters(const std::string &text)
{
    return reinterpret_cast<SQLCHAR *>(const_cast<char *>(text.data()));
}

void replaceAll(std::string &text, const std::string &what, const std::string &by)
{
    if (what.empty())
        return;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size()))
        text.replace(at, what.size(), by);
}

class Statement
{
public:
    explicit Statement(SQLHDBC connection)
    {
        SQLAllocHandle(SQL_HANDLE_STMT, connection, &m_handle);
        // Braces are SPARQL's here, and not the escapes of ODBC.
        SQLSetStmtAttr(m_handle, SQL_ATTR_NOSCAN, reinterpret_cast<SQLPOINTER>(SQL_NOSCAN_ON), 0);
    }
    ~Statement() { SQLFreeHandle(SQL_HANDLE_STMT, m_handle); }
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    [[nodiscard]] SQLHSTMT handle() const { return m_handle; }
    [[nodiscard]] bool execute(const std::string &sql) const
    {
        const SQLRETURN executed = SQLExecDirect(m_handle, characters(sql), SQLINTEGER(sql.size()));
        return SQL_SUCCEEDED(executed) || executed == SQL_NO_DATA;
    }

private:
    SQLHSTMT m_handle = SQL_NULL_HSTMT;
};

bool isLoss(const std::string &state)
{
    return state.starts_with("08") || state == "S2801";
}

// What there was so far came, and it is not all.
bool isTimeUp(const std::string &state)
{
    return state == "S1TAT";
}

// Literals come in boxes of the server's own, whose content its driver never frees: a million titles would
// stay in memory. The server takes them out when it is asked to.
std::string withoutBoxes(const std::string &query, SQLHSTMT prepared)
{
    SQLSMALLINT columns = 0;
    SQLNumResultCols(prepared, &columns);
    std::string list;
    for (SQLSMALLINT column = 1; column <= columns; ++column) {
        std::array<SQLCHAR, 512> buffer = {};
        SQLSMALLINT length = 0;
        SQLSMALLINT ignored = 0;
        SQLULEN size = 0;
        const SQLRETURN described
            = SQLDescribeCol(prepared, SQLUSMALLINT(column), buffer.data(), SQLSMALLINT(buffer.size()),
                             &length, &ignored, &size, &ignored, &ignored);
        const std::string name(reinterpret_cast<const char *>(buffer.data()));
        if (described != SQL_SUCCESS || name.empty() || name.find('"') != std::string::npos)
            return query;
        list += (list.empty() ? "" : ", ") + ("rdf_box_data(x.\"" + name + "\")");
    }
    return list.empty() ? query : "SELECT " + list + " FROM (" + query + ") x";
}

} // namespace

bool OdbcLogin::read(std::string_view bytes)
{
    if (bytes.size() < sizeof seconds)
        return false;
    std::memcpy(&seconds, bytes.data(), sizeof seconds);
    bytes.remove_prefix(sizeof seconds);
    return takeString(bytes, driver) && takeString(bytes, server) && takeString(bytes, user)
        && takeString(bytes, password) && bytes.find_first_not_of('\0') == std::string_view::npos;
}

OdbcSession::OdbcSession(AnswerWriter &answers, const std::atomic<bool> &cancelled)
    : m_answers(answers),
      m_cancelled(cancelled),
      m_buffer(s_bufferBytes)
{
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &m_environment);
    SQLSetEnvAttr(m_environment, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
}

OdbcSession::~OdbcSession()
{
    disconnect();
    SQLFreeHandle(SQL_HANDLE_ENV, m_environment);
}

void OdbcSession::setLogin(OdbcLogin login)
{
    disconnect();
    m_login = std::move(login);
    if (m_login.driver.empty())
        m_login.driver = packagedDriver();
}

bool OdbcSession::connect()
{
    if (m_login.driver.empty()) {
        m_answers.failed(
            Failure::NotReached,
            "there is no ODBC driver for Virtuoso servers (virtodbc_r.so, package libvirtodbc0)");
        return false;
    }
    for (const std::string *value : {&m_login.driver, &m_login.server, &m_login.user, &m_login.password}) {
        if (!isConnectionValue(*value)) {
            m_answers.failed(Failure::Refused, "the ODBC driver takes no name or password with a semicolon");
            return false;
        }
    }
    SQLAllocHandle(SQL_HANDLE_DBC, m_environment, &m_connection);
    SQLSetConnectAttr(m_connection, SQL_ATTR_LOGIN_TIMEOUT,
                      reinterpret_cast<SQLPOINTER>(std::uintptr_t(m_login.seconds)), 0);
    std::string how = "DRIVER=" + m_login.driver + ";HOST=" + m_login.server + ";UID=" + m_login.user
        + ";PWD=" + m_login.password;
    const SQLRETURN opened = SQLDriverConnect(m_connection, nullptr, characters(how), SQLSMALLINT(how.size()),
                                              nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    explicit_bzero(how.data(), how.size());
    if (SQL_SUCCEEDED(opened))
        return true;
    const Fault fault = faultOf(SQL_HANDLE_DBC, m_connection);
    SQLFreeHandle(SQL_HANDLE_DBC, m_connection);
    m_connection = SQL_NULL_HDBC;
    m_answers.failed(fault.state == "28000" ? Failure::Refused : Failure::NotReached, fault.text);
    return false;
}

void OdbcSession::disconnect()
{
    if (m_connection == SQL_NULL_HDBC)
        return;
    SQLDisconnect(m_connection);
    SQLFreeHandle(SQL_HANDLE_DBC, m_connection);
    m_connection = SQL_NULL_HDBC;
}

// The server ends by itself what takes longer than anybody waits for a row of it. Nothing else does: it does
// not always look whether somebody is still there, and its driver stands no SQLCancel() from another thread.
// An update is never stopped half-way.
//
// Also finds out whether the connection still stands. One that broke while nobody used it shows that only
// when it is used. An update must not be what finds out: nobody could say whether it was done.
bool OdbcSession::limitTime(bool isUpdate)
{
    const std::uint64_t ms = isUpdate ? 0 : std::uint64_t(m_login.seconds) * 1000;
    const Statement statement(m_connection);
    return statement.execute("set result_timeout = " + std::to_string(ms))
        || !isLoss(faultOf(SQL_HANDLE_STMT, statement.handle()).state);
}

OdbcSession::Fault OdbcSession::faultOf(SQLSMALLINT type, SQLHANDLE handle) const
{
    SQLCHAR state[6] = {};
    SQLCHAR text[4096] = {};
    SQLINTEGER number = 0;
    SQLSMALLINT length = 0;
    Fault fault;
    if (SQL_SUCCEEDED(SQLGetDiagRec(type, handle, 1, state, &number, text, sizeof text, &length))) {
        fault.state = reinterpret_cast<const char *>(state);
        fault.text = reinterpret_cast<const char *>(text);
    } else {
        fault.text = "the ODBC driver gives no reason";
    }
    replaceAll(fault.text, m_login.password, "***");
    // It goes into one line of a log.
    std::replace_if(
        fault.text.begin(), fault.text.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; }, ' ');
    return fault;
}

void OdbcSession::report(const Fault &fault)
{
    if (isLoss(fault.state)) {
        disconnect();
        m_answers.failed(Failure::Lost, fault.text);
    } else if (isTimeUp(fault.state)) {
        m_answers.failed(Failure::Silent,
                         "the server says nothing for " + std::to_string(m_login.seconds) + " s");
    } else if (fault.state.starts_with("40") || fault.state == "S1T00") {
        // Rolled back, for others were in the way.
        m_answers.failed(Failure::Busy, fault.text);
    } else {
        m_answers.failed(Failure::Refused, fault.text);
    }
}

void OdbcSession::execute(const std::string &text, bool isUpdate)
{
    if (m_connection != SQL_NULL_HDBC && !limitTime(isUpdate))
        disconnect();
    if (m_connection == SQL_NULL_HDBC) {
        if (!connect())
            return;
        if (!limitTime(isUpdate)) {
            m_answers.failed(Failure::NotReached, "the connection was lost at once");
            disconnect();
            return;
        }
    }
    m_answers.started();
    // A comment at its end is ended.
    const std::string sql = "SPARQL " + text + "\n";
    if (isUpdate)
        executeUpdate(sql);
    else
        executeQuery(sql);
}

void OdbcSession::executeUpdate(const std::string &sql)
{
    const Statement statement(m_connection);
    if (statement.execute(sql))
        m_answers.done();
    else
        report(faultOf(SQL_HANDLE_STMT, statement.handle()));
}

void OdbcSession::executeQuery(const std::string &sql)
{
    std::string unboxed;
    {
        const Statement statement(m_connection);
        if (!SQL_SUCCEEDED(SQLPrepare(statement.handle(), characters(sql), SQLINTEGER(sql.size())))) {
            report(faultOf(SQL_HANDLE_STMT, statement.handle()));
            return;
        }
        unboxed = withoutBoxes(sql, statement.handle());
    }
    const Statement statement(m_connection);
    // What does not stand as a part of another statement goes as it is.
    if (!statement.execute(unboxed)) {
        const Fault fault = faultOf(SQL_HANDLE_STMT, statement.handle());
        if (isLoss(fault.state) || isTimeUp(fault.state) || unboxed == sql) {
            report(fault);
            return;
        }
        if (!statement.execute(sql)) {
            report(faultOf(SQL_HANDLE_STMT, statement.handle()));
            return;
        }
    }
    SQLSMALLINT columns = 0;
    SQLNumResultCols(statement.handle(), &columns);
    m_answers.columns(std::uint32_t(std::max<SQLSMALLINT>(columns, 0)));
    m_refusal.clear();
    if (sendRows(statement.handle(), columns))
        m_answers.done();
    else if (!m_refusal.empty())
        m_answers.failed(Failure::Refused, m_refusal);
    else
        report(faultOf(SQL_HANDLE_STMT, statement.handle()));
}

bool OdbcSession::sendRows(SQLHSTMT statement, SQLSMALLINT columns)
{
    SQLHDESC row = SQL_NULL_HDESC;
    if (!SQL_SUCCEEDED(SQLGetStmtAttr(statement, SQL_ATTR_IMP_ROW_DESC, &row, SQL_IS_POINTER, nullptr)))
        return false;
    while (!m_cancelled) {
        const SQLRETURN fetched = SQLFetch(statement);
        if (fetched == SQL_NO_DATA)
            return true;
        if (!SQL_SUCCEEDED(fetched))
            return false;
        for (SQLSMALLINT column = 1; column <= columns; ++column) {
            if (!sendCell(statement, row, SQLUSMALLINT(column)))
                return false;
        }
    }
    return true;
}

bool OdbcSession::sendCell(SQLHSTMT statement, SQLHDESC row, SQLUSMALLINT column)
{
    SQLINTEGER valueType = 0;
    SQLGetDescField(row, SQLSMALLINT(column), s_valueTypeField, &valueType, SQL_IS_INTEGER, nullptr);
    const bool isWide = valueType == WideText || valueType == LongWideText;
    bool isNull = false;
    if (!SQL_SUCCEEDED(readText(statement, column, isWide, isNull)))
        return false;
    if (isNull) {
        m_answers.cell(CellType::Unbound, {});
        return true;
    }
    const CellType type = cellTypeOf(valueType, m_text);
    constexpr std::size_t endOfDate = 10;
    if (type == CellType::DateTime && m_text.size() > endOfDate && m_text[endOfDate] == ' ')
        m_text[endOfDate] = 'T';
    m_answers.cell(type, m_text);
    return true;
}

// Into m_text. What the store holds is UTF-8, and comes as it stands; what the server computed, or took over
// from the text of the query, has characters of four bytes.
SQLRETURN OdbcSession::readText(SQLHSTMT statement, SQLUSMALLINT column, bool isWide, bool &isNull)
{
    // Cut short, the buffer is full but for the NUL at its end.
    const std::size_t room = m_buffer.size() - (isWide ? sizeof(char32_t) : sizeof(char));
    m_text.clear();
    for (;;) {
        SQLLEN length = 0;
        const SQLRETURN got = SQLGetData(statement, column, isWide ? SQL_C_WCHAR : SQL_C_CHAR,
                                         m_buffer.data(), SQLLEN(m_buffer.size()), &length);
        if (got == SQL_NO_DATA)
            return SQL_SUCCESS;
        if (!SQL_SUCCEEDED(got))
            return got;
        isNull = length == SQL_NULL_DATA;
        if (isNull)
            return got;
        const bool isWhole = length >= 0 && std::size_t(length) <= room;
        const std::string_view piece(m_buffer.data(), isWhole ? std::size_t(length) : room);
        if (isWide)
            appendUtf8(m_text, piece);
        else
            m_text.append(piece);
        if (m_text.size() > MaximumValueBytes) {
            m_refusal = "a value in column " + std::to_string(column) + " is longer than "
                + std::to_string(MaximumValueBytes >> 20) + " MiB";
            return SQL_ERROR;
        }
        if (isWhole)
            return got;
    }
}
