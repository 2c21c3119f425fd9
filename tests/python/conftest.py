# The Python package's tests run against the build tree: the package from
# python/, the library from $VELMORA_BUILD_DIR/lib (default build/) with the SDK
# test double beside it. The test process starts Java once (fixture `sdk`);
# tests that need a fresh process run Python code in a child (`run`).
import ctypes
import functools
import os
import subprocess
import sys

import pytest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUILD = os.path.abspath(os.environ.get("VELMORA_BUILD_DIR", os.path.join(ROOT, "build")))
sys.path.insert(0, os.path.join(ROOT, "python"))
os.environ["VELMORA_LIBRARY"] = os.path.join(BUILD, "lib", "libvelmora.so.1")

import velmora  # noqa: E402

P, INT, TEXT = ctypes.c_void_p, ctypes.c_int, ctypes.c_char_p
# The JNIEnv functions used: (index in the function table, result, arguments after the JNIEnv)
JNI = {"FindClass": (6, P, TEXT), "GetStaticMethodID": (113, P, P, TEXT, TEXT),
       "CallStaticObjectMethodA": (116, P, P, P, P), "CallStaticIntMethodA": (131, INT, P, P, P),
       "NewStringUTF": (167, P, TEXT), "GetStringUTFChars": (169, P, P, P),
       "NewObjectArray": (172, P, INT, P, P), "SetObjectArrayElement": (174, None, P, INT, P)}


# The double's control class velmora.testing.Sdk (see tests/support/sdk_control.hpp) through JNI, on the
# thread that started Java: the one whose JNIEnv the library keeps. Its methods do not throw. Local
# references are never freed: the test process is short.
class Sdk:
    def __init__(self):
        velmora.init()
        env = velmora.getJNIEnv()
        table = ctypes.cast(env, ctypes.POINTER(ctypes.POINTER(P)))[0]
        for name, (index, result, *arguments) in JNI.items():
            setattr(self, name, functools.partial(ctypes.CFUNCTYPE(result, P, *arguments)(table[index]), env))
        self.cls = self.FindClass(b"velmora/testing/Sdk")

    # Sdk.name(args) for a static method returning an int (kind Int) or a reference (kind Object).
    def call(self, kind, name, signature, *args):
        method = self.GetStaticMethodID(self.cls, name.encode(), signature.encode())
        assert method, "Sdk has no %s%s" % (name, signature)
        return getattr(self, "CallStatic%sMethodA" % kind)(self.cls, method, (P * max(len(args), 1))(*args))

    # The outcomes of the SDK method named key, one per call, the last staying in force: "throw", "null",
    # or the value as text. Texts reach Java in its own UTF-8 form: a character beyond U+FFFF must be given
    # as its two surrogates, and a NUL cannot be given.
    def script(self, key, *outcomes):
        array = self.NewObjectArray(len(outcomes), self.FindClass(b"java/lang/String"), None)
        for n, outcome in enumerate(outcomes):
            self.SetObjectArrayElement(array, n, self.NewStringUTF(outcome.encode("utf-8", "surrogatepass")))
        self.call("Int", "script", "(Ljava/lang/String;[Ljava/lang/String;)I", self.NewStringUTF(key.encode()), array)

    # The Java calls made since the last look, one line each: name, descriptor, arguments (decoded as the
    # package decodes what Java returns).
    def journal(self):
        text = self.call("Object", "journal", "()Ljava/lang/String;")
        return velmora._decode(ctypes.string_at(self.GetStringUTFChars(text, None))).splitlines()


java = functools.cache(Sdk)  # one control: Java starts with the first test that uses the double


# The double with its journal, scripts and handler emptied.
@pytest.fixture
def sdk():
    java().call("Int", "reset", "()I")
    return java()


# Runs Python code in a child process: its output (stdout and stderr) and exit status.
def run(code, **env):
    child = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=120,
                           env=dict(os.environ, PYTHONPATH=os.path.join(ROOT, "python"), **env))
    return child.stdout + child.stderr, child.returncode
