"""Python interface of libvelmora, the native bridge to the Velmora service.

Every function of velmora.h is one call here, under its C name without the
``velmora_`` prefix (``velmora_getProjectStatus`` -> ``velmora.getProjectStatus``);
the peach builder functions are the methods of :class:`Peach`. The library is
found on first use (see :func:`library_path` and velmora._library): set
VELMORA_LIBRARY to choose the file.

    import velmora
    velmora.init()
    peach = velmora.Peach()
    peach.setName("example")
    peach.setIntermediateResultHandler(print)
    peach.execute()

Arguments: text parameters take a str (sent as UTF-8; a NUL character arrives
as one), bytes (sent as they are, without a NUL), an os.PathLike, or None
(a null pointer). Integers are checked against their C type (int, int64_t,
and 0..255 for flags, where True and False are 1 and 0): a value that does not
fit raises OverflowError, a non-integer TypeError. String lists take any
iterable of texts (None elements reach Java as null), never a single str.

Results: a Java int, long or boolean comes back as int or bool, a void Java
method as None, string results as str (sized automatically; None where the
library reports "no text"), walks as iterators. Failures raise
:class:`Error` or the subclass for their kind; a Java int equal to -11, -12
or -13 cannot be told from the failure and raises too.

Threads: any thread may call; ctypes releases the GIL during each call. The
initialisers, the unloads, the first Peach() and the handler registration must
not overlap other calls (see velmora.h). Intermediate results arrive on Java
threads; the handler runs there with the GIL held.
"""
import ctypes
import inspect
import operator
import os
import re

from . import _functions
from ._library import LibraryNotFoundError, load as _load

__all__ = ["Error", "NotInitialized", "MethodNotFound", "JavaException", "StartupError",
           "LibraryNotFoundError", "Peach", "library_path"]

_lib = None


def _library():
    global _lib
    if _lib is None:
        _lib = _load()
    return _lib


def library_path():
    """The file of the loaded library (loading it if needed)."""
    return _library()._name


# --------------------------------------------------------------------------
# Errors
# --------------------------------------------------------------------------

class Error(Exception):
    """A failure status of the library.

    ``code`` is the status (a velmora_status value), ``text`` the library's
    text for it (velmora_describeStatusCode), ``failure`` the calling thread's
    account of the failure (velmora_describeLastFailure: for a Java exception
    its class, message and stack; empty when the library has no such account),
    ``function`` the C function that failed.
    """

    def __init__(self, code, text, failure="", function=""):
        message = "%s: %d %s" % (function or "velmora", code, text)
        super().__init__(message + ("\n" + failure if failure else ""))
        self.code, self.text, self.failure, self.function = code, text, failure, function


class NotInitialized(Error):
    """-11: Java not started, no management object, or (for Peach) no wrapper."""


class MethodNotFound(Error):
    """-12: the SDK lacks the Java method with that name and signature."""


class JavaException(Error):
    """-13: the Java method threw; ``failure`` holds the exception."""


class StartupError(Error):
    """-14 to -22: starting Java or creating the management object failed."""


_KINDS = {-11: NotInitialized, -12: MethodNotFound, -13: JavaException}
_KINDS.update((code, StartupError) for code in range(-22, -13))
_BUFFER_TOO_SMALL, _INDEX_OUT_OF_BOUNDS = -23, -24


def _fail(code, function):
    failure = ""
    extension = _BOUND.get("describeLastFailure")
    if extension is not None and extension.available():
        failure = _read(lambda buf, size: extension.c(buf, size))[1] or ""
    status, text = _read(lambda buf, size: _BOUND["describeStatusCode"].c(code, buf, size))
    raise _KINDS.get(code, Error)(code, text if status == 0 else "status %d" % code, failure,
                                  function)


# --------------------------------------------------------------------------
# Texts
# --------------------------------------------------------------------------

