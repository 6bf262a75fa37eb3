#!/usr/bin/env python3
"""Compares docs/architecture.md with the sources, and the tests named in docs/choices.md with the tests."""

import os
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("ORLI_BUILD", ROOT / "build/release"))
PAGE = (ROOT / "docs/architecture.md").read_text()
PUBLIC = {path.name for path in (ROOT / "include/orli11").iterdir()}


def layers():
    """The layers from the lowest up, each with the layers that it may use."""
    layers = {}
    for name, uses in re.findall(r"^\| `([a-z/]+)/` \|.*\|([^|]*)\|$", PAGE, re.MULTILINE):
        below = re.search(r"everything from `([a-z/]+)/` down", uses)
        lower = list(layers)
        layers[name] = set(lower[:lower.index(below[1]) + 1] if below
                          else re.findall(r"`([a-z/]+)/`", uses))
    return layers


LAYERS = layers()


def layer_of(path):
    """The layer that a path from the root is in, or None."""
    return next((layer for layer in LAYERS if path.startswith(layer + "/")), None)


def sources():
    for layer in list(LAYERS) + ["host"]:
        for path in sorted((ROOT / layer).rglob("*")):
            if path.suffix in (".cpp", ".h"):
                yield path.relative_to(ROOT).as_posix()


def includes(path):
    """The files of the project that a file includes, by their paths from the root."""
    for name in re.findall(r'^#include ["<]([^">]+)[">]', (ROOT / path).read_text(), re.MULTILINE):
        if name.startswith("orli11/") or name in PUBLIC:
            continue
        for candidate in (name, f"{pathlib.PurePath(path).parent}/{name}"):
            if (ROOT / candidate).exists():
                yield candidate


def symbols(option, folders=LAYERS):
    """(folder, object file, name) of the symbols that `nm` prints with that option."""
    for layer in folders:
        folder = BUILD / layer / "CMakeFiles"
        objects = [path for path in folder.rglob("*.o")
                   if (ROOT / layer / path.name.removesuffix(".o")).exists()]
        if objects:
            listing = subprocess.run(["nm", "-A", "-P", "-g", option, *objects], check=True,
                                     capture_output=True, text=True).stdout
            for line in listing.splitlines():
                path, symbol = line.split(": ", 1)
                name, kind = symbol.split()[:2]
                if kind not in "VWu":  # what a header defines is in each object that uses it
                    yield layer, f"{layer}/{pathlib.PurePath(path).stem}", name


class LayersTest(unittest.TestCase):
    maxDiff = None

    def test_picture_has_the_layers_of_the_table(self):
        picture = PAGE.split("```")[1]
        drawn = [name for name in re.findall(r"([a-z]+(?:/[a-z]+)*)/", picture) if name in LAYERS]
        windows = {"windows/headless", "windows/qt"}  # side by side
        self.assertEqual([name for name in reversed(drawn) if name not in windows],
                         [name for name in LAYERS if name not in windows])
        self.assertEqual(set(drawn), set(LAYERS))

    def test_no_layer_uses_a_higher_one(self):
        order = list(LAYERS)
        up = [(layer, used) for layer in order for used in LAYERS[layer]
              if order.index(used) >= order.index(layer)]
        self.assertEqual(up, [])

    def test_every_folder_with_sources_is_a_layer(self):
        others = {"bench", "bindings", "build", "fuzz", "host", "include", "tests"}
        folders = {path.parent.relative_to(ROOT).as_posix() for path in ROOT.glob("*/**/*.cpp")}
        undocumented = {folder for folder in folders
                        if folder.split("/")[0] not in others and layer_of(folder + "/") is None}
        self.assertEqual(undocumented, set())

    def test_includes_stay_in_what_a_layer_uses(self):
        wrong = []
        for path in sources():
            layer = layer_of(path)
            for included in includes(path):
                target = layer_of(included)
                if target != layer and target not in LAYERS.get(layer, set()):
                    wrong.append(f"{path} includes {included}")
        self.assertEqual(wrong, [])

    def check_no_cycle(self, files, verb, targets_of):
        done, open_files = set(), []

        def visit(path):
            if path in open_files:
                self.fail(f" {verb} ".join(open_files[open_files.index(path):] + [path]))
            if path not in done:
                open_files.append(path)
                for target in targets_of(path):
                    visit(target)
                open_files.pop()
                done.add(path)

        for path in files:
            visit(path)

    def test_includes_form_no_cycle(self):
        self.check_no_cycle(sources(), "includes", includes)

    def test_calls_form_no_cycle(self):
        # Events go both ways between the files of a window system.
        folders = [*(layer for layer in LAYERS if not layer.startswith("windows/")), "host"]
        homes = {name: path for _, path, name in symbols("--defined-only", folders)}
        self.assertTrue({"host/session.cpp", "engine/items.cpp"} <= {*homes.values()})
        calls = {path: set() for path in homes.values()}
        for _, path, name in symbols("--undefined-only", folders):
            if name in homes and homes[name] != path:
                calls.setdefault(path, set()).add(homes[name])
        self.check_no_cycle(sorted(calls), "calls", lambda path: sorted(calls[path]))

    def test_calls_run_down(self):
        order = list(LAYERS)
        homes = {name: (layer, path) for layer, path, name in symbols("--defined-only")}
        self.assertGreater(len(homes), 300)
        up = []
        for layer, path, name in symbols("--undefined-only"):
            home, target = homes.get(name, (layer, path))
            if order.index(home) > order.index(layer):
                up.append(f"{path} uses {name} of {target}")
        self.assertEqual(up, [])


class ChoicesTest(unittest.TestCase):
    def test_named_tests_exist(self):
        def texts(pattern):
            return "\n".join(path.read_text() for folder in ("tests", "bindings/python/tests")
                             for path in sorted((ROOT / folder).rglob(pattern)))

        known = {f"{suite}.{name}" for suite, name in
                 re.findall(r"^TEST(?:_F)?\((\w+), (\w+)\)", texts("*.cpp"), re.MULTILINE)}
        known.update(re.findall(r"def (test_\w+)", texts("*.py")))
        known.update(re.findall(r"^## (.+)$", texts("sessions.txt"), re.MULTILINE))
        known.update(re.findall(r"\w+_test\b", texts("CMakeLists.txt")))
        rows = re.findall(r"^\| .* \| .* \| ([^|]+) \|$", (ROOT / "docs/choices.md").read_text(), re.MULTILINE)
        named = [name for row in rows for name in re.findall(r"`([^`/]+)`|(?<!\*)\*([^*`]+)\*(?!\*)", row)]
        self.assertGreater(len(named), 300)
        self.assertEqual([plain or quoted for plain, quoted in named if (plain or quoted) not in known], [])


if __name__ == "__main__":
    unittest.main()
