"""Tree objects: .ves round trips, dicts, labels, pre-order iteration."""

import json

import numpy
import pytest

import lumoarbo
from lumoarbo import Tree, Vessel


def three_vessels():
    root = Vessel(points=[[0, 0, 0, 2], [0, 0, 10, 1.5]], type="portal", id=1)
    left = root.add_child(Vessel(points=[[0, 0, 10, 1], [-5, 0, 15, 0.5]], type=2, segment="S_II", id=2))
    left.add_child(Vessel(points=[[-5, 0, 15, 0.5], [-8, 0, 18, 0.25]], id=4, status="resect"))
    root.add_child(Vessel(points=[[0, 0, 10, 1], [5, 0, 15, 0.5]], id=3))
    return Tree(root)


class TestVesFiles:
    def test_read_then_write_gives_the_same_bytes(self, small, tmp_path):
        folder, _ = small
        for name in ("truth-portal.ves", "truth-hepatic.ves"):
            tree = lumoarbo.read(folder / name)
            assert len(tree) > 10
            tree.write(tmp_path / name)
            assert (tmp_path / name).read_bytes() == (folder / name).read_bytes()

    def test_a_written_tree_reads_back_equal(self, tmp_path):
        tree = three_vessels()
        tree.write(tmp_path / "three.ves")
        back = lumoarbo.read(tmp_path / "three.ves")
        assert [v.id for v in back] == [1, 2, 4, 3]
        numpy.testing.assert_array_equal(back.find(4).points, tree.find(4).points)
        assert back.find(2).segment_name == "S_II"
        assert back.find(4).status_name == "To be resected"
        assert (back.find(3).type_name, back.find(3).segment, back.find(3).status) == ("Portal vein", 1, 1)

    def test_phantom_trees_equal_the_files_arbo_writes(self, small, tmp_path):
        folder, data = small
        data.portal_tree.write(tmp_path / "portal.ves")
        assert (tmp_path / "portal.ves").read_bytes() == (folder / "truth-portal.ves").read_bytes()


class TestDicts:
    def test_dict_round_trip(self, small):
        tree = lumoarbo.read(small[0] / "truth-portal.ves")
        data = tree.to_dict()
        again = Tree.from_dict(data).to_dict()
        assert json.dumps(Tree.from_dict(data).to_dict(arrays=False)) == json.dumps(tree.to_dict(arrays=False))
        assert again["root"]["points"].dtype == numpy.float32
        assert again["root"]["points"].shape[1] == 4

    def test_json_round_trip_keeps_every_value(self):
        tree = three_vessels()
        text = json.dumps(tree.to_dict(arrays=False))
        back = Tree.from_dict(json.loads(text))
        assert back.to_dict(arrays=False) == tree.to_dict(arrays=False)

    def test_labels_as_names_or_numbers(self):
        record = {"root": {"id": 7, "type": "hepatic", "segment": 3, "status": "keep", "points": [[1, 2, 3, 4]]}}
        vessel = Tree.from_dict(record).root
        assert (vessel.type, vessel.type_name) == (1, "Hepatic vein")
        assert (vessel.segment, vessel.segment_name) == (3, "S_II")
        assert (vessel.status, vessel.status_name) == (2, "Not to be resected")
        # Numbers that files may hold but no label has are kept.
        assert (Vessel(segment=99).segment, Vessel(segment=99).segment_name) == (99, "Unknown")
        assert vessel.points.dtype == numpy.float32 and vessel.points.tolist() == [[1, 2, 3, 4]]

    def test_bad_labels_and_points_are_refused(self):
        with pytest.raises(ValueError, match=r"^type: unknown value 'vein'$"):
            Vessel(type="vein")
        with pytest.raises(ValueError, match=r"^points: give an N x 4 array \(x, y, z, radius in mm\)$"):
            Vessel(points=[[1, 2, 3]])


class TestStructure:
    def test_preorder_children_and_parents(self):
        tree = three_vessels()
        assert [v.id for v in tree] == [1, 2, 4, 3]
        assert [v.id for v in tree.find(2)] == [2, 4]
        assert tree.find(4).parent.id == 2 and tree.root.parent is None
        assert [c.id for c in tree.root.children] == [2, 3]
        assert len(Tree()) == 0 and list(Tree()) == []

    def test_radius_is_half_the_file_diameter(self, tmp_path):
        three_vessels().write(tmp_path / "t.ves")
        text = (tmp_path / "t.ves").read_text()
        # Root's first point: radius 2 is written as diameter 4.
        assert "[ 0 0 0 4 ]" in text

    def test_deep_trees_build_without_recursion_limits(self, tmp_path):
        root = Vessel(points=[[0, 0, 0, 1]], id=1)
        vessel = root
        for i in range(2, 3000):
            vessel = vessel.add_child(Vessel(points=[[0, 0, i, 1]], id=i))
        tree = Tree(root)
        assert len(Tree.from_dict(tree.to_dict())) == 2999
