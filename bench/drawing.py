"""Has programs draw the figures of bench/figures."""

import subprocess
import sys
import tempfile
from pathlib import Path

from measuring import ENVIRONMENT, fail

SCRIPTS = Path(__file__).resolve().parent / "figures"
OCTAVE = ["xvfb-run", "-a", "octave", "--no-gui", "--no-init-file", "--no-history"]
RUN = {
    ".py": ["/usr/bin/python3", "-B"],  # the one for which Debian has the libraries
    ".R": ["Rscript", "--vanilla"],
    ".gp": ["gnuplot", "-c"],
    ".m": OCTAVE,
    ".sh": ["bash"],
}


def draw(directory, scripts, form="pdf"):
    """Runs the scripts, which write files of a form, pdf or eps, into the directory. What a program
    says is shown when it fails. Returns the figures."""
    with tempfile.TemporaryDirectory(prefix="bench") as home:
        environment = {**ENVIRONMENT, "MPLCONFIGDIR": home}
        for script in scripts:
            words = [*RUN[Path(script).suffix], SCRIPTS / script, directory, form]
            done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                  env=environment, check=False)
            if done.returncode != 0:
                sys.stderr.buffer.write(done.stdout)
                fail(f"{script} has failed")
    return sorted(directory.glob(f"*.{form}"))
