"""The sixteen functions of the shared library through ctypes, and the two kinds of handle over them."""

import ctypes
import os
from ctypes import POINTER, byref, c_char_p, c_double, c_int, c_long, c_ulong, c_void_p
from typing import Optional, Union

_FILE_NAME = "libVelmarinKormelinSegmentation.so.1"

# name: arguments. All return a long but KSGetErrorDescriptionA.
_FUNCTIONS = {
    "KSInitialize": (c_char_p,),
    "KSUninitialize": (),
    "KSGetVersionA": (c_char_p, POINTER(c_ulong)),
    "KSGetErrorDescriptionA": (c_long,),
    "KSCreateSegmentationHandle": (POINTER(c_void_p),),
    "KSCreateSegmentHandle": (POINTER(c_void_p),),
    "KSDestroyHandle": (POINTER(c_void_p),),
    "KSGetPropertyA": (c_void_p, c_char_p, c_char_p, POINTER(c_ulong)),
    "KSSetPropertyA": (c_void_p, c_char_p, c_char_p),
    "KSGetPropertyLongA": (c_void_p, c_char_p, POINTER(c_long)),
    "KSSetPropertyLongA": (c_void_p, c_char_p, c_long),
    "KSGetPropertyDoubleA": (c_void_p, c_char_p, POINTER(c_double)),
    "KSSetPropertyDoubleA": (c_void_p, c_char_p, c_double),
    "KSSegmentBitmap": (c_void_p, c_void_p, c_ulong),
    "KSGetSegment": (c_void_p, c_int, c_void_p),
    "KSGetBitmap": (c_void_p, c_void_p, POINTER(c_ulong)),
}

NOT_INITIALIZED = -2
TEMPLATE_SIZE = -21
PARAM_OUT_OF_RANGE = -35

_loaded = {}


class KormelinError(RuntimeError):
    """A function of the library returned an error: `function`, `code` (below 0) and `text` of the catalogue."""

    def __init__(self, function: str, code: int, text: str):
        super().__init__(f"{function}: {text} ({code})")
        self.function = function
        self.code = code
        self.text = text


def load(path: Optional[Union[str, os.PathLike]] = None) -> ctypes.CDLL:
    """The shared library, loaded once per path: `path`, else the one that the environment variable KORMELIN_LIBRARY
    names, else the installed one. Raises OSError where it cannot be loaded."""
    name = os.fspath(path or os.environ.get("KORMELIN_LIBRARY") or _FILE_NAME)
    if name not in _loaded:
        library = ctypes.CDLL(name)  # lets other threads run during its calls
        for function, arguments in _FUNCTIONS.items():
            entry = getattr(library, function)
            entry.argtypes = arguments
            entry.restype = c_char_p if function == "KSGetErrorDescriptionA" else c_long
        _loaded[name] = library
    return _loaded[name]


class Functions:
    """Calls by name; a result other than 0 is a KormelinError."""

    def __init__(self, path=None):
        self._library = load(path)

    def text(self, code: int) -> str:
        return self._library.KSGetErrorDescriptionA(code).decode("utf-8", "replace")

    def try_call(self, function: str, *arguments) -> int:
        return getattr(self._library, function)(*arguments)

    def call(self, function: str, *arguments) -> None:
        code = self.try_call(function, *arguments)
        if code != 0:
            raise KormelinError(function, code, self.text(code))

    def sized_text(self, function: str, *arguments) -> str:
        """A text result by the size protocol: ask for the size, then for the text."""
        size = c_ulong(0)
        code = self.try_call(function, *arguments, None, byref(size))
        if code != TEMPLATE_SIZE:
            raise KormelinError(function, code, self.text(code))
        buffer = ctypes.create_string_buffer(size.value)
        self.call(function, *arguments, buffer, byref(size))
        return buffer.value.decode("utf-8", "replace")


class Handle:
    """A handle of the library and its properties, freed by close() or at the end of a with block."""

    def __init__(self, functions: Functions, create: str):
        self._functions = functions
        self._handle = c_void_p()
        functions.call(create, byref(self._handle))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def __del__(self):
        # Not made, or the interpreter is on its way out.
        if getattr(self, "_handle", None):
            self.close()

    def close(self) -> None:
        if self._handle:
            self._functions.call("KSDestroyHandle", byref(self._handle))

    def get(self, name: str) -> str:
        """Any property as text."""
        return self._functions.sized_text("KSGetPropertyA", self._handle, name.encode())

    def set(self, name: str, value: str) -> None:
        self._functions.call("KSSetPropertyA", self._handle, name.encode(), value.encode())

    def get_int(self, name: str) -> int:
        value = c_long()
        self._functions.call("KSGetPropertyLongA", self._handle, name.encode(), byref(value))
        return value.value

    def set_int(self, name: str, value: int) -> None:
        self._functions.call("KSSetPropertyLongA", self._handle, name.encode(), value)

    def get_float(self, name: str) -> float:
        value = c_double()
        self._functions.call("KSGetPropertyDoubleA", self._handle, name.encode(), byref(value))
        return value.value

    def set_float(self, name: str, value: float) -> None:
        self._functions.call("KSSetPropertyDoubleA", self._handle, name.encode(), value)


class SegmentHandle(Handle):
    """A container for one finger."""

    def __init__(self, functions: Functions):
        super().__init__(functions, "KSCreateSegmentHandle")

    def bitmap_size(self) -> int:
        size = c_ulong(0)
        code = self._functions.try_call("KSGetBitmap", self._handle, None, byref(size))
        if code != TEMPLATE_SIZE:
            raise KormelinError("KSGetBitmap", code, self._functions.text(code))
        return size.value

    def bitmap_into(self, address: int, size: int) -> None:
        """The packed bitmap into `size` bytes of memory at `address`."""
        self._functions.call("KSGetBitmap", self._handle, address, byref(c_ulong(size)))


class SegmentationHandle(Handle):
    """Runs, and keeps the results of the last run."""

    def __init__(self, functions: Functions):
        super().__init__(functions, "KSCreateSegmentationHandle")

    def run(self, address: int, size: int) -> None:
        """A run on the packed bitmap of `size` bytes at `address`."""
        self._functions.call("KSSegmentBitmap", self._handle, address, size)

    def segment_into(self, index: int, segment: SegmentHandle) -> None:
        self._functions.call("KSGetSegment", self._handle, index, segment._handle)
