// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// Keeps in a file of its own whether the program is inside an extension, so that the next start knows when it
// never came out again. A mark is one write of a few bytes to a file that is open, which is not waited for:
// it survives the end of the program in whatever way, though not that of the machine.
//
// The file is made by replaceFile(), is locked while the program that writes it lives, and goes when the
// extension is unloaded. What tells of a crash stays until the library is another one, or forget().
class CallMarker
{
public:
    enum class Past {
        Clean, // nothing known against it
        Crashed,
        Hung,
    };

    // `library` is the path of what may crash: several extensions whose descriptions bear one name have a
    // file each. `fingerprint` tells one state of the library from another.
    CallMarker(const QString &library, const QByteArray &fingerprint);
    // Removes the file, unless it tells of a crash.
    ~CallMarker();
    Q_DISABLE_COPY_MOVE(CallMarker)

    [[nodiscard]] Past past() const { return m_past; }
    // What was called, for the log.
    [[nodiscard]] QByteArray pastCall() const { return m_pastCall; }

    // Begins to mark; only after a clean past. Without a folder that can be written nothing is marked.
    void begin();
    void enter(const char *call);
    void leave();
    // -1: nothing is marked.
    [[nodiscard]] int descriptor() const { return m_descriptor; }

    static void forget(const QString &library);
    // Below $XDG_STATE_HOME/kestrel/extensions.
    [[nodiscard]] static QString path(const QString &library);

    // The file begins with two lines of one length, each a state and, except when idle, a call. The first is
    // what the program does; the second, empty until the program ends by a signal, is what then counts: other
    // threads may run on and write the first one still.
    enum class Line { Call, End };
    static constexpr qsizetype LineLength = 64;
    static constexpr char IdleMark[] = "idle"; // as the second line: the extension has no part in the end
    static constexpr char HungMark[] = "in ";
    static constexpr char CrashedMark[] = "crashed in ";
    // In place of a call: an event, a timer, a thread.
    static constexpr char OwnCode[] = "code of its own";
    // Safe in a signal handler.
    static void write(int descriptor, Line line, const char *state, const char *call = "");

private:
    void read();

    QString m_path;
    QByteArray m_fingerprint;
    Past m_past = Past::Clean;
    QByteArray m_pastCall;
    bool m_isAnothers = false; // a program that runs
    int m_descriptor = -1;
};
