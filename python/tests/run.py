"""Runs one kind of checks of the package in the folder that is given: run.py tests|types FOLDER."""

import importlib.util
import os
import pathlib
import subprocess
import sys

HERE = pathlib.Path(__file__).parent
SKIPPED = 77


def main() -> int:
    kind, package = sys.argv[1], pathlib.Path(sys.argv[2])
    commands = {
        "tests": ["pytest", "-q", "-p", "fixtures_plugin", "-p", "no:cacheprovider", "--doctest-modules", "--doctest-glob=README.md", str(package), str(HERE),
                  str(HERE.parents[1] / "README.md")],
        "types": ["mypy", "--strict", "--ignore-missing-imports", f"--cache-dir={package.parent / 'mypy'}", str(package)],
    }
    command = commands[kind]
    if importlib.util.find_spec("dask") is None:
        print("Without dask (Debian: python3-dask python3-distributed) its part is left out")
        commands["tests"].append(f"--ignore={package / 'dask.py'}")
    if importlib.util.find_spec(command[0]) is None:
        print(f"Skipped: {sys.executable} has no {command[0]}")
        return SKIPPED
    environment = {**os.environ, "PYTHONPATH": f"{package.parent}{os.pathsep}{HERE}", "PYTHONDONTWRITEBYTECODE": "1", "LC_ALL": "C.UTF-8"}
    if kind == "types":
        del environment["PYTHONPATH"]  # mypy takes the folder itself for the package
    return subprocess.run([sys.executable, "-m", *command], env=environment, check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
