#!/usr/bin/env python3
"""Projects that use the engine in each supported way: CMake package, pkg-config, subdirectory,
FetchContent, static libraries, Debian packages. Ends with status 77 when all is well but a tool is
missing."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("ORLI_BUILD", ROOT / "build/release"))
CONSUMER = ROOT / "tests/package/consumer"
sys.path.append(str(ROOT / "tests/support"))
from plain_environment import plain_environment  # noqa: E402, the folder has just been named

CC = os.environ.get("ORLI_CC", "cc")
CXX = os.environ.get("ORLI_CXX", "c++")
STRICT = {"c": ["-Wall", "-Wextra", "-Wconversion", "-Wshadow", "-Werror"],
          "c++": ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Werror"]}
ENVIRONMENT = plain_environment(LC_ALL="C")
# The programs of the folder consumer, and what they print.
SOURCES = {"c_host": "host.c", "cpp_host": "host.cpp", "calendar": "calendar.c"}
PRINTED = {"c_host": "0.3\n8+5 ERR_VAR: Unknown input item.\n", "cpp_host": "0.3\n",
           "calendar": "2451545\n"}
SKIPPED = 77


def run(*command, **variables):
    """The output of a command; a failure shows its error output."""
    result = subprocess.run(command, text=True, capture_output=True, check=False,
                            env=dict(ENVIRONMENT, **variables))
    if result.returncode != 0:
        words = " ".join(str(word) for word in command)
        raise AssertionError(f"{words}\nended with {result.returncode}\n{result.stdout}{result.stderr}")
    return result.stdout


class RoadCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def check(self, folder, **variables):
        for name, printed in PRINTED.items():
            self.assertEqual(run(folder / name, **variables), printed, name)


class Installed(RoadCase):
    """A copy of the release, installed in an unusual place."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        run("cmake", "--install", BUILD, "--prefix", "/opt/orli", DESTDIR=folder.name)
        cls.prefix = pathlib.Path(folder.name) / "opt/orli"

    def test_cmake_package(self):
        run("cmake", "-G", "Ninja", "-S", CONSUMER, "-B", self.folder, "-DWAY=find",
            f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DCMAKE_C_COMPILER={CC}",
            f"-DCMAKE_CXX_COMPILER={CXX}", f"-DCMAKE_C_FLAGS={' '.join(STRICT['c'])}",
            f"-DCMAKE_CXX_FLAGS={' '.join(STRICT['c++'])}")
        run("cmake", "--build", self.folder)
        self.check(self.folder)

    def test_cmake_refuses_another_major_version(self):
        for version, found in (("1.0", 1), ("1.999", 0), ("2.0", 0)):
            script = self.folder / "CMakeLists.txt"
            script.write_text("cmake_minimum_required(VERSION 3.25)\nproject(asks NONE)\n"
                              f"find_package(ORLI11 {version} QUIET)\n"
                              "file(WRITE ${CMAKE_SOURCE_DIR}/found ${ORLI11_FOUND})\n")
            subprocess.run(["cmake", "-S", self.folder, "-B", self.folder / version,
                            f"-DCMAKE_PREFIX_PATH={self.prefix}"], capture_output=True, check=True)
            self.assertEqual((self.folder / "found").read_text(), str(found), version)

    def test_pkg_config(self):
        (package,) = self.prefix.glob("lib*/**/orli11.pc")
        flags = run("pkg-config", "--cflags", "--libs", "orli11",
                    PKG_CONFIG_PATH=str(package.parent)).split()
        compile_hosts(self.folder, flags)
        (libraries,) = {flag[2:] for flag in flags if flag.startswith("-L")}
        self.check(self.folder, LD_LIBRARY_PATH=libraries)

    def test_program(self):
        program = self.prefix / "bin/orli"
        weather = ROOT / "data/weather.csv"
        self.assertEqual(run(program, "check", weather, "wind * 2"), "Number\n")
        for path, words in (("man/man1/orli.1", ["man"]), ("zsh/site-functions/_orli", ["completion", "zsh"]),
                            ("bash-completion/completions/orli", ["completion", "bash"])):
            self.assertEqual((self.prefix / "share" / path).read_text(), run(program, *words), path)
        if (BUILD / "lib/libORLI11-qt.so").exists():  # the copy finds its own: it is what complains
            edit = subprocess.run([program, "edit", self.folder / "new", weather], text=True,
                                  env=dict(ENVIRONMENT, QT_QPA_PLATFORM="nonsense"),
                                  capture_output=True, check=False)
            self.assertIn("Qt has no plugin for the platform 'nonsense'", edit.stderr)


class FromSource(RoadCase):
    """Projects that build the engine with themselves."""

    def configure(self, *settings):
        run("cmake", "-G", "Ninja", "-S", CONSUMER, "-B", self.folder, f"-DORLI11_FOLDER={ROOT}",
            "-DCMAKE_BUILD_TYPE=", "-DCMAKE_UNITY_BUILD=ON", f"-DCMAKE_C_COMPILER={CC}",
            f"-DCMAKE_CXX_COMPILER={CXX}", *settings)

    def test_subdirectory_with_static_libraries(self):
        self.configure("-DWAY=subdirectory", "-DBUILD_SHARED_LIBS=OFF", "-DORLI_INSTALL=ON")
        run("cmake", "--build", self.folder)
        self.check(self.folder)
        self.assertNotIn("libORLI11", run("ldd", self.folder / "c_host"))
        built = {path.name for path in self.folder.rglob("*")}
        self.assertTrue(built.isdisjoint({"orli", "orli_bench", "libORLI11-headless.a"}))
        self.check_installed_static_libraries()

    def check_installed_static_libraries(self):
        prefix = self.folder / "prefix"
        run("cmake", "--install", self.folder, "--prefix", prefix)
        (package,) = prefix.glob("lib*/**/orli11.pc")
        flags = run("pkg-config", "--cflags", "--libs", "--static", "orli11",
                    PKG_CONFIG_PATH=str(package.parent)).split()
        hosts = self.folder / "hosts"
        hosts.mkdir()
        compile_hosts(hosts, flags)
        self.check(hosts)

    def test_fetch_content(self):
        self.configure("-DWAY=fetch")
        # The smallest of its libraries: how the others are built is the same.
        run("cmake", "--build", self.folder, "--target", "calendar")
        self.assertEqual(run(self.folder / "calendar"), PRINTED["calendar"])


