"""Declarations, constants, the example of the README, and the installed copy."""

import doctest
import os
import pathlib
import re
import shutil
import subprocess
import sys

import orli11
import pytest
from conftest import ROOT
from orli11 import _cdef, _columns, _library, errors, types

HOST = re.compile(r"```python\n(.*?)```.*?```console\n\$ python3 host\.py\n(.*?)```", re.DOTALL)


def words(text):
    return " ".join(re.sub(r"/\*.*?\*/|\b(ORL|WREN)_API\b", " ", text, flags=re.DOTALL).split())


HEADERS = words("".join((ROOT / "include/orli11" / name).read_text()
                        for name in ("orli11.h", "orli11_block.h", "wreni11.h", "pavni11.h")))


def test_declarations_are_those_of_the_headers():
    declared = words("".join((_cdef.RECORDS, _cdef.PACKED_RECORDS, _cdef.BLOCK, _cdef.ENGINE, _cdef.TOOLS,
                              _cdef.CALENDAR)))
    statements = re.findall(r"(?:[^;{]|\{(?:[^{}]|\{[^}]*\})*\})+;", declared)
    assert len(statements) > 50
    assert [each for each in statements if each.strip() not in HEADERS] == \
        [" typedef struct { ExprItem item; ParamRecord parameters[64]; } FunctionRow;"]
    sizes = {"NumberValue": 13, "FormulaError": 12, "ParamRecord": 6, "ExprItem": 93, "OrlStoredInput": 85}
    assert {name: _library.ffi.sizeof(name) for name in sizes} == sizes


@pytest.mark.parametrize("constants", [
    *({f"ORL_{prefix}{each.name}": each for each in kind}
      for prefix, kind in (("TYPE_", types.Type), ("", types.Kind), ("FLAG_", types.Flag))),
    {"ORL_TYPE_ANY": types.ANY, "ORL_ERR_NAME": errors.WRONG_NAME, "ORL_ERR_DUPNAME": errors.NAME_TAKEN},
    {"ORL_COLUMN_NUMBER": _columns.CELLS, "ORL_COLUMN_INT64": _columns.INT64, "ORL_COLUMN_DOUBLE": _columns.DOUBLE,
     "ORL_COLUMN_TIMESTAMP": _columns.TIMESTAMP, "ORL_COLUMN_TEXT": _columns.TEXT},
], ids=["types", "kinds", "flags", "single", "columns"])
def test_constants_are_those_of_the_headers(constants):
    assert constants == {name: int(value) for name, value in re.findall(r"\b(ORL_\w+) = (\d+)", HEADERS)
                         if name in constants}


def test_package_and_library_have_one_version():
    assert orli11.__version__ == orli11.library_version()


def test_the_example_of_the_package():
    result = doctest.testmod(orli11)
    assert result.attempted and not result.failed


def run(folder, *arguments):
    result = subprocess.run([sys.executable, "-B", *arguments], cwd=folder, capture_output=True, text=True,
                            check=False, env=dict(os.environ, PYTHONPATH=str(ROOT / "bindings/python")))
    assert result.returncode == 0, result.stderr
    return result.stdout


def test_the_host_in_the_readme_prints_the_output_shown_there(tmp_path):
    source, shown = HOST.search((ROOT / "README.md").read_text()).groups()
    assert len(source.splitlines()) <= 30
    (tmp_path / "host.py").write_text(source)
    assert run(ROOT, str(tmp_path / "host.py")) == shown


def test_an_installed_copy_contains_the_libraries(tmp_path):
    checkout = tmp_path / "python"
    shutil.copytree(ROOT / "bindings/python", checkout, ignore=shutil.ignore_patterns("build", "*.egg-info"))
    subprocess.run([sys.executable, "-m", "pip", "install", "--quiet", "--no-build-isolation", "--no-deps", "--no-index",
                    "--no-compile", "--disable-pip-version-check", "--root-user-action", "ignore",
                    "--target", str(tmp_path / "site"), "."], cwd=checkout, check=True,
                   env=dict(os.environ, ORLI11_LIBRARY_PATH=os.environ.get(
                       "ORLI11_LIBRARY_PATH", str(ROOT / "build/release/lib"))))
    environment = {name: value for name, value in os.environ.items() if name != "ORLI11_LIBRARY_PATH"}
    shown = subprocess.check_output(
        [sys.executable, "-B", "-c", "import orli11; print(orli11.__file__, orli11.Context().evaluate('0.1 + 0.2'))\n"
         "print(*{line.split()[-1] for line in open('/proc/self/maps') if 'I11.so' in line})"],
        text=True, cwd=tmp_path, env=dict(environment, PYTHONPATH=str(tmp_path / "site")))
    assert shown.split("\n")[0] == f"{tmp_path / 'site/orli11/__init__.py'} 0.3"
    libraries = {pathlib.Path(each) for each in shown.split("\n")[1].split()}
    assert {each.parent for each in libraries} == {tmp_path / "site/orli11/lib"} and len(libraries) == 3
