# The velmora package against the real library, a real JVM and the SDK double:
# its table against the header, what reaches Java at the limits of each
# argument type, results, one failure per kind, intermediate results from Java
# threads, Ctrl-C, and the example in a fresh virtual environment.
import gc
import os
import re
import subprocess
import sys
import threading

import pytest
from conftest import BUILD, ROOT, run

import velmora

S = "Ljava/lang/String;"


def normalise(ctype):
    return " ".join(ctype.replace("*", " * ").split()).replace("* *", "**")


def test_table_declares_every_function_of_the_header_with_its_c_types():
    with open(os.path.join(ROOT, "include", "velmora.h")) as header:
        text = re.sub(r"/\*.*?\*/", "", header.read(), flags=re.S)
    declared = {name: (normalise(result), [normalise(re.sub(r"\w+$", "", p.strip()) if p.strip() != "..." else p)
                                           for p in params.split(",") if p.strip() != "void"])
                for result, name, params in re.findall(r"VELMORA_API\s+([^;(]*?)\s*\b(velmora_\w+)\s*\(([^)]*)\);", text)}
    table = {name: (result, [ctype for ctype, _ in params]) for _, result, name, params, _ in velmora.ROWS}
    assert table == declared


ARGUMENTS = [  # (what, call, the journal line of the Java call)
    ("non-ASCII text", lambda: velmora.setLogLevel("Grüße"), 'setLogLevel(%s)I "Grüße"' % S),
    ("4-byte UTF-8 and NUL", lambda: velmora.setLogLevel("a😀\0z"), 'setLogLevel(%s)I "a😀\0z"' % S),
    ("bytes as they are", lambda: velmora.setLogLevel(b"caf\xc3\xa9"), 'setLogLevel(%s)I "café"' % S),
    ("None as null", lambda: velmora.setLogLevel(None), "setLogLevel(%s)I null" % S),
    ("int64 beyond 32 bits", lambda: velmora.sendJobPostParameter(7, 2**40, "t"),
     'sendJobPostParameter(IJ%s)I 7, 1099511627776, "t"' % S),
    ("int and int64 lowest", lambda: velmora.isJobCompleted(-2**31, -2**63), "isJobCompleted(IJ)Z -2147483648, -9223372036854775808"),
    ("int and int64 highest", lambda: velmora.isJobCompleted(2**31 - 1, 2**63 - 1), "isJobCompleted(IJ)Z 2147483647, 9223372036854775807"),
    ("flag", lambda: velmora.setStreamResults(3, True), "setStreamResults(IZ)I 3, true"),
    ("any iterable, None element", lambda: velmora.createJob(7, iter(["a", None])), 'createJob(I[%s)I 7, ["a", null]' % S),
    ("two lists", lambda: velmora.createBundle(1, *"abcdefghi", ("x",), []),
     'createBundle(I%s[%s[%s)I 1, "a", "b", "c", "d", "e", "f", "g", "h", "i", ["x"], []' % (S * 9, S, S)),
    ("peach list form", lambda: velmora.Peach().addJobFileWithDir("d", ["é"]), 'addJobFileWithDir(I%s[%s)V 0, "d", ["é"]' % (S, S)),
]


@pytest.mark.parametrize("what, call, line", ARGUMENTS, ids=[row[0] for row in ARGUMENTS])
def test_arguments_reach_java_intact(sdk, what, call, line):
    call()
    assert sdk.journal()[-1] == line


REJECTED = [  # (what, call, exception): raised before anything reaches Java
    ("int64 above its range", lambda: velmora.sendJobPostParameter(1, 2**63, "t"), OverflowError),
    ("int64 below its range", lambda: velmora.isJobCompleted(1, -2**63 - 1), OverflowError),
    ("int above its range", lambda: velmora.ready(2**31), OverflowError),
    ("flag above 255", lambda: velmora.setStreamResults(1, 256), OverflowError),
    ("float for int", lambda: velmora.ready(1.0), TypeError),
    ("number for text", lambda: velmora.setLogLevel(5), TypeError),
    ("bytes with a NUL", lambda: velmora.setLogLevel(b"a\0b"), ValueError),
    ("one str for a list", lambda: velmora.createJob(1, "ab"), TypeError),
    ("number in a list", lambda: velmora.createJob(1, ["a", 3]), TypeError),
]


@pytest.mark.parametrize("what, call, exception", REJECTED, ids=[row[0] for row in REJECTED])
def test_arguments_out_of_range_raise(sdk, what, call, exception):
    with pytest.raises(exception):
        call()
    assert sdk.journal() == []


