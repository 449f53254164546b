// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "extensionclock.h"

#include <kestrel/extensioninterface.h>

#include <QObject>
#include <QRegularExpression>
#include <QString>

#include <memory>

class ExtensionFailures;

// Finds extensions by their description files (<data folder>/kestrel/extensions/*.desktop, the user's before
// the system's, where a file replaces one of the same name unless its extension crashed or hung), and loads
// those that implement an interface and pass the filters. Nothing of an extension runs before init().
//
// The extensions that are handed out guard the real ones: what a call throws becomes a failure, what takes
// long is logged, and what never returns is not loaded by the next start.
class ExtensionArea : public QObject
{
    Q_OBJECT

public:
    explicit ExtensionArea(const QString &interfaceName, QObject *parent = nullptr);
    // Tests: another clock by which calls are timed.
    ExtensionArea(const QString &interfaceName, ExtensionClock clock, QObject *parent = nullptr);
    // Deletes what is loaded, without a signal.
    ~ExtensionArea() override;

    // A filter matches the whole name of a description file ("name.desktop"). Without one nothing is loaded.
    // There is no other process for extensions: what the first filter matches is told as a failure.
    void setOutOfProcessFilter(const QRegularExpression &filter);
    void setInProcessFilter(const QRegularExpression &filter);

    // Loads what is there and not loaded yet; may be called again, which finds also what was installed since.
    void init();
    // extensionRemoved() for each, the newest first; each is deleted right after its signal. For one in whose
    // call an event loop runs that is when the call has returned; init() before then keeps it.
    void unload();

    // Never null, and the area's. What it lists belongs on the page, below the extensions.
    [[nodiscard]] ExtensionFailures *failures() const;
    // Forgets that this extension crashed or hung, and loads it in place of the one that stood in for it.
    void tryAgain(const QString &file);

Q_SIGNALS:
    // What is handed out is the area's. Its widget() is null when the extension has none to give; the
    // widget that it gives clears up behind one that the extension deletes, and may be deleted with the page.
    void extensionInstantiated(ExtensionInterface *extension);
    // It is still there, and its mediator has to be there until it is gone: deleteLater().
    void extensionRemoved(ExtensionInterface *extension);

private:
    class Private;
    std::unique_ptr<Private> d;
};
