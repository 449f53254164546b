// SPDX-License-Identifier: GPL-3.0-or-later
#include "subtitlefinder.h"

#include "languages.h"
#include "subtitlecue.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace subtitles {

namespace {

constexpr int MostEntries = 20'000; // of a folder
constexpr int MostFiles = 32;
constexpr qsizetype LongestTitle = 60;

bool isSubtitleName(const QString &name)
{
    static const QStringList suffixes{u".srt"_s, u".vtt"_s, u".ass"_s, u".ssa"_s, u".sub"_s};
    return std::any_of(suffixes.begin(), suffixes.end(),
                       [&](const QString &suffix) { return name.endsWith(suffix, Qt::CaseInsensitive); });
}

// Of "film.en-GB.forced.srt", for "film", "en-GB.forced"; null when the file does not belong to it.
QString restOfName(const QString &name, const QString &base)
{
    const QString stem = name.left(name.lastIndexOf(u'.'));
    if (!stem.startsWith(base, Qt::CaseInsensitive))
        return {};
    if (stem.size() == base.size())
        return u""_s;
    return stem.at(base.size()) == u'.' ? stem.mid(base.size() + 1) : QString();
}

// What the words of a name say: a language, "forced", "sdh"; the rest is its title.
void readWords(const QStringList &words, FoundFile *file)
{
    QStringList title;
    for (const QString &word : words) {
        const QString lower = word.toLower();
        if (lower == "forced"_L1 || lower == "foreign"_L1) {
            file->forced = true;
        } else if (lower == "default"_L1 || word.isEmpty()) {
            continue;
        } else if (file->track.language.isEmpty() && lower != "sdh"_L1 && lower != "cc"_L1 && lower != "hi"_L1
                   && !languages::normalized(word).isEmpty()) {
            file->track.language = languages::normalized(word);
        } else {
            title.append(lower == "sdh"_L1 || lower == "cc"_L1 ? word.toUpper() : word);
        }
    }
    file->track.title = title.join(u' ').left(LongestTitle);
}

class Finder
{
public:
    explicit Finder(const QString &videoPath)
        : m_video(videoPath),
          m_root(m_video.dir()),
          m_canonicalRoot(m_root.canonicalPath()),
          m_base(m_video.completeBaseName())
    {
    }

    QList<FoundFile> find()
    {
        if (m_canonicalRoot.isEmpty() || m_base.isEmpty())
            return {};
        QStringList folders;
        look(m_root.path(), false, &folders);
        for (const QString &folder : std::as_const(folders))
            look(folder, false, nullptr);
        for (const QString &folder : std::as_const(folders)) {
            if (QFileInfo(folder + u'/' + m_base).isDir())
                look(folder + u'/' + m_base, true, nullptr);
        }
        std::sort(m_found.begin(), m_found.end(), [](const FoundFile &a, const FoundFile &b) {
            return a.bare != b.bare ? a.bare : a.track.id < b.track.id;
        });
        m_found.resize(std::min<qsizetype>(m_found.size(), MostFiles));
        return m_found;
    }

private:
    void look(const QString &folder, bool everything, QStringList *subfolders)
    {
        QDirIterator iterator(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
        for (int count = 0; count < MostEntries && iterator.hasNext(); ++count) {
            const QString path = iterator.next();
            const QString name = iterator.fileName();
            if (subfolders != nullptr && isSubtitleFolder(name) && iterator.fileInfo().isDir())
                subfolders->append(path);
            else if (isSubtitleName(name) && m_found.size() < 8 * MostFiles)
                take(path, name, everything);
        }
    }

    static bool isSubtitleFolder(const QString &name)
    {
        return name.compare("subs"_L1, Qt::CaseInsensitive) == 0
            || name.compare("subtitles"_L1, Qt::CaseInsensitive) == 0;
    }

    void take(const QString &path, const QString &name, bool everything)
    {
        QString rest = restOfName(name, m_base);
        if (rest.isNull() && everything)
            rest = name.left(name.lastIndexOf(u'.')).replace(u'_', u'.');
        if (rest.isNull())
            return;
        const QFileInfo file(path);
        const QString real = file.canonicalFilePath();
        if (!file.isFile() || file.size() == 0 || file.size() > LargestFile
            || !real.startsWith(m_canonicalRoot == "/"_L1 ? m_canonicalRoot : m_canonicalRoot + u'/'))
            return;
        FoundFile found;
        found.path = real;
        found.bare = rest.isEmpty();
        found.track.id = u"file:"_s + m_root.relativeFilePath(path);
        found.track.codec = name.mid(name.lastIndexOf(u'.') + 1).toUpper();
        found.track.external = true;
        readWords(rest.split(u'.'), &found);
        m_found.append(found);
    }

    QFileInfo m_video;
    QDir m_root;
    QString m_canonicalRoot;
    QString m_base;
    QList<FoundFile> m_found;
};

} // namespace

QList<FoundFile> findFiles(const QString &videoPath)
{
    return Finder(videoPath).find();
}

// Neither a link nor a pipe that was put in its place meanwhile is followed or waited for.
QByteArray readFile(const FoundFile &file)
{
    const int descriptor
        = open(QFile::encodeName(file.path).constData(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0)
        return {};
    struct stat state = {};
    QFile reader;
    const bool regular
        = fstat(descriptor, &state) == 0 && S_ISREG(state.st_mode) && state.st_size <= LargestFile;
    if (!regular || !reader.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        close(descriptor);
        return {};
    }
    return reader.read(LargestFile);
}

} // namespace subtitles
