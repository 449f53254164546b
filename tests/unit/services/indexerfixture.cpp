// SPDX-License-Identifier: GPL-3.0-or-later
#include "indexerfixture.h"

#include "storepaths.h"
#include "videoresource.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>
#include <QTimeZone>

using namespace Qt::Literals::StringLiterals;

void ScriptedReader::answer(int id, const QString &path)
{
    QFile file(path);
    MediaReply reply;
    const QString content = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    if (content.isEmpty())
        reply.status = MediaReply::Status::Unreadable;
    else if (content.startsWith(u"crash"_s))
        reply.status = MediaReply::Status::Crashed;
    else if (content.startsWith(u"text"_s))
        reply.status = MediaReply::Status::NotMedia;
    if (content.startsWith(u"series"_s)) {
        reply.showName = u"The Lighthouse"_s;
        reply.season = 2;
        reply.episode = 5;
        reply.synopsis = u"Fog \"again\"\nand again."_s;
        reply.cameraMake = u"Good Cameras"_s;
        reply.cameraModel = u"X<1>"_s;
        reply.width = 640;
        reply.height = 360;
        reply.created = QDateTime(QDate(2020, 1, 2), QTime(3, 4, 5), QTimeZone::utc());
    }
    reply.durationMs = 2400;
    reply.hasVideo = true;
    reply.mimeType = u"video/mp4"_s;
    reply.title = content.section(u"title="_s, 1).section(u'\n', 0, 0);
    Q_EMIT finished(id, reply);
}

QString IndexerFixture::root() const
{
    return m_home->filePath(u"Videos"_s);
}

void IndexerFixture::begin()
{
    m_digested.clear();
    m_home = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir().mkpath(root()));
    open();
}

void IndexerFixture::open()
{
    m_journal = std::make_unique<UserJournal>(m_home->filePath(u"journal"_s));
    QVERIFY(m_journal->open());
    m_database = std::make_unique<Database>(m_home->filePath(u"store"_s));
    m_feed = std::make_unique<ChangeFeed>();
    m_library = std::make_unique<VideoLibrary>(m_database.get(), m_journal.get(), m_feed.get());
    m_reader = std::make_unique<ScriptedReader>();
    m_indexer = std::make_unique<Indexer>(m_library.get(), m_reader.get(), [](const MediaReply &reply) {
        return equipmentUrn(reply.cameraMake, reply.cameraModel);
    });
    connect(
        m_indexer.get(), &Indexer::digestWanted, m_indexer.get(),
        [this](const QString &path) {
            m_digested.append(path.section(u'/', -1));
            m_indexer->onDigested(path, contentDigest(path));
        },
        Qt::QueuedConnection);
    QSignalSpy loaded(m_library.get(), &VideoLibrary::loaded);
    m_database->open();
    QVERIFY(loaded.count() > 0 || loaded.wait(20000));
}

void IndexerFixture::close()
{
    m_indexer.reset();
    m_reader.reset();
    m_library.reset();
    m_feed.reset();
    m_database.reset();
    m_journal.reset();
    QTRY_COMPARE(Database::closing(), 0);
}

bool IndexerFixture::write(const QString &name, const QByteArray &content)
{
    QFile file(at(name));
    return QDir().mkpath(QFileInfo(at(name)).path()) && file.open(QIODevice::WriteOnly)
        && file.write(content) == content.size();
}

bool IndexerFixture::settled()
{
    return QTest::qWaitFor(
        [this] { return !m_indexer->progress()->isScanning() && m_database->pendingWrites() == 0; }, 20000);
}

// A file as an event reports it.
bool IndexerFixture::find(const QString &name)
{
    const auto identity = FileIdentity::ofFile(at(name));
    if (!identity)
        return false;
    m_indexer->onFound({{at(name), *identity, true}});
    return settled();
}

void IndexerFixture::scan(const QStringList &names)
{
    m_indexer->onScanStarted(root());
    QList<FoundFile> files;
    for (const QString &name : names)
        files.append({at(name), FileIdentity::ofFile(at(name)).value_or(FileIdentity()), false});
    m_indexer->onFound(files);
    m_indexer->onScanFinished(root());
    QVERIFY(settled());
}

VideoRecord IndexerFixture::video(const QString &name) const
{
    const VideoRecord *record = m_library->table().byPath(at(name));
    return record ? *record : VideoRecord();
}

QString IndexerFixture::stored(const QString &name, const QString &property)
{
    QString value;
    m_database->read(u"SELECT ?x { ?v nie:url \"%1\" ; %2 ?x }"_s.arg(urlOf(at(name)), property),
                     [&](TrackerSparqlCursor *row) { value = columnText(row, 0); });
    return value;
}

bool IndexerFixture::setTitle(const QString &name, const QString &title)
{
    QString error = u"no answer"_s;
    m_library->applyUpdate(
        {u"DELETE WHERE { <%1> nie:title ?t } ; INSERT DATA { <%1> nie:title \"%2\" }"_s.arg(video(name).urn,
                                                                                             title)},
        [&](const QString &told) { error = told; });
    return settled() && error.isEmpty();
}

FoundFile IndexerFixture::told(const QString &name, const QString &title) const
{
    MediaReply facts;
    facts.durationMs = 61000;
    facts.hasVideo = true;
    facts.mimeType = u"video/mp4"_s;
    facts.title = title;
    return {at(name), FileIdentity::ofFile(at(name)).value_or(FileIdentity()), false, false,
            std::make_shared<const MediaReply>(facts)};
}
