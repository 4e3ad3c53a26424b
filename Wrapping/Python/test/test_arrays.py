"""Arrays in and out: looked at in place where the layout allows, converted once otherwise; the GIL is free
during the work."""

import threading
import time

import numpy
import pytest

import lumoarbo
from lumoarbo import _lumoarbo


class TestNoCopy:
    @pytest.mark.parametrize("dtype, pixel", [("uint8", "unsigned_char"), ("bool", "unsigned_char"),
                                              ("int16", "short"), ("uint16", "unsigned_short"), ("int32", "int"),
                                              ("int64", "long"), ("float32", "float"), ("float64", "double")])
    def test_contiguous_arrays_are_used_in_place(self, dtype, pixel):
        array = numpy.zeros((4, 5, 6), dtype=dtype)
        address, held = _lumoarbo._image_buffer(array)
        assert address == array.ctypes.data
        assert held == pixel

    def test_outputs_share_the_library_images(self, small):
        _, data = small
        labels, _ = lumoarbo.supply(data.organ, data.portal_tree, **data.geometry)
        assert not labels.flags.owndata and labels.base is not None
        assert not data.organ.flags.owndata

    def test_inputs_are_left_as_they_were(self, small):
        _, data = small
        before = data.portal.copy()
        organ = data.organ.copy()
        lumoarbo.extract(data.portal, **data.geometry)
        lumoarbo.supply(data.organ, data.portal_tree, **data.geometry)
        lumoarbo.resect(data.organ, data.portal_tree, data.hepatic_tree, tumour=data.tumour, margins=[5],
                        **data.geometry)
        assert numpy.array_equal(before, data.portal) and numpy.array_equal(organ, data.organ)


class TestConversion:
    @pytest.mark.parametrize("make, pixel", [
        (lambda a: numpy.asfortranarray(a), "unsigned_char"),
        (lambda a: a.astype(">i2"), "short"),
        (lambda a: a.astype(numpy.float16), "double"),
        (lambda a: numpy.repeat(a, 2, axis=2)[:, :, ::2], "unsigned_char"),
    ])
    def test_other_layouts_are_converted_once(self, small, make, pixel):
        _, data = small
        array = make(data.portal)
        address, held = _lumoarbo._image_buffer(array)
        assert address != array.__array_interface__["data"][0]
        assert held == pixel

    def test_converted_arrays_give_the_same_tree(self, small, extracted):
        _, data = small
        _, expected = extracted
        for array in (numpy.asfortranarray(data.portal), data.portal.astype(bool), data.portal.astype(">f4"),
                      numpy.repeat(data.portal, 2, axis=0)[::2]):
            tree = lumoarbo.extract(array, **data.geometry)
            assert tree.to_dict(arrays=False) == expected.to_dict(arrays=False)
        # Other voxel types are noted, as arbo notes them.
        assert "holds float voxels, not unsigned 8-bit" in lumoarbo.extract(data.portal.astype("f4"),
                                                                             **data.geometry).notes


class TestThreads:
    def test_other_python_threads_run_during_the_work(self):
        ticks = []
        done = threading.Event()

        def work():
            # Two long calls (well over half a second together): a phantom and its supply areas on one thread.
            liver = lumoarbo.phantom("medium", 5)
            lumoarbo.supply(liver.organ, liver.portal_tree, mode="portal-segments", threads=1, **liver.geometry)
            done.set()

        worker = threading.Thread(target=work)
        worker.start()
        while not done.is_set():
            ticks.append(time.perf_counter())
            time.sleep(0.001)
        worker.join()
        # Holding the GIL through the work would leave this thread a few ticks between the calls.
        assert len(ticks) >= 50