class Reference(RoadCase):
    def test_every_declaration_is_described(self):
        if shutil.which("doxygen") is None:
            self.skipTest("not there: doxygen")
        run(ROOT / "scripts/api.sh", self.folder)
        page = (self.folder / "orli11_8h.html").read_text()
        for name in ("ORLEvaluateRows", "FUNWeekDay", "ORL_ERR_VAR", "OrlValueProc"):
            self.assertIn(f">{name}</a>", page)


class Debian(RoadCase):
    """The packages, installed under a root of their own by dpkg, which checks what they need against
    the packages of this machine."""

    def setUp(self):
        super().setUp()
        for tool in ("dpkg", "dpkg-shlibdeps", "fakeroot", "file"):
            if shutil.which(tool) is None:
                self.skipTest(f"not there: {tool}")
        run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", self.folder / "packages",
            TMPDIR=str(self.folder))
        self.packages = sorted((self.folder / "packages").glob("*.deb"))
        self.names = {package.name.split("_")[0] for package in self.packages}
        if subprocess.run(["dpkg", "--status", "python3-cffi"], capture_output=True, check=False).returncode != 0:
            print("not there: python3-cffi; python3-orli11 is built and not installed")
            self.packages = [package for package in self.packages if "python3-orli11" not in package.name]
        self.root = self.folder / "root"
        database = self.root / "var/lib/dpkg"
        for folder in (database / "info", database / "updates", self.root / "etc"):
            folder.mkdir(parents=True)
        needed = {name for package in self.packages
                  for name in re.findall(r"(?:^|, )([a-z0-9.+-]+)",
                                         run("dpkg-deb", "-f", package, "Depends"))
                  if "orli11" not in name}
        (database / "status").write_text(run("dpkg", "--status", *sorted(needed)))
        # Scripts of packages run outside the root, where this takes the place of the machine's own.
        ldconfig = self.folder / "bin/ldconfig"
        ldconfig.parent.mkdir()
        ldconfig.write_text('#!/bin/sh\nexec /sbin/ldconfig -r "$DPKG_ROOT"\n')
        ldconfig.chmod(0o755)

    def dpkg(self, *arguments):
        return run("fakeroot", "dpkg", "--root", self.root, "--force-script-chrootless",
                   "--force-not-root", "--log", self.folder / "dpkg.log", *arguments,
                   PATH=f"{self.folder}/bin:{os.environ['PATH']}:/usr/sbin:/sbin")

    def installed_files(self):
        return {path.name for path in (self.root / "usr").rglob("*") if not path.is_dir()}

    def test_packages_install_work_and_leave(self):
        windows = {"liborli11-qt-1"} if (BUILD / "lib/libORLI11-qt.so").exists() else set()
        self.assertEqual(self.names, {"liborli11-1", "liborli11-dev", "orli", "python3-orli11"} | windows)
        self.dpkg("--install", *self.packages)

        libraries = self.root / "usr/lib"
        found = {"LD_LIBRARY_PATH": str(libraries)}
        flags = run("pkg-config", "--cflags", "--libs", "orli11",
                    PKG_CONFIG_PATH=str(libraries / "pkgconfig")).split()
        compile_hosts(self.folder, flags)
        self.check(self.folder, **found)
        output = run(self.root / "usr/bin/orli", "check", ROOT / "data/weather.csv", "wind * 2", **found)
        self.assertEqual(output, "Number\n")
        self.assertIn("orli.1.gz", self.installed_files())
        python = self.root / "usr/lib/python3/dist-packages"
        if python.exists():
            shown = run("/usr/bin/python3", "-B", "-c", "import orli11; print(orli11.__file__, orli11.Context().check('1'))",
                        PYTHONPATH=str(python), **found)
            self.assertEqual(shown, f"{python / 'orli11/__init__.py'} 0\n")

        with self.assertRaisesRegex(AssertionError, "dependency problems"):
            self.dpkg("--remove", "liborli11-1")
        self.dpkg("--purge", *(package.name.split("_")[0] for package in self.packages))
        self.assertEqual(self.installed_files(), set())


def compile_hosts(folder, flags):
    """The programs of the folder consumer, by one command each as pkg-config's users write it."""
    for name, compiler, language, standard in (("c_host", CC, "c", "c11"),
                                               ("cpp_host", CXX, "c++", "c++20"),
                                               ("calendar", CC, "c", "c11")):
        source = CONSUMER / SOURCES[name]
        run(compiler, f"-std={standard}", *STRICT[language], source, "-o", folder / name, *flags)


if __name__ == "__main__":
    result = unittest.main(argv=[sys.argv[0], "-v"] if len(sys.argv) == 1 else sys.argv, exit=False).result
    sys.exit(1 if not result.wasSuccessful() else SKIPPED if result.skipped else 0)
