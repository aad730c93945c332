"""Certificates for a test: an authority of its own, and whom it vouches for."""

import subprocess
from pathlib import Path


def _openssl(*arguments: str | Path) -> None:
    subprocess.run(["openssl", *arguments], check=True, capture_output=True)


class Authority:
    """Makes its key and its own certificate in the folder."""

    def __init__(self, folder: Path, name: str) -> None:
        self._folder = folder
        self._key = folder / f"{name}.key"
        self.certificate = folder / f"{name}.crt"
        _openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                 "-nodes", "-days", "2", "-subj", f"/CN={name}", "-keyout", self._key, "-out",
                 self.certificate)

    def vouch(self, name: str, *alternatives: str) -> tuple[Path, Path]:
        """Certificate and key of somebody, with other names such as "IP:127.0.0.1"."""
        key, request, certificate, extensions = (
            self._folder / f"{name}.{ending}" for ending in ("key", "csr", "crt", "ext"))
        _openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                 "-subj", f"/CN={name}", "-keyout", key, "-out", request)
        extensions.write_text(
            f"subjectAltName={','.join(alternatives or (f'DNS:{name}',))}\n")
        _openssl("x509", "-req", "-in", request, "-CA", self.certificate, "-CAkey", self._key,
                 "-CAcreateserial", "-days", "2", "-extfile", extensions, "-out", certificate)
        return certificate, key
