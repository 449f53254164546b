// SPDX-License-Identifier: MIT
#pragma once

#include <kestrel/contentrecord.h>

#include <QLocale>
#include <QObject>

class ExtensionInterface;
class PlayerHostInterface;

// What the host has to say to one extension. The host makes it; an extension calls the virtual functions
// only, on the GUI thread, so that it links nothing of the host.
class ActionMediator : public QObject
{
    Q_OBJECT

public:
    explicit ActionMediator(ExtensionInterface *extension, QObject *parent = nullptr);
    ~ActionMediator() override;

    // The way back to the host; there before the extension gets the mediator.
    [[nodiscard]] virtual PlayerHostInterface *hostInterface() const;
    // What the extension's contentChanged() was told last, so that nobody has to keep it.
    [[nodiscard]] virtual ContentRecord content() const;
    // The language that the person reads. Numbers and dates are written in QLocale().
    [[nodiscard]] virtual QLocale textLocale() const;
    // The person wants nothing to move by itself.
    [[nodiscard]] virtual bool reducedMotion() const;

    // For the host.
    virtual void setHostInterface(PlayerHostInterface *host);
    // Keeps the record and hands it to the extension.
    virtual void setContent(const ContentRecord &content);

private:
    ExtensionInterface *m_extension;
    PlayerHostInterface *m_host = nullptr;
    ContentRecord m_content;
};
