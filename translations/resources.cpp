// SPDX-License-Identifier: GPL-3.0-or-later
#include <QtGlobal>

int qInitResources_theme();
int qInitResources_translations();

// What the linker is told to look for, so that the resources come along; registering them twice does no harm.
extern "C" int kestrel_resources_anchor()
{
    return qInitResources_theme() + qInitResources_translations();
}
