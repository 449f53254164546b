// SPDX-License-Identifier: GPL-3.0-or-later
#include "elementhooks.h"

#include <cstring>

bool isMadeBy(GstElement *element, const char *factory)
{
    GstElementFactory *made = gst_element_get_factory(element);
    return made != nullptr && std::strcmp(GST_OBJECT_NAME(made), factory) == 0;
}
