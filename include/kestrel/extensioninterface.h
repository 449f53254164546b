// SPDX-License-Identifier: MIT
#pragma once

#include <kestrel/actionmediator.h>
#include <kestrel/contentrecord.h>
#include <kestrel/playerhostinterface.h>

#include <QtPlugin>

QT_BEGIN_NAMESPACE
class QGraphicsWidget;
QT_END_NAMESPACE

// The interface that these headers describe, with its version. It names one binary layout: a host loads an
// extension only when both were made with the same text. Give it to Q_PLUGIN_METADATA and, as "Interface", to
// the description file.
#define KESTREL_EXTENSION_INTERFACE "com.harrow.Kestrel.extensions.PlayerInterface/1.0"

// One extension: something of its own to show below the details of a video. The plug-in's root object
// inherits QObject and this class. Everything is called on the GUI thread, in the order in which it stands
// here. What a call throws is caught, and ends the extension's part in the program.
class ExtensionInterface
{
public:
    // The host deletes the extension when the person turns extensions off, and at its end. Widgets that were
    // given out are the extension's to delete here; the host holds none of them any more.
    virtual ~ExtensionInterface() = default;

    // Once, first of all. The mediator outlives the extension.
    virtual void setActionMediator(ActionMediator *mediator) = 0;

    // Once, after that: what stands on the details page. It stays the extension's, and may grow and shrink:
    // the page is as wide as the screen, and scrolls. Colours, font, text scale and direction come to it from
    // its parent, as to every QGraphicsWidget: palette(), font(), layoutDirection(), changeEvent().
    virtual QGraphicsWidget *widget() = 0;

    // The page shows another video, or the same one with other details. Whatever takes long must not happen
    // in here: a call that takes longer than a frame of the screen (16 ms) is written to the log.
    virtual void contentChanged(const ContentRecord &content) = 0;

    // What the mediator says of the person's language and wish for calm may have changed.
    virtual void surroundingsChanged() { }
};

QT_BEGIN_NAMESPACE
Q_DECLARE_INTERFACE(ExtensionInterface, KESTREL_EXTENSION_INTERFACE)
QT_END_NAMESPACE