def _encode(value, what):
    """A C text: bytes as they are, str as UTF-8 (NUL as the two bytes that
    Java's own encoding uses, lone surrogates kept), None as null."""
    if isinstance(value, os.PathLike):
        value = os.fspath(value)
    if value is None:
        return None
    if isinstance(value, str):
        return value.encode("utf-8", "surrogatepass").replace(b"\0", b"\xc0\x80")
    if isinstance(value, bytes):
        if b"\0" in value:
            raise ValueError("%s: bytes with a NUL cannot be a C text" % what)
        return value
    raise TypeError("%s: str, bytes or None wanted, not %s" % (what, type(value).__name__))


def _decode(raw):
    """A text from Java (its modified UTF-8: NUL as C0 80, characters beyond
    U+FFFF as surrogate pairs)."""
    try:
        return raw.decode("utf-8")
    except UnicodeDecodeError:
        text = raw.replace(b"\xc0\x80", b"\0").decode("utf-8", "surrogatepass")
        return text.encode("utf-16-le", "surrogatepass").decode("utf-16-le", "surrogatepass")


def _read(call):
    """Runs call(buf, len) with a buffer that grows to the size the library
    reports. Returns (status, str, or None for no text)."""
    size = 256
    while True:
        buf, length = ctypes.create_string_buffer(size), ctypes.c_size_t(size)
        status = call(buf, ctypes.byref(length))
        if status == _BUFFER_TOO_SMALL and length.value > size:
            size = length.value
            continue
        if status != 0 or length.value == 0:
            return status, None
        return status, _decode(buf.raw[:length.value - 1])


# --------------------------------------------------------------------------
# Arguments
# --------------------------------------------------------------------------

def _integer(low, high):
    def convert(value, what):
        value = operator.index(value)
        if not low <= value <= high:
            raise OverflowError("%s: %d is outside %d..%d" % (what, value, low, high))
        return value
    return convert


def _strings(values, what):
    if isinstance(values, (str, bytes)):
        raise TypeError("%s: an iterable of strings is wanted, not one string" % what)
    return [_encode(value, "%s[%d]" % (what, n)) for n, value in enumerate(values)]


_CALLBACK = ctypes.CFUNCTYPE(None, ctypes.c_char_p)
_handler = [None]  # the Python callable behind the one C callback below


@_CALLBACK
def _deliver(text):
    # Runs on a Java thread; an exception raised here is reported by ctypes
    # (sys.unraisablehook) and the thread goes on.
    handler = _handler[0]
    if handler is not None and text is not None:
        handler(_decode(text))


def _callback(value, what):
    if value is not None and not callable(value):
        raise TypeError("%s: a callable or None wanted" % what)
    return _deliver if value is not None else None


# C type: (ctypes type, converter of one Python value)
_TYPES = {
    "int": (ctypes.c_int, _integer(-2**31, 2**31 - 1)),
    "int64_t": (ctypes.c_int64, _integer(-2**63, 2**63 - 1)),
    "unsigned char": (ctypes.c_ubyte, _integer(0, 255)),
    "const char *": (ctypes.c_char_p, _encode),
    "velmora_intermediate_callback": (ctypes.c_void_p, _callback),
}
_OUTPUTS = {"char *": ctypes.c_char_p, "size_t *": ctypes.POINTER(ctypes.c_size_t),
            "int *": ctypes.POINTER(ctypes.c_int), "jobject *": ctypes.POINTER(ctypes.c_void_p)}
_RESULTS = {"int": ctypes.c_int, "int64_t": ctypes.c_int64, "void": None,
            "const char *": ctypes.c_char_p}


def _ctype(ctype):
    if ctype in _TYPES:
        return _TYPES[ctype][0]
    if ctype in _OUTPUTS:
        return _OUTPUTS[ctype]
    return ctypes.POINTER(ctypes.c_char_p) if ctype == "const char **" else ctypes.c_void_p


# --------------------------------------------------------------------------
# The table
# --------------------------------------------------------------------------

def _normalise_type(text):
    """A C type in one spelling: single blanks, '*' after one blank."""
    return " ".join(text.replace("*", " * ").split()).replace("* *", "**")


