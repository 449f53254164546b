// SPDX-License-Identifier: GPL-3.0-or-later
#include "startup.h"

int main(int argc, char **argv)
{
    return runKestrel(argc, argv);
}
