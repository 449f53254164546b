// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "indexer.h"

#include <QTemporaryDir>

// Stands for the workers: the content of a file is its answer, "title=.." or "crash" or "text".
class ScriptedReader : public MediaReader
{
    Q_OBJECT

public:
    int read(const QString &path, bool) override
    {
        reads.append(path.section(u'/', -1));
        const int id = ++m_last;
        QMetaObject::invokeMethod(
            this, [this, id, path] { answer(id, path); }, Qt::QueuedConnection);
        return id;
    }
    void releaseFilesUnder(const QString &) override { }

    QStringList reads;

private:
    void answer(int id, const QString &path);

    int m_last = 0;
};

// The indexer over a real database in a folder of its own.
class IndexerFixture : public QObject
{
    Q_OBJECT

protected:
    void begin();
    [[nodiscard]] QString root() const;
    [[nodiscard]] QString at(const QString &name) const { return root() + u'/' + name; }
    bool write(const QString &name, const QByteArray &content);
    bool find(const QString &name);
    // As the desktop's index tells of a file.
    [[nodiscard]] FoundFile told(const QString &name, const QString &title) const;
    void scan(const QStringList &names);
    void open();
    void close();
    [[nodiscard]] VideoRecord video(const QString &name) const;
    [[nodiscard]] int count() const { return m_library->table().size(); }
    [[nodiscard]] QString stored(const QString &name, const QString &property);
    bool setTitle(const QString &name, const QString &title);
    bool settled();
    // As if it lay on a card.
    VideoRecord onAnotherFileSystem(const QString &name)
    {
        VideoRecord record = video(name);
        record.identity.device += 1000;
        m_library->relocate(record);
        return record;
    }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<UserJournal> m_journal;
    std::unique_ptr<Database> m_database;
    std::unique_ptr<ChangeFeed> m_feed;
    std::unique_ptr<VideoLibrary> m_library;
    std::unique_ptr<ScriptedReader> m_reader;
    std::unique_ptr<Indexer> m_indexer;
    QStringList m_digested;
};
