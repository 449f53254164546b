// SPDX-License-Identifier: GPL-3.0-or-later
#include "positionjournal.h"

#include "datalog.h"
#include "resumerule.h"
#include "storenews.h"
#include "thumbnailhelper.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QSet>

#include <limits>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qsizetype mostFiles = 64;
constexpr qint64 mostBytes = 8192;
constexpr qsizetype longestAddress = 4096;
constexpr qsizetype mostKnown = 8;
// Of a video that the store does not know any more.
constexpr qint64 keptSeconds = 30 * 24 * 3600;

QString fileNameOf(const QString &urn)
{
    const QByteArray hash = QCryptographicHash::hash(urn.toUtf8(), QCryptographicHash::Sha1);
    return QString::fromLatin1(hash.toHex()) + u".json"_s;
}

std::optional<quint32> secondsFrom(const QJsonValue &value)
{
    const double number = value.toDouble(-1);
    if (number < 0 || number > std::numeric_limits<quint32>::max())
        return {};
    return quint32(number);
}

} // namespace

QString PositionJournal::defaultFolder()
{
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (!QDir::isAbsolutePath(state))
        state = QDir::homePath() + u"/.local/state"_s;
    return state + u"/kestrel/places"_s;
}

PositionJournal::PositionJournal(TrackerInterface *store, ThumbnailHelper *thumbnails, const QString &folder,
                                 QObject *parent)
    : QObject(parent),
      m_store(store),
      m_thumbnails(thumbnails),
      m_folder(folder)
{
    load();
    connect(m_store, &TrackerInterface::allVideosFinished, this, [this](const QList<QStringList> &rows) {
        if (!m_store->news()->isToldAgain())
            storeAnswered(rows);
    });
    m_store->news()->addTableReader(this);
    connect(m_store->news(), &StoreNews::listLoaded, this,
            [this](const std::shared_ptr<const RowTable> &table) { listLoaded(*table); });
    connect(m_store, qOverload<QList<QStringList>>(&TrackerInterface::videosChanged), this,
            &PositionJournal::storeAnswered);
}

PositionJournal::~PositionJournal() = default;

void PositionJournal::load()
{
    const QList<JournalFolder::File> files = m_folder.read(mostFiles, mostBytes);
    for (const JournalFolder::File &file : files) {
        std::optional<Entry> entry = parse(file.text);
        if (!entry || file.name != fileNameOf(entry->urn)) {
            qCWarning(lcData, "%s/%s: damaged, the place in it is lost", qUtf8Printable(m_folder.path()),
                      qUtf8Printable(file.name));
            m_folder.remove(file.name);
        } else {
            entry->isLeft = true;
            m_entries.insert(entry->urn, *entry);
        }
    }
}

std::optional<PositionJournal::Entry> PositionJournal::parse(const QByteArray &text)
{
    if (text.size() > mostBytes)
        return {};
    const QJsonObject object = QJsonDocument::fromJson(text).object();
    const std::optional<quint32> duration = secondsFrom(object[u"duration"_s]);
    const std::optional<quint32> position = secondsFrom(object[u"position"_s]);
    Entry entry;
    entry.urn = object[u"urn"_s].toString();
    if (entry.urn.isEmpty() || !duration || !position)
        return {};
    entry.url = object[u"url"_s].toString();
    entry.duration = *duration;
    entry.position = *position;
    const QJsonArray known = object[u"known"_s].toArray();
    for (const QJsonValue &value : known) {
        if (const std::optional<quint32> seconds = secondsFrom(value))
            entry.known.append(*seconds);
    }
    entry.baseKnown = object[u"base"_s].toBool();
    entry.written = object[u"written"_s].toInteger();
    return entry;
}

