"""A private screen (Xvfb) with the keyboard and mouse of a user (xdotool)."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("ORLI_BUILD", ROOT / "build/release"))
sys.path.append(str(ROOT / "tests/support"))
from plain_environment import plain_environment  # noqa: E402, the folder has just been named

# The same letters wherever the pictures are taken.
FONTS = """<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd"><fontconfig>
<dir>/usr/share/fonts/truetype/dejavu</dir><cachedir>{folder}/fonts</cachedir>
<alias><family>monospace</family><prefer><family>DejaVu Sans Mono</family></prefer></alias>
<match><edit name="family" mode="append_last"><string>DejaVu Sans</string></edit></match>
</fontconfig>"""

PATIENCE = 90  # seconds for anything that is waited for, however busy the machine is

# Of the editor's template, in dialog units: a unit is an eighth of the font's height, and the window
# has the width of the template.
EDITOR_WIDTH = 300
PLACES = {  # id: x, y, width, height
    "text": (-1, -1, 301, 45), "formula mode": (105, 57, 31, 24), "range mode": (136, 57, 31, 24),
    "set mode": (167, 57, 31, 24), "items": (9, 57, 81, 81), "functions": (208, 57, 79, 81),
    "select": (106, 145, 90, 14), "show": (106, 161, 90, 14), "values": (106, 177, 90, 14),
    "name": (80, 205, 139, 12), "ok": (9, 225, 42, 14), "cancel": (57, 225, 42, 14),
    "delete": (105, 225, 42, 14), "wrap": (153, 225, 42, 14), "plus": (242, 151, 14, 11),
    "times": (242, 163, 14, 11), "2": (250, 223, 14, 11)}


def until(condition, complaint="it does not come"):
    """What the condition gives, as soon as that counts as true."""
    end = time.monotonic() + PATIENCE
    while not (found := condition()):
        if time.monotonic() > end:
            raise AssertionError(complaint)
        time.sleep(0.05)
    return found


def missing():
    """The missing programs that a screen needs, as text; empty when all are installed."""
    lacking = [tool for tool in ("Xvfb", "xdotool") if shutil.which(tool) is None]
    lacking += [] if (BUILD / "bin/grab").exists() else ["the window system on Qt widgets"]
    return ", ".join(lacking)


class Screen:
    """The screen; close() ends it and the programs on it."""

    def __init__(self, width=1280, height=1000, scale="1", manager=None, **variables):
        reader, writer = os.pipe()
        self.folder = tempfile.TemporaryDirectory()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{width}x{height}x24",
             "-nolisten", "tcp", "-noreset"],
            pass_fds=[writer], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as display:
            number = display.readline().strip()
        if not number:
            self.server.wait()
            raise RuntimeError("Xvfb has not started")
        self.environment = plain_environment(DISPLAY=f":{number}", QT_SCALE_FACTOR=scale, LC_ALL="C.UTF-8")
        self.environment.update(dict.fromkeys(("XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "HOME"),
                                              self.folder.name), **variables)
        fonts = pathlib.Path(self.folder.name) / "fonts.conf"
        fonts.write_text(FONTS.format(folder=self.folder.name))
        self.environment["FONTCONFIG_FILE"] = str(fonts)
        self.programs = []
        font = subprocess.run([BUILD / "bin/grab", "font"], env=self.environment, check=False,
                              capture_output=True)
        if font.returncode != 0:
            self.close()
            raise RuntimeError(f"the screen shows nothing: {font.stderr.decode()}")
        self.down = float(font.stdout) / 8  # pixels of a unit from top to bottom
        if manager is not None:
            self.start([manager])
            time.sleep(1)

    def start(self, command, **options):
        program = subprocess.Popen(command, env=self.environment, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, **options)
        self.programs.append(program)
        return program

    def close(self):
        for program in self.programs:
            program.kill()
            program.communicate()
        self.server.terminate()
        self.server.wait()
        self.folder.cleanup()

    # ---- Looking

    def tool(self, *arguments):
        result = subprocess.run(["xdotool", *map(str, arguments)], env=self.environment,
                                capture_output=True, check=False, timeout=PATIENCE)
        return result.returncode, result.stdout.decode()

    def windows(self, title):
        """The visible windows whose title matches a pattern, the oldest first."""
        return self.tool("search", "--onlyvisible", "--name", title)[1].split()

    def wait(self, title, there=True, beside=None):
        """Waits until a window with this title, but for `beside`, is there or is not; its number."""
        found = []

        def is_so():
            found[:] = [window for window in self.windows(title) if window != beside]
            return bool(found) == there

        until(is_so, f"no window {title!r}" if there else f"{title!r} stays open")
        if there:
            self.tool("windowfocus", "--sync", found[-1])
        return found[-1] if found else None

    def gone(self, title, beside):
        """Waits until a window over another one has closed, and goes back to that."""
        self.wait(title, there=False, beside=beside)
        self.tool("windowfocus", "--sync", beside)

    def place(self, window):
        """x, y, width and height of a window's inside on the screen."""
        lines = self.tool("getwindowgeometry", "--shell", window)[1].split()
        geometry = dict(line.split("=") for line in lines)
        return tuple(int(geometry[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))

    def picture(self, path, *part):
        """Writes a picture of a part (x, y, width, height), or of all windows."""
        subprocess.run([BUILD / "bin/grab", path, *map(str, part)], check=True,
                       env=dict(self.environment, QT_SCALE_FACTOR="1"))

    def bytes_of(self, x, y, width, height):
        """A part of the screen, three bytes for each pixel."""
        path = pathlib.Path(self.folder.name) / "part.ppm"
        self.picture(path, x, y, width, height)
        return path.read_bytes()[-3 * width * height:]

    def pixels(self, x, y, width, height):
        """Rows of (r, g, b) of a part of the screen."""
        body = self.bytes_of(x, y, width, height)
        return [[tuple(body[3 * (row * width + column):][:3]) for column in range(width)]
                for row in range(height)]

    # ---- Acting. Programs take keys and clicks in their order, so nothing waits between them but for
    # windows.

    def key(self, *keys):
        self.tool("key", "--delay", 20, *keys)

    def type(self, text):
        self.tool("type", "--delay", 20, "--", text)

    def click(self, x, y, button=1, times=1):
        self.tool("mousemove", x, y)
        self.tool("click", "--repeat", times, "--delay", 10, button)

    def spot(self, editor, name, row=None):
        """The middle of a control of the editor, which is as large as it opened; or a row of a list."""
        x, y, width, height = PLACES[name]
        left, top, all_width, _ = self.place(editor)
        across, down = all_width / EDITOR_WIDTH, self.down
        at = (y + height / 2) * down if row is None else y * down + 2 + (row + 0.5) * 8 * down
        return round(left + (x + width / 2) * across), round(top + at)

    def click_control(self, editor, name, times=1, row=None):
        self.click(*self.spot(editor, name, row), times=times)

    def hover(self, editor, name, row=None):
        """A mouse that comes and stays."""
        x, y = self.spot(editor, name, row)
        for step in range(3):
            self.tool("mousemove", x + step, y)
