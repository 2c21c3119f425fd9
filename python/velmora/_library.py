"""Finding and loading libvelmora.

The places, in order: the file named by VELMORA_LIBRARY (when that is set,
nothing else is tried); the lib directory of a ``cmake --install`` prefix, as
pkg-config reports it for the package ``velmora`` (PKG_CONFIG_PATH names the
prefix's lib/pkgconfig), then the lib directories of this Python's prefix (a
virtual environment installed into) and of /usr/local (CMake's default prefix);
last the dynamic loader's own search (ctypes.util.find_library, then the
library's file name). The library is loaded by its full path where one is
known, because it looks for the SDK jars in its own directory.
"""
import ctypes
import ctypes.util
import os
import shutil
import subprocess
import sys

SONAME = "libvelmora.so.1"


class LibraryNotFoundError(OSError):
    """No libvelmora could be loaded; the message names every place tried."""


def _pkg_config_libdir():
    """(libdir or None, what happened)."""
    tool = shutil.which("pkg-config")
    if tool is None:
        return None, "pkg-config is not installed"
    try:
        run = subprocess.run([tool, "--variable=libdir", "velmora"], capture_output=True,
                             text=True, timeout=30)
    except (OSError, subprocess.SubprocessError) as error:
        return None, "pkg-config failed: %s" % error
    if run.returncode != 0 or not run.stdout.strip():
        return None, "pkg-config knows no package velmora (PKG_CONFIG_PATH=%s)" % (
            os.environ.get("PKG_CONFIG_PATH", ""))
    return os.path.normpath(run.stdout.strip()), None


def candidates():
    """The places to try, in order, as (where, path or name, note) triples;
    note is set when the place cannot be tried at all."""
    explicit = os.environ.get("VELMORA_LIBRARY")
    if explicit:
        return [("VELMORA_LIBRARY", explicit, None)]
    libdir, note = _pkg_config_libdir()
    found = [("pkg-config libdir", os.path.join(libdir, SONAME) if libdir else "", note)]
    for prefix in dict.fromkeys((sys.prefix, "/usr/local")):
        found.append(("install prefix %s" % prefix, os.path.join(prefix, "lib", SONAME), None))
    name = ctypes.util.find_library("velmora")
    found.append(("dynamic loader", name or SONAME, None))
    return found


def load():
    """Loads the library from the first place that has it; raises
    LibraryNotFoundError naming every place tried and why it failed."""
    tried = []
    for where, path, note in candidates():
        if note is None and os.sep in path and not os.path.exists(path):
            note = "no such file"
        if note is None:
            try:
                return ctypes.CDLL(path)
            except OSError as error:
                note = str(error)
        detail = note if not path or note.startswith(path) else "%s: %s" % (path, note)
        tried.append("  %s: %s" % (where, detail))
    raise LibraryNotFoundError(
        "libvelmora could not be loaded. Tried:\n%s\nSet VELMORA_LIBRARY to the library file "
        "(for example <prefix>/lib/%s of a cmake --install), or PKG_CONFIG_PATH to "
        "<prefix>/lib/pkgconfig." % ("\n".join(tried), SONAME))
