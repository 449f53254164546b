// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/desktopminer.h"
#include "support/processtable.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>
#include <QUrl>

#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr char s_name[] = "org.freedesktop.Tracker3.Miner.Files";
constexpr char s_extractor[] = "org.freedesktop.Tracker3.Miner.Extract";
constexpr int s_patienceMs = 20000;

bool write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly)
        && file.write(content) == content.size();
}

// Of one thread: as every other one's, for the processor and for the disk.
void makeOrdinary(pid_t thread)
{
    constexpr int ProcessOrThread = 1; // IOPRIO_WHO_PROCESS
    constexpr int BestEffort = 2 << 13 | 4; // IOPRIO_CLASS_BE, and the level in its middle
    const sched_param none{};
    ::sched_setscheduler(thread, SCHED_OTHER, &none);
    ::syscall(SYS_ioprio_set, ProcessOrThread, thread, BestEffort);
}

QString minerProgram()
{
    for (const QString &program : {u"/usr/libexec/tracker-miner-fs-3"_s, u"/usr/libexec/localsearch-3"_s}) {
        if (QFile::exists(program))
            return program;
    }
    return {};
}

} // namespace

DesktopMiner::DesktopMiner(const QProcessEnvironment &session) : m_environment(session)
{
    const QString config = session.value(u"XDG_CONFIG_HOME"_s);
    const QString home = session.value(u"HOME"_s);
    write(config + u"/user-dirs.dirs"_s,
          "XDG_VIDEOS_DIR=\"$HOME/Videos\"\nXDG_PICTURES_DIR=\"$HOME/Pictures\"\n");
    write(config + u"/glib-2.0/settings/keyfile"_s,
          "[org/freedesktop/tracker/miner/files]\ninitial-sleep=0\nindex-applications=false\n"
          "index-recursive-directories=['&VIDEOS', '&PICTURES']\nindex-single-directories=@as []\n");
    QDir().mkpath(home + u"/Pictures"_s);
    // It passes over the folder for temporary files, in which the whole session lies.
    QDir().mkpath(home + u"/tmp"_s);
    m_environment.insert(u"TMPDIR"_s, home + u"/tmp"_s);
    m_environment.insert(u"GSETTINGS_BACKEND"_s, u"keyfile"_s);
    m_environment.insert(u"GIO_USE_VOLUME_MONITOR"_s, u"unix"_s);
    m_bus = g_dbus_connection_new_for_address_sync(
        session.value(u"DBUS_SESSION_BUS_ADDRESS"_s).toUtf8().constData(),
        GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
                             | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
}

DesktopMiner::~DesktopMiner()
{
    stop();
    g_clear_object(&m_bus);
}

bool DesktopMiner::start()
{
    const QString program = minerProgram();
    if (program.isEmpty() || !m_bus)
        return false;
    m_process.setProcessEnvironment(m_environment);
    m_process.setProcessChannelMode(QProcess::ForwardedChannels);
    m_process.start(program, {});
    if (!m_process.waitForStarted()
        || !QTest::qWaitFor(
            [this] {
                hurry();
                return !status().isEmpty();
            },
            60000))
        return false;
    m_index = tracker_sparql_connection_bus_new(s_name, nullptr, m_bus, nullptr);
    return m_index != nullptr;
}

void DesktopMiner::stop()
{
    g_clear_object(&m_index);
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(20000)) {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
    (void)QTest::qWaitFor([this] { return status().isEmpty(); }, 20000);
}

bool DesktopMiner::reset()
{
    return QDir(m_environment.value(u"XDG_CACHE_HOME"_s) + u"/tracker3"_s).removeRecursively();
}

// Empty while nobody has the name; nobody is started by the question.
QString DesktopMiner::status()
{
    GVariant *reply = g_dbus_connection_call_sync(
        m_bus, s_name, "/org/freedesktop/Tracker3/Miner/Files", "org.freedesktop.Tracker3.Miner", "GetStatus",
        nullptr, G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NO_AUTO_START, 20000, nullptr, nullptr);
    if (!reply)
        return {};
    const char *text = nullptr;
    g_variant_get(reply, "(&s)", &text);
    const QString status = QString::fromUtf8(text);
    g_variant_unref(reply);
    return status;
}

// It works only while nobody else needs the processor: beside other tests that may be never. What reads the
// files has a name of its own or is a child of the other.
void DesktopMiner::hurry()
{
    QByteArrayList processes{QByteArray::number(processOf(s_name)),
                             QByteArray::number(processOf(s_extractor))};
    for (qsizetype i = 0; i < processes.size(); ++i) {
        const QString tasks = u"/proc/%1/task/"_s.arg(QString::fromLatin1(processes[i]));
        const QStringList threads = QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        for (const QString &thread : threads) {
            makeOrdinary(pid_t(thread.toInt()));
            const QByteArray children = ProcessTable::contentOf(tasks + thread + u"/children"_s).simplified();
            if (!children.isEmpty())
                processes += children.split(' ');
        }
    }
}

// 0 while nobody has the name.
uint DesktopMiner::processOf(const char *name)
{
    GVariant *reply = g_dbus_connection_call_sync(m_bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                  "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                                                  g_variant_new("(s)", name), G_VARIANT_TYPE("(u)"),
                                                  G_DBUS_CALL_FLAGS_NONE, 20000, nullptr, nullptr);
    guint32 process = 0;
    if (reply)
        g_variant_get(reply, "(u)", &process);
    g_clear_pointer(&reply, g_variant_unref);
    return process;
}

QStringList DesktopMiner::rows(const char *query)
{
    QStringList rows;
    TrackerSparqlCursor *cursor
        = m_index ? tracker_sparql_connection_query(m_index, query, nullptr, nullptr) : nullptr;
    while (cursor && tracker_sparql_cursor_next(cursor, nullptr, nullptr)) {
        QStringList cells;
        for (int column = 0; column < tracker_sparql_cursor_get_n_columns(cursor); ++column)
            cells.append(QString::fromUtf8(tracker_sparql_cursor_get_string(cursor, column, nullptr)));
        rows.append(cells.join(u' '));
    }
    g_clear_object(&cursor);
    rows.sort();
    return rows;
}

QStringList DesktopMiner::videos()
{
    return rows("SELECT DISTINCT nfo:fileName(?file) "
                "{ ?video a nmm:Video ; nfo:duration ?d ; nie:isStoredAs ?file }");
}

// On a busy machine it now and then gives up reading a file, and looks at it again only when it was written
// to.
void DesktopMiner::touchUnread()
{
    const QStringList urls = rows(
        "SELECT DISTINCT ?file { ?file a nfo:FileDataObject ; nfo:fileName ?name "
        "FILTER(REGEX(?name, \"[.]mp4$\") && NOT EXISTS { ?video a nmm:Video ; nie:isStoredAs ?file }) }");
    for (const QString &url : urls) {
        const QByteArray path = QFile::encodeName(QUrl(url).toLocalFile());
        ::utimensat(AT_FDCWD, path.constData(), nullptr, 0);
    }
}

QString DesktopMiner::describe()
{
    return status() + u'\n'
        + rows("SELECT DISTINCT ?file ?video nfo:fileSize(?file) nfo:fileLastModified(?file) "
               "nfo:duration(?video) nie:title(?video) { ?file a nfo:FileDataObject ; nfo:fileName ?name "
               "OPTIONAL { ?video nie:isStoredAs ?file } }")
              .join(u'\n');
}

bool DesktopMiner::waitFor(QStringList fileNames)
{
    fileNames.sort();
    QElapsedTimer sinceTouched;
    sinceTouched.start();
    const bool ok = QTest::qWaitFor(
        [&] {
            hurry();
            if (!m_index || status() != u"Idle"_s)
                return false;
            if (videos() == fileNames)
                return true;
            if (sinceTouched.hasExpired(s_patienceMs)) {
                touchUnread();
                sinceTouched.restart();
            }
            return false;
        },
        180000);
    if (!ok)
        qWarning() << "the index knows" << videos() << "and is" << status();
    return ok;
}
