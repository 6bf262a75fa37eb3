"""pictures.py FOLDER [NAME...] - takes pictures of the editor over data/weather.csv: its three modes,
its boxes, the values of the data, completion, checks and help, dark colours and a small screen; with
names only those."""

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

# The colours of a desktop, in the file from which Qt reads them.
DARK_DESKTOP = {"XDG_CURRENT_DESKTOP": "KDE", "KDE_SESSION_VERSION": "5"}
DARK_COLORS = """[Colors:Window]
BackgroundNormal=49,54,59
ForegroundNormal=239,240,241
[Colors:View]
BackgroundNormal=35,38,41
BackgroundAlternate=49,54,59
ForegroundNormal=239,240,241
[Colors:Button]
BackgroundNormal=61,67,73
ForegroundNormal=239,240,241
[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=20,22,24
[Colors:Tooltip]
BackgroundNormal=49,54,59
ForegroundNormal=239,240,241
"""
SMALL = {"width": 800, "height": 600, "scale": "2"}


class Scene:
    """The editor on a screen of its own, over a store with a few formulas."""

    def __init__(self, folder, *arguments, title="Formula Editor", width=1500, height=900, scale="1",
                 **desktop):
        self.shown = screen.Screen(width, height, scale=scale, manager="openbox", **desktop)
        (pathlib.Path(self.shown.folder.name) / "kdeglobals").write_text(DARK_COLORS)
        self.store = pathlib.Path(folder) / "weather.store"
        self.define(*FORMULAS)
        self.shown.start([ORLI, "edit", self.store, DATA, *arguments])
        self.editor = self.shown.wait(f"^{title}")
        if width != SMALL["width"]:
            self.shown.wait("^Preview$")
            self.shown.tool("windowfocus", "--sync", self.editor)
            self.shown.key("F7")
            self.shown.gone("^Preview$", beside=self.editor)
        time.sleep(0.5)

    def define(self, *formulas):
        subprocess.run([ORLI, "define", self.store, DATA, *formulas], check=True, capture_output=True)

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


def find(scene):
    scene.shown.key("alt+f", "ctrl+f")
    scene.shown.type("month")
    x, y = scene.shown.spot(scene.editor, "functions", row=0)
    for step in range(4):  # for windows with a title xdotool adds its height
        scene.shown.tool("mousemove", x + step, y)
        time.sleep(0.1)
    time.sleep(2)


def ask(scene):
    scene.shown.type("temp_max - temp_min")
    scene.shown.key("alt+m", "alt+m")
    scene.shown.type("span")
    scene.define("span=(temp_max - temp_min) / 2")
    scene.shown.key("Return")
    scene.shown.wait("^Formula Save$")


def discard(scene):
    scene.shown.type("temp_max - ")
    scene.shown.key("Escape")
    scene.shown.wait("^Formula Editor", beside=scene.editor)


def small(scene):
    scene.shown.type("mean() - temp_min")
    scene.shown.key("alt+m", "alt+m")


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


SCENES = (  # picture, what happens in it, arguments, title of the window, screen
    ("formula", formula, (), "Formula Editor", {}),
    ("range", plain, ("--mode", "range"), "Range Editor", {}),
    ("set", plain, ("--mode", "set"), "Set Editor", {}),
    ("error", error, (), "Formula Editor", {}),
    ("values", values, ("--mode", "set"), "Set Editor", {}),
    ("names", names, (), "Formula Editor", {}),
    ("find", find, (), "Formula Editor", {}),
    ("check", check, (), "Formula Editor", {}),
    ("dark", check, (), "Formula Editor", DARK_DESKTOP),
    ("preview", preview, (), "Formula Editor", {}),
    ("help", page, (), "Formula Editor", {}),
    ("ask", ask, (), "Formula Editor", {}),
    ("discard", discard, (), "Formula Editor", {}),
    ("small", small, (), "Formula Editor", SMALL),
)


def main():
    target = pathlib.Path(sys.argv[1]).resolve()
    for name, play, arguments, title, shown in SCENES:
        if sys.argv[2:] and name not in sys.argv[2:]:
            continue
        with tempfile.TemporaryDirectory() as folder:
            scene = Scene(folder, *arguments, title=title, **shown)
            try:
                play(scene)
                scene.take(target / f"{name}.png")
            finally:
                scene.shown.close()
        print(target.name, f"{name}.png")


if __name__ == "__main__":
    main()
