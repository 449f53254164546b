// SPDX-License-Identifier: GPL-3.0-or-later
#include "credentialsfile.h"

#include <QByteArray>
#include <QFile>

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qsizetype largestFile = 65536; // bytes

class Descriptor
{
public:
    explicit Descriptor(int number) : m_number(number) { }
    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    Q_DISABLE_COPY_MOVE(Descriptor)
    [[nodiscard]] int number() const { return m_number; }

private:
    int m_number;
};

// Bytes that are overwritten when they go.
class SecretBytes
{
public:
    ~SecretBytes() { explicit_bzero(m_bytes.data(), m_bytes.size()); }
    SecretBytes() = default;
    Q_DISABLE_COPY_MOVE(SecretBytes)
    // The error of reading, 0 on success; EFBIG when there is more than this holds.
    [[nodiscard]] int fill(int descriptor)
    {
        while (m_size < m_bytes.size()) {
            const ssize_t count = ::read(descriptor, m_bytes.data() + m_size, m_bytes.size() - m_size);
            if (count < 0 && errno != EINTR)
                return errno;
            if (count == 0)
                return 0;
            m_size += size_t(qMax(count, ssize_t(0)));
        }
        return EFBIG;
    }
    [[nodiscard]] QByteArrayView view() const { return {m_bytes.data(), qsizetype(m_size)}; }

private:
    std::array<char, largestFile> m_bytes{};
    size_t m_size = 0;
};

QString wrongWith(const struct stat &file, const QString &path)
{
    constexpr mode_t permissions = 07777;
    if (!S_ISREG(file.st_mode))
        return u"it is no regular file"_s;
    if (file.st_uid != ::geteuid())
        return u"it belongs to the user %1 and not to %2; mend it: chown %2 '%3'"_s.arg(file.st_uid)
            .arg(::geteuid())
            .arg(path);
    const mode_t mode = file.st_mode & permissions;
    if (mode != 0600 && mode != 0400)
        return u"its mode is %1, and only its owner may read it; mend it: chmod 600 '%2'"_s
            .arg(mode, 4, 8, QLatin1Char('0'))
            .arg(path);
    return {};
}

// The lines of the file one after the other, until a section of the server is complete.
class Sections
{
public:
    Sections(const QString &server, const QString &user) : m_server(server), m_user(user.toUtf8()) { }

    // False: such a line is none of this form.
    [[nodiscard]] bool take(QByteArrayView line)
    {
        const QByteArrayView text = line.trimmed();
        if (text.isEmpty() || text.startsWith('#'))
            return true;
        if (text.startsWith('['))
            return begin(text);
        const qsizetype sign = line.indexOf('=');
        if (sign < 0 || !m_isInSection)
            return false;
        const QByteArrayView key = line.first(sign).trimmed();
        QByteArrayView value = line.sliced(sign + 1);
        if (key == "user") {
            m_name = value.trimmed();
            return true;
        }
        if (value.startsWith(' '))
            value = value.sliced(1);
        m_secret = value;
        return key == "password";
    }

    // The section that ends here, if it is the one.
    [[nodiscard]] std::optional<Login> end()
    {
        const bool fits = m_isServer && !m_name.isEmpty() && (m_user.isEmpty() || m_name == m_user);
        std::optional<Login> login;
        if (fits)
            login = Login{QString::fromUtf8(m_name), QString::fromUtf8(m_secret), {}};
        m_name = {};
        m_secret = {};
        m_isServer = false;
        return login;
    }

private:
    [[nodiscard]] bool begin(QByteArrayView text)
    {
        if (!text.endsWith(']'))
            return false;
        const QByteArrayView name = text.sliced(1).chopped(1).trimmed();
        m_isInSection = true;
        m_isServer = QString::fromUtf8(name).compare(m_server, Qt::CaseInsensitive) == 0;
        return !name.isEmpty();
    }

    QString m_server;
    QByteArray m_user;
    QByteArrayView m_name;
    QByteArrayView m_secret;
    bool m_isInSection = false;
    bool m_isServer = false;
};

Login refused(const QString &path, const QString &why)
{
    return {{}, {}, u"%1 is not used: %2"_s.arg(path, why)};
}

Login parse(QByteArrayView text, const QString &path, const QString &server, const QString &user)
{
    Sections sections(server, user);
    std::optional<Login> found;
    for (int number = 1; !text.isEmpty(); ++number) {
        const qsizetype end = text.indexOf('\n');
        QByteArrayView line = end < 0 ? text : text.first(end);
        if (line.endsWith('\r'))
            line.chop(1);
        text = end < 0 ? QByteArrayView() : text.sliced(end + 1);
        if (!found && line.trimmed().startsWith('['))
            found = sections.end();
        if (!sections.take(line)) {
            if (found)
                wipe(found->password);
            return refused(
                path,
                u"line %1 is neither [host:port] nor, below that, user = ... or password = ..."_s.arg(
                    number));
        }
    }
    if (!found)
        found = sections.end();
    return found.value_or(Login());
}

} // namespace

Login loginFromFile(const QString &path, const QString &server, const QString &user)
{
    // Whatever lies there: to open a pipe must not wait for somebody who writes.
    const Descriptor file(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.number() < 0 && (errno == ENOENT || errno == ENOTDIR))
        return {};
    struct stat facts = {};
    if (file.number() < 0 || ::fstat(file.number(), &facts) != 0)
        return refused(path, QString::fromLocal8Bit(std::strerror(errno)));
    if (const QString wrong = wrongWith(facts, path); !wrong.isEmpty())
        return refused(path, wrong);
    SecretBytes bytes;
    if (const int error = bytes.fill(file.number()))
        return refused(path, QString::fromLocal8Bit(std::strerror(error)));
    return parse(bytes.view(), path, server, user);
}
