// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "callmarker.h"
#include "extensionclock.h"
#include "extensiondescription.h"
#include "extensionfailures.h"

#include <kestrel/extensioninterface.h>

#include <QObject>
#include <QPluginLoader>
#include <QPointer>

#include <memory>

class ExtensionFrame;

// Stands for an extension towards the page: each call is marked, timed, and ends in a failure when it throws.
// After a failure nothing is called any more.
class GuardedExtension : public QObject, public ExtensionInterface
{
    Q_OBJECT
    Q_INTERFACES(ExtensionInterface)

public:
    GuardedExtension(const ExtensionDescription &description, const QString &library, ExtensionClock clock);
    // Deletes the extension.
    ~GuardedExtension() override;

    // What crashed or hung the last time, in this state of the library; Clean otherwise.
    [[nodiscard]] const CallMarker &marker() const { return *m_marker; }
    [[nodiscard]] const ExtensionDescription &description() const { return m_description; }
    // Its code is on the stack, below an event loop that it runs itself: it must not be deleted before
    // returned().
    [[nodiscard]] bool isInCall() const { return m_depth > 0; }
    [[nodiscard]] bool hasFailed() const { return !m_extension; }
    // In another language.
    void setName(const QString &name) { m_description.name = name; }
    // Loads and makes the extension. False when that failed; failed() was emitted.
    [[nodiscard]] bool load();

    void setActionMediator(ActionMediator *mediator) override;
    // A frame around the extension's widget; one a page. Null after a failure.
    [[nodiscard]] QGraphicsWidget *widget() override;
    void contentChanged(const ContentRecord &content) override;
    void surroundingsChanged() override;

    // What the extension asks the host for is watched for what cannot be done.
    void watch(PlayerHostInterface *host);

Q_SIGNALS:
    void failed(ExtensionFailure::Kind kind, const QString &detail);
    // From the last call that was under way.
    void returned();

private:
    template <typename Call> bool guarded(const char *name, Call call);
    void fail(ExtensionFailure::Kind kind, const QString &detail);
    void takeWidget();
    void notePainting(qint64 took);

    ExtensionDescription m_description;
    ExtensionClock m_clock;
    QPluginLoader m_loader;
    std::unique_ptr<CallMarker> m_marker;
    QPointer<QObject> m_root; // what the plug-in made
    ExtensionInterface *m_extension = nullptr; // null before it is made and after a failure
    qint64 m_longestPainting = 0; // ms
    int m_depth = 0; // calls that have not returned
    QPointer<QGraphicsWidget> m_content;
    QPointer<ExtensionFrame> m_frame;
};
