# The Python package's tests run against the build tree: the package from
# python/, the library from $VELMORA_BUILD_DIR/lib (default build/) with the SDK
# test double beside it. The test process starts Java once (fixture `sdk`);
# tests that need a fresh process run Python code in a child (`run`).
import ctypes
import os
import re
import subprocess
import sys

import pytest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUILD = os.environ.get("VELMORA_BUILD_DIR", os.path.join(ROOT, "build"))
LIBRARY = os.path.join(BUILD, "lib", "libvelmora.so.1")
sys.path.insert(0, os.path.join(ROOT, "python"))
os.environ["VELMORA_LIBRARY"] = LIBRARY

import velmora  # noqa: E402

P = ctypes.c_void_p
# JNIEnv functions used: (index in the function table, result, arguments after env)
JNI = {"FindClass": (6, P, [ctypes.c_char_p]), "ExceptionDescribe": (16, None, []),
       "GetStaticMethodID": (113, P, [P, ctypes.c_char_p, ctypes.c_char_p]),
       "CallStaticObjectMethodA": (116, P, [P, P, P]), "CallStaticIntMethodA": (131, ctypes.c_int, [P, P, P]),
       "NewStringUTF": (167, P, [ctypes.c_char_p]), "GetStringUTFChars": (169, P, [P, P]),
       "NewObjectArray": (172, P, [ctypes.c_int, P, P]), "SetObjectArrayElement": (174, None, [P, ctypes.c_int, P]),
       "ExceptionCheck": (228, ctypes.c_ubyte, [])}


def _slot(pointer, index, result, *arguments):
    table = ctypes.cast(pointer, ctypes.POINTER(ctypes.POINTER(P)))[0]
    return ctypes.CFUNCTYPE(result, P, *arguments)(table[index])


def java_text(text):
    """Java's own encoding of text (characters beyond U+FFFF as surrogate pairs)."""
    pairs = re.sub("[\U00010000-\U0010ffff]", lambda m: chr(0xD7C0 + (ord(m[0]) >> 10)) +
                   chr(0xDC00 + (ord(m[0]) & 0x3FF)), text)
    return pairs.encode("utf-8", "surrogatepass")


class Sdk:
    """The double's control class velmora.testing.Sdk (see tests/support/sdk_control.hpp), through JNI."""

    def __init__(self):
        vm, env = velmora.getJavaVM(), P()
        assert _slot(vm, 4, ctypes.c_int, ctypes.POINTER(P), P)(vm, ctypes.byref(env), None) == 0
        self.jni = {name: (lambda f: lambda *a: f(env, *a))(_slot(env, *row[:2], *row[2])) for name, row in JNI.items()}
        self.cls = self.jni["FindClass"](b"velmora/testing/Sdk")

    def _call(self, kind, name, signature, *args):
        method = self.jni["GetStaticMethodID"](self.cls, name.encode(), signature.encode())
        result = self.jni["CallStatic%sMethodA" % kind](self.cls, method, (P * max(len(args), 1))(*args))
        if self.jni["ExceptionCheck"]():
            self.jni["ExceptionDescribe"]()
            raise RuntimeError("Sdk.%s failed" % name)
        return result

    def script(self, key, *outcomes):
        array = self.jni["NewObjectArray"](len(outcomes), self.jni["FindClass"](b"java/lang/String"), None)
        for n, outcome in enumerate(outcomes):
            self.jni["SetObjectArrayElement"](array, n, self.jni["NewStringUTF"](java_text(outcome)))
        self._call("Int", "script", "(Ljava/lang/String;[Ljava/lang/String;)I", self.jni["NewStringUTF"](key.encode()), array)

    def journal(self):
        text = self._call("Object", "journal", "()Ljava/lang/String;")
        return velmora._decode(ctypes.string_at(self.jni["GetStringUTFChars"](text, None))).splitlines()


@pytest.fixture(scope="session")
def java():
    velmora.init()
    return Sdk()


@pytest.fixture
def sdk(java):
    """The double, journal and scripts emptied."""
    java._call("Int", "reset", "()I")
    return java


def run(code, **env):
    """Runs Python code in a child process; its output (stdout and stderr) and exit status."""
    child = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=120,
                           env=dict(os.environ, PYTHONPATH=os.path.join(ROOT, "python"), **env))
    return child.stdout + child.stderr, child.returncode
