"""Run with PYTHONPATH on the package and KORMELIN_LIBRARY on the library; KORMELIN_SAMPLE: the two-finger sample."""

import concurrent.futures
import os

import numpy
import pytest

import kormelin


@pytest.fixture
def library():
    with kormelin.Library() as opened:
        yield opened


def one_object():
    """White, 50 rows of 41, with a dark rectangle of 20 rows of 10 at row 19, column 6; each pixel of it tells its row."""
    array = numpy.full((50, 41), 255, numpy.uint8)
    array[19:39, 6:16] = numpy.arange(19, 39, dtype=numpy.uint8)[:, None]
    return array


def sample():
    """The sample's rows from the top down: an 8-bit BMP file."""
    data = numpy.fromfile(os.environ["KORMELIN_SAMPLE"], numpy.uint8)
    offset, width, height = (int(data[at : at + 4].view("<u4")[0]) for at in (10, 18, 22))
    stride = (width + 3) // 4 * 4
    return data[offset : offset + stride * height].reshape(height, stride)[::-1, :width]


def test_biggest_object_comes_back_as_the_rows_that_went_in(library):
    array = one_object()
    (found,) = library.segment(array, ppi=100, mode=kormelin.Mode.BIGGEST)
    # The rectangle leaves out the object's last column and its top row.
    assert (found.x, found.y, found.width, found.height, found.position) == (6, 20, 9, 19, 0)
    assert numpy.array_equal(found.image, array[20:39, 6:15])
    assert found.image.dtype == numpy.uint8


def test_strided_and_fortran_ordered_arrays_give_the_same(library):
    array = one_object()
    wide = numpy.full((100, 82), 7, numpy.uint8)
    wide[::2, ::2] = array
    for other in (wide[::2, ::2], numpy.asfortranarray(array), numpy.ascontiguousarray(array[::-1])[::-1]):
        (found,) = library.segment(other, 100, 1)
        assert numpy.array_equal(found.image, array[20:39, 6:15])


def test_input_is_not_changed_and_may_be_read_only(library):
    array = one_object()
    before = array.copy()
    array.setflags(write=False)
    library.segment(array, 100, kormelin.Mode.BIGGEST)
    assert numpy.array_equal(array, before)


def test_fingers_of_the_sample_lie_side_by_side_with_their_pixels(library):
    array = sample()
    left, right = sorted(library.segment(array, ppi=500), key=lambda finger: finger.x)
    assert left.x + left.width <= right.x
    for finger in (left, right):
        assert finger.image.shape == (min(finger.height, 500), min(finger.width, 500))
        x, y = finger.x + (finger.width - finger.image.shape[1]) // 2, finger.y
        # Beside an edge the pixels may stand up to a hundredth of an inch left of or below the rectangle.
        windows = numpy.lib.stride_tricks.sliding_window_view(array[y : y + 505, x - 5 :], finger.image.shape)[:6, :6]
        assert any(numpy.array_equal(finger.image, window) for row in windows for window in row)


def test_module_function_needs_no_context():
    assert len(kormelin.segment(sample(), 500)) == 2


@pytest.mark.parametrize(
    "array, says",
    [
        ([[1, 2], [3, 4]], "numpy array, not list"),
        (numpy.zeros((200, 200)), "dtype uint8, not float64"),
        (numpy.zeros((200, 200), numpy.int8), "dtype uint8, not int8"),
        (numpy.zeros((200, 200, 3), numpy.uint8), r"2 dimensions.*\(200, 200, 3\)"),
        (numpy.zeros(200, numpy.uint8), r"2 dimensions.*\(200,\)"),
    ],
)
def test_arrays_that_are_no_grey_image_are_type_errors(library, array, says):
    with pytest.raises(TypeError, match=says):
        library.segment(array, 500)


@pytest.mark.parametrize("shape", [(0, 200), (200, 0)])
def test_arrays_without_pixels_are_value_errors(library, shape):
    with pytest.raises(ValueError, match="no pixels"):
        library.segment(numpy.zeros(shape, numpy.uint8), 500)


