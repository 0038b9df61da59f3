"""Runs one kind of checks of the package in the folder that is given: run.py tests|types|stubs|install FOLDER."""

import importlib.util
import os
import pathlib
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).parent
ROOT = HERE.parents[1]
SKIPPED = 77
PYTEST = ["pytest", "-q", "-p", "fixtures_plugin", "-p", "no:cacheprovider", "--doctest-modules", "--doctest-glob=*.md"]


def tests(package: pathlib.Path) -> list[str]:
    command = [*PYTEST, str(package), str(HERE), str(ROOT / "README.md"), str(ROOT / "docs" / "python.md")]
    if importlib.util.find_spec("dask") is None:
        print("Without dask (Debian: python3-dask python3-distributed) its part is left out")
        command.append(f"--ignore={package / 'dask.py'}")
    return command


def types(package: pathlib.Path) -> list[str]:
    return ["mypy", "--strict", "--ignore-missing-imports", f"--cache-dir={package.parent / 'mypy'}", str(package)]


def stubs(package: pathlib.Path) -> list[str]:
    """Whether the types of the compiled part name what there is."""
    return ["mypy.stubtest", "zephmetadata._core", f"--allowlist={HERE / 'stubs_allowed.txt'}"]


def install(package: pathlib.Path, venv: str) -> int:
    """What pip installs from the source folder runs the README elsewhere. Takes what the build made."""
    subprocess.run([sys.executable, "-m", "venv", "--system-site-packages", venv], check=True)
    environment = {**os.environ, "ZEPHMETADATA_BUILD_FOLDER": str(package.parents[1]), "PYTHONPATH": str(HERE)}
    pip = ["pip", "install", "-q", "--no-build-isolation", "--no-index", "--no-deps", str(ROOT)]
    for command in (pip, [*PYTEST, "--rootdir=/", str(ROOT / "README.md")]):
        subprocess.run([f"{venv}/bin/python", "-m", *command], env=environment, cwd=venv, check=True)
    where = [f"{venv}/bin/python", "-c", "import zephmetadata; print(zephmetadata.__file__)"]
    return int(not subprocess.run(where, capture_output=True, text=True, cwd="/").stdout.startswith(venv))


def main() -> int:
    kind, package = sys.argv[1], pathlib.Path(sys.argv[2])
    needed = {"tests": ["pytest"], "types": ["mypy"], "stubs": ["mypy"], "install": ["pytest", "pip", "wheel", "ensurepip"]}[kind]
    for module in needed:
        if importlib.util.find_spec(module) is None:
            print(f"Skipped: {sys.executable} has no {module}")
            return SKIPPED
    if kind == "install":
        with tempfile.TemporaryDirectory() as folder:
            return install(package, folder)
    environment = {**os.environ, "PYTHONDONTWRITEBYTECODE": "1", "LC_ALL": "C.UTF-8"}
    if kind != "types":  # mypy takes the folder itself for the package
        environment["PYTHONPATH"] = f"{package.parent}{os.pathsep}{HERE}"
        environment["MYPYPATH"] = str(package.parent)
    command = {"tests": tests, "types": types, "stubs": stubs}[kind](package)
    return subprocess.run([sys.executable, "-m", *command], env=environment, check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
