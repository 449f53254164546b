// SPDX-License-Identifier: GPL-3.0-or-later
#include "callmarker.h"

#include "extensionslog.h"

#include <platform/system/filereplacement.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qsizetype LongestName = 40; // characters of it

QByteArray line(const char *state)
{
    QByteArray line = state;
    line.resize(CallMarker::LineLength, ' ');
    line.back() = '\n';
    return line;
}

int openMarker(const QString &path, int flags)
{
    return open(QFile::encodeName(path).constData(), flags | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
}

} // namespace

QString CallMarker::path(const QString &library)
{
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (!QDir::isAbsolutePath(state))
        state = QDir::homePath() + u"/.local/state"_s;
    const QByteArray place
        = QCryptographicHash::hash(QFile::encodeName(library), QCryptographicHash::Sha256).first(8).toHex();
    // A file name may be as long as the file system allows already.
    return state + u"/kestrel/extensions/"_s + QFileInfo(library).fileName().left(LongestName) + u'.'
        + QString::fromLatin1(place);
}

CallMarker::CallMarker(const QString &library, const QByteArray &fingerprint)
    : m_path(path(library)),
      m_fingerprint(fingerprint)
{
    read();
}

CallMarker::~CallMarker()
{
    if (m_descriptor < 0)
        return;
    QFile::remove(m_path);
    close(m_descriptor);
}

void CallMarker::read()
{
    const int file = openMarker(m_path, O_RDONLY);
    if (file < 0)
        return;
    std::array<char, 1024> bytes = {};
    const ssize_t count = ::read(file, bytes.data(), bytes.size());
    m_isAnothers = flock(file, LOCK_EX | LOCK_NB) != 0;
    close(file);
    if (count < 2 * LineLength || m_isAnothers)
        return;
    const QByteArray contents(bytes.data(), count);
    if (contents.sliced(2 * LineLength) != m_fingerprint)
        return;
    const QByteArray end = contents.sliced(LineLength, LineLength).trimmed();
    const QByteArray mark = end.isEmpty() ? contents.first(LineLength).trimmed() : end;
    for (const auto &[state, past] :
         {std::pair(CrashedMark, Past::Crashed), std::pair(HungMark, Past::Hung)}) {
        if (!mark.startsWith(state))
            continue;
        m_past = past;
        m_pastCall = mark.sliced(qsizetype(std::strlen(state)));
        return;
    }
}

void CallMarker::begin()
{
    if (m_isAnothers)
        return;
    const QByteArray contents = line(IdleMark) + line("") + m_fingerprint;
    if (const int error = replaceFile(m_path, contents, OnDisk::Nothing); error != 0) {
        qCWarning(extensionsLog, "a crash of an extension would not be remembered: %ls: %s",
                  qUtf16Printable(m_path), std::strerror(error));
        return;
    }
    m_descriptor = openMarker(m_path, O_WRONLY);
    if (m_descriptor >= 0)
        flock(m_descriptor, LOCK_EX | LOCK_NB);
}

void CallMarker::write(int descriptor, Line line, const char *state, const char *call)
{
    std::array<char, LineLength - 1> mark; // the end of the line stays
    mark.fill(' ');
    const size_t length = std::min(std::strlen(state), mark.size());
    std::memcpy(mark.data(), state, length);
    std::memcpy(mark.data() + length, call, std::min(std::strlen(call), mark.size() - length));
    // Without a mark the extension is loaded again, which is how it would be without markers.
    [[maybe_unused]] const ssize_t written
        = pwrite(descriptor, mark.data(), mark.size(), line == Line::Call ? 0 : LineLength);
}

void CallMarker::enter(const char *call)
{
    if (m_descriptor >= 0)
        write(m_descriptor, Line::Call, HungMark, call);
}

void CallMarker::leave()
{
    if (m_descriptor >= 0)
        write(m_descriptor, Line::Call, IdleMark);
}

void CallMarker::forget(const QString &library)
{
    QFile::remove(path(library));
}
