// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gst/gst.h>

// Every source that the pipeline makes for an address of a network says who asks and gives up in time.
void setUpNetworkSources(GstElement *pipeline);
