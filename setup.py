"""Has CMake make the module and the library, and puts both into the package."""

import importlib.util
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

SOURCE = pathlib.Path(__file__).parent.resolve()
WORK = SOURCE / "build" / "pip"  # what setuptools leaves lies there, out of the way


class CMakeBuild(build_ext):
    def run(self) -> None:
        # A build folder of CMake's that is there already saves the time.
        given = os.environ.get("ZEPHMETADATA_BUILD_FOLDER")
        build = pathlib.Path(given or pathlib.Path(self.build_temp).resolve())
        if not given:
            self._configure(build)
        run("cmake", "--build", build, "--target", "zephmetadata_python", "--parallel", os.cpu_count() or 1)
        with tempfile.TemporaryDirectory() as prefix:
            for component in ("python", "library"):
                run("cmake", "--install", build, "--component", component, "--prefix", prefix, "--strip")
            self._take(pathlib.Path(prefix))

    def _configure(self, build: pathlib.Path) -> None:
        options = {"CMAKE_BUILD_TYPE": "Release", "ZEPHMETADATA_PYTHON": sys.executable}
        options.update({f"ZEPHMETADATA_BUILD_{part}": "OFF" for part in ("TESTS", "TOOLS")})
        if importlib.util.find_spec("pybind11") is not None:
            options["pybind11_DIR"] = importlib.import_module("pybind11").get_cmake_dir()
        ninja = ["-G", "Ninja"] if shutil.which("ninja") and "CMAKE_GENERATOR" not in os.environ else []
        run("cmake", "-S", SOURCE, "-B", build, *ninja, *(f"-D{name}={value}" for name, value in options.items()))

    def _take(self, prefix: pathlib.Path) -> None:
        """The module looks for the library beside itself. Wheels have no links: the library gets the name that is asked
        for."""
        [module] = prefix.rglob("_core*.so")
        library = min(prefix.rglob("libzephmetadata.so.*"), key=lambda name: len(name.name))
        package = pathlib.Path(self.get_ext_fullpath("zephmetadata._core")).parent
        package.mkdir(parents=True, exist_ok=True)
        for file in (module, library):
            shutil.copy(file, package / file.name)


def run(*command: object) -> None:
    subprocess.run([str(part) for part in command], check=True)


def version() -> str:
    text = (SOURCE / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"^project\(zephmetadata VERSION ([0-9.]+)", text, re.MULTILINE)[1]


WORK.mkdir(parents=True, exist_ok=True)
setup(
    version=version(),
    ext_modules=[Extension("zephmetadata._core", [])],
    cmdclass={"build_ext": CMakeBuild},
    options={"build": {"build_base": str(WORK)}, "egg_info": {"egg_base": str(WORK)}},
)
