"""pictures.py FOLDER - the editor in its three modes, the box of an error, the values of the data, and
what helps while people write, each as a picture of its windows, over data/weather.csv."""

import pathlib
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/screen"))
import screen  # noqa: E402, the folder has just been named

ORLI = screen.BUILD / "bin/orli"
DATA = ROOT / "data/weather.csv"
FORMULAS = ("mean=(temp_max + temp_min) / 2", "fahrenheit=mean() * 9 / 5 + 32",
            "frost=0 AND 2", "wet='rain', 'snow'")

class Scene:
    """The editor on a screen of its own, over a store with a few formulas."""

    def __init__(self, folder, *arguments, title="Formula Editor"):
        self.shown = screen.Screen(1500, 900, manager="openbox")
        store = pathlib.Path(folder) / "weather.store"
        subprocess.run([ORLI, "define", store, DATA, *FORMULAS], check=True, capture_output=True)
        self.shown.start([ORLI, "edit", store, DATA, *arguments])
        self.editor = self.shown.wait(f"^{title}")
        self.shown.wait("^Preview$")
        self.shown.tool("windowfocus", "--sync", self.editor)
        self.shown.key("F7")
        self.shown.gone("^Preview$", beside=self.editor)
        time.sleep(0.5)

    def take(self, path):
        time.sleep(1)
        self.shown.picture(path)


def formula(scene):
    scene.shown.type("mean() - ")
    scene.shown.key("alt+f")
    scene.shown.type("numberr ")


def error(scene):
    scene.shown.type("(temp_max - temp_min) / wnd")
    scene.shown.key("Return")
    scene.shown.wait("^Formula Information$")


def values(scene):
    scene.shown.key("alt+i")
    scene.shown.type("wea")
    scene.shown.key("alt+v")
    scene.shown.wait("^weather - Values$")
    scene.shown.key("Down", "Down", "Return", "F6")


def plain(_scene):
    pass


def names(scene):
    scene.shown.type("mean() - tem")


def check(scene):
    scene.shown.type("NumberRound(temp_max - temp_min, 'one'")
    scene.shown.key("BackSpace")
    scene.shown.type("') * (wind + 1)")
    scene.shown.key("Home")
    for _ in range(33):
        scene.shown.key("Right")


def preview(scene):
    scene.shown.key("F7")
    scene.shown.wait("^Preview$")
    scene.shown.tool("windowfocus", "--sync", scene.editor)
    scene.shown.type("(temp_max - temp_min) / 2")


def page(scene):
    scene.shown.key("alt+f")
    scene.shown.type("strm")
    scene.shown.key("F1")
    scene.shown.wait("^StrMid$")


SCENES = (  # picture, what happens in it, arguments, title of the window
    ("formula", formula, (), "Formula Editor"),
    ("range", plain, ("--mode", "range"), "Range Editor"),
    ("set", plain, ("--mode", "set"), "Set Editor"),
    ("error", error, (), "Formula Editor"),
    ("values", values, ("--mode", "set"), "Set Editor"),
    ("names", names, (), "Formula Editor"),
    ("check", check, (), "Formula Editor"),
    ("preview", preview, (), "Formula Editor"),
    ("help", page, (), "Formula Editor"),
)


def main():
    target = pathlib.Path(sys.argv[1]).resolve()
    for name, play, arguments, title in SCENES:
        with tempfile.TemporaryDirectory() as folder:
            scene = Scene(folder, *arguments, title=title)
            try:
                play(scene)
                scene.take(target / f"{name}.png")
            finally:
                scene.shown.close()
        print(target.name, f"{name}.png")


if __name__ == "__main__":
    main()
