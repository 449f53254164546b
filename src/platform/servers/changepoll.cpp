// SPDX-License-Identifier: GPL-3.0-or-later
#include "changepoll.h"

#include "changepolltexts.h"
#include "platform/sparql/sparqlconnection.h"
#include "platform/sparql/sparqlresult.h"
#include "resourceids.h"
#include "serverslog.h"

#include <QFileInfo>

#include <limits>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Hexadecimal = 16;
constexpr int RowsPerTurn = 2000; // of the event loop: some milliseconds
constexpr int LeisureFactor = 9; // pauses are this many times as long as the poll before
constexpr int Literal = -1; // as object of a quad
// The notifier knows class and properties by the numbers that the library's own store gives them, whatever
// server the videos are on.
const QString OwnStore = QStringLiteral("QTRACKER");

QString groupName(int group)
{
    return u"\"%1\""_s.arg(group, 2, Hexadecimal, QChar(u'0'));
}

// -1 for what names no group.
int groupOf(const QString &name)
{
    bool isNumber = false;
    const int group = name.toInt(&isNumber, Hexadecimal);
    return isNumber && name.size() == 2 ? group : LibrarySnapshot::UnknownGroup;
}

LibrarySnapshot::Row rowOf(const SparqlResult &result)
{
    LibrarySnapshot::Row row;
    row.id = result.value(0).toInt();
    row.title = result.stringValue(1);
    row.position = result.stringValue(2);
    row.fileName = result.stringValue(3);
    row.group = groupOf(result.stringValue(4));
    if (row.title.isEmpty())
        row.title = QFileInfo(row.fileName).completeBaseName();
    return row;
}

} // namespace

ChangePoll::ChangePoll(Options options, QObject *parent)
    : QObject(parent),
      m_options(std::move(options)),
      m_connection(new SparqlConnection(m_options.driver, SparqlConnectionOptions(), this)),
      m_mostRows(m_options.mostRows)
{
    if (!m_options.clock) {
        QElapsedTimer timer;
        timer.start();
        m_options.clock = [timer] { return timer.elapsed(); };
    }
    m_timer.setObjectName(u"pollTimer"_s);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &ChangePoll::begin);
    connect(m_connection, &SparqlConnection::reachableChanged, this, [this](bool reachable) {
        if (reachable) {
            m_due = m_options.clock();
            schedule();
        }
        Q_EMIT reachableChanged(reachable);
    });
}

ChangePoll::~ChangePoll() = default;

bool ChangePoll::isReachable() const
{
    return m_connection->isReachable();
}

void ChangePoll::attach(ChangeNotifier *notifier)
{
    m_notifier = notifier;
    askForNumbers();
}

void ChangePoll::askForNumbers()
{
    if (m_numbers.isKnown() || m_numbersResult)
        return;
    delete m_ownStore;
    m_ownStore = new SparqlConnection(OwnStore, SparqlConnectionOptions(), this);
    m_numbersResult = m_ownStore->exec(SparqlQuery(ChangePollTexts::Numbers));
    if (m_numbersResult)
        connect(m_numbersResult, &SparqlResult::finished, this, &ChangePoll::numbersRead);
    else
        m_numbersFailed = true;
}

void ChangePoll::numbersRead()
{
    SparqlResult *result = std::exchange(m_numbersResult, nullptr);
    if (!result->hasError() && result->next()) {
        m_numbers = {result->value(0).toInt(), result->value(1).toInt(), result->value(2).toInt(),
                     result->value(3).toInt(), result->value(4).toInt()};
    } else {
        qCWarning(serversLog).noquote()
            << "changes cannot be told: the library's own store gives no numbers:" << result->errorMessage();
    }
    result->deleteLater();
    std::exchange(m_ownStore, nullptr)->deleteLater();
    if (!m_numbers.isKnown()) {
        m_numbersFailed = true;
        return;
    }
    // Whoever listens asked the same store at the same time, and once only: it is to ask again.
    if (std::exchange(m_numbersFailed, false) && m_notifier)
        Q_EMIT m_notifier->reset();
    Quads inserts;
    for (const auto &[id, property] : std::exchange(m_written, {}))
        appendValueQuads(inserts, id, property);
    if (!inserts.isEmpty() && m_notifier)
        Q_EMIT m_notifier->changed({}, inserts);
}

void ChangePoll::setVisible(bool visible)
{
    m_visible = visible;
    schedule();
}

