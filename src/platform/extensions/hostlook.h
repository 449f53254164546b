// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QGraphicsWidget;

// Gives a widget, and so everything in it that has no colours and font of its own, those of the theme as
// plain palette and font, and keeps them up to date. Extensions know no styles:
//
//     Window background      WindowText, Text, ButtonText titles    PlaceholderText what is secondary
//     Base, Button surfaces  Mid lines                              Highlight, Link the accent
//
// The font is that of secondary text, in logical pixels and with the person's text scale.
void keepHostLook(QGraphicsWidget *widget);