RESULTS = [  # (what, scripted outcomes, call, result)
    # scripted in Java's UTF-16, the character beyond U+FFFF as its two surrogates
    ("text beyond the first buffer and the BMP", {"getUserLogin": ["x" * 1000 + "é\ud83d\ude00"]},
     velmora.getUserLogin, "x" * 1000 + "é😀"),
    ("no text", {"getStatisticsString": ["null"]}, lambda: velmora.getStatisticsString(1), None),
    ("Java boolean", {"isCompleted": ["true"]}, lambda: velmora.isCompleted(1), True),
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


def test_java_exception_carries_its_failure(sdk):
    sdk.script("setLogLevel", "throw")
    with pytest.raises(velmora.JavaException) as raised:
        velmora.setLogLevel("x")
    assert (raised.value.code, raised.value.text) == (-13, velmora.describeStatusCode(-13))
    with_failure = velmora._BOUND["describeLastFailure"].available()
    assert ("scripted failure in setLogLevel" in raised.value.failure) == with_failure


def test_start_up_failures_raise_their_kind():
    calls = "import velmora\nfor call in (velmora.open, velmora.init, velmora.open):\n try: call()\n" \
            " except velmora.Error as e: print(type(e).__name__, e.code)"
    out, _ = run(calls, VELMORA_LIBRARY=os.path.join(BUILD, "sdk-variants", "no-initializer", "libvelmora.so"))
    assert re.findall(r"^(\w+) (-\d+)$", out, re.M) == [("NotInitialized", "-11"), ("StartupError", "-15"),
                                                       ("MethodNotFound", "-12")]


@pytest.mark.parametrize("env, places", [
    ({"VELMORA_LIBRARY": "/nonexistent/libvelmora.so.1"}, ["VELMORA_LIBRARY", "/nonexistent/libvelmora.so.1"]),
    ({"VELMORA_LIBRARY": "", "PKG_CONFIG_PATH": "/nonexistent"}, ["pkg-config", sys.prefix, "/usr/local", "loader"]),
])
def test_library_not_found_names_every_place_tried(env, places):
    out, status = run("import velmora\nvelmora.open()", **env)
    assert status != 0 and "LibraryNotFoundError" in out and all(place in out for place in places)


def test_handler_receives_on_java_threads_and_survives_its_exceptions(sdk, monkeypatch):
    received, reported = [], []
    monkeypatch.setattr(sys, "unraisablehook", reported.append)

    def handler(text):
        received.append((text, threading.get_ident()))
        if len(received) == 1:
            raise RuntimeError("handler failure")
    peach = velmora.Peach()
    peach.setIntermediateResultHandler(handler)
    del handler
    gc.collect()
    peach.execute()
    assert [text for text, _ in received] == ["peach 0: step %d of 3" % step for step in (1, 2, 3)]
    assert threading.get_ident() not in {thread for _, thread in received}
    assert [str(report.exc_value) for report in reported] == ["handler failure"]
    peach.setIntermediateResultHandler(None)
    peach.execute()
    assert len(received) == 3


def test_ctrl_c_after_start_up_raises_keyboard_interrupt():
    out, status = run("import os, signal, time, velmora\nvelmora.initJava()\ntry:\n"
                      " os.kill(os.getpid(), signal.SIGINT)\n time.sleep(30)\n"
                      "except KeyboardInterrupt:\n print('KeyboardInterrupt')")
    assert status == 0 and "KeyboardInterrupt" in out


def test_example_runs_from_a_fresh_venv_against_a_demo_install(tmp_path):
    prefix, venv = tmp_path / "prefix", tmp_path / "venv"
    for command in (["cmake", "--install", BUILD, "--prefix", prefix],
                    ["cmake", "--install", BUILD, "--prefix", prefix, "--component", "demo"],
                    [sys.executable, "-m", "venv", venv],
                    [venv / "bin" / "pip", "install", "--disable-pip-version-check", os.path.join(ROOT, "python")]):
        subprocess.run(command, check=True, capture_output=True, timeout=300)
    env = {k: v for k, v in os.environ.items() if k not in ("VELMORA_LIBRARY", "PYTHONPATH")}
    env["PKG_CONFIG_PATH"] = str(prefix / "lib" / "pkgconfig")
    example = subprocess.run([venv / "bin" / "python", os.path.join(ROOT, "examples", "peach_run.py")], env=env,
                             cwd=tmp_path, capture_output=True, text=True, timeout=120)
    assert example.stdout.startswith("library %s/lib/libvelmora.so.1\n" % prefix), example.stderr
    assert "intermediate: peach 0: step 3 of 3\nexecuted: 0\n" in example.stdout
    assert example.stdout.endswith("peach run finished\n")
