"""Build backend for the velmora package, of the standard library alone.

pip builds a local project in an isolated environment into which it first
installs the backend named in pyproject.toml; from a package index, which may
be out of reach. This backend needs nothing installed (requires = []), so
``pip install ./python`` works offline, also in a fresh virtual environment.
It writes a pure-Python wheel of velmora/ (and an editable one, and an sdist)
with the name, version, description and requires-python of [project].
"""
import base64
import hashlib
import io
import os
import re
import tarfile
import zipfile

HERE = os.path.dirname(os.path.abspath(__file__))


def _project():
    with open(os.path.join(HERE, "pyproject.toml"), encoding="utf-8") as f:
        table = f.read().split("[project]", 1)[1].split("\n[", 1)[0]
    return dict(re.findall(r'^([\w-]+)\s*=\s*"([^"]*)"\s*$', table, re.M))


def _metadata(project):
    return ("Metadata-Version: 2.1\nName: %s\nVersion: %s\nSummary: %s\nRequires-Python: %s\n"
            % (project["name"], project["version"], project["description"],
               project["requires-python"]))


def _sources():
    """(path in the archive, file) of every module of the package."""
    for root, dirs, files in os.walk(os.path.join(HERE, "velmora")):
        dirs[:] = [d for d in dirs if d != "__pycache__"]
        for name in sorted(files):
            if name.endswith(".py"):
                path = os.path.join(root, name)
                yield os.path.relpath(path, HERE).replace(os.sep, "/"), path


def _wheel(directory, contents):
    """Writes a wheel of contents (archive path: bytes) with its metadata."""
    project = _project()
    stem = "%s-%s" % (project["name"], project["version"])
    info = stem + ".dist-info/"
    contents[info + "METADATA"] = _metadata(project).encode()
    contents[info + "WHEEL"] = (b"Wheel-Version: 1.0\nGenerator: velmora _backend\n"
                                b"Root-Is-Purelib: true\nTag: py3-none-any\n")
    record = []
    for path, data in contents.items():
        digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
        record.append("%s,sha256=%s,%d" % (path, digest, len(data)))
    contents[info + "RECORD"] = ("\n".join(record + [info + "RECORD,,"]) + "\n").encode()
    name = stem + "-py3-none-any.whl"
    with zipfile.ZipFile(os.path.join(directory, name), "w", zipfile.ZIP_DEFLATED) as wheel:
        for path, data in contents.items():
            wheel.writestr(path, data)
    return name


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    contents = {}
    for path, source in _sources():
        with open(source, "rb") as f:
            contents[path] = f.read()
    return _wheel(wheel_directory, contents)


def build_editable(wheel_directory, config_settings=None, metadata_directory=None):
    return _wheel(wheel_directory, {"velmora.pth": (HERE + "\n").encode()})


def build_sdist(sdist_directory, config_settings=None):
    project = _project()
    stem = "%s-%s" % (project["name"], project["version"])
    with tarfile.open(os.path.join(sdist_directory, stem + ".tar.gz"), "w:gz") as sdist:
        for path, source in [("pyproject.toml", os.path.join(HERE, "pyproject.toml")),
                             ("_backend.py", os.path.abspath(__file__))] + list(_sources()):
            sdist.add(source, stem + "/" + path)
        metadata = _metadata(project).encode()
        entry = tarfile.TarInfo(stem + "/PKG-INFO")
        entry.size = len(metadata)
        sdist.addfile(entry, io.BytesIO(metadata))
    return stem + ".tar.gz"
