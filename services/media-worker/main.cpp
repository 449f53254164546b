// SPDX-License-Identifier: GPL-3.0-or-later
#include "worker.h"

int main(int argc, char *argv[])
{
    return runWorker(argc, argv, nullptr);
}
