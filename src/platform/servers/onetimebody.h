// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QIODevice>

#include <algorithm>
#include <utility>

// The body of a request that may go out only once: it cannot be read from its beginning again unless that was
// allowed.
class OneTimeBody : public QIODevice
{
    Q_OBJECT

public:
    explicit OneTimeBody(const QByteArray &content) : m_content(content) { open(QIODevice::ReadOnly); }

    void allowAgain() { m_mayReset = true; }

    [[nodiscard]] bool isSequential() const override { return true; }
    [[nodiscard]] qint64 size() const override { return m_content.size(); }
    [[nodiscard]] qint64 bytesAvailable() const override
    {
        return m_content.size() - m_at + QIODevice::bytesAvailable();
    }
    [[nodiscard]] bool atEnd() const override { return bytesAvailable() == 0; }
    bool reset() override
    {
        const bool may = std::exchange(m_mayReset, false) || m_at == 0;
        if (may)
            m_at = 0;
        return may;
    }

protected:
    qint64 readData(char *data, qint64 size) override
    {
        const qint64 given = std::min<qint64>(size, m_content.size() - m_at);
        std::copy_n(m_content.constData() + m_at, given, data);
        m_at += given;
        return given > 0 || size == 0 ? given : -1;
    }
    qint64 writeData(const char *data, qint64 size) override
    {
        Q_UNUSED(data)
        Q_UNUSED(size)
        return -1;
    }

private:
    QByteArray m_content;
    qint64 m_at = 0;
    bool m_mayReset = false;
};
