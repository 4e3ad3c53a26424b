"""Every refusal is an exception carrying arbo's one-line message; nothing is written on failure."""

import re

import numpy
import pytest

import lumoarbo
from conftest import arbo_error


def message(text):
    return "^" + re.escape(text) + "$"


def as_argument(arbo_message, path, name):
    """arbo's message about a file, in the words the module uses for the argument."""
    assert arbo_message.startswith(str(path) + ": "), arbo_message
    return name + arbo_message[len(str(path)):]


class TestExtractErrors:
    def test_empty_mask(self, small, tmp_path):
        folder, data = small
        empty = numpy.zeros_like(data.portal)
        expected = "mask: the mask is empty (no voxel other than 0): nothing to extract"
        with pytest.raises(ValueError, match=message(expected)):
            lumoarbo.extract(empty, **data.geometry)

    def test_missing_label_lists_the_present_ones(self, small):
        folder, data = small
        expected = as_argument(arbo_error("extract", folder / "organ.nrrd", "-o", folder / "x.ves", "--label", 7),
                               folder / "organ.nrrd", "mask")
        with pytest.raises(ValueError, match=message(expected)):
            lumoarbo.extract(data.organ, **data.geometry, label=7)
        assert not (folder / "x.ves").exists()

    def test_bad_type_and_start(self, small):
        folder, data = small
        expected = arbo_error("extract", folder / "portal.nrrd", "-o", folder / "x.ves", "--type", "vein")
        with pytest.raises(ValueError, match=message(expected.replace("--type", "type", 1))):
            lumoarbo.extract(data.portal, **data.geometry, type="vein")
        expected = arbo_error("extract", folder / "portal.nrrd", "-o", folder / "x.ves", "--start", "500,1,1")
        with pytest.raises(ValueError, match=message(expected.replace("--start", "start", 1))):
            lumoarbo.extract(data.portal, **data.geometry, start=(1, 1, 500))
        with pytest.raises(ValueError, match=message("start: '1,-1,1' is not a voxel index i,j,k (three whole "
                                                     "numbers from 0)")):
            lumoarbo.extract(data.portal, **data.geometry, start=(1, -1, 1))

    def test_arrays_and_geometry(self, small):
        _, data = small
        with pytest.raises(ValueError, match=message("mask: is a 2-D array; give a 3-D volume in (z, y, x) order")):
            lumoarbo.extract(data.portal[0], **data.geometry)
        with pytest.raises(ValueError, match=message("spacing: every voxel size must be a number > 0 (mm)")):
            lumoarbo.extract(data.portal, spacing=(1, 0, 1))
        with pytest.raises(ValueError, match=message("spacing: give three voxel sizes in mm, (x, y, z)")):
            lumoarbo.extract(data.portal, spacing=(1, 1))
        with pytest.raises(ValueError, match=message("direction: the matrix is singular (its columns must be "
                                                     "three independent directions)")):
            lumoarbo.extract(data.portal, spacing=(1, 1, 1), direction=((1, 0, 0), (1, 0, 0), (0, 0, 1)))


class TestSupplyErrors:
    def test_no_vessel_takes_part(self, small, tmp_path):
        folder, data = small
        # The truth's hepatic veins in a portal mode: the calculator finds nothing to classify by.
        expected = as_argument(arbo_error("supply", folder / "organ.nrrd", folder / "truth-hepatic.ves", "-o",
                                          tmp_path / "s.nrrd"), folder / "truth-hepatic.ves", "tree")
        with pytest.raises(ValueError, match=message(expected)):
            lumoarbo.supply(data.organ, data.hepatic_tree, **data.geometry)
        assert not (tmp_path / "s.nrrd").exists()

    def test_empty_organ_and_bad_mode(self, small, tmp_path):
        folder, data = small
        expected = as_argument(arbo_error("supply", folder / "tumour.nrrd", folder / "truth-portal.ves", "-o",
                                          tmp_path / "s.nrrd", "--organ-label", 5), folder / "tumour.nrrd", "organ")
        with pytest.raises(ValueError, match=message(expected)):
            lumoarbo.supply(data.tumour, data.portal_tree, organ_label=5, **data.geometry)
        with pytest.raises(ValueError, match=r"^mode: unknown mode 'segments' \(use portal-defined-segments, "):
            lumoarbo.supply(data.organ, data.portal_tree, mode="segments", **data.geometry)
        with pytest.raises(TypeError, match=message("tree: expected a lumoarbo.Tree, not dict")):
            lumoarbo.supply(data.organ, {"root": None}, **data.geometry)


