// SPDX-License-Identifier: GPL-3.0-or-later
#include "nonetwork.h"

#include <seccomp.h>
#include <sys/socket.h>

#include <cerrno>
#include <initializer_list>

bool giveUpNetwork()
{
    scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
    if (!filter)
        return false;
    bool ok = true;
    for (const int family : {AF_INET, AF_INET6}) {
        ok = ok
            && seccomp_rule_add(filter, SCMP_ACT_ERRNO(EACCES), SCMP_SYS(socket), 1,
                                SCMP_A0(SCMP_CMP_EQ, scmp_datum_t(family)))
                == 0;
    }
    ok = ok && seccomp_load(filter) == 0;
    seccomp_release(filter);
    return ok;
}
