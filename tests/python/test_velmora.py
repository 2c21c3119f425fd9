# The velmora package against the real library, a real JVM and the SDK double:
# its table against the header, what reaches Java at the limits of each
# argument type, results, failures of each kind, intermediate results from
# Java threads, Ctrl-C, the library search, and the example in a fresh virtual
# environment. What the library itself does is the C and C++ suites' subject.
import os
import re
import subprocess
import sys
import threading

import pytest
from conftest import BUILD, ROOT, run

import velmora


def test_table_declares_every_function_as_the_header_does():
    with open(os.path.join(ROOT, "include", "velmora.h")) as header:
        declared = re.findall(r"VELMORA_API\s+([^;#(]*\([^)]*\));", re.sub(r"/\*.*?\*/", "", header.read(), flags=re.S))
    # each row as the package reads it, written back as a declaration (parameter names too, which become the
    # keyword names); both sides in the package's one spelling of C types
    table = ["%s %s(%s)" % (result, name, ", ".join(" ".join(p).strip() for p in params) or "void")
             for _, result, name, params, _ in velmora.ROWS]
    assert sorted(map(velmora._normalise_type, table)) == sorted(map(velmora._normalise_type, declared))


ARGUMENTS = [  # (what, call, the arguments its Java call received, or the exception raised before Java is called)
    # str as UTF-8 (beyond the BMP; a NUL as Java's own C0 80), bytes as they are, None as null
    ("str, bytes, None", lambda: velmora.unzipFile("a😀\0z", b"caf\xc3\xa9", None), '"a😀\0z", "café", null'),
    ("int min, int64 max", lambda: velmora.isJobCompleted(-2**31, 2**63 - 1), "-2147483648, 9223372036854775807"),
    ("int max, int64 min", lambda: velmora.isJobCompleted(2**31 - 1, -2**63), "2147483647, -9223372036854775808"),
    # each list from any iterable, with its own count; None elements as null. One element in all: wrong counts
    # then make the library read one slot past the array, which fails this row (more would crash the process)
    ("two lists", lambda: velmora.createBundle(1, *"abcdefghi", iter([None]), []),
     '1, "a", "b", "c", "d", "e", "f", "g", "h", "i", [null], []'),
    ("int above its range", lambda: velmora.ready(2**31), OverflowError),
    ("int64 above its range", lambda: velmora.sendJobPostParameter(1, 2**63, "t"), OverflowError),
    ("int64 below its range", lambda: velmora.isJobCompleted(1, -2**63 - 1), OverflowError),
    ("flag above 255", lambda: velmora.setStreamResults(1, 256), OverflowError),
    ("float for int", lambda: velmora.ready(1.0), TypeError),
    ("number in a list", lambda: velmora.createJob(1, ["a", 3]), TypeError),
    ("one str for a list", lambda: velmora.createJob(1, "ab"), TypeError),
    ("bytes with a NUL", lambda: velmora.setLogLevel(b"a\0b"), ValueError),
]


# A rejected call raises before Java is called: nothing reaches the journal.
@pytest.mark.parametrize("what, call, outcome", ARGUMENTS, ids=[row[0] for row in ARGUMENTS])
def test_arguments(sdk, what, call, outcome):
    pytest.raises(outcome, call) if isinstance(outcome, type) else call()
    assert [line.partition(" ")[2] for line in sdk.journal()] == ([outcome] if isinstance(outcome, str) else [])


RESULTS = [  # (what, scripted outcomes (Java's UTF-16: beyond U+FFFF as two surrogates), call, result)
    # longer than the first buffer, so it is asked for again with the size the library reports; the character
    # beyond U+FFFF comes from Java as two encoded surrogates
    ("regrown, non-BMP", {"getUserLogin": ["x" * 300 + "é\ud83d\ude00"]}, velmora.getUserLogin, "x" * 300 + "é😀"),
    ("no text", {"getStatisticsString": ["null"]}, lambda: velmora.getStatisticsString(1), None),
    ("Java long", {"getUsedTime": ["-1099511627776"]}, lambda: velmora.getUsedTime(1), -2**40),
    ("indexed walk", {"getResultFileCount": ["2"], "getResultFileName": ["a", "b"]},
     lambda: list(velmora.getResultFiles(1)), ["a", "b"]),
    ("peach files", {"nextFile": ["f1", "f2", "null"]}, lambda: list(velmora.Peach().files()), ["f1", "f2"]),
]