void ChangePoll::setList(LibrarySnapshot list)
{
    abandon();
    m_known = std::move(list);
    m_hasList = true;
    m_isVerified = false;
    m_settled.clear();
    m_settledStamps.clear();
    m_mayHaveStamps = true;
    m_due = m_options.clock() + m_options.interval().count();
    schedule();
}

void ChangePoll::tellWritten(const QString &iri, LibrarySnapshot::Property property)
{
    const int id = ResourceIds::shared().idOf(iri);
    if (id == 0 || !m_notifier)
        return;
    if (!m_numbers.isKnown()) {
        m_written.append({id, property});
        return;
    }
    Quads inserts;
    appendValueQuads(inserts, id, property);
    Q_EMIT m_notifier->changed({}, inserts);
}

void ChangePoll::schedule()
{
    m_timer.stop();
    const bool isOff = m_options.interval() <= std::chrono::milliseconds::zero();
    if (!m_visible || !m_hasList || !m_notifier || m_result || isOff)
        return;
    const qint64 pause
        = qBound(qint64(0), m_due - m_options.clock(), qint64(std::numeric_limits<int>::max()));
    m_timer.start(int(pause));
}

void ChangePoll::begin()
{
    if (m_result || !m_notifier)
        return;
    m_begun = m_options.clock();
    m_changes = 0;
    m_stamps.clear();
    if (!m_numbers.isKnown()) {
        askForNumbers();
        finish();
    } else if (m_mayHaveStamps) {
        ask(ChangePollTexts::Stamps, &ChangePoll::stampsRead);
    } else {
        askForGroups();
    }
}

void ChangePoll::ask(const QString &text, Answer answer)
{
    if (!m_visible) {
        finish();
        return;
    }
    m_result = m_connection->exec(SparqlQuery(text));
    if (!m_result) {
        fail(u"it could not be asked"_s);
        return;
    }
    connect(m_result, &SparqlResult::finished, this, [this, answer, result = m_result] {
        m_result = nullptr;
        if (!result->hasError()) {
            (this->*answer)(*result);
            if (m_result != result)
                result->deleteLater();
            return;
        }
        result->deleteLater();
        // Stamps are a saving; a server that cannot count them is polled without.
        if (answer == &ChangePoll::stampsRead && isReachable())
            m_mayHaveStamps = false;
        fail(result->errorMessage());
    });
}

void ChangePoll::stampsRead(SparqlResult &result)
{
    const bool hasRow = result.next();
    const qint64 videos = hasRow ? result.value(0).toLongLong() : 0;
    const qint64 stamped = hasRow ? result.value(1).toLongLong() : 0;
    m_mayHaveStamps = videos > 0 && stamped == videos;
    if (m_mayHaveStamps)
        m_stamps = u"%1 %2"_s.arg(videos).arg(result.stringValue(2));
    if (m_mayHaveStamps && m_isVerified && m_stamps == m_settledStamps
        && ++m_stampedPolls < pollsPerFullOne) {
        finish();
        return;
    }
    askForGroups();
}

void ChangePoll::askForGroups()
{
    ask(ChangePollTexts::Groups, &ChangePoll::groupsRead);
}

void ChangePoll::groupsRead(SparqlResult &result)
{
    m_offered.clear();
    while (result.next()) {
        const int group = groupOf(result.stringValue(0));
        if (group == LibrarySnapshot::UnknownGroup) {
            fail(u"its groups have names of another form"_s);
            return;
        }
        m_offered.insert(group, {result.value(1).toLongLong(), result.stringValue(2)});
    }
    m_different.clear();
    for (int group = 0; group < LibrarySnapshot::GroupCount; ++group) {
        if (m_offered.value(group) != m_settled.value(group))
            m_different.append(group);
    }
    askForRows();
}

void ChangePoll::askForRows()
{
    if (m_different.isEmpty()) {
        readComplete();
        return;
    }
    m_asked.clear();
    QStringList names;
    for (qint64 rows = 0; !m_different.isEmpty() && (m_asked.isEmpty() || rows < m_mostRows);) {
        const int group = m_different.takeFirst();
        rows += m_offered.value(group).videos;
        m_asked.append(group);
        names.append(groupName(group));
    }
    ask(ChangePollTexts::Rows.arg(names.join(u", ")), &ChangePoll::rowsRead);
}

void ChangePoll::rowsRead(SparqlResult &result)
{
    m_rows.clear();
    m_rows.reserve(result.size());
    m_result = &result; // the poll is not over
    readSomeRows();
}

