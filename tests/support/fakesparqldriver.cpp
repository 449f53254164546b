// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/fakesparqldriver.h"

#include <QTimer>

#include <utility>

struct FakeSparqlStore::State
{
    QList<Statement> statements;
    QList<QPointer<SparqlDriver>> drivers;
    QList<std::pair<QString, FakeSparqlAnswer>> rules;
    FakeSparqlAnswer other;
    std::function<FakeSparqlAnswer(const SparqlQuery &)> decide;
    int opened = 0;

    FakeSparqlAnswer answerTo(const SparqlQuery &query) const
    {
        if (decide)
            return decide(query);
        for (qsizetype i = rules.size() - 1; i >= 0; --i) {
            if (query.text().contains(rules[i].first))
                return rules[i].second;
        }
        return other;
    }
};

namespace {

class FakeSparqlDriver : public SparqlDriver
{
public:
    explicit FakeSparqlDriver(std::shared_ptr<FakeSparqlStore::State> state) : m_state(std::move(state)) { }

    SparqlResult *exec(const SparqlQuery &query, QObject *owner) override
    {
        using Kind = FakeSparqlAnswer::Kind;
        const FakeSparqlAnswer answer = m_state->answerTo(query);
        FakeSparqlResult *result = answer.kind == Kind::Null ? nullptr : new FakeSparqlResult(owner);
        m_state->statements.append({query.text(), query.type(), result});
        if (!result)
            return nullptr;
        if (answer.kind == Kind::ImmediateError)
            result->setError(answer.message);
        if (answer.kind != Kind::Later && answer.kind != Kind::Never) {
            QTimer::singleShot(0, result, [result, answer] {
                if (answer.kind == Kind::Error)
                    result->setError(answer.message);
                result->finishWith(answer.table);
            });
        }
        return result;
    }

private:
    std::shared_ptr<FakeSparqlStore::State> m_state;
};

} // namespace

FakeSparqlStore::FakeSparqlStore(const QString &driverName)
    : m_driverName(driverName),
      m_state(std::make_shared<State>())
{
    SparqlDriverRegistry::registerDriver(m_driverName, [state = m_state](const SparqlConnectionOptions &) {
        auto driver = std::make_unique<FakeSparqlDriver>(state);
        state->drivers.append(driver.get());
        ++state->opened;
        return driver;
    });
}

FakeSparqlStore::~FakeSparqlStore()
{
    SparqlDriverRegistry::unregisterDriver(m_driverName);
}

void FakeSparqlStore::answer(const FakeSparqlAnswer &answer)
{
    m_state->other = answer;
}

void FakeSparqlStore::answerWhen(const QString &wordsInText, const FakeSparqlAnswer &answer)
{
    m_state->rules.append({wordsInText, answer});
}

void FakeSparqlStore::answerBy(std::function<FakeSparqlAnswer(const SparqlQuery &)> decide)
{
    m_state->decide = std::move(decide);
}

const QList<FakeSparqlStore::Statement> &FakeSparqlStore::statements() const
{
    return m_state->statements;
}

QStringList FakeSparqlStore::texts() const
{
    QStringList texts;
    for (const Statement &statement : std::as_const(m_state->statements))
        texts.append(statement.text);
    return texts;
}

QStringList FakeSparqlStore::texts(SparqlQuery::StatementType type) const
{
    QStringList texts;
    for (const Statement &statement : std::as_const(m_state->statements)) {
        if (statement.type == type)
            texts.append(statement.text);
    }
    return texts;
}

QString FakeSparqlStore::lastText() const
{
    return m_state->statements.isEmpty() ? QString() : m_state->statements.constLast().text;
}

void FakeSparqlStore::clear()
{
    m_state->statements.clear();
}

void FakeSparqlStore::finish(int index, const QList<QVariantList> &table)
{
    FakeSparqlResult *result = m_state->statements.value(index).result;
    Q_ASSERT_X(result, "FakeSparqlStore::finish", "no such statement, or its result was released");
    result->finishWith(table);
}

void FakeSparqlStore::fail(int index, const QString &message)
{
    FakeSparqlResult *result = m_state->statements.value(index).result;
    Q_ASSERT_X(result, "FakeSparqlStore::fail", "no such statement, or its result was released");
    result->setError(message);
    result->finishWith({});
}

void FakeSparqlStore::reset()
{
    for (const QPointer<SparqlDriver> &driver : std::as_const(m_state->drivers)) {
        if (driver)
            Q_EMIT driver->reset();
    }
}

void FakeSparqlStore::setReachable(bool reachable)
{
    for (const QPointer<SparqlDriver> &driver : std::as_const(m_state->drivers)) {
        if (driver)
            Q_EMIT driver->reachableChanged(reachable);
    }
}

int FakeSparqlStore::opened() const
{
    return m_state->opened;
}

int FakeSparqlStore::open() const
{
    int count = 0;
    for (const QPointer<SparqlDriver> &driver : std::as_const(m_state->drivers))
        count += driver ? 1 : 0;
    return count;
}

QVariant FakeSparqlResult::value(int column) const
{
    return m_row >= 0 && m_row < m_table.size() ? m_table[m_row].value(column) : QVariant();
}

void FakeSparqlResult::finishWith(const QList<QVariantList> &table)
{
    if (m_finished)
        return;
    m_table = table;
    m_finished = true;
    Q_EMIT finished();
}
