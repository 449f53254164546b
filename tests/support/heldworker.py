# SPDX-License-Identifier: GPL-3.0-or-later
"""heldworker.py COUNTER FILES WORKER [ARGUMENT]...: a media worker that stops in the middle of a scan.

Stands between a pool and the media worker that does the reading. Of the files that are read for what they say, as the store
does, the first FILES are; COUNTER, a file that all workers of the pool share, counts them. Each further one gets no answer,
so that it is given up after the pool's deadline. Pictures are made without a limit.
"""
import fcntl
import os
import select
import signal
import socket
import struct
import subprocess
import sys

POOL = 3  # where a worker finds its end of the socket
REQUEST = struct.Struct("6I")  # as in services/common/workerprotocol.h
WANT_FRAME = 2


def may_read(counter, files):
    with open(counter, "ab") as taken:
        fcntl.flock(taken, fcntl.LOCK_EX)
        if os.fstat(taken.fileno()).st_size >= files:
            return False
        taken.write(b".")
        return True


def relay(pool, worker, counter, files):
    while True:
        for ready in select.select([pool, worker], [], [])[0]:
            data, descriptors, _, _ = socket.recv_fds(ready, 1 << 16, 1)
            if not data:
                return
            if ready is worker:
                pool.sendall(data)
                continue
            _, flags, *_ = REQUEST.unpack(data)
            while not flags & WANT_FRAME and not may_read(counter, files):
                signal.pause()
            socket.send_fds(worker, [data], descriptors)
            for descriptor in descriptors:
                os.close(descriptor)


def main(counter, files, *command):
    if "--write-registry" in command:
        os.execv(command[0], command)
    ours, theirs = socket.socketpair()
    pool = socket.socket(fileno=os.dup(POOL))
    os.dup2(theirs.fileno(), POOL)
    with subprocess.Popen(command, pass_fds=(POOL,)) as process:
        theirs.close()
        os.close(POOL)
        relay(pool, ours, counter, int(files))
        ours.close()
    return process.returncode


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