void ChangePoll::readSomeRows()
{
    const qsizetype enough = m_rows.size() + RowsPerTurn;
    while (m_rows.size() < enough && m_result->next())
        m_rows.append(rowOf(*m_result));
    if (m_rows.size() < enough) {
        std::exchange(m_result, nullptr)->deleteLater();
        compareRows(std::exchange(m_rows, {}));
        return;
    }
    QTimer::singleShot(0, m_result, [this, result = m_result] {
        if (m_result == result) // not abandoned
            readSomeRows();
    });
}

void ChangePoll::compareRows(const QList<LibrarySnapshot::Row> &rows)
{
    qint64 expected = 0;
    for (const int group : std::as_const(m_asked))
        expected += m_offered.value(group).videos;
    // A server may cut answers short without a word: what has no row then is not gone.
    const bool complete = rows.size() == expected;
    if (rows.size() < expected)
        m_mostRows = qMax(1, int(qMin(expected, qint64(m_mostRows)) / 2));
    const LibrarySnapshot::Differences differences
        = m_known.compare(rows, QSet<int>(m_asked.cbegin(), m_asked.cend()), complete);
    settleGroups(complete);
    if (!admit(differences))
        return;
    tell(differences);
    askForRows();
}

// Those that were read while they changed are read again by the next poll.
void ChangePoll::settleGroups(bool complete)
{
    for (const int group : std::as_const(m_asked)) {
        m_settled.remove(group);
        if (complete && m_offered.contains(group))
            m_settled.insert(group, m_offered.value(group));
    }
}

void ChangePoll::readComplete()
{
    const bool allSettled = m_settled == m_offered;
    if (allSettled && !std::exchange(m_isVerified, true)) {
        LibrarySnapshot::Differences gone;
        gone.removed = m_known.takeUngrouped();
        tell(gone);
    }
    if (allSettled) {
        m_settledStamps = m_stamps;
        m_stampedPolls = 0;
        m_mayReset = true;
    }
    finish();
}

// False when a new list was asked for instead. A list that was asked for so and is not what the server tells
// is taken as it is: it would be asked for again and again.
bool ChangePoll::admit(const LibrarySnapshot::Differences &differences)
{
    m_changes += int(differences.added.size() + differences.changed.size());
    if (m_changes <= m_options.mostChanges || !m_mayReset)
        return true;
    m_mayReset = false;
    abandon();
    m_due = m_options.clock() + m_options.interval().count();
    schedule();
    Q_EMIT m_notifier->reset();
    return false;
}

void ChangePoll::tell(const LibrarySnapshot::Differences &differences)
{
    const bool tooMany = m_changes > m_options.mostChanges;
    if (tooMany)
        qCWarning(serversLog) << "the server tells" << m_changes << "videos other than its list does";
    Quads deletes;
    Quads inserts;
    for (const int id : differences.removed)
        deletes.append(typeQuad(id));
    if (!tooMany) {
        for (const LibrarySnapshot::Change &change : differences.changed) {
            appendValueQuads(deletes, change.id, change.had);
            appendValueQuads(inserts, change.id, change.has);
        }
        for (const int id : differences.added)
            inserts.append(typeQuad(id));
    }
    if (m_notifier && !(deletes.isEmpty() && inserts.isEmpty()))
        Q_EMIT m_notifier->changed(deletes, inserts);
}

ChangeNotifier::Quad ChangePoll::typeQuad(int id) const
{
    return {0, id, m_numbers.type, m_numbers.videoClass};
}

void ChangePoll::appendValueQuads(Quads &quads, int id, LibrarySnapshot::Properties properties) const
{
    if (properties & LibrarySnapshot::Title)
        quads.append({0, id, m_numbers.title, Literal});
    if (properties & LibrarySnapshot::Position)
        quads.append({0, id, m_numbers.position, Literal});
    if (properties & LibrarySnapshot::FileName)
        quads.append({0, id, m_numbers.fileName, Literal});
}

void ChangePoll::finish()
{
    const qint64 now = m_options.clock();
    m_due = now + qMax(qint64(m_options.interval().count()), LeisureFactor * (now - m_begun));
    schedule();
}

void ChangePoll::fail(const QString &reason)
{
    qCDebug(serversLog).noquote() << "the server was not asked for changes:" << reason;
    finish();
}

// The answer under way is of no use any more.
void ChangePoll::abandon()
{
    if (!m_result)
        return;
    m_result->disconnect(this);
    std::exchange(m_result, nullptr)->deleteLater();
}
