// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "credentials.h"
#include "odbcprocess.h"
#include "serverdriver.h"

#include <deque>
#include <memory>
#include <vector>

// A Virtuoso server over ODBC. ODBC blocks: every connection is a helper program (kestrel-odbc), which is
// started when a statement needs one, ended after it was idle for a minute, and ended at once when the server
// leaves it waiting.
class VirtuosoDriver : public ServerDriver
{
    Q_OBJECT

public:
    explicit VirtuosoDriver(const ServerSettings &settings = ServerSettings::ofVirtuoso(),
                            const ServerPatience &patience = {});
    // With credentials from elsewhere than the session's, and another helper.
    VirtuosoDriver(const ServerSettings &settings, const ServerPatience &patience,
                   std::unique_ptr<Credentials> credentials, const QString &program);
    ~VirtuosoDriver() override;

protected:
    void send(StatementId id, const StandardStatement &statement, bool isUpdate) override;
    void cancel(StatementId id) override;

private:
    struct Job
    {
        StatementId id = 0;
        QString text;
        QList<int> idColumns;
        bool isUpdate = false;
    };
    struct Helper
    {
        std::unique_ptr<OdbcProcess> process;
        std::unique_ptr<Job> job; // null: idle, or what it does is not wanted
    };

    [[nodiscard]] static Ending endingOf(OdbcProcess::Ending ending);
    void assign();
    void askLogin();
    void startHelper(const Login &login);
    void helperFinished(OdbcProcess *process);
    void helperEnded(OdbcProcess *process);
    void endIdleHelpers();
    void refuseWaiting(const QString &error);
    void answerLater(StatementId id, Ending ending, const QString &error);
    [[nodiscard]] Helper *helperOf(const OdbcProcess *process);

    std::unique_ptr<Credentials> m_credentials;
    QString m_program;
    std::vector<Helper> m_helpers;
    std::deque<std::unique_ptr<Job>> m_waiting;
    QTimer m_idleWatch;
    bool m_isAskingLogin = false;
};
