#!/usr/bin/env python3
"""Gathers the status files of every case into one cohort table (CSV and JSON).

A case is "ok" when every step succeeded, else "failed" with the step that failed first and its error line (the
steps after it were not run because of it). Columns that a case has no value for stay empty.
"""

import argparse
import csv
import io
import json
import os
import re
import sys
import tempfile

TREE_FIELDS = [("vessels", "vessels"), ("points", "points"), ("bifurcations", "bifurcations"),
               ("depth", "depth"), ("length_mm", "lengthMillimetres")]
PART_FIELDS = ["remnant", "resected", "at_risk", "tumour"]


def read_status(path, step):
    try:
        with open(path, encoding="utf-8") as stream:
            record = json.load(stream)
        if isinstance(record, dict) and "state" in record:
            return record
        problem = "no state in it"
    except FileNotFoundError:
        problem = "missing"
    except (OSError, ValueError) as e:
        problem = str(e)
    return {"step": step, "state": "failed", "error": f"status file {path}: {problem}"}


def slug(text):
    return re.sub(r"[^a-z0-9]+", "_", text.lower()).strip("_")


def margin_key(margin):
    return f"{float(margin):g}mm"


def gather(results, case, steps, margins):
    statuses = [read_status(os.path.join(results, case, "status", step + ".json"), step) for step in steps]
    row = {"case": case, "state": "ok", "failed_step": None, "error": None}
    # Steps come in dependency order, so the first one that did not succeed is the cause of the rest.
    culprit = next((s for s in statuses if s["state"] != "ok"), None)
    if culprit is not None:
        row.update(state="failed", failed_step=culprit.get("step"), error=culprit.get("error"))
    outputs = {s.get("step"): s.get("output") for s in statuses if s["state"] == "ok"}

    trees = {}
    for system in ("portal", "hepatic"):
        info = outputs.get("info-" + system)
        if isinstance(info, dict):
            trees[system] = {name: info.get(key) for name, key in TREE_FIELDS}
    row["trees"] = trees

    supply = outputs.get("supply")
    territories = []
    if isinstance(supply, dict):
        row["organ_ml"] = supply.get("organ_millilitres")
        for label in supply.get("labels", []):
            territories.append({key: label.get(key) for key in ("label", "name", "voxels", "millilitres", "percent")})
    else:
        row["organ_ml"] = None
    row["territories"] = territories

    resection = []
    resect = outputs.get("resect")
    if isinstance(resect, dict):
        for proposal in resect.get("proposals", []):
            entry = {"margin_mm": proposal.get("margin_mm")}
            for part in PART_FIELDS:
                entry[part + "_ml"] = (proposal.get(part) or {}).get("millilitres")
            entry["flr_percent"] = proposal.get("flr_percent")
            resection.append(entry)
    row["resection"] = resection
    row["seconds"] = {s.get("step", step): s.get("seconds") for s, step in zip(statuses, steps)}
    row["seconds_total"] = round(sum(v for v in row["seconds"].values() if isinstance(v, (int, float))), 3)
    return row


def flatten(rows, margins):
    """One CSV line per case; the territory and step columns are the union over the cohort."""
    labels = {}
    step_names = []
    for row in rows:
        for territory in row["territories"]:
            labels.setdefault(territory["label"], territory["name"])
        for step in row["seconds"]:
            if step not in step_names:
                step_names.append(step)
    columns = ["case", "state", "failed_step", "error"]
    columns += [f"{system}_{name}" for system in ("portal", "hepatic") for name, _ in TREE_FIELDS]
    columns.append("organ_ml")
    columns += [f"territory_{slug(labels[label])}_ml" for label in sorted(labels)]
    columns += [f"{part}_ml_{margin_key(m)}" for m in margins for part in PART_FIELDS]
    columns += [f"flr_percent_{margin_key(m)}" for m in margins]
    columns += [f"seconds_{slug(step)}" for step in step_names] + ["seconds_total"]

    lines = []
    for row in rows:
        line = {key: row.get(key) for key in ("case", "state", "failed_step", "error", "organ_ml", "seconds_total")}
        for system, values in row["trees"].items():
            for name, value in values.items():
                line[f"{system}_{name}"] = value
        for territory in row["territories"]:
            line[f"territory_{slug(labels[territory['label']])}_ml"] = territory["millilitres"]
        for entry in row["resection"]:
            if entry["margin_mm"] is None:
                continue
            key = margin_key(entry["margin_mm"])
            for part in PART_FIELDS:
                line[f"{part}_ml_{key}"] = entry[part + "_ml"]
            line[f"flr_percent_{key}"] = entry["flr_percent"]
        for step, seconds in row["seconds"].items():
            line[f"seconds_{slug(step)}"] = seconds
        lines.append({column: ("" if line.get(column) is None else line[column]) for column in columns})
    return columns, lines


def write_atomically(path, text):
    folder = os.path.dirname(os.path.abspath(path))
    os.makedirs(folder, exist_ok=True)
    handle, temporary = tempfile.mkstemp(prefix=".table-", dir=folder)
    try:
        with os.fdopen(handle, "w", encoding="utf-8", newline="") as stream:
            stream.write(text)
        os.replace(temporary, path)
    except BaseException:
        if os.path.exists(temporary):
            os.unlink(temporary)
        raise


def split_pair(text, option):
    case, equals, value = text.partition("=")
    if not equals or not case:
        raise SystemExit(f"cohort_table: {option} '{text}' is not of the form CASE=VALUE")
    return case, value


def main(argv=None):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--results", required=True, help="the results folder with <case>/status/<step>.json")
    parser.add_argument("--csv", required=True, help="CSV table to write")
    parser.add_argument("--json", required=True, help="JSON table to write")
    parser.add_argument("--margin", action="append", default=[], help="a margin of the risk analysis (mm)")
    parser.add_argument("--case", action="append", default=[], help="CASE=STEP,STEP,...: a case and its steps")
    parser.add_argument("--missing", action="append", default=[], help="CASE=REASON: a case that could not start")
    arguments = parser.parse_args(argv)

    rows = []
    for text in arguments.case:
        case, steps = split_pair(text, "--case")
        rows.append(gather(arguments.results, case, [s for s in steps.split(",") if s], arguments.margin))
    for text in arguments.missing:
        case, reason = split_pair(text, "--missing")
        rows.append({"case": case, "state": "failed", "failed_step": "inputs", "error": reason, "trees": {},
                     "organ_ml": None, "territories": [], "resection": [], "seconds": {}, "seconds_total": 0.0})
    rows.sort(key=lambda row: row["case"])

    columns, lines = flatten(rows, arguments.margin)
    text = io.StringIO()
    writer = csv.DictWriter(text, fieldnames=columns, lineterminator="\n")
    writer.writeheader()
    writer.writerows(lines)
    failed = sum(1 for row in rows if row["state"] != "ok")
    summary = {"cases": len(rows), "ok": len(rows) - failed, "failed": failed,
               "margins_mm": [float(m) for m in arguments.margin]}
    write_atomically(arguments.csv, text.getvalue())
    write_atomically(arguments.json, json.dumps({"summary": summary, "cases": rows}, indent=2) + "\n")
    print(f"cohort: {len(rows)} cases, {len(rows) - failed} ok, {failed} failed -> {arguments.csv}")
    for row in rows:
        if row["state"] != "ok":
            print(f"  {row['case']}: {row['failed_step']}: {row['error']}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
