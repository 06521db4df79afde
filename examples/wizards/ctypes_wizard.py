#!/usr/bin/env python3
"""A wizard in Python, with ctypes and nothing else: the same steps as smallest_wizard, by position in the tables.

Use: ctypes_wizard.py [MODULE]        the file of TarnCameraFindingNoThrow, unless the system finds it by its name

Python cannot catch a C++ exception, so the three operations that throw are called through that module, as functions
that return a result.
"""
import ctypes
import itertools
import sys
import threading
import time
from ctypes import CFUNCTYPE, POINTER, c_int32, c_uint8, c_uint32, c_uint64, c_void_p

WINDOWS = sys.platform == "win32"
E_NOINTERFACE = -0x7FFFBFFE
CODE_PAGE = "mbcs" if WINDOWS else "cp1252"  # of error texts


def checked(function, *arguments):
    """Calls a function of the module; ends the program with the text of a failure."""
    error = ctypes.create_string_buffer(256)
    if function(*arguments, error, ctypes.c_size_t(len(error))) < 0:
        sys.exit(error.value.decode(CODE_PAGE, "replace"))


def call(instance, position, result, *arguments):
    """Calls the operation at a position; arguments are ctypes values."""
    table = ctypes.cast(instance, POINTER(POINTER(c_void_p))).contents
    function = CFUNCTYPE(result, c_void_p, *(type(argument) for argument in arguments))(table[position])
    return function(instance, *arguments)


if WINDOWS:
    free_text = ctypes.windll.oleaut32.SysFreeString
else:
    #  Elsewhere a BSTR is a block of malloc whose first four bytes are the length.
    def free_text(text, free=ctypes.CDLL(None).free):
        free(c_void_p(text - 4))


def take(text):
    """The text of a BSTR, which is freed."""
    if not text:
        return ""
    length = ctypes.cast(text - 4, POINTER(c_uint32)).contents.value
    result = ctypes.string_at(text, length).decode("utf-16-le", "replace")
    free_text(c_void_p(text) if WINDOWS else text)
    return result


def describe(camera):
    return "  ".join(take(call(camera, position, c_void_p)) for position in (10, 5, 4))  # MAC, IP, model


class Object:
    """An object of the wizard's: a pointer to a table whose first three operations count references."""

    def __init__(self, *operations):
        self.released = threading.Event()
        self.references, self._lock = 1, threading.Lock()
        self._functions = [
            CFUNCTYPE(c_int32, c_void_p, c_void_p, POINTER(c_void_p))(self._query),
            CFUNCTYPE(c_uint32, c_void_p)(lambda _: self.count(1)),
            CFUNCTYPE(c_uint32, c_void_p)(lambda _: self.count(-1)),
            *operations,
        ]
        self._table = (c_void_p * len(self._functions))(*(ctypes.cast(f, c_void_p) for f in self._functions))
        self._instance = c_void_p(ctypes.addressof(self._table))
        self.pointer = c_void_p(ctypes.addressof(self._instance))

    def _query(self, _, __, result):
        result[0] = None
        return E_NOINTERFACE

    def count(self, change):
        with self._lock:
            self.references += change
        if self.references == 0:
            self.released.set()
        return self.references


@CFUNCTYPE(c_int32, c_void_p, c_void_p, c_uint64, c_void_p)
def picture_received(_, picture, byte_count, text):
    print(f"picture  {take(text)}, {byte_count} bytes", flush=True)
    return 0


@CFUNCTYPE(c_int32, c_void_p, c_void_p, POINTER(c_uint64), c_uint64)
def values_received(_, text, values, count):
    print(f"values   {take(text)}, {' '.join(map(str, itertools.islice(values, count)))}", flush=True)
    return 0


@CFUNCTYPE(c_int32, c_void_p, c_uint32, c_void_p, c_int32)
def camera_info_received(_, kind, camera, camera_type):
    print(f"camera   {describe(camera)}", flush=True)
    return 0


@CFUNCTYPE(c_int32, c_void_p, c_void_p)
def camera_found(_, camera):
    print(f"listed   {describe(camera)}", flush=True)
    return 0


def search(module, finder, callback):
    checked(module.TarnNoThrow_SetNewCameraDataCallback, finder, callback.pointer)
    if callback.references == 1:  # the library took none
        sys.exit("The channel to the server cannot be opened.")
    receiver = Object(camera_found)
    checked(module.TarnNoThrow_ListFoundCameras, finder, receiver.pointer)
    address = ctypes.create_string_buffer("192.168.0.9".encode("utf-16-le") + b"\0\0")
    call(finder, 4, None, c_void_p(ctypes.addressof(address)))
    time.sleep(3)


def main():
    name = "TarnCameraFindingNoThrow.dll" if WINDOWS else "libTarnCameraFindingNoThrow.so"
    module = ctypes.CDLL(sys.argv[1] if len(sys.argv) > 1 else name)
    finder = c_void_p()
    checked(module.TarnNoThrow_GetFindingInterface, None, None, ctypes.byref(finder))
    callback = Object(picture_received, values_received, camera_info_received)
    try:
        search(module, finder, callback)
    finally:
        call(finder, 2, c_uint32)
        callback.count(-1)
        #  A delivery that is under way still holds the callback; its functions must stay until then.
        callback.released.wait(5)


if __name__ == "__main__":
    main()
