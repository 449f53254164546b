// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/sparql/sparqldriver.h"
#include "platform/sparql/sparqlresult.h"

#include <QList>
#include <QPointer>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>

class FakeSparqlResult;

// A store for tests: stands in for a driver by name, records every text exactly as it was given, and answers
// as the test says.
//
//     FakeSparqlStore store;                                    // stands in for "QTRACKER" while it lives
//     store.answerWith({{u"urn:a"_s, u"Title"_s}});             // statements from now on: these rows
//     store.answerWhen(u"nmm:runTime"_s, FakeSparqlAnswer::rows({{17}}));
//     store.answerWhen(u"nie:title"_s, FakeSparqlAnswer::later()); // waits for store.finish(n)
//     ...
//     QCOMPARE(store.texts(), QStringList{...});
//
// Rules of answerWhen() go before answerWith(); the last rule whose words stand in the text counts.
struct FakeSparqlAnswer
{
    enum class Kind {
        Rows, // through the event loop
        Error, // through the event loop, finished() with an error
        ImmediateError, // stands when exec() returns
        Null, // exec() returns no result
        Later, // when finish() or fail() is called
        Never, // not even then
    };
    Kind kind = Kind::Rows;
    QList<QVariantList> table;
    QString message;

    static FakeSparqlAnswer rows(const QList<QVariantList> &table) { return {Kind::Rows, table, {}}; }
    static FakeSparqlAnswer error(const QString &message) { return {Kind::Error, {}, message}; }
    static FakeSparqlAnswer immediateError(const QString &message)
    {
        return {Kind::ImmediateError, {}, message};
    }
    static FakeSparqlAnswer null() { return {Kind::Null, {}, {}}; }
    static FakeSparqlAnswer later() { return {Kind::Later, {}, {}}; }
    static FakeSparqlAnswer never() { return {Kind::Never, {}, {}}; }
};

class FakeSparqlStore
{
public:
    struct Statement
    {
        QString text;
        SparqlQuery::StatementType type = SparqlQuery::SelectStatement;
        QPointer<FakeSparqlResult> result; // null once it was released, or when there was none
    };

    explicit FakeSparqlStore(const QString &driverName = QStringLiteral("QTRACKER"));
    ~FakeSparqlStore();
    Q_DISABLE_COPY_MOVE(FakeSparqlStore)

    void answer(const FakeSparqlAnswer &answer);
    void answerWith(const QList<QVariantList> &table) { answer(FakeSparqlAnswer::rows(table)); }
    void answerWhen(const QString &wordsInText, const FakeSparqlAnswer &answer);
    // Decides each answer by its statement; goes before the rules above.
    void answerBy(std::function<FakeSparqlAnswer(const SparqlQuery &)> decide);

    // Everything that was given to any connection of this driver, in order.
    [[nodiscard]] const QList<Statement> &statements() const;
    [[nodiscard]] QStringList texts() const;
    [[nodiscard]] QStringList texts(SparqlQuery::StatementType type) const;
    [[nodiscard]] QString lastText() const;
    void clear();

    // Answers statement `index` that waits (Later), now and within this call.
    void finish(int index, const QList<QVariantList> &table = {});
    void fail(int index, const QString &message);

    // Makes every open connection of this driver emit reset().
    void reset();
    // Makes every open connection of this driver tell whether its store can be reached.
    void setReachable(bool reachable);
    // Connections opened so far, and open now.
    [[nodiscard]] int opened() const;
    [[nodiscard]] int open() const;

    struct State;

private:
    QString m_driverName;
    std::shared_ptr<State> m_state;
};

class FakeSparqlResult : public SparqlResult
{
    Q_OBJECT

public:
    explicit FakeSparqlResult(QObject *parent = nullptr) : SparqlResult(parent) { }

    [[nodiscard]] bool hasError() const override { return !m_message.isNull(); }
    [[nodiscard]] QString errorMessage() const override { return m_message; }
    [[nodiscard]] bool isFinished() const override { return m_finished; }
    bool next() override { return m_finished && ++m_row < m_table.size(); }
    [[nodiscard]] QVariant value(int column) const override;
    [[nodiscard]] int size() const override { return int(m_table.size()); }

    void setError(const QString &message) { m_message = message.isNull() ? QStringLiteral("") : message; }
    void finishWith(const QList<QVariantList> &table);

private:
    QList<QVariantList> m_table;
    QString m_message;
    qsizetype m_row = -1;
    bool m_finished = false;
};
