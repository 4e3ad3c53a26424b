"""The cohort workflow: the step runner, the table, scripts/make-cohort and a whole run on small phantoms."""

import csv
import json
import os
import shutil
import subprocess
import sys

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
WORKFLOW = os.path.dirname(HERE)
ROOT = os.path.dirname(os.path.dirname(WORKFLOW))
sys.path.insert(0, os.path.join(WORKFLOW, "scripts"))

import cohort_step  # noqa: E402
import cohort_table  # noqa: E402

ARBO = os.environ.get("ARBO", os.path.join(ROOT, "build", "Apps", "arbo", "arbo"))
MAKE_COHORT = os.path.join(ROOT, "scripts", "make-cohort")
SNAKEFILE = os.path.join(WORKFLOW, "Snakefile")


def read(path):
    with open(path, encoding="utf-8") as stream:
        return stream.read()


def step(tmp_path, *arguments):
    status = tmp_path / "status.json"
    assert cohort_step.main(["--status", str(status), "--step", "work", *arguments]) == 0
    return json.loads(read(status))


# The step runner: every outcome ends in a status file, failures with arbo's one error line.
class TestStep:
    def test_success_keeps_the_json_output_and_the_product(self, tmp_path):
        folder = tmp_path / "work"
        record = step(tmp_path, "--folder", str(folder), "--json-stdout", "--",
                      "sh", "-c", 'echo made > "$0/file"; echo \'{"vessels": 7}\'', str(folder))
        assert record["state"] == "ok"
        assert record["output"] == {"vessels": 7}
        assert record["exit_status"] == 0
        assert read(folder / "file") == "made\n"

    def test_failure_reports_arbo_line_and_removes_the_folder(self, tmp_path):
        folder = tmp_path / "work"
        folder.mkdir()
        (folder / "stale.ves").write_text("from an earlier run")
        log = tmp_path / "work.log"
        record = step(tmp_path, "--folder", str(folder), "--log", str(log), "--",
                      "sh", "-c", 'touch "$0/half"; echo "arbo: liver.nrrd: cannot read" >&2; echo note >&2; exit 1',
                      str(folder))
        assert record["state"] == "failed"
        assert record["error"] == "arbo: liver.nrrd: cannot read"
        assert record["exit_status"] == 1
        assert not folder.exists()
        assert read(log) == "arbo: liver.nrrd: cannot read\nnote\n"

    def test_unrunnable_program_and_missing_json(self, tmp_path):
        record = step(tmp_path, "--", str(tmp_path / "no-such-arbo"), "info")
        assert record["state"] == "failed"
        assert record["error"] == f"cannot run {tmp_path / 'no-such-arbo'}: No such file or directory"
        record = step(tmp_path, "--json-stdout", "--", "echo", "not json")
        assert record["state"] == "failed"
        assert record["error"].startswith("echo: printed no JSON")

    def test_killed_program_is_named(self, tmp_path):
        record = step(tmp_path, "--", "sh", "-c", "kill -KILL $$")
        assert record["error"] == "sh: killed by SIGKILL"

    def test_after_a_failed_step_nothing_runs(self, tmp_path):
        upstream = tmp_path / "extract.json"
        upstream.write_text(json.dumps({"step": "extract-portal", "state": "failed", "error": "arbo: x"}))
        marker = tmp_path / "ran"
        record = step(tmp_path, "--after", str(upstream), "--", "touch", str(marker))
        assert record["state"] == "skipped"
        assert record["error"] == "not run: extract-portal did not succeed"
        assert not marker.exists()
        # An unreadable upstream status counts as a failure, not as success.
        upstream.write_text("{ half")
        assert step(tmp_path, "--after", str(upstream), "--", "touch", str(marker))["state"] == "skipped"
        assert not marker.exists()

    def test_thread_count_reaches_the_libraries(self, tmp_path, monkeypatch):
        monkeypatch.delenv("VTK_SMP_BACKEND_IN_USE", raising=False)
        script = ('printf \'["%s","%s","%s","%s"]\' "$ITK_GLOBAL_DEFAULT_NUMBER_OF_THREADS" "$OMP_NUM_THREADS" '
                  '"$LP_NUM_THREADS" "$VTK_SMP_BACKEND_IN_USE"')
        record = step(tmp_path, "--threads", "3", "--json-stdout", "--", "sh", "-c", script)
        assert record["output"] == ["3", "3", "3", ""]
        record = step(tmp_path, "--json-stdout", "--", "sh", "-c", script)
        assert record["output"] == ["1", "1", "1", "Sequential"]

    def test_usage_errors(self, tmp_path, capsys):
        with pytest.raises(SystemExit) as exit_info:
            cohort_step.main(["--status", str(tmp_path / "s.json"), "--step", "x", "--"])
        assert exit_info.value.code == 2
        assert "no command given after --" in capsys.readouterr().err
        assert not (tmp_path / "s.json").exists()


