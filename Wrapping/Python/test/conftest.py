"""Shared fixtures: the arbo program the module is checked against, and one small phantom written by it."""

import json
import os
import subprocess

import pytest

import lumoarbo


def run_arbo(*arguments, check=True):
    """Runs arbo; returns (status, stdout, stderr)."""
    result = subprocess.run([os.environ["ARBO"], "--quiet", *map(str, arguments)], capture_output=True, text=True)
    if check and result.returncode != 0:
        raise AssertionError("arbo %s failed: %s" % (" ".join(map(str, arguments)), result.stderr))
    return result.returncode, result.stdout, result.stderr


def arbo_error(*arguments):
    """arbo's one-line message for a failing command, without the program's "arbo: " prefix."""
    status, _, err = run_arbo(*arguments, check=False)
    assert status == 1, err
    line = err.strip().splitlines()[-1]
    assert line.startswith("arbo: ")
    return line[len("arbo: "):]


def arbo_json(*arguments):
    return json.loads(run_arbo(*arguments, "--json")[1])


@pytest.fixture(scope="session")
def small(tmp_path_factory):
    """The small phantom of seed 3, as files written by arbo phantom and as arrays from lumoarbo.phantom."""
    folder = tmp_path_factory.mktemp("phantom")
    run_arbo("phantom", "--out", folder, "--size", "small", "--seed", 3)
    return folder, lumoarbo.phantom("small", 3)


@pytest.fixture(scope="session")
def extracted(small):
    """The portal tree of the small phantom, extracted by arbo and by the module."""
    folder, data = small
    run_arbo("extract", folder / "portal.nrrd", "-o", folder / "arbo-portal.ves")
    return folder / "arbo-portal.ves", lumoarbo.extract(data.portal, **data.geometry)
