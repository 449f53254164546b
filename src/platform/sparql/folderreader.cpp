// SPDX-License-Identifier: GPL-3.0-or-later
#include "folderreader.h"

#include "sparqllog.h"

#include <libtracker-sparql/tracker-sparql.h>

#include <QFile>
#include <QPointer>
#include <QStandardPaths>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int retryMs = 500;

} // namespace

FolderReader::FolderReader(const QString &folder, QObject *parent) : QObject(parent), m_folder(folder)
{
    m_retry.setSingleShot(true);
    m_retry.setInterval(retryMs);
    connect(&m_retry, &QTimer::timeout, this, &FolderReader::open);
    open();
}

FolderReader::~FolderReader()
{
    g_cancellable_cancel(m_cancellable.get());
}

QString FolderReader::defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/kestrel/store"_s;
}

void FolderReader::reopen()
{
    if (m_cancellable)
        g_cancellable_cancel(m_cancellable.get());
    m_connection = {};
    open();
}

void FolderReader::retryNow()
{
    if (!m_retry.isActive())
        return;
    m_retry.stop();
    open();
}

void FolderReader::open()
{
    m_cancellable = sparql::GRef<GCancellable>::taken(g_cancellable_new());
    const auto folder
        = sparql::GRef<GFile>::taken(g_file_new_for_path(QFile::encodeName(m_folder).constData()));
    tracker_sparql_connection_new_async(TRACKER_SPARQL_CONNECTION_FLAGS_READONLY, folder.get(), nullptr,
                                        m_cancellable.get(), onOpened, new QPointer<FolderReader>(this));
}

void FolderReader::onOpened(GObject *source, GAsyncResult *answer, gpointer data)
{
    Q_UNUSED(source)
    const std::unique_ptr<QPointer<FolderReader>> self(static_cast<QPointer<FolderReader> *>(data));
    sparql::GFailure failure;
    auto connection = sparql::GRef<TrackerSparqlConnection>::taken(
        tracker_sparql_connection_new_finish(answer, &failure));
    const bool isOld = failure && g_error_matches(failure.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED);
    if (!*self || isOld)
        return;
    if (!connection) {
        qCInfo(lcSparql).noquote() << (*self)->m_folder << "cannot be read yet:" << failure.message();
        (*self)->m_retry.start();
        return;
    }
    (*self)->m_connection = connection;
    Q_EMIT(*self)->opened();
}