@pytest.mark.parametrize("what, scripts, call, result", RESULTS, ids=[row[0] for row in RESULTS])
def test_results(sdk, what, scripts, call, result):
    for key, outcomes in scripts.items():
        sdk.script(key, *outcomes)
    assert call() == result


def test_java_exception_carries_its_code_text_and_failure(sdk):
    sdk.script("setLogLevel", "throw")
    error = pytest.raises(velmora.JavaException, velmora.setLogLevel, "x").value
    assert (error.code, error.text) == (-13, velmora.describeStatusCode(-13))
    assert "scripted failure in setLogLevel" in error.failure and error.failure in str(error)


KINDS = ("for call in (velmora.open, velmora.init, velmora.open):\n try: call()\n"
         " except velmora.Error as e: print(type(e).__name__, e.code)")


# What a child prints: a library that cannot be found names every place tried; one whose SDK has no initialiser
# fails each call with its own kind of error.
@pytest.mark.parametrize("code, env, said", [
    ("velmora.open()", {"VELMORA_LIBRARY": "/nonexistent/libvelmora.so.1"},
     ["LibraryNotFoundError", "VELMORA_LIBRARY", "/nonexistent/libvelmora.so.1"]),
    ("velmora.open()", {"VELMORA_LIBRARY": "", "PKG_CONFIG_PATH": "/nonexistent"},
     ["LibraryNotFoundError", "pkg-config", os.path.join(sys.prefix, "lib"), "/usr/local/lib", "loader"]),
    (KINDS, {"VELMORA_LIBRARY": os.path.join(BUILD, "sdk-variants", "no-initializer", "libvelmora.so")},
     ["NotInitialized -11\nStartupError -15\nMethodNotFound -12\n"]),
], ids=["library named", "library searched", "kinds"])
def test_failures_outside_java_say_what_failed(code, env, said):
    out, _ = run("import velmora\n" + code, **env)
    assert all(text in out for text in said), out


def test_handler_runs_on_java_threads_kept_alive_its_exceptions_reported(sdk, monkeypatch):
    received, reported = [], []
    monkeypatch.setattr(sys, "unraisablehook", reported.append)

    def handler(text):  # each of its exceptions reported, and the deliveries go on
        received.append((text, threading.current_thread() is threading.main_thread()))
        raise RuntimeError(text)
    peach = velmora.Peach()
    peach.setIntermediateResultHandler(handler)
    del handler  # freed at once unless the package keeps it
    peach.execute()
    assert received == [("peach 0: step %d of 3" % step, False) for step in (1, 2, 3)]
    assert [str(report.exc_value) for report in reported] == [text for text, _ in received]


# Had starting Java put the runtime's own handler in place, the process would end at once, saying nothing. The
# child installs Python's handler itself: a process started in the background inherits SIGINT ignored.
def test_ctrl_c_after_start_up_raises_keyboard_interrupt():
    out, status = run("import os, signal, time, velmora\nsignal.signal(signal.SIGINT, signal.default_int_handler)\n"
                      "velmora.initJava()\ntry:\n"
                      " os.kill(os.getpid(), signal.SIGINT)\n time.sleep(30)\n"
                      "except KeyboardInterrupt:\n print('KeyboardInterrupt')")
    assert status == 0 and "KeyboardInterrupt" in out, (status, out)


# Installs the library and the demo SDK under a prefix and the package into a new virtual environment (offline),
# then runs the example there to its end, the library found through pkg-config alone.
def test_example_runs_from_a_fresh_venv_against_a_demo_install(tmp_path):
    prefix, python = tmp_path / "prefix", tmp_path / "venv" / "bin" / "python"
    env = dict(os.environ, VELMORA_LIBRARY="", PYTHONPATH="", PKG_CONFIG_PATH=str(prefix / "lib" / "pkgconfig"))
    for command in (["cmake", "--install", BUILD, "--prefix", prefix],
                    ["cmake", "--install", BUILD, "--prefix", prefix, "--component", "demo"],
                    [sys.executable, "-m", "venv", tmp_path / "venv"],
                    [python, "-m", "pip", "install", "--disable-pip-version-check", os.path.join(ROOT, "python")],
                    [python, os.path.join(ROOT, "examples", "peach_run.py")]):
        child = subprocess.run(command, env=env, cwd=tmp_path, capture_output=True, text=True, timeout=300)
        assert child.returncode == 0, child.stdout + child.stderr
    assert child.stdout.startswith("library %s/lib/libvelmora.so.1\n" % prefix)
