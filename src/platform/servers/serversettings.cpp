// SPDX-License-Identifier: GPL-3.0-or-later
#include "serversettings.h"

ServerSettings ServerSettings::ofEndpoint()
{
    return {};
}

ServerSettings ServerSettings::ofVirtuoso()
{
    return {};
}
