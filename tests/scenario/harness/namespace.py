"""A machine of its own for each test module: network, mounts, processes, terminals and /tmp.

The ports and socket paths of the system are fixed, so two modules can only run side by side, and
beside a daemon that is really at work on this machine, when neither sees the other.
"""

import ctypes
import fcntl
import os
import resource
import shutil
import socket
import struct
import subprocess
import tempfile
from pathlib import Path

from harness import places

_UNSHARE = ["unshare", "--net", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc"]
_MS_BIND, _MS_REC, _MNT_DETACH = 0x1000, 0x4000, 2
_SIOCGIFFLAGS, _SIOCSIFFLAGS, _IFF_UP = 0x8913, 0x8914, 1


def entering_command() -> tuple[list[str], str]:
    """The command prefix that enters new namespaces; or none, and why it is impossible here."""
    if not shutil.which("unshare"):
        return [], "there is no unshare command"
    reason = ""
    attempts = [_UNSHARE] if os.geteuid() == 0 else []
    for command in [*attempts, [*_UNSHARE, "--map-root-user"]]:
        probe = subprocess.run([*command, "true"], capture_output=True, text=True, check=False)
        if probe.returncode == 0:
            return command, ""
        reason = reason or probe.stderr.strip()
    return [], reason


def _mount(source: str, target: Path, kind: str | None, flags: int, data: str | None) -> None:
    libc = ctypes.CDLL(None, use_errno=True)

    def text(value: str | None) -> bytes | None:
        return value.encode() if value is not None else None

    if libc.mount(text(source), text(str(target)), text(kind), flags, text(data)) != 0:
        error = ctypes.get_errno()
        raise OSError(error, os.strerror(error), str(target))


def mount_tmpfs(folder: Path, size: str) -> None:
    """An empty file system of a given size, for as long as the namespace lives."""
    _mount("tmpfs", folder, "tmpfs", 0, f"size={size},mode=1777")


def unmount(folder: Path) -> None:
    """Also while something still has it open."""
    ctypes.CDLL(None).umount2(str(folder).encode(), _MNT_DETACH)


def _empty_tmp(kept: list[Path]) -> None:
    """A fresh /tmp. What is kept of the old one shows again under its old path."""
    below_tmp = [path for path in kept if path.is_dir() and Path("/tmp") in path.parents]
    handles = {path: os.open(path, os.O_PATH | os.O_DIRECTORY) for path in below_tmp}
    mount_tmpfs(Path("/tmp"), "512m")
    for path, handle in handles.items():
        if not path.is_dir():
            path.mkdir(parents=True)
            _mount(f"/proc/self/fd/{handle}", path, None, _MS_BIND | _MS_REC, None)
        os.close(handle)
    tempfile.tempdir = "/tmp"


def _own_terminals() -> None:
    """Pseudo-terminals of its own: a number that one module lets go, another one must not get
    while the first one's daemon still waits for its device."""
    _mount("devpts", Path("/dev/pts"), "devpts", 0, "newinstance,ptmxmode=0666,mode=0620")
    _mount("/dev/pts/ptmx", Path("/dev/ptmx"), None, _MS_BIND, None)


def _raise_loopback() -> None:
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as control:
        name = b"lo".ljust(16, b"\0")
        answer = fcntl.ioctl(control, _SIOCGIFFLAGS, name + bytes(24))
        flags = struct.unpack_from("=H", answer, 16)[0] | _IFF_UP
        fcntl.ioctl(control, _SIOCSIFFLAGS, name + struct.pack("=H", flags) + bytes(22))


def _keep_socket_buffers_small() -> None:
    """So that a peer that does not read is felt after some kilobytes, not after megabytes."""
    for setting in ("tcp_wmem", "tcp_rmem"):
        try:
            Path(f"/proc/sys/net/ipv4/{setting}").write_text("4096 32768 65536\n")
        except OSError:
            pass  # not ours to set here: the tests then send more until they feel it


def settle_in() -> None:
    """To be called first inside new namespaces."""
    _empty_tmp([places.CHECKOUT, places.binaries(), places.CAPTURES])
    _own_terminals()
    _raise_loopback()
    _keep_socket_buffers_small()
    os.chdir(places.CHECKOUT)
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))  # some tests end the daemon by a signal