def _parse(table, extension=False):
    """The rows of a table of _functions: (shape, result type, C name,
    [(C type, parameter name)], extension)."""
    rows = []
    for line in table.splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        shape, prototype = line.split(None, 1)
        result, name, params = re.match(r"(.*?)\s*\b(velmora_\w+)\((.*)\)$", prototype).groups()
        parameters = []
        for param in params.split(","):
            param = param.strip()
            if param not in ("void", "..."):
                ctype, pname = re.match(r"(.*?)\s*(\w+)$", param).groups()
                parameters.append((_normalise_type(ctype), pname))
            elif param == "...":
                parameters.append(("...", ""))
        rows.append((shape, _normalise_type(result), name, parameters, extension))
    return rows


# The table's rows: (shape, result type, C name, [(C type, name)], extension).
ROWS = _parse(_functions.FUNCTIONS) + _parse(_functions.EXTENSIONS, extension=True)


class _Function:
    """One row of the table, bound to the library on first use."""

    def __init__(self, shape, result, name, parameters, extension):
        self.shape, self.result, self.name, self.extension = shape, result, name, extension
        self.ctypes = [_ctype(ctype) for ctype, _ in parameters]
        lists = [ctype for ctype, _ in parameters].count("const char **")
        counts = sum(1 for _, p in parameters if p.startswith("count")) if lists else 0
        self.inputs = []  # (Python name, converter, lists): lists > 0 for the string lists
        for ctype, pname in parameters:
            if ctype == "const char **":
                names = ["strings"] if counts == 1 else ["strings%d" % (n + 1) for n in range(counts)]
                self.inputs += [(n, _strings, counts) for n in names]
            elif ctype in _TYPES and not (lists and pname.startswith("count")):
                self.inputs.append((pname, _TYPES[ctype][1], 0))
        self._c = None

    def available(self):
        try:
            self.c
        except NotImplementedError:
            return False
        return True

    @property
    def c(self):
        if self._c is None:
            lib = _library()
            try:
                c = getattr(lib, self.name)
            except AttributeError:
                raise NotImplementedError("%s has no %s%s" % (lib._name, self.name, (
                    " (the library's own extensions came with 1.1)" if self.extension else ""))) from None
            c.argtypes, c.restype = self.ctypes, _RESULTS.get(self.result, ctypes.c_void_p)
            self._c = c
        return self._c

    def arguments(self, values):
        """The C arguments before the outputs, from the Python values. The
        string lists are the last inputs: their counts, then one array."""
        args, lists = [], []
        for (pname, convert, in_list), value in zip(self.inputs, values):
            converted = convert(value, "%s(%s)" % (self.name, pname))
            if in_list:
                lists.append(converted)
            else:
                args.append(converted)
        if lists:
            joined = [item for items in lists for item in items]
            args += [len(items) for items in lists] + [(ctypes.c_char_p * len(joined))(*joined)]
        return args

    def __call__(self, *values):
        args = self.arguments(values)
        shape, c = self.shape, self.c
        if shape in ("text", "text?"):
            status, text = _read(lambda buf, size: c(*args, buf, size))
            if status < 0:
                _fail(status, self.name)
            return text if shape == "text?" or text is not None else ""
        if shape == "walk":
            return self._walk(args)
        if shape == "path":
            path = ctypes.create_string_buffer(4096)
            return os.fsdecode(path.value) if c(path) == 0 else None
        if shape == "plugin":
            plugin = ctypes.c_void_p()
            result = c(*args, ctypes.byref(plugin))
        else:
            result = c(*args)
        if shape == "raw":
            return _decode(result) if isinstance(result, bytes) else result
        failed = {"int": -13 <= result <= -11, "long": -13 <= result <= -11,
                  "init": -16 <= result <= -11 or result == -22,
                  "peach": -13 <= result <= -11 or result == -16}.get(shape, result < 0)
        if failed:
            _fail(result, self.name)
        if shape == "bool":
            return result == 1
        if shape in ("none", "handler"):
            return None
        return plugin.value if shape == "plugin" else result

    def _walk(self, args):
        position = 0
        while True:
            index = ctypes.c_int()

            def call(buf, size):
                index.value = position
                return self.c(*args, ctypes.byref(index), buf, size)
            status, name = _read(call)
            if status == _INDEX_OUT_OF_BOUNDS:
                return
            if status < 0:
                _fail(status, self.name)
            yield name if name is not None else ""
            position += 1