def write_status(results, case, step_name, state, **fields):
    path = results / case / "status" / f"{step_name}.json"
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(json.dumps({"step": step_name, "state": state, **fields}))


# The table: exact columns and values from known statuses.
class TestTable:
    def test_columns_values_and_failures(self, tmp_path):
        results = tmp_path / "results"
        info = {"vessels": 5, "points": 40, "bifurcations": 2, "depth": 3, "lengthMillimetres": 120.5}
        write_status(results, "a", "info-portal", "ok", seconds=0.5, output=info)
        write_status(results, "a", "supply", "ok", seconds=1.25, output={
            "organ_millilitres": 100.0,
            "labels": [{"label": 3, "name": "Portal vein", "voxels": 60, "millilitres": 60.0, "percent": 60.0},
                       {"label": 2, "name": "Hepatic vein", "voxels": 40, "millilitres": 40.0, "percent": 40.0}]})
        write_status(results, "a", "resect", "ok", seconds=2.0, output={"proposals": [
            {"margin_mm": 5.0, "remnant": {"millilitres": 70.0}, "resected": {"millilitres": 20.0},
             "at_risk": {"millilitres": 10.0}, "tumour": {"millilitres": 2.0}, "flr_percent": 71.4}]})
        write_status(results, "b", "info-portal", "failed", seconds=0.25, error="arbo: b/portal.nrrd: bad")
        write_status(results, "b", "supply", "skipped", seconds=0.0, error="not run: info-portal did not succeed")
        # b's resect status was never written (a killed job): the table says so instead of failing.
        csv_path, json_path = tmp_path / "t.csv", tmp_path / "t.json"
        cohort_table.main(["--results", str(results), "--csv", str(csv_path), "--json", str(json_path),
                           "--margin", "5", "--case", "a=info-portal,supply,resect",
                           "--case", "b=info-portal,supply,resect", "--missing", "c=no liver file (liver.nrrd)"])
        header = ("case,state,failed_step,error,portal_vessels,portal_points,portal_bifurcations,portal_depth,"
                  "portal_length_mm,hepatic_vessels,hepatic_points,hepatic_bifurcations,hepatic_depth,"
                  "hepatic_length_mm,organ_ml,territory_hepatic_vein_ml,territory_portal_vein_ml,remnant_ml_5mm,"
                  "resected_ml_5mm,at_risk_ml_5mm,tumour_ml_5mm,flr_percent_5mm,seconds_info_portal,seconds_supply,"
                  "seconds_resect,seconds_total")
        assert read(csv_path).splitlines() == [
            header,
            "a,ok,,,5,40,2,3,120.5,,,,,,100.0,40.0,60.0,70.0,20.0,10.0,2.0,71.4,0.5,1.25,2.0,3.75",
            "b,failed,info-portal,arbo: b/portal.nrrd: bad,,,,,,,,,,,,,,,,,,,0.25,0.0,,0.25",
            "c,failed,inputs,no liver file (liver.nrrd),,,,,,,,,,,,,,,,,,,,,,0.0",
        ]
        table = json.loads(read(json_path))
        assert table["summary"] == {"cases": 3, "ok": 1, "failed": 2, "margins_mm": [5.0]}
        assert table["cases"][1]["seconds"] == {"info-portal": 0.25, "supply": 0.0, "resect": None}

    def test_malformed_case_argument_writes_nothing(self, tmp_path):
        with pytest.raises(SystemExit) as exit_info:
            cohort_table.main(["--results", str(tmp_path), "--csv", str(tmp_path / "t.csv"), "--json",
                               str(tmp_path / "t.json"), "--case", "a=supply", "--case", "broken"])
        assert str(exit_info.value) == "cohort_table: --case 'broken' is not of the form CASE=VALUE"
        assert os.listdir(tmp_path) == []

    def test_missing_status_is_the_error_when_nothing_failed(self, tmp_path):
        row = cohort_table.gather(str(tmp_path), "x", ["supply"], ["5"])
        assert row["state"] == "failed"
        assert row["error"] == f"status file {tmp_path}/x/status/supply.json: missing"


