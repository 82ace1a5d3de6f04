"""Builds the wheel of the Python package: its module by CMake, with the engine's libraries in it. pyproject.toml has the
rest. What CMake needs is installed by Scripts/setup.sh; the environment variable SONARO_CMAKE_ARGS adds to its options."""
import os
import pathlib
import shlex
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext


class BuildByCMake(build_ext):
    """Configures and builds the module's target, and has it put where setuptools looks for it."""

    def build_extension(self, ext):
        source = pathlib.Path(__file__).resolve().parent
        target = pathlib.Path(self.get_ext_fullpath(ext.name)).resolve()
        build = pathlib.Path(self.build_temp).resolve() / "cmake"
        options = ["-DCMAKE_BUILD_TYPE=Release", "-DSONARO_STATIC=ON", "-DSONARO_BUILD_PYTHON=ON",
                   "-DSONARO_BUILD_TESTS=OFF", f"-DPython3_EXECUTABLE={sys.executable}", "-DCMAKE_UNITY_BUILD=ON",
                   *shlex.split(os.environ.get("SONARO_CMAKE_ARGS", ""))]
        subprocess.run(["cmake", "-S", source, "-B", build, "-G", "Ninja", *options], check=True)
        subprocess.run(["cmake", "--build", build, "--target", "_sonaro"], check=True)
        subprocess.run(["cmake", "--install", build, "--component", "PythonModule", "--prefix", build / "wheel"], check=True)
        built = next((build / "wheel").rglob("_sonaro*.so"))
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes(built.read_bytes())


setup(ext_modules=[Extension("sonaro._sonaro", [])], cmdclass={"build_ext": BuildByCMake})