_SHAPES = {
    "init": "Returns the Java initialiser's int; start-up failures raise.",
    "int": "Returns the Java int; -11, -12 and -13 raise.",
    "long": "Returns the Java long; -11, -12 and -13 raise.",
    "bool": "Returns the Java boolean as True or False; failures raise.",
    "none": "Returns None; failures raise.",
    "text": "Returns the text; failures raise.",
    "text?": "Returns the text, or None when Java returned none; failures raise.",
    "walk": "Returns an iterator over the names, asking the library at each step.",
    "peach": "Returns a new peach handle; failures raise.",
    "handler": "Makes the callable (or None) the receiver of intermediate results.",
    "path": "Returns the Java runtime library found through PATH, or None.",
    "plugin": "Returns the plug-in's JNI local reference (an address); failures raise.",
    "raw": "Returns the C result as it is (an address as int or None, a text as str).",
}


def _python_name(name, function):
    name = name[len("velmora_"):]
    if name.endswith("3") and any(lists for _, _, lists in function.inputs):
        name = name[:-1]
    return name


def _make(function, pyname, method):
    inputs = function.inputs[1:] if method else function.inputs
    params = [inspect.Parameter(n, inspect.Parameter.POSITIONAL_OR_KEYWORD) for n, _, _ in inputs]
    signature = inspect.Signature(([inspect.Parameter("self", inspect.Parameter.POSITIONAL_ONLY)]
                                   if method else []) + params)

    def call(*args, **kwargs):
        bound = signature.bind(*args, **kwargs)
        values = list(bound.arguments.values())
        if method:
            values[0] = values[0].handle
        return function(*values)
    call.__name__ = call.__qualname__ = pyname
    call.__signature__ = signature
    call.__doc__ = "Calls %s. %s" % (function.name, _SHAPES[function.shape])
    return call


_BOUND = {}  # Python name without "peach_": _Function


class Peach:
    """A peach run description, known by its peach handle.

    ``Peach()`` asks the library for a new description (velmora_peach_handle;
    the first call fetches the SDK's wrapper); ``Peach(handle)`` wraps a handle
    the caller already has. ``peach.name(args)`` is
    ``velmora_peach_name(handle, args)``, the list forms taking any iterable of
    str (``peach.setJobFileNames(["a", "b"])``).
    """

    def __init__(self, handle=None):
        self.handle = _BOUND["peach_handle"]() if handle is None else _TYPES["int"][1](handle, "Peach")

    def __repr__(self):
        return "velmora.Peach(%d)" % self.handle

    def files(self):
        """The remaining result file names (nextFile until it returns None)."""
        return iter(self.nextFile, None)

    def setIntermediateResultHandler(self, handler):
        """Makes handler, any callable taking one str, the process-wide
        receiver of intermediate results (None drops them). It runs on Java
        threads, possibly several at once; an exception it raises is reported
        through sys.unraisablehook and the delivery goes on. When the
        registration fails (raised) the previous handler stays."""
        _BOUND["peach_setIntermediateResultHandler"](self.handle, handler)
        _handler[0] = handler


for _row in ROWS:
    if _row[0] in ("form", "native"):
        continue
    _function = _Function(*_row)
    _name = _python_name(_row[2], _function)
    _BOUND[_name] = _function
    if _name.startswith("peach_") and _row[0] != "peach":
        if not hasattr(Peach, _name[len("peach_"):]):
            setattr(Peach, _name[len("peach_"):], _make(_function, _name[len("peach_"):], True))
    elif _row[0] != "peach":
        globals()[_name] = _make(_function, _name, False)
        __all__.append(_name)


def peachFiles(handle):
    """The remaining result file names of a one-call peach (peachNextFile
    until it returns None)."""
    return iter(lambda: peachNextFile(handle), None)  # noqa: F821 (bound above)


__all__.append("peachFiles")
