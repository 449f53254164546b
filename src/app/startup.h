// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The program from its arguments to its exit code.
int runKestrel(int argc, char **argv);
