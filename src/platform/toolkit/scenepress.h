// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QGraphicsScene;

namespace toolkit {

// Takes a running press away from the item that holds it: the item gets a release far outside of itself,
// which is no tap to any widget, and then loses the grab.
void cancelScenePress(QGraphicsScene *scene);

// While such a release is on its way: gesture recognition must not take it for the finger.
[[nodiscard]] bool isCancellingScenePress();

} // namespace toolkit