def test_arrays_over_two_gigabytes_are_value_errors(library):
    huge = numpy.lib.stride_tricks.as_strided(numpy.zeros(1, numpy.uint8), (1 << 16, 1 << 15), (0, 0))
    with pytest.raises(ValueError, match="2 GB"):
        library.segment(huge, 500)


@pytest.mark.parametrize("ppi", [0, -500, float("nan"), float("inf"), 1e12])
def test_resolutions_that_are_none_are_value_errors(library, ppi):
    with pytest.raises(ValueError, match="ppi"):
        library.segment(one_object(), ppi)


@pytest.mark.parametrize("ppi", ["500", None, True])
def test_resolutions_that_are_no_numbers_are_type_errors(library, ppi):
    with pytest.raises(TypeError, match="ppi"):
        library.segment(one_object(), ppi)


@pytest.mark.parametrize(
    "array, ppi, mode, code",
    [
        (numpy.full((200, 200), 9, numpy.uint8), 500, 0, -15),
        (sample(), 72, 0, -13),
        (one_object(), 500, 0, -14),
        (numpy.full((200, 200), 255, numpy.uint8), 500, 1, -44),
    ],
)
def test_refusals_of_the_library_carry_code_and_text(library, array, ppi, mode, code):
    with pytest.raises(kormelin.KormelinError) as raised:
        library.segment(array, ppi, mode)
    assert raised.value.code == code
    assert raised.value.text == library.error_text(code)
    assert raised.value.function == "KSSegmentBitmap"
    assert str(raised.value) == f"KSSegmentBitmap: {library.error_text(code)} ({code})"


def test_more_than_two_fingers_tell_how_many(library):
    both = sample()
    four = numpy.hstack([both, both])
    with pytest.raises(kormelin.TooManyFingersError) as raised:
        library.segment(four, 500)
    assert raised.value.code == -35
    assert raised.value.count in (3, 4)


def test_unknown_mode_is_a_value_error(library):
    with pytest.raises(ValueError):
        library.segment(one_object(), 500, 2)


def test_handles_need_an_open_library_and_outlive_it():
    closed = kormelin.Library()
    with pytest.raises(kormelin.KormelinError) as raised:
        closed.segment_handle()
    assert raised.value.code == -2
    with closed:
        run = closed.segmentation_handle()
    with pytest.raises(kormelin.KormelinError) as raised:
        closed.segmentation_handle()
    assert raised.value.code == -2
    assert run.get_int("Count") == 0


def test_properties_of_a_handle_by_all_six_functions(library):
    with library.segmentation_handle() as run:
        run.set_int("SegmentationMode", 1)
        assert run.get_int("segmentationmode") == 1
        run.set("CoordinateOrigin", "1")
        assert run.get("CoordinateOrigin") == "1"
        assert run.get("Version") == library.version
        for call in (lambda: run.get_float("Count"), lambda: run.set_float("Count", 1.0)):
            with pytest.raises(kormelin.KormelinError) as raised:
                call()
            assert raised.value.code == -44
        with pytest.raises(kormelin.KormelinError) as raised:
            run.get_int("Unknown")
        assert raised.value.code == -206
    run.close()  # a second time does nothing
    with pytest.raises(kormelin.KormelinError) as raised:
        run.get_int("Count")
    assert raised.value.code == -42


def test_an_empty_segment_has_no_bitmap(library):
    with library.segment_handle() as segment, pytest.raises(kormelin.KormelinError) as raised:
        segment.bitmap_size()
    assert raised.value.code == -51


def test_threads_get_the_same_as_one(library):
    array = sample()
    expected = library.segment(array, 500)
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        for result in pool.map(lambda _: library.segment(array, 500), range(8)):
            assert [(f.x, f.y, f.width, f.height) for f in result] == [(f.x, f.y, f.width, f.height) for f in expected]
            assert all(numpy.array_equal(a.image, b.image) for a, b in zip(result, expected))


def test_a_library_that_is_not_there_is_an_os_error(tmp_path):
    with pytest.raises(OSError):
        kormelin.Library(tmp_path / "missing.so")
