"""Cuts slap images, several fingers on a scanner at the same time, into single fingers.

    import kormelin, numpy

    with kormelin.Library() as library:
        for finger in library.segment(grey, ppi=500):      # grey: numpy array, uint8, rows from the top down
            print(finger.x, finger.y, finger.width, finger.height, finger.image.shape)

A thin layer over the shared library libVelmarinKormelinSegmentation, which must be installed, or named by the environment
variable KORMELIN_LIBRARY. The functions may be called from several threads at the same time.
"""

import enum
import math
import os
from dataclasses import dataclass
from typing import List, Optional, Union

import numpy

from ._library import PARAM_OUT_OF_RANGE, Functions, Handle, KormelinError, SegmentationHandle, SegmentHandle

__all__ = [
    "Finger",
    "Handle",
    "KormelinError",
    "Library",
    "Mode",
    "SegmentHandle",
    "SegmentationHandle",
    "TooManyFingersError",
    "segment",
]

_HEADER = numpy.dtype(
    [
        ("size", "<u4"),
        ("width", "<i4"),
        ("height", "<i4"),
        ("planes", "<u2"),
        ("bits", "<u2"),
        ("compression", "<u4"),
        ("image_size", "<u4"),
        ("x_pels", "<i4"),
        ("y_pels", "<i4"),
        ("colours_used", "<u4"),
        ("colours_important", "<u4"),
    ]
)
_PIXELS = _HEADER.itemsize + 4 * 256  # offset of the pixels behind header and colour table
_METRES_PER_INCH = 0.0254
_LARGEST_BLOCK = 2**31 - 1


class Mode(enum.IntEnum):
    """What a run looks for."""

    FINGERS = 0  # the fingers, at most two
    BIGGEST = 1  # the biggest connected object, whatever it is


class TooManyFingersError(KormelinError):
    """The image shows more than two fingers: `count`. (`kormelin-segment` reports up to four.)"""

    def __init__(self, error: KormelinError, count: int):
        super().__init__(error.function, error.code, error.text)
        self.count = count


@dataclass(frozen=True)
class Finger:
    """A finger of an image. x, y: the upper left pixel of its rectangle, counted from the upper left of the image;
    width and height: of the rectangle; all in pixels. image: the finger alone, uint8, rows from the top down, at most 500 by 500
    (of a larger rectangle the middle columns and the uppermost rows); a view, copy it where rows must be contiguous."""

    x: int
    y: int
    width: int
    height: int
    position: int
    image: numpy.ndarray


def _pack(array: numpy.ndarray, ppi: float) -> numpy.ndarray:
    """The array as one block of header, colour table and rows bottom-up: the library takes no other form."""
    if not isinstance(array, numpy.ndarray):
        raise TypeError(f"array must be a numpy array, not {type(array).__name__}")
    if array.dtype != numpy.uint8:
        raise TypeError(f"array must have the dtype uint8, not {array.dtype}")
    if array.ndim != 2:
        raise TypeError(f"array must have 2 dimensions, rows and columns of grey pixels, not the shape {array.shape}")
    height, width = array.shape
    if height == 0 or width == 0:
        raise ValueError(f"array has no pixels: its shape is {array.shape}")
    if isinstance(ppi, bool) or not isinstance(ppi, (int, float, numpy.integer, numpy.floating)):
        raise TypeError(f"ppi must be a number, not {type(ppi).__name__}")
    if not math.isfinite(ppi) or not 0 < ppi <= 50_000_000:
        raise ValueError(f"ppi must be pixels per inch above 0, not {ppi}")
    stride = (width + 3) // 4 * 4
    if _PIXELS + stride * height > _LARGEST_BLOCK:
        raise ValueError(f"array is larger than 2 GB: its shape is {array.shape}")

    block = numpy.empty(_PIXELS + stride * height, numpy.uint8)
    header = block[: _HEADER.itemsize].view(_HEADER)
    pels = round(ppi / _METRES_PER_INCH)
    header[0] = (_HEADER.itemsize, width, height, 1, 8, 0, stride * height, pels, pels, 0, 0)
    block[_HEADER.itemsize : _PIXELS].view("<u4")[:] = numpy.arange(256, dtype="<u4") * 0x010101
    rows = block[_PIXELS:].reshape(height, stride)
    rows[:, :width] = array[::-1]
    rows[:, width:] = 0
    return block


def _unpack(segment: SegmentHandle) -> numpy.ndarray:
    block = numpy.empty(segment.bitmap_size(), numpy.uint8)
    segment.bitmap_into(block.ctypes.data, block.size)
    header = block[: _HEADER.itemsize].view(_HEADER)[0]
    width, height = int(header["width"]), int(header["height"])
    rows = block[_PIXELS:].reshape(height, (width + 3) // 4 * 4)
    return rows[::-1, :width]


class Library:
    """A reference to the library for the length of a with block. path: the shared library; by default the one that the
    environment variable KORMELIN_LIBRARY names, else the installed one."""

    def __init__(self, path: Optional[Union[str, os.PathLike]] = None):
        self._functions = Functions(path)

    def __enter__(self) -> "Library":
        self._functions.call("KSInitialize", None)
        return self

    def __exit__(self, *_) -> None:
        self._functions.call("KSUninitialize")

    @property
    def version(self) -> str:
        return self._functions.sized_text("KSGetVersionA")

    def error_text(self, code: int) -> str:
        return self._functions.text(code)

    def segmentation_handle(self) -> SegmentationHandle:
        return SegmentationHandle(self._functions)

    def segment_handle(self) -> SegmentHandle:
        return SegmentHandle(self._functions)

    def segment(self, array: numpy.ndarray, ppi: float, mode: Mode = Mode.FINGERS) -> List[Finger]:
        """The fingers of a grey image, left to right as the library orders them.

        array: uint8, shape (rows, columns), rows from the top down, dark fingers with their tips up; copied once into
        the bitmap that the library takes. ppi: pixels per inch, at least about 100. Raises TypeError or ValueError for
        an array that is no image, TooManyFingersError for more than two fingers, KormelinError for what else the
        library refuses, with its code and text."""
        mode = Mode(mode)
        block = _pack(array, ppi)
        with self.segmentation_handle() as run, self.segment_handle() as segment:
            run.set_int("SegmentationMode", mode)
            run.set_int("CoordinateOrigin", 1)
            try:
                run.run(block.ctypes.data, block.size)
            except KormelinError as error:
                if error.code == PARAM_OUT_OF_RANGE and run.get_int("Count") > 2:
                    raise TooManyFingersError(error, run.get_int("Count")) from None
                raise
            return [self._finger(run, segment, index) for index in range(run.get_int("Count"))]

    @staticmethod
    def _finger(run: SegmentationHandle, segment: SegmentHandle, index: int) -> Finger:
        run.segment_into(index, segment)
        names = ("x", "y", "Width", "Height", "FingerPosition")
        return Finger(*(segment.get_int(name) for name in names), image=_unpack(segment))


def segment(array: numpy.ndarray, ppi: float, mode: Mode = Mode.FINGERS) -> List[Finger]:
    """As Library.segment, on a reference to the library that lasts for this call."""
    with Library() as library:
        return library.segment(array, ppi, mode)
