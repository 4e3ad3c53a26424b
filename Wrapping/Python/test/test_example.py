"""The example pipeline runs and prints the volumes it computes."""

import os
import re
import subprocess
import sys
from pathlib import Path


def test_pipeline_example_prints_the_volumes():
    script = Path(os.environ["LUMO_SOURCE_DIR"]) / "examples" / "python" / "pipeline.py"
    result = subprocess.run([sys.executable, str(script), "small", "2"], capture_output=True, text=True)
    assert result.returncode == 0, result.stderr
    lines = result.stdout.splitlines()
    assert lines[0].startswith("phantom small, seed 2: ")
    liver = float(re.search(r"^liver: ([0-9.]+) ml$", result.stdout, re.M).group(1))
    shares = [float(m) for m in re.findall(r"^  S_\w+ +[0-9.]+ ml +([0-9.]+) %$", result.stdout, re.M)]
    assert liver > 0 and len(shares) >= 4
    margins = re.findall(r"^margin +(\d+\.\d) mm: remnant ([0-9.]+) ml, resected ([0-9.]+) ml", result.stdout, re.M)
    assert [m[0] for m in margins] == ["5.0", "10.0"]
    # A wider margin takes more.
    assert float(margins[1][2]) > float(margins[0][2])