void PositionJournal::write(Entry &entry)
{
    entry.written = QDateTime::currentSecsSinceEpoch();
    QJsonArray known;
    for (const quint32 position : std::as_const(entry.known))
        known.append(qint64(position));
    QJsonObject object{{u"urn"_s, entry.urn},
                       {u"duration"_s, qint64(entry.duration)},
                       {u"position"_s, qint64(entry.position)},
                       {u"known"_s, known},
                       {u"base"_s, entry.baseKnown},
                       {u"written"_s, entry.written}};
    if (entry.url.size() <= longestAddress)
        object.insert(u"url"_s, entry.url);
    m_folder.write(fileNameOf(entry.urn), QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void PositionJournal::close(const QString &urn)
{
    m_entries.remove(urn);
    m_folder.remove(fileNameOf(urn));
}

std::optional<quint32> PositionJournal::leftPlace(const QString &urn) const
{
    const auto entry = m_entries.constFind(urn);
    if (entry == m_entries.constEnd() || !entry->isLeft)
        return {};
    return resumePosition(entry->duration, entry->position);
}

void PositionJournal::note(const VideoInfo &video, quint32 position)
{
    if (video.urn.isEmpty())
        return;
    Entry &entry = m_entries[video.urn];
    entry.urn = video.urn;
    entry.url = video.url;
    entry.duration = video.duration;
    entry.position = position;
    entry.isNewer = true;
    entry.isLeft = false;
    write(entry);
    if (!entry.baseKnown && !std::exchange(entry.baseAsked, true))
        askBase(video.urn);
}

// What the store has is asked once a playback, which has just told the store that it began.
void PositionJournal::askBase(const QString &urn)
{
    m_store->askStoredPlace(urn, [self = QPointer(this), urn](const TrackerInterface::StoredPlace &place) {
        if (!self || !self->m_entries.contains(urn))
            return;
        Entry &entry = self->m_entries[urn];
        if (entry.isLeft || entry.baseKnown || !place.position)
            return;
        entry.known.append(*place.position);
        entry.baseKnown = true;
        self->write(entry);
    });
}

void PositionJournal::save(const VideoInfo &video)
{
    if (video.urn.isEmpty()) {
        m_store->setPlayedTime(video.urn, video.playPosition);
        return;
    }
    Entry &entry = m_entries[video.urn];
    entry.urn = video.urn;
    entry.url = video.url;
    entry.duration = video.duration;
    entry.position = video.playPosition;
    give(entry);
}

void PositionJournal::give(Entry &entry)
{
    const QString urn = entry.urn;
    const quint32 position = entry.position;
    entry.isNewer = false;
    entry.known.removeAll(position);
    entry.known.append(position);
    if (entry.known.size() > mostKnown) { // a store that is away for long: it may have any of them
        entry.known.removeFirst();
        entry.baseKnown = false;
    }
    const bool given
        = m_store->setPlayedTime(urn, position, [self = QPointer(this), urn, position](bool stored) {
              if (self)
                  self->acknowledged(urn, position, stored);
          });
    if (given)
        entry.underWay.append(position);
    entry.isLeft = !given;
    write(entry);
}

void PositionJournal::acknowledged(const QString &urn, quint32 position, bool stored)
{
    const auto entry = m_entries.find(urn);
    if (entry == m_entries.end())
        return;
    entry->underWay.removeOne(position);
    if (stored) {
        entry->known = entry->underWay;
        entry->known.append(position);
        entry->baseKnown = true;
    }
    if (entry->isNewer || !entry->underWay.isEmpty())
        return;
    if (stored)
        close(urn);
    else
        entry->isLeft = true;
}

void PositionJournal::restore()
{
    m_restores = true;
    tryLeft();
}

void PositionJournal::tryLeft()
{
    const QStringList urns = m_entries.keys();
    for (const QString &urn : urns)
        tryLeft(urn);
}

void PositionJournal::tryLeft(const QString &urn)
{
    Entry &entry = m_entries[urn];
    if (!entry.isLeft || entry.isAsked || entry.isUnknown)
        return;
    entry.isAsked = m_store->askStoredPlace(
        urn, [self = QPointer(this), urn](const TrackerInterface::StoredPlace &place) {
            if (self)
                self->compare(urn, place);
        });
}

void PositionJournal::compare(const QString &urn, const TrackerInterface::StoredPlace &place)
{
    const auto entry = m_entries.find(urn);
    if (entry == m_entries.end())
        return;
    entry->isAsked = false;
    if (!entry->isLeft || !place.answered) // played meanwhile; or tried again at the next answer
        return;
    if (!place.position) {
        qCInfo(lcData, "%s: left at %u s, but the store does not have it", qUtf8Printable(urn),
               entry->position);
        entry->isUnknown = true;
        if (QDateTime::currentSecsSinceEpoch() - entry->written > keptSeconds)
            close(urn);
        return;
    }
    const quint32 kept = resumePosition(entry->duration, entry->position);
    if (entry->baseKnown && !entry->known.contains(*place.position)) {
        qCInfo(lcData, "%s: left at %u s, but the store has a newer place", qUtf8Printable(urn),
               entry->position);
        close(urn);
    } else if (kept == *place.position) {
        close(urn);
    } else {
        qCInfo(lcData, "%s: left at %u s, and saved now", qUtf8Printable(urn), kept);
        entry->position = kept;
        if (kept == 0)
            m_thumbnails->deletePauseThumbnail(entry->url);
        give(*entry);
    }
}

// URNs by the address, of those that the store did not know.
QHash<QString, QString> PositionJournal::unknownUrns() const
{
    QHash<QString, QString> unknown;
    for (const Entry &entry : std::as_const(m_entries)) {
        if (entry.isLeft && entry.isUnknown && !entry.url.isEmpty())
            unknown.insert(entry.url, entry.urn);
    }
    return unknown;
}

void PositionJournal::listLoaded(const RowTable &table)
{
    QSet<QByteArray> urls;
    const QHash<QString, QString> unknown = unknownUrns();
    for (auto entry = unknown.keyBegin(); entry != unknown.keyEnd(); ++entry)
        urls.insert(entry->toUtf8());
    QList<QStringList> rows; // only those that may be looked for
    for (int row = 0; !urls.isEmpty() && row < table.rows(); ++row) {
        const QByteArrayView url = table.utf8(row, VideoColumn::Url);
        if (!urls.contains(QByteArray::fromRawData(url.data(), url.size())))
            continue;
        QStringList texts;
        for (int column = 0; column < VideoColumn::RowSize; ++column)
            texts.append(table.text(row, column));
        rows.append(texts);
    }
    storeAnswered(rows);
}

// It is there, whatever it tells. A store that was built anew knows the video by another name.
void PositionJournal::storeAnswered(const QList<QStringList> &rows)
{
    if (!m_restores)
        return;
    QHash<QString, QString> unknown = unknownUrns();
    for (qsizetype i = 0; !unknown.isEmpty() && i < rows.size(); ++i) {
        const auto found = unknown.constFind(rows[i].value(VideoColumn::Url));
        if (found == unknown.constEnd())
            continue;
        Entry entry = m_entries.value(*found);
        close(entry.urn);
        entry.urn = rows[i].value(VideoColumn::Urn);
        entry.isUnknown = false;
        // What the new store has came out of its own notes.
        if (!m_entries.contains(entry.urn))
            write(m_entries.insert(entry.urn, entry).value());
        unknown.erase(found);
    }
    tryLeft();
}
