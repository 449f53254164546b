// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "framechannel.h"

#include <sql.h>
#include <sqlext.h>

#include <atomic>
#include <string>
#include <vector>

// Where to log on, as the driver says it.
struct OdbcLogin
{
    std::uint32_t seconds = 0; // for logging on, and for the server to come to each row
    std::string driver; // a library or a name of the driver manager's list; empty: the packaged library
    std::string server; // host:port
    std::string user;
    std::string password;

    // False when the bytes of an Open request are malformed.
    [[nodiscard]] bool read(std::string_view bytes);
};

// One connection to a server through the ODBC driver manager, opened at the first statement and again after
// it was lost. Every call blocks as long as the server likes.
class OdbcSession
{
public:
    OdbcSession(AnswerWriter &answers, const std::atomic<bool> &cancelled);
    ~OdbcSession();
    OdbcSession(const OdbcSession &) = delete;
    OdbcSession &operator=(const OdbcSession &) = delete;

    void setLogin(OdbcLogin login);
    // Executes SPARQL and writes the whole answer, the end of it also when it is cancelled.
    void execute(const std::string &text, bool isUpdate);

private:
    struct Fault
    {
        std::string state;
        std::string text;
    };

    [[nodiscard]] bool connect();
    void disconnect();
    [[nodiscard]] bool limitTime(bool isUpdate);
    [[nodiscard]] Fault faultOf(SQLSMALLINT type, SQLHANDLE handle) const;
    void report(const Fault &fault);
    void executeUpdate(const std::string &sql);
    void executeQuery(const std::string &sql);
    [[nodiscard]] bool sendRows(SQLHSTMT statement, SQLSMALLINT columns);
    [[nodiscard]] bool sendCell(SQLHSTMT statement, SQLHDESC row, SQLUSMALLINT column);
    [[nodiscard]] SQLRETURN readText(SQLHSTMT statement, SQLUSMALLINT column, bool isWide, bool &isNull);

    AnswerWriter &m_answers;
    const std::atomic<bool> &m_cancelled;
    OdbcLogin m_login;
    SQLHENV m_environment = SQL_NULL_HENV;
    SQLHDBC m_connection = SQL_NULL_HDBC;
    std::string m_text; // of the cell under way
    std::string m_refusal; // why the answer is not passed on; empty: it is
    std::vector<char> m_buffer;
};
