#!/usr/bin/env python3
"""Runs one step of a case (one arbo call) and records how it went in a status file.

The status file is the step's only declared output: it is written whether the call succeeds or fails, so that a
failed case never stops the workflow and the cohort table can report its error line. A step whose upstream step did
not succeed is not run; its status says which step it waited for. The step's own folder is emptied before the call
and removed when the call fails, so no stale or half-written product survives a failure.
"""

import argparse
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time


def read_status(path):
    """The state of an upstream step: its status record, or a failure record if the file cannot be read."""
    try:
        with open(path, encoding="utf-8") as stream:
            record = json.load(stream)
        if not isinstance(record, dict) or "state" not in record:
            raise ValueError("no state")
        return record
    except (OSError, ValueError) as e:
        return {"step": os.path.basename(path), "state": "failed", "error": f"unreadable status {path}: {e}"}


def write_atomically(path, text):
    """Writes the whole text or nothing: a killed job leaves no half-written status behind."""
    folder = os.path.dirname(os.path.abspath(path))
    os.makedirs(folder, exist_ok=True)
    handle, temporary = tempfile.mkstemp(prefix=".status-", dir=folder)
    try:
        with os.fdopen(handle, "w", encoding="utf-8") as stream:
            stream.write(text)
        os.replace(temporary, path)
    except BaseException:
        if os.path.exists(temporary):
            os.unlink(temporary)
        raise


def error_line(stderr, exit_status, program):
    """The one line that says what went wrong: arbo's own "arbo: ..." line if it printed one."""
    lines = [line.strip() for line in stderr.splitlines() if line.strip()]
    for line in reversed(lines):
        if line.startswith("arbo:"):
            return line
    if exit_status < 0:
        try:
            name = signal.Signals(-exit_status).name
        except ValueError:
            name = str(-exit_status)
        return f"{os.path.basename(program)}: killed by {name}"
    if lines:
        return lines[-1]
    return f"{os.path.basename(program)}: exit status {exit_status}"


class VirtualDisplay:
    """An Xvfb server of its own for one picture. Xvfb picks a free display number itself (-displayfd), so jobs
    that render at the same time never race for one number as "xvfb-run -a" can."""

    def __init__(self, environment):
        self.environment = environment
        self.process = None
        self.display = None

    def __enter__(self):
        if os.environ.get("DISPLAY") or shutil.which("Xvfb") is None:
            return None  # a display exists already, or arbo finds its own way (and says so if it cannot)
        read_end, write_end = os.pipe()
        self.process = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1920x1080x24", "-nolisten", "tcp"],
            pass_fds=(write_end,),
            env=self.environment,  # the server renders too, within the job's threads
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        os.close(write_end)
        with os.fdopen(read_end) as stream:
            number = stream.readline().strip()
        if not number:
            self.__exit__(None, None, None)
            return None
        self.display = ":" + number
        return self.display

    def __exit__(self, *exception):
        if self.process is not None:
            self.process.terminate()
            try:
                self.process.wait(timeout=10)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
            self.process = None
        return False


def run(arguments):
    record = {"step": arguments.step, "command": arguments.command}
    waiting = [read_status(path) for path in arguments.after]
    blocked = [status for status in waiting if status.get("state") != "ok"]
    if arguments.folder:
        shutil.rmtree(arguments.folder, ignore_errors=True)
    if blocked:
        first = blocked[0]
        record.update(state="skipped", error=f"not run: {first.get('step', '?')} did not succeed", seconds=0.0)
        return record

    if arguments.folder:
        os.makedirs(arguments.folder, exist_ok=True)
    environment = dict(os.environ)
    threads = str(arguments.threads)
    # Every library that may start threads of its own is held to the job's share of the cores.
    environment.update(
        ITK_GLOBAL_DEFAULT_NUMBER_OF_THREADS=threads,
        OMP_NUM_THREADS=threads,
        LP_NUM_THREADS=threads,  # Mesa's software rasteriser
    )
    # VTK's parallel filters (surfaces of label images, tubes) run on TBB over every core, with no limit read from
    # the environment; one thread means its sequential backend.
    if arguments.threads == 1:
        environment["VTK_SMP_BACKEND_IN_USE"] = "Sequential"
    display = VirtualDisplay(environment) if arguments.display else None
    start = time.monotonic()
    try:
        if display is not None:
            name = display.__enter__()
            if name is not None:
                environment["DISPLAY"] = name
        completed = subprocess.run(
            arguments.command, env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
        )
        exit_status, stdout, stderr = completed.returncode, completed.stdout, completed.stderr
    except OSError as e:
        exit_status, stdout, stderr = 127, "", f"cannot run {arguments.command[0]}: {e.strerror}"
    finally:
        if display is not None:
            display.__exit__(None, None, None)
    record["seconds"] = round(time.monotonic() - start, 3)
    record["exit_status"] = exit_status

    if arguments.log:
        os.makedirs(os.path.dirname(os.path.abspath(arguments.log)), exist_ok=True)
        with open(arguments.log, "w", encoding="utf-8") as stream:
            stream.write(stderr)
    if exit_status == 0 and arguments.json_stdout:
        try:
            record["output"] = json.loads(stdout)
        except ValueError as e:
            exit_status = 1
            stderr = f"{arguments.command[0]}: printed no JSON ({e})"
    if exit_status != 0:
        record.update(state="failed", error=error_line(stderr, exit_status, arguments.command[0]))
        if arguments.folder:
            shutil.rmtree(arguments.folder, ignore_errors=True)
        return record
    record["state"] = "ok"
    return record


def main(argv=None):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--status", required=True, help="status file to write (JSON)")
    parser.add_argument("--step", required=True, help="name of the step, as the table reports it")
    parser.add_argument("--after", action="append", default=[], help="status file of a step this one needs")
    parser.add_argument("--folder", help="the step's product folder: emptied first, removed on failure")
    parser.add_argument("--log", help="where to keep the call's standard error")
    parser.add_argument("--threads", type=int, default=1, help="threads the call may use (default 1)")
    parser.add_argument("--json-stdout", action="store_true", help="keep the call's JSON output in the status")
    parser.add_argument("--display", action="store_true", help="give the call a virtual X display if none exists")
    parser.add_argument("command", nargs=argparse.REMAINDER, help="-- PROGRAM ARGUMENTS...")
    arguments = parser.parse_args(argv)
    if arguments.command[:1] == ["--"]:
        arguments.command = arguments.command[1:]
    if not arguments.command:
        parser.error("no command given after --")
    if arguments.threads < 1:
        parser.error("--threads must be at least 1")
    record = run(arguments)
    write_atomically(arguments.status, json.dumps(record, indent=2) + "\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
