// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Puts the drivers for libraries on servers, "QSPARQL_ENDPOINT" and "QVIRTUOSO", in the place of those that
// only say that they are missing. Called once by start-up, before the first connection is opened.
void registerServerDrivers();
