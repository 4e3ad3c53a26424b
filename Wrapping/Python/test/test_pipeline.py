"""The module's results against arbo's on the same phantom: trees byte for byte, volumes exactly."""

import numpy
import pytest

import lumoarbo
from conftest import arbo_json, run_arbo


class TestExtraction:
    def test_tree_equals_arbo_extract(self, extracted, tmp_path):
        arbo_file, tree = extracted
        tree.write(tmp_path / "module.ves")
        assert (tmp_path / "module.ves").read_bytes() == arbo_file.read_bytes()
        assert tree.summary["vessels"] == len(tree) > 5

    @pytest.mark.parametrize("arguments, options", [
        (["--keep-spurs"], {"keep_spurs": True}),
        (["--prune", "4", "--smooth", "0"], {"prune": 4, "smooth": 0}),
        (["--raw-diameters"], {"raw_diameters": True}),
        (["--raw-centre-lines"], {"raw_centre_lines": True}),
        (["--no-endpoint-suppression"], {"endpoint_suppression": False}),
    ])
    def test_options_reach_the_extraction(self, small, tmp_path, arguments, options):
        folder, data = small
        run_arbo("extract", folder / "hepatic.nrrd", "-o", tmp_path / "arbo.ves", "--type", "hepatic", *arguments)
        run_arbo("extract", folder / "hepatic.nrrd", "-o", tmp_path / "default.ves", "--type", "hepatic")
        tree = lumoarbo.extract(data.hepatic, **data.geometry, type="hepatic", **options)
        tree.write(tmp_path / "module.ves")
        assert (tmp_path / "module.ves").read_bytes() == (tmp_path / "arbo.ves").read_bytes()
        # Each option changes the tree: the comparison above is not between defaults.
        assert (tmp_path / "arbo.ves").read_bytes() != (tmp_path / "default.ves").read_bytes()
        assert {v.type_name for v in tree} == {"Hepatic vein"}

    def test_label_maps(self, small, tmp_path):
        _, data = small
        labels = data.organ.astype(numpy.int16) + 2 * data.portal
        by_label = lumoarbo.extract(labels, **data.geometry, label=3)
        plain = lumoarbo.extract(data.portal & data.organ, **data.geometry)
        assert by_label.to_dict(arrays=False) == plain.to_dict(arrays=False)


class TestSupply:
    def test_volumes_equal_arbo_supply(self, small, extracted, tmp_path):
        folder, data = small
        arbo_file, tree = extracted
        labelled = lumoarbo.label_from(tree, data.portal_tree)
        labelled.write(tmp_path / "labelled.ves")
        expected = arbo_json("supply", folder / "organ.nrrd", tmp_path / "labelled.ves", "-o", tmp_path / "s.nrrd")
        labels, table = lumoarbo.supply(data.organ, labelled, spacing=data.spacing, origin=data.origin,
                                        direction=data.direction, threads=2)
        assert table["labels"] == expected["labels"]
        assert table["organ_voxels"] == expected["organ_voxels"]
        assert table["organ_millilitres"] == expected["organ_millilitres"]
        assert labels.shape == data.organ.shape
        values, counts = numpy.unique(labels[data.organ != 0], return_counts=True)
        assert {int(v): int(c) for v, c in zip(values, counts)} == {r["label"]: r["voxels"] for r in table["labels"]}

    def test_several_trees_and_modes(self, small, tmp_path):
        folder, data = small
        expected = arbo_json("supply", folder / "organ.nrrd", folder / "truth-portal.ves", "--with",
                             folder / "truth-hepatic.ves", "-o", tmp_path / "t.nrrd", "--mode", "all-vessels-types")
        _, table = lumoarbo.supply(data.organ, [data.portal_tree, data.hepatic_tree], mode="all-vessels-types",
                                   **data.geometry)
        assert table["labels"] == expected["labels"]
        assert [r["name"] for r in table["labels"]] == ["Hepatic vein", "Portal vein"]


class TestAnalysis:
    def test_compare_equals_arbo_compare(self, small, extracted):
        folder, data = small
        arbo_file, tree = extracted
        expected = arbo_json("compare", folder / "truth-portal.ves", arbo_file)
        # The file holds six significant digits: measured on what arbo read, the figures are the same.
        result = lumoarbo.compare(data.portal_tree, lumoarbo.read(arbo_file))
        assert lumoarbo.compare(data.portal_tree, tree)["recall"] == pytest.approx(expected["recall"], abs=0.02)
        assert result["recall"] == expected["recall"]
        assert result["precision"] == expected["precision"]
        assert result["truth_to_test_mean_mm"] == expected["truthToTest"]["meanMillimetres"]
        assert result["test_vessels"] == expected["testTree"]["vessels"]

    def test_label_from_equals_arbo_label(self, small, extracted, tmp_path):
        folder, data = small
        arbo_file, tree = extracted
        run_arbo("label", arbo_file, "-o", tmp_path / "arbo.ves", "--from", folder / "truth-portal.ves")
        labelled = lumoarbo.label_from(lumoarbo.read(arbo_file), lumoarbo.read(folder / "truth-portal.ves"))
        labelled.write(tmp_path / "module.ves")
        assert (tmp_path / "module.ves").read_bytes() == (tmp_path / "arbo.ves").read_bytes()
        # The tree given is left as it was.
        assert {v.segment for v in lumoarbo.label_from(tree, data.portal_tree)} != {1}
        assert {v.segment for v in tree} == {1}

    def test_resect_margins_equal_arbo_resect(self, small, tmp_path):
        folder, data = small
        expected = arbo_json("resect", folder / "organ.nrrd", folder / "truth-portal.ves", "--hepatic",
                             folder / "truth-hepatic.ves", "--tumour", folder / "tumour.nrrd", "--margin", "0,5",
                             "-o", tmp_path / "r.nrrd")
        results = lumoarbo.resect(data.organ, data.portal_tree, data.hepatic_tree, tumour=data.tumour,
                                  margins=[0, 5], **data.geometry)
        proposals = expected["proposals"]
        assert len(results) == len(proposals) == 2
        for result, proposal in zip(results, proposals):
            assert result["margin_mm"] == proposal["margin_mm"]
            for part in ("remnant", "resected", "at_risk", "tumour"):
                assert result[part] == proposal[part]
            assert result["flr_percent"] == pytest.approx(proposal["flr_percent"], abs=0)
            assert int((result["labels"] == 3).sum()) == result["resected"]["voxels"]
        assert results[1]["resected"]["voxels"] > results[0]["resected"]["voxels"]