def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, **options)


# scripts/make-cohort: its refusals leave every file where it was.
class TestMakeCohort:
    def test_refuses_a_folder_with_other_files(self, tmp_path):
        (tmp_path / "mine.txt").write_text("keep")
        result = run(["bash", MAKE_COHORT, str(tmp_path), "--small"], env={**os.environ, "ARBO": ARBO})
        assert result.returncode == 1
        assert result.stderr == f"make-cohort: {tmp_path}: a folder with other files; give a new or empty folder\n"
        assert os.listdir(tmp_path) == ["mine.txt"]
        assert read(tmp_path / "mine.txt") == "keep"

    def test_refuses_a_file_in_place_of_the_folder(self, tmp_path):
        target = tmp_path / "cohort"
        target.write_text("not a folder")
        result = run(["bash", MAKE_COHORT, str(target), "--small"], env={**os.environ, "ARBO": ARBO})
        assert (result.returncode, result.stderr) == (1, f"make-cohort: {target}: exists and is not a folder\n")
        assert read(target) == "not a folder"

    def test_usage_and_missing_arbo(self, tmp_path):
        result = run(["bash", MAKE_COHORT, str(tmp_path / "c"), "--medium", "zero"])
        assert (result.returncode, result.stderr) == (2, "usage: make-cohort OUT [--small | --medium N]\n")
        missing = str(tmp_path / "nothing")
        result = run(["bash", MAKE_COHORT, str(tmp_path / "c")], env={**os.environ, "ARBO": missing})
        assert (result.returncode, result.stderr) == (
            1, f"make-cohort: {missing}: no arbo program (build it first, or set ARBO)\n")
        assert not (tmp_path / "c").exists()


def snakemake(workdir, cases, *extra):
    return run([shutil.which("snakemake") or "snakemake", "-s", SNAKEFILE, "--cores", "2", "--config",
                f"cases={cases}", "results=results", f"arbo={ARBO}", "margins=[5]", *extra], cwd=workdir)


@pytest.fixture(scope="module")
def cohort(tmp_path_factory):
    """Three small phantoms, the third with a truncated liver file, run through the workflow once."""
    base = tmp_path_factory.mktemp("cohort")
    cases = base / "CASES"
    made = run(["bash", MAKE_COHORT, str(cases), "--small"], env={**os.environ, "ARBO": ARBO})
    assert made.returncode == 0, made.stderr
    work = base / "work"
    work.mkdir()
    result = snakemake(work, cases)
    assert result.returncode == 0, result.stderr[-3000:]
    return cases, work