class TestResectCompareLabelErrors:
    def test_resect_refusals(self, small, tmp_path):
        folder, data = small
        empty = numpy.zeros_like(data.tumour)
        expected = "tumour: holds no tumour voxel (every voxel is 0)"
        with pytest.raises(ValueError, match=message(expected)):
            lumoarbo.resect(data.organ, data.portal_tree, tumour=empty, **data.geometry)
        with pytest.raises(ValueError, match=message("resect: give exactly one of plan=True, tumour=TUMOUR and "
                                                     "plane=POINTS")):
            lumoarbo.resect(data.organ, data.portal_tree, plan=True, tumour=data.tumour, **data.geometry)
        expected = as_argument(arbo_error("resect", folder / "organ.nrrd", folder / "truth-portal.ves", "--plan",
                                          "-o", tmp_path / "r.nrrd"),
                               folder / "truth-portal.ves", "portal")
        with pytest.raises(ValueError, match=message(expected)):
            lumoarbo.resect(data.organ, data.portal_tree, plan=True, **data.geometry)
        assert not (tmp_path / "r.nrrd").exists()

    def test_unreadable_plane(self, small, tmp_path):
        folder, data = small
        (tmp_path / "plane.mps").write_text("<point_set_file></point_set_file>\n")
        for plane in (tmp_path / "missing.mps", tmp_path / "plane.mps"):
            expected = arbo_error("resect", folder / "organ.nrrd", folder / "truth-portal.ves", "--plane", plane,
                                  "-o", tmp_path / "r.nrrd")
            with pytest.raises(OSError, match=message(expected)):
                lumoarbo.resect(data.organ, data.portal_tree, plane=plane, **data.geometry)
        assert sorted(p.name for p in tmp_path.iterdir()) == ["plane.mps"]

    def test_compare_and_label_from_empty_trees(self, small):
        _, data = small
        with pytest.raises(ValueError, match=message("test: holds no centre-line points to compare")):
            lumoarbo.compare(data.portal_tree, lumoarbo.Tree())
        with pytest.raises(ValueError, match=message("reference: holds no centre-line points to take labels from")):
            lumoarbo.label_from(data.portal_tree, lumoarbo.Tree())


class TestFileErrors:
    def test_missing_and_unreadable_files(self, small, tmp_path):
        folder, _ = small
        expected = arbo_error("info", tmp_path / "missing.ves")
        with pytest.raises(OSError, match=message(expected)):
            lumoarbo.read(tmp_path / "missing.ves")
        (tmp_path / "bad.ves").write_text("not a tree\n")
        expected = arbo_error("info", tmp_path / "bad.ves")
        with pytest.raises(OSError, match=message(expected)):
            lumoarbo.read(tmp_path / "bad.ves")

    def test_failed_write_leaves_the_earlier_file(self, small, tmp_path):
        folder, data = small
        target = tmp_path / "tree.ves"
        target.write_text("earlier\n")
        with pytest.raises(OSError, match=r"^" + re.escape(str(tmp_path / "no-folder" / "t.ves")) + ": "):
            data.portal_tree.write(tmp_path / "no-folder" / "t.ves")
        with pytest.raises(OSError, match=r"^" + re.escape(str(tmp_path / "tree.png")) + ": "):
            data.portal_tree.write(tmp_path / "tree.png")
        assert target.read_text() == "earlier\n"
        assert sorted(p.name for p in tmp_path.iterdir()) == ["tree.ves"]
