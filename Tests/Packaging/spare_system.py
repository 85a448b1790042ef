"""This machine's system to change at will: each `SpareSystem` is a layer over it that is thrown away, and the network is
one where there is nobody but the test's own server. With root's rights, or as root of a user namespace."""

import contextlib
import fcntl
import functools
import http.server
import os
import pathlib
import socket
import ssl
import struct
import subprocess
import sys
import tempfile
import threading

HOST = "korvex.example"
MOUNT = """set -e
mount -t tmpfs tmpfs "$1"
mkdir "$1/upper" "$1/work" "$1/root"
mount -t overlay overlay -o "lowerdir=/,upperdir=$1/upper,workdir=$1/work" "$1/root"
mount --rbind /proc "$1/root/proc"
mount --rbind /dev "$1/root/dev"
mount -t tmpfs tmpfs "$1/root/tmp"
"""


def run_apart():
    """Starts the script anew, with mounts and a network of its own that end with it."""
    if "VANTOREL_APART" not in os.environ:
        os.environ["VANTOREL_APART"] = "1"
        options = [] if os.geteuid() == 0 else ["--map-root-user"]
        os.execvp("unshare", ["unshare", "--mount", "--net", *options, "--", sys.executable, "-B", *sys.argv])
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:  # netdevice(7)
        name_and_flags = struct.pack("16sh22x", b"lo", 1)  # IFF_UP
        fcntl.ioctl(any_socket, 0x8914, name_and_flags)  # SIOCSIFFLAGS


class SpareSystem(contextlib.AbstractContextManager):
    """It trusts `certificate` and has no sources of packages."""

    def __init__(self, certificate):
        self._folder = tempfile.TemporaryDirectory(prefix="spare-system-")
        subprocess.run(["sh", "-c", MOUNT, "sh", self._folder.name], check=True)
        self.root = pathlib.Path(self._folder.name, "root")
        for known in (self.root / "etc/apt/sources.list", *(self.root / "etc/apt/sources.list.d").iterdir(),
                      *(self.root / "var/lib/apt/lists").glob("*_*")):
            known.unlink(missing_ok=True)
        (self.root / "etc/apt/apt.conf.d/99spare").write_text(
            'APT::Sandbox::User "root";\nAcquire::http::Proxy "false";\nAcquire::https::Proxy "false";\n')
        (self.root / "etc/hosts").write_text(f"127.0.0.1 localhost {HOST}\n")
        with open(self.root / "etc/ssl/certs/ca-certificates.crt", "a", encoding="ascii") as trusted:
            trusted.write(certificate.read_text())
        self._before = self._changed()

    def command(self, *command):
        return ["chroot", str(self.root), *map(str, command)]

    def run(self, *command):
        """The process, ended, whatever its status."""
        return subprocess.run(self.command(*command), stdin=subprocess.DEVNULL, capture_output=True, text=True, env={
            "PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "HOME": "/root", "LC_ALL": "C.UTF-8",
            "DEBIAN_FRONTEND": "noninteractive"})

    def do(self, *command):
        run = self.run(*command)
        assert run.returncode == 0, f"{command}: {run.stdout}{run.stderr}"
        return run.stdout

    def version(self, package):
        """Of what is installed; empty when nothing is."""
        fields = self.run("dpkg-query", "--show", "--showformat", "${db:Status-Status} ${Version}", package).stdout.split()
        return fields[1] if fields[:1] == ["installed"] else ""

    def _changed(self):
        upper = pathlib.Path(self._folder.name, "upper")
        books = tuple(upper / book for book in ("var/lib/dpkg", "var/lib/apt", "var/cache", "var/log"))
        return {str(path.relative_to(upper)) for path in upper.rglob("*")
                if not path.is_dir() and not any(path.is_relative_to(book) for book in books)}

    def changed(self):
        """The files that were added or replaced since."""
        return self._changed() - self._before

    def __exit__(self, *_):
        subprocess.run(["umount", "--recursive", "--lazy", self._folder.name], check=True)
        self._folder.cleanup()


def make_certificate(folder):
    """A file with a certificate for the server and its key, and one with the certificate alone."""
    key, public, both = folder / "key.pem", folder / "public.pem", folder / "both.pem"
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                    "-days", "2", "-subj", f"/CN={HOST}", "-addext", f"subjectAltName=DNS:{HOST}", "-keyout", key,
                    "-out", public], check=True, capture_output=True)
    both.write_text(key.read_text() + public.read_text())
    return both, public


class FileServer(contextlib.AbstractContextManager):
    """What https://korvex.example is in a spare system: the files in a folder. Notes the paths that are asked for."""

    def __init__(self, folder, certificate):
        requests = self.requests = []

        class Handler(http.server.SimpleHTTPRequestHandler):
            def log_request(self, *_):
                requests.append(self.path)

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 443),
                                                       functools.partial(Handler, directory=str(folder)))
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate)
        self._server.socket = context.wrap_socket(self._server.socket, server_side=True, do_handshake_on_connect=False)
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def __exit__(self, *_):
        self._server.shutdown()
        self._server.server_close()
