// SPDX-License-Identifier: GPL-3.0-or-later
#include "extensiondescription.h"

#include <platform/toolkit/locale.h>

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr char Group[] = "Kestrel Extension";
constexpr qsizetype LargestFile = 65'536;
constexpr qsizetype LongestName = 80; // it stands in a sentence

using KeyFile = std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)>;

// Not by QFile: a pipe that somebody left there would never be opened.
std::optional<QByteArray> contents(const QString &path)
{
    const int file = open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return std::nullopt;
    struct stat found = {};
    std::optional<QByteArray> read;
    if (fstat(file, &found) == 0 && S_ISREG(found.st_mode) && found.st_size <= LargestFile) {
        QByteArray bytes(found.st_size, Qt::Uninitialized);
        const ssize_t count = ::read(file, bytes.data(), size_t(bytes.size()));
        if (count >= 0)
            read = bytes.first(count);
    }
    close(file);
    return read;
}

QString text(char *owned)
{
    const QString text = QString::fromUtf8(owned);
    g_free(owned);
    return text.trimmed();
}

QString value(GKeyFile *file, const char *key)
{
    return text(g_key_file_get_string(file, Group, key, nullptr));
}

// In the language of the program's texts, which need not be that of the environment.
QString localized(GKeyFile *file, const char *key)
{
    const QByteArray locale = toolkit::Locale::ofTexts().name().toUtf8();
    return text(g_key_file_get_locale_string(file, Group, key, locale.constData(), nullptr));
}

QString faultOf(const ExtensionDescription &description)
{
    if (description.interfaceName.isEmpty())
        return u"it names no Interface"_s;
    if (description.library.isEmpty())
        return u"it names no Library"_s;
    if (description.library.contains(u'/') && !description.library.startsWith(u'/'))
        return u"Library is neither a file name nor an absolute path"_s;
    return {};
}

} // namespace

ExtensionDescription ExtensionDescription::read(const QString &path)
{
    ExtensionDescription description;
    description.path = path;
    description.file = QFileInfo(path).fileName();
    description.name = description.file;
    const std::optional<QByteArray> bytes = contents(path);
    if (!bytes) {
        description.fault = u"it cannot be read"_s;
        return description;
    }
    const KeyFile file(g_key_file_new(), &g_key_file_unref);
    GError *error = nullptr;
    if (!g_key_file_load_from_data(file.get(), bytes->constData(), size_t(bytes->size()),
                                   G_KEY_FILE_KEEP_TRANSLATIONS, &error)) {
        description.fault = QString::fromUtf8(error->message);
        g_error_free(error);
        return description;
    }
    // One line, whatever is escaped in it.
    if (const QString name = localized(file.get(), "Name").simplified(); !name.isEmpty())
        description.name = name.size() > LongestName ? name.first(LongestName - 1) + u'…' : name;
    description.interfaceName = value(file.get(), "Interface");
    description.library = value(file.get(), "Library");
    description.hidden = g_key_file_get_boolean(file.get(), Group, "Hidden", nullptr) != 0;
    if (!description.hidden)
        description.fault = faultOf(description);
    return description;
}

QString ExtensionDescription::libraryPath(const QStringList &folders) const
{
    if (library.startsWith(u'/'))
        return QFileInfo(library).isFile() ? library : QString();
    for (const QString &folder : folders) {
        const QFileInfo candidate(folder + u'/' + library);
        if (candidate.isFile())
            return candidate.absoluteFilePath();
    }
    return {};
}
