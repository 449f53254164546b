# SPDX-License-Identifier: GPL-3.0-or-later
"""Mounts that nobody else sees: the return of the card is told by a mount at one fixed absolute path, so this process and what
it starts move into a mount namespace of their own, with a user namespace where they are not root."""
import ctypes
import errno
import os
import pathlib
import tempfile

CLONE_NEWNS, CLONE_NEWUSER = 0x00020000, 0x10000000
MS_BIND, MS_REC, MS_PRIVATE, MNT_DETACH = 4096, 16384, 1 << 18, 2
libc = ctypes.CDLL(None, use_errno=True)


def check(what, result):
    if result != 0:
        error = ctypes.get_errno()
        raise OSError(error, f"{what}: {os.strerror(error)}")


def mount(source, target, kind=None, flags=0):
    check(f"mount {target}", libc.mount(str(source).encode(), str(target).encode(), kind.encode() if kind else None,
                                        ctypes.c_ulong(flags), None))


def bind(source, target):
    mount(source, target, flags=MS_BIND | MS_REC)


def unmount(target):
    """At once, also while something in it is open."""
    check(f"unmount {target}", libc.umount2(str(target).encode(), MNT_DETACH))


def make_private():
    """In a chroot "/" is a folder of somebody's mount, not a mount. There a copy of the tree becomes the root; it hangs from
    /proc, which was made private first, so that nothing of it is seen outside."""
    try:
        mount("none", "/", flags=MS_REC | MS_PRIVATE)
    except OSError as error:
        if error.errno != errno.EINVAL:
            raise
        folder = os.getcwd()
        mount("none", "/proc", flags=MS_REC | MS_PRIVATE)
        bind("/", "/proc")
        mount("none", "/proc", flags=MS_REC | MS_PRIVATE)
        os.chroot("/proc")
        os.chdir(folder)


def enter():
    """Into the namespace, where /home/user is a fresh home and stands beside what else is in /home."""
    user, group = os.getuid(), os.getgid()
    if user == 0:
        check("unshare", libc.unshare(CLONE_NEWNS))
    else:
        check("unshare", libc.unshare(CLONE_NEWNS | CLONE_NEWUSER))
        pathlib.Path("/proc/self/setgroups").write_text("deny")
        pathlib.Path("/proc/self/uid_map").write_text(f"{user} {user} 1")
        pathlib.Path("/proc/self/gid_map").write_text(f"{group} {group} 1")
    make_private()
    homes = pathlib.Path(tempfile.mkdtemp(prefix="homes-"))
    mount("none", homes, "tmpfs")
    for home in pathlib.Path("/home").iterdir():
        if home.is_dir() and home.name != "user":
            (homes / home.name).mkdir()
            bind(home, homes / home.name)
    (homes / "user").mkdir()
    bind(homes, "/home")
    # For the test's own use beyond the namespace's first mounts.
    card = pathlib.Path(tempfile.mkdtemp(prefix="card-"))
    mount("card", card, "ramfs")
    return pathlib.Path("/home/user"), card
