"""What screen readers see of the editor and can do there: by AT-SPI, on a private bus."""

import os
import shutil
import subprocess
import sys
import unittest

import screen

ORLI = screen.BUILD / "bin/orli"
SALES = "amount,tax,place\n10,0.5,O'Brien\n20,0.25,b\n"
SIGNS = {"plus", "minus", "times", "divided by", "joined with", "in brackets", "point"}


class Reader:
    """A screen with a bus, and a reader on that bus."""

    def __init__(self):
        self.shown = screen.Screen(1280, 1000)
        self.bus = subprocess.Popen(
            ["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL, env=self.shown.environment)
        address = self.bus.stdout.readline().decode().strip()
        here = {"DBUS_SESSION_BUS_ADDRESS": address}
        self.shown.environment.update(here, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        os.environ.update(here, DISPLAY=self.shown.environment["DISPLAY"])
        import pyatspi  # only here: it looks for the bus at once
        self.desktop = pyatspi.Registry.getDesktop(0)

    def close(self):
        self.shown.close()
        self.bus.terminate()
        self.bus.communicate()


def until(find):
    """The result of `find` as soon as there is one; objects may disappear meanwhile."""
    def found():
        try:
            return find()
        except Exception:  # noqa: B902, of the bus
            return None
    return screen.until(found)


def parts(of):
    """All descendants of an object."""
    of.clear_cache()
    for index in range(of.childCount):
        child = of.getChildAtIndex(index)
        if child is not None:
            yield child
            yield from parts(child)


class AccessTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.reader = Reader()
        cls.addClassCleanup(cls.reader.close)

    def setUp(self):
        self.shown = self.reader.shown
        folder = screen.pathlib.Path(self.shown.folder.name)
        self.data, self.store = folder / "sales.csv", folder / "sales.store"
        self.data.write_text(SALES)
        self.store.unlink(missing_ok=True)
        program = self.shown.start([ORLI, "edit", self.store, self.data])
        self.addCleanup(self.end, program)
        self.editor = self.shown.wait("^Formula Editor")
        self.frame = self.window("Formula Editor - [ New Formula ]")

    def end(self, program):
        program.kill()
        program.communicate()
        self.shown.programs.remove(program)

    def window(self, title):
        def find():
            self.reader.desktop.clear_cache()
            for index in range(self.reader.desktop.childCount):
                application = self.reader.desktop.getChildAtIndex(index)
                for window in application or ():
                    if window is not None and window.name == title:
                        return window
            return None
        return until(find)

    def part(self, role, name, of=None):
        return until(lambda: next((each for each in parts(of or self.frame)
                                   if each.getRoleName() == role and each.name == name), None))

    def text(self):
        text = self.part("text", "Formula text").queryText()
        return text.getText(0, -1)

    def test_controls_have_names_and_roles(self):
        names = {each.name for each in parts(self.frame) if each.getRoleName() == "push button"}
        self.assertLessEqual(SIGNS | {"OK", "Cut", "Delete", "7"}, names)
        lists = {each.name: [row.name for row in each] for each in parts(self.frame)
                 if each.getRoleName() == "list"}
        self.assertEqual(["amount", "place", "tax"], lists["Data Items"])
        self.assertEqual(["[ New Formula ]"], lists["Formulas"])
        self.assertIn("StrLeft", lists["Functions"])
        row = self.part("list item", "StrLeft")
        self.assertIn("StrLeft(text: String, count: Number): String", row.description)

    def test_rows_are_inserted(self):
        action = self.part("list item", "tax").queryAction()
        names = [action.getName(index) for index in range(action.nActions)]
        action.doAction(names.index("Insert"))
        until(lambda: self.text() == "tax")

    def test_message_boxes_are_announced(self):
        self.shown.type("nothing")
        until(lambda: self.part("text", "Formula text").description == "ERR_VAR: Unknown input item.")
        self.shown.key("Return")
        box = self.window("Formula Information")
        self.assertEqual("ERR_VAR: Unknown input item.", box.description)

    def test_arguments_of_the_call_are_announced(self):
        self.shown.type("StrLeft(place, ")
        strip = self.part("filler", "StrLeft(text: String, count: Number): String")
        until(lambda: strip.description == "ERR_SYNTAX: Incomplete or invalid formula")

    def test_preview_values_are_announced(self):
        preview = self.window("Preview")
        self.shown.tool("windowfocus", "--sync", self.editor)
        self.shown.type("amount * 2")
        for value in ("20", "40"):
            self.part("list item", value, preview)

    def test_toggle_does_not_wait_for_the_question_that_it_leads_to(self):
        self.shown.type("amount")
        option = self.part("radio button", "Range").queryAction()
        names = [option.getName(index) for index in range(option.nActions)]
        option.doAction(names.index("Toggle"))  # comes back, and then:
        self.shown.wait("^Formula Save$")
        self.shown.key("Escape")
        self.shown.gone("^Formula Save$", beside=self.editor)
        self.assertEqual("amount", self.text())


def missing():
    lacking = [screen.missing()] if screen.missing() else []
    lacking += [] if shutil.which("dbus-daemon") else ["dbus-daemon"]
    try:
        import gi  # noqa: F401
        import importlib.util
        lacking += [] if importlib.util.find_spec("pyatspi") else ["pyatspi"]
    except ImportError:
        lacking.append("pyatspi")
    return ", ".join(lacking)


if __name__ == "__main__":
    if missing():
        print(f"skipped: not there: {missing()}")
        sys.exit(77)
    unittest.main(argv=[sys.argv[0], "-v"] if len(sys.argv) == 1 else sys.argv)
