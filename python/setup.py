# SPDX-License-Identifier: MIT
"""Builds the package with CMake: pip wheel --no-build-isolation --no-deps python/"""

import os
import re
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = Path(__file__).resolve().parent
SOURCES = HERE.parent


class Build(build_ext):
    """Has CMake build the target vok_python, and nothing else of the project."""

    def build_extension(self, extension):
        folder = Path(self.build_temp).resolve() / "cmake"
        options = [
            "-DCMAKE_BUILD_TYPE=Release",
            f"-DVOK_PYTHON_EXECUTABLE={sys.executable}",
            "-DVOK_PYTHON=ON",
            "-DVOK_TESTS=OFF",
            "-DVOK_PROGRAM=OFF",
            "-DVOK_DOTNET=OFF",
        ]
        # More of them, for compilers and the like.
        options += os.environ.get("CMAKE_ARGS", "").split()
        subprocess.run(["cmake", "-S", SOURCES, "-B", folder, "-G", "Ninja", *options], check=True)
        jobs = os.environ.get("JOBS") or str(os.cpu_count() or 1)
        subprocess.run(["cmake", "--build", folder, "--target", "vok_python", "--parallel", jobs], check=True)
        target = Path(self.get_ext_fullpath(extension.name)).resolve()
        target.parent.mkdir(parents=True, exist_ok=True)
        self.copy_file(str(folder / "python" / "vok" / target.name), str(target))


version = re.search(r"project\(vok VERSION ([0-9.]+)", (SOURCES / "CMakeLists.txt").read_text()).group(1)

setup(
    name="vok",
    version=version,
    description="Self-describing object trees: XML, binary DGraph, JSON, native dumps",
    python_requires=">=3.11",
    packages=["vok"],
    package_data={"vok": ["py.typed", "*.pyi"]},
    ext_modules=[Extension("vok._vok", sources=[])],
    cmdclass={"build_ext": Build},
    zip_safe=False,
)