# The whole workflow on small phantoms: the broken case is reported, the others have every result.
class TestWorkflow:
    def test_table_holds_results_and_the_broken_case_error(self, cohort):
        cases, work = cohort
        rows = {row["case"]: row for row in csv.DictReader(open(work / "results" / "cohort.csv"))}
        assert sorted(rows) == ["case01", "case02", "case03"]
        broken = rows["case03"]
        assert broken["state"] == "failed"
        assert broken["failed_step"] == "supply"
        assert broken["error"].startswith(f"arbo: {cases}/case03/liver.nrrd: ")
        assert broken["organ_ml"] == "" and broken["flr_percent_5mm"] == ""
        for case in ("case01", "case02"):
            row = rows[case]
            assert (row["state"], row["error"]) == ("ok", "")
            assert int(row["portal_vessels"]) > 10 and int(row["hepatic_vessels"]) > 10
            organ = float(row["organ_ml"])
            # Every liver voxel belongs to one vessel system, and to one part of the resection.
            territories = float(row["territory_portal_vein_ml"]) + float(row["territory_hepatic_vein_ml"])
            assert territories == pytest.approx(organ)
            parts = sum(float(row[f"{p}_ml_5mm"]) for p in ("remnant", "resected", "at_risk"))
            assert parts == pytest.approx(organ)
            tumour = float(row["tumour_ml_5mm"])
            assert 0 < tumour < float(row["resected_ml_5mm"])
            # The future liver remnant leaves the tumour out of the organ.
            flr = 100 * float(row["remnant_ml_5mm"]) / (organ - tumour)
            assert float(row["flr_percent_5mm"]) == pytest.approx(flr)
            assert float(row["seconds_total"]) > 0
        table = json.loads(read(work / "results" / "cohort.json"))
        assert table["summary"] == {"cases": 3, "ok": 2, "failed": 1, "margins_mm": [5.0]}

    def test_products_of_good_cases_and_none_of_the_broken_one(self, cohort):
        _, work = cohort
        results = work / "results"
        for case in ("case01", "case02"):
            for product in ("extract-portal/portal.ves", "extract-hepatic/hepatic.ves", "supply/territories.nrrd",
                            "resect/risk.nrrd", "resect/plan.ves", f"scene/{case}.rs"):
                assert (results / case / product).is_file(), product
            for picture in ("render-trees/trees.png", "render-territories/territories.png"):
                assert read_bytes(results / case / picture)[:8] == b"\x89PNG\r\n\x1a\n"
        assert not (results / "case03" / "supply").exists()
        assert not (results / "case03" / "scene").exists()
        assert json.loads(read(results / "case03" / "status" / "scene.json"))["state"] == "skipped"

    def test_rerun_does_only_what_changed(self, cohort):
        cases, work = cohort
        assert "Nothing to be done" in snakemake(work, cases, "-n").stdout
        # A new tumour for case01: its risk analysis, its scene and the table run again, nothing else.
        other = work.parent / "other"
        made = run([ARBO, "-q", "phantom", "--out", str(other), "--size", "small", "--seed", "9"])
        assert made.returncode == 0, made.stderr
        shutil.copy(other / "tumour.nrrd", cases / "case01" / "tumour.nrrd")
        dry = snakemake(work, cases, "-n", "--quiet")
        assert dry.returncode == 0, dry.stderr
        # The job statistics: "rule  count  min-threads  max-threads" per line.
        jobs = {fields[0]: int(fields[1]) for fields in map(str.split, dry.stdout.splitlines())
                if len(fields) == 4 and fields[1].isdigit()}
        assert jobs == {"all": 1, "resect": 1, "scene": 1, "table": 1, "total": 4}

    def test_case_without_required_file_and_missing_cases_folder(self, cohort, tmp_path):
        cases, _ = cohort
        partial = tmp_path / "CASES"
        shutil.copytree(cases / "case01", partial / "case01")
        os.remove(partial / "case01" / "portal.nrrd")
        (tmp_path / "work").mkdir()
        result = snakemake(tmp_path / "work", partial)
        assert result.returncode == 0, result.stderr[-2000:]
        rows = list(csv.DictReader(open(tmp_path / "work" / "results" / "cohort.csv")))
        assert [(r["case"], r["state"], r["failed_step"], r["error"]) for r in rows] == [
            ("case01", "failed", "inputs", f"no portal file (portal.nii.gz or portal.nrrd) in {partial}/case01")]
        result = snakemake(tmp_path / "work", tmp_path / "nowhere")
        assert result.returncode == 1
        assert f"cases folder '{tmp_path}/nowhere' does not exist (set it with --config cases=FOLDER)" in \
            result.stdout + result.stderr
        assert rows == list(csv.DictReader(open(tmp_path / "work" / "results" / "cohort.csv")))


def read_bytes(path):
    with open(path, "rb") as stream:
        return stream.read()
