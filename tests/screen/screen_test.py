"""The editor in a real window: orli edit and load with the keyboard and mouse of a user."""

import subprocess
import sys
import time
import unittest

import screen
from screen import PATIENCE, Screen, until

ORLI = screen.BUILD / "bin/orli"
SALES = "amount,tax,sold,place\n10,0.5,2024-01-31,O'Brien\n20,0.25,2024-02-29,b\n"
ITEMS = ("amount", "place", "sold", "tax")  # as the list sorts them
HIGHLIGHT, TIP = (48, 140, 198), (255, 255, 220)  # Qt's own colours


class EditorCase(unittest.TestCase):
    scale, size = "1", (1280, 1000)

    def setUp(self):
        self.screen = Screen(*self.size, scale=self.scale)
        self.addCleanup(self.screen.close)
        folder = screen.pathlib.Path(self.screen.folder.name)
        self.data, self.store = folder / "sales.csv", folder / "sales.store"
        self.data.write_text(SALES)

    def orli(self, *arguments, status=0):
        """The output of a command that opens no window."""
        done = subprocess.run([ORLI, *map(str, arguments)], capture_output=True, check=False)
        self.assertEqual(done.returncode, status, (arguments, done.stderr))
        return done.stdout.decode()

    def open(self, *arguments, title="Formula Editor"):
        self.program = self.screen.start([ORLI, *map(str, arguments)])
        self.editor = self.screen.wait(f"^{title}")

    def edit(self, *arguments, **title):
        self.open("edit", self.store, self.data, *arguments, **title)

    def pick(self, *items):
        for item in items:
            self.screen.click_control(self.editor, "items", times=2, row=ITEMS.index(item))

    def press(self, *controls):
        for control in controls:
            self.screen.click_control(self.editor, control)

    def finish(self):
        """The output of the program, once it has ended successfully."""
        output, errors = self.program.communicate(timeout=PATIENCE)
        self.assertEqual(self.program.returncode, 0, errors)
        return output.decode()

    def fail_to_finish(self):
        """The error output of the program, once it has ended."""
        _, errors = self.program.communicate(timeout=PATIENCE)
        self.assertEqual(self.program.returncode, 1, errors)
        return errors.decode()

    def selected(self, window):
        """The first and last columns of a window in which something is selected, as shares of its width."""
        x, y, width, height = self.screen.place(window)
        rows = self.screen.pixels(x, y, width, height // 3)
        columns = [column for row in rows for column, color in enumerate(row) if color == HIGHLIGHT]
        return (min(columns) / width, max(columns) / width) if columns else None


class MouseTest(EditorCase):
    def test_picked_formula_is_saved_and_computed(self):
        self.edit()
        self.pick("amount")
        self.press("times", "2", "plus")
        self.pick("tax")
        self.screen.click_control(self.editor, "name", times=3)
        self.screen.type("total")
        self.press("ok")
        self.assertIn("total=amount * 2 + tax", self.finish())
        rows = self.orli("eval", self.data, "--store", self.store, "--format", "csv")
        self.assertEqual(rows.split(), ["total", "20.5", "40.25"])

    def test_wrong_part_is_selected_in_the_box_and_in_the_text(self):
        self.edit()
        self.screen.type("amount + nothing * tax")
        self.press("ok")
        box = self.screen.wait("^Formula Information$")
        narrow = until(lambda: self.selected(box), "nothing is selected")
        self.screen.type("x")  # changes nothing
        self.screen.key("Escape")
        self.screen.wait("^Formula Information$", there=False)
        self.screen.tool("windowfocus", "--sync", self.editor)
        self.screen.type("2")
        self.press("ok")
        self.assertIn("=amount + 2 * tax", self.finish())
        self.assertLess(0.1, narrow[0])
        self.assertLess(narrow[1], 0.6)

    def test_values_of_the_data_become_literals(self):
        self.edit("--mode", "set", title="Set Editor")
        self.screen.click_control(self.editor, "items", row=ITEMS.index("place"))
        self.press("values")
        values = self.screen.wait("^place - Values$")
        # The keys are in the text again, with the first placeholder selected.
        self.screen.tool("windowfocus", "--sync", self.editor)
        self.screen.type("'x'")
        self.screen.key("ctrl+space")
        x, y, width, height = self.screen.place(values)
        for row in (1, 0):  # sorted: b, O'Brien
            self.screen.click(x + width // 2, y + round(height * (0.13 + row * 0.115)), times=2)
        self.screen.tool("windowfocus", "--sync", self.editor)
        self.press("ok")
        saved = self.finish()
        self.assertRegex(saved, r"='x', ?'O''Brien' ?, ?'b'")


class LargeMouseTest(MouseTest):
    """The same where a unit has twice the pixels."""
    scale, size = "2", (1600, 1400)


class KeyboardTest(EditorCase):
    def test_keys_alone_do_all(self):
        self.orli("define", self.store, self.data, "half=amount / 2")
        self.edit()
        self.screen.key("alt+i")  # the data items
        self.screen.type("tax ")  # the blank picks
        self.screen.type("- 1 +")
        self.screen.key("ctrl+Return")
        self.screen.key("alt+u", "Down", "space")  # the formulas
        self.screen.key("ctrl+z", "ctrl+shift+z")
        self.screen.key("alt+m", "alt+m")  # two controls have that mnemonic
        self.screen.key("Return")
        self.assertRegex(self.finish(), r"=tax ?- 1 \+\nhalf\(\)")

    def test_focus_returns_to_the_text_after_every_button(self):
        self.orli("define", self.store, self.data, "half=amount / 2", "twice=tax * 2")
        self.edit()
        self.screen.key("alt+f")
        self.screen.type("strm place")  # the blank picks, and the first placeholder is typed over
        self.screen.key("ctrl+space")
        self.screen.type("1")
        self.screen.key("alt+u", "Down", "alt+h")  # the button disables itself
        self.screen.wait("^Formula Text - half$")
        self.screen.tool("windowfocus", "--sync", self.editor)
        self.screen.type("2")  # over the last placeholder
        self.screen.key("BackSpace", "ctrl+z", "ctrl+z", "3")  # over the one that undoing brings back
        self.screen.click_control(self.editor, "functions", row=0)
        self.screen.key("alt+u", "End", "alt+d")
        self.screen.wait("^Formula Delete$")
        self.screen.key("alt+y")
        self.screen.gone("^Formula Delete$", beside=self.editor)
        self.screen.type("0")  # where the caret was
        self.press("plus")
        self.pick("amount")  # replaces nothing
        self.screen.key("Return")
        self.assertIn("=StrMid( place , 1 , 30 + amount )", self.finish())
        self.assertEqual(self.orli("show", self.store, "half").strip(), "amount / 2")

    def test_mode_buttons_are_one_tab_stop(self):
        self.edit()
        self.screen.key("Tab", "Right")  # the range mode, and back in the text
        self.screen.key("Tab", "Tab", "t")  # beyond the modes: tax
        self.screen.type(" 1")
        self.screen.key("Return")
        self.assertIn("=tax AND 1", self.finish())

    def test_escape_leaves_the_store_as_it_was(self):
        self.orli("define", self.store, self.data, "half=amount / 2")
        before = self.store.read_bytes()
        self.edit("half")
        self.screen.key("Escape")  # nothing has changed: no question
        self.finish()
        self.edit("half")
        self.screen.type("1 + ")
        # Return and Escape keep the text.
        for ask in (lambda: self.screen.key("Escape"), lambda: self.press("cancel")):
            for keep in ("Return", "Escape"):
                ask()
                self.screen.wait("^Formula Editor - half$", beside=self.editor)
                self.screen.key(keep)
                self.screen.gone("^Formula Editor - half$", beside=self.editor)
        self.screen.key("Escape")
        self.screen.wait("^Formula Editor - half$", beside=self.editor)
        self.screen.key("alt+y")
        self.finish()
        self.assertEqual(self.store.read_bytes(), before)


class SmallScreenTest(EditorCase):
    """A screen that is too small for the editor, which scrolls to the focus."""
    scale, size = "2", (800, 600)
    test_keys_alone_do_all = KeyboardTest.test_keys_alone_do_all
    test_mode_buttons_are_one_tab_stop = KeyboardTest.test_mode_buttons_are_one_tab_stop

    def test_focus_is_scrolled_into_view(self):
        self.edit()
        x, y, width, height = self.screen.place(self.editor)
        self.assertTrue(x >= 0 and y >= 0 and x + width <= 800 and y + height <= 600, (x, y, width, height))
        self.screen.key("alt+m", "alt+m")  # the name, at the lower end
        self.screen.key("ctrl+a")
        until(lambda: any(line.count(HIGHLIGHT) > 20 for line in self.screen.pixels(x, y, width, height)),
              "the selected name is out of view")


class SizeTest(EditorCase):
    def test_size_of_the_window_comes_back(self):
        self.edit()
        _, _, width, height = self.screen.place(self.editor)
        self.screen.tool("windowsize", "--sync", self.editor, width + 150, height + 70)
        self.screen.key("Escape")
        self.finish()
        self.edit()
        self.assertEqual((width + 150, height + 70), self.screen.place(self.editor)[2:])


class AidTest(EditorCase):
    """Help while the user types."""

    def faulty(self):
        """Pixels of the text in the colour of errors."""
        x, y, width, height = self.screen.place(self.editor)
        rows = self.screen.pixels(x, y, width, height // 6)
        return sum(r > 150 and g < 110 and b < 120 for row in rows for r, g, b in row)

    def test_text_is_checked_while_it_is_written(self):
        self.edit()
        self.screen.type("amount + nothing")
        until(lambda: self.faulty() > 20)
        self.screen.key("ctrl+a")
        self.screen.type("amount + tax")
        until(lambda: self.faulty() == 0)
        self.assertFalse(self.store.exists())

    def test_long_text_is_written_on(self):
        parts = 60_000 // len("amount + ")
        self.orli("define", self.store, self.data, "long=" + "amount + " * (parts - 1) + "tax")
        self.edit("long")
        self.screen.key("ctrl+End")
        self.screen.type(" - 1 +")
        self.screen.key("BackSpace", "BackSpace", "ctrl+Home")
        self.screen.type("2 * (tax) + ")
        self.screen.key("Return")
        self.finish()
        text = self.orli("show", self.store, "long").strip()
        self.assertTrue(text.startswith("2 * (tax) + amount") and text.endswith("tax - 1"), text[-100:])

    def test_functions_have_tooltips(self):
        self.edit()

        def is_told():
            self.screen.hover(self.editor, "functions", row=1)
            time.sleep(1.5)  # a mouse that moves on gets no tooltip
            return self.screen.bytes_of(0, 0, *self.size).count(bytes(TIP)) > 500
        until(is_told)

    def test_names_are_completed(self):
        self.edit()
        self.screen.type("am")
        self.screen.key("Tab")
        self.screen.type(" + ta")
        self.screen.key("Down", "Return")
        self.screen.type(" * nu")
        self.screen.key("Escape", *["BackSpace"] * 5)  # no more than the offer is closed
        self.screen.key("Return")
        self.assertIn("=amount + tax\n", self.finish())

    def test_lists_are_filtered(self):
        self.edit()
        self.screen.key("alt+f", "ctrl+f")
        self.screen.type("eft")  # StrLeft alone; that for databases is not listed
        self.screen.key("Return")
        self.screen.type("place")
        self.screen.key("ctrl+space")
        self.screen.type("1")
        self.screen.key("Return")
        self.assertIn("=StrLeft( place , 1 )", self.finish())

    def test_functions_for_databases_are_listed_with_sql(self):
        for arguments, picked in ((("--sql",), "UCASE( place )"), ((), "StrUpper( place )")):
            self.edit(*arguments)
            self.screen.key("alt+f", "ctrl+f")
            self.screen.type("UCASE" if arguments else "Upper")
            self.screen.key("Return")
            self.screen.type("place")
            self.screen.key("Return")
            self.assertIn("=" + picked, self.finish())
        self.edit()
        self.screen.key("alt+f", "ctrl+f")
        self.screen.type("UCASE")
        self.screen.key("Return", "Escape", "Escape")
        self.finish()

    def test_help_shows_the_page_of_what_is_selected(self):
        self.edit()
        for keys, title in ((("alt+f", "s", "F1"), "StrCase"), (("alt+u", "F1"), "The formulas that are there")):
            self.screen.key(*keys)
            page = self.screen.wait(f"^{title}$")
            self.screen.key("Escape")
            self.screen.gone(f"^{title}$", beside=self.editor)
            self.assertTrue(page)
        self.screen.key("alt+f", "Tab", "shift+Tab")
        self.screen.click_control(self.editor, "text")
        self.screen.type("NumberRound(nothing, ")
        self.screen.key("F1")
        self.screen.wait("^NumberRound$")
        self.screen.key("Escape")
        self.screen.gone("^NumberRound$", beside=self.editor)
        self.screen.type("0)")
        self.screen.key("Return")
        self.screen.wait("^Formula Information$")
        self.screen.key("F1")
        self.screen.wait("^Error messages$")

    def test_next_keeps_the_editor_open(self):
        self.edit()
        self.screen.wait("^Preview$")
        self.screen.tool("windowfocus", "--sync", self.editor)
        for text in ("amount + 1", "tax * 2"):
            self.screen.type(text)
            self.screen.key("alt+n")
        self.screen.type("nothing")
        self.screen.key("alt+n")  # stays
        self.screen.wait("^Formula Information$")
        self.screen.key("Return")
        self.screen.gone("^Formula Information$", beside=self.editor)
        self.screen.type("3")
        self.screen.key("Return")
        saved = self.finish()
        for formula in ("Formula1=amount + 1", "Formula2=tax * 2", "Formula3=3"):
            self.assertIn(formula, saved)

    def test_preview_opens_on_request(self):
        self.edit()
        self.screen.wait("^Preview$")
        self.screen.tool("windowfocus", "--sync", self.editor)
        self.screen.key("F7")
        self.screen.gone("^Preview$", beside=self.editor)
        self.screen.key("F7")
        self.screen.wait("^Preview$")


class StoreTest(EditorCase):
    def beside(self):
        """A second editor over the store, which has the keys."""
        program = self.screen.start([ORLI, "edit", self.store, self.data])
        self.screen.wait("^Formula Editor", beside=self.editor)
        return program

    def test_paste_follows_what_another_program_copies(self):
        self.edit()
        self.beside()
        self.screen.type("tax * 3")
        self.screen.key("ctrl+a", "ctrl+c")
        self.screen.tool("windowfocus", "--sync", self.editor)
        self.screen.key("alt+p")
        self.screen.type(" + 1")
        self.screen.key("Return")
        self.assertIn("=tax * 3 + 1\n", self.finish())

    def names(self):
        lines = self.orli("list", self.store, "--format", "csv").splitlines()[1:]
        return [line.split(",")[0] for line in lines]

    def test_formula_is_renamed_and_another_deleted(self):
        self.orli("define", self.store, self.data, "half=amount / 2", "twice=tax * 2")
        self.edit()
        self.screen.key("alt+u", "Down", "Down", "alt+d")
        self.screen.wait("^Formula Delete$")
        self.screen.key("alt+y")
        self.screen.wait("^Formula Delete$", there=False)
        self.screen.tool("windowfocus", "--sync", self.editor)
        self.screen.key("alt+u", "Home", "Down", "alt+s", "alt+m", "alt+m")
        self.screen.type("middle")
        self.screen.key("Return")
        self.assertIn("middle=amount / 2", self.finish())
        self.assertEqual(self.names(), ["middle"])

    def test_formula_that_another_has_stored_meanwhile_stays(self):
        self.edit()
        self.orli("define", self.store, self.data, "half=amount / 2")
        self.screen.type("tax + 1")
        self.screen.key("Return")
        self.assertIn("Formula1=tax + 1", self.finish())
        self.assertEqual(self.names(), ["half", "Formula1"])

    def ask_about_half(self, answer):
        """Writes a formula of a name that an editor beside this one has stored meanwhile."""
        self.edit()
        other = self.beside()
        self.screen.type("amount / 2")
        self.screen.key("alt+m", "alt+m")
        self.screen.type("half")
        self.screen.key("Return")
        self.assertEqual(0, other.wait(PATIENCE))
        self.screen.tool("windowfocus", "--sync", self.editor)
        self.screen.type("tax / 2")
        self.screen.key("alt+m", "alt+m")
        self.screen.type("half")
        self.screen.key("Return")
        self.screen.wait("^Formula Save$")
        self.screen.key(answer)
        self.screen.wait("^Formula Save$", there=False)
        self.screen.tool("windowfocus", "--sync", self.editor)

    def test_name_that_another_has_stored_meanwhile_is_asked_for(self):
        self.ask_about_half("alt+y")
        self.finish()
        self.assertEqual(self.orli("show", self.store, "half").strip(), "tax / 2")

    def test_formula_of_another_is_kept(self):
        self.ask_about_half("Return")
        self.screen.key("alt+m", "alt+m")
        self.screen.type("third")
        self.screen.key("Return")
        self.assertIn("third=tax / 2", self.finish())
        self.assertEqual(self.names(), ["half", "third"])
        self.assertEqual(self.orli("show", self.store, "half").strip(), "amount / 2")

    def test_formula_that_cannot_be_stored_stays_in_the_editor(self):
        self.edit()
        self.store.write_bytes(b"no store")
        self.screen.type("tax + 1")
        self.screen.key("Return")
        self.screen.wait("^Formula Save$")
        self.assertEqual(self.store.read_bytes(), b"no store")
        self.store.unlink()
        self.screen.key("Return")
        self.screen.wait("^Formula Save$", there=False)
        self.screen.tool("windowfocus", "--sync", self.editor)
        self.screen.key("Return")
        self.assertIn("Formula1=tax + 1", self.finish())
        self.assertEqual(self.names(), ["Formula1"])

    def test_saved_formulas_survive_a_kill(self):
        self.orli("define", self.store, self.data, "half=amount / 2", "twice=tax * 2")
        self.edit("twice")
        self.screen.type("1 + ")
        self.screen.key("alt+u", "Home", "Down", "alt+s")
        self.screen.wait("^Formula Save$")
        self.screen.key("alt+y")
        self.screen.wait("^Formula Editor - half$")
        self.program.kill()
        self.assertEqual(self.orli("show", self.store, "twice").strip(), "1 + tax * 2")


class LoadTest(EditorCase):
    def load_broken(self):
        self.orli("define", self.store, self.data, "half=amount / 2")
        # Damaged by hand: the same length, but no such name.
        broken = self.store.read_bytes().replace(b"amount / 2\0", b"amout1 / 2\0")
        self.store.write_bytes(broken)
        self.open("load", self.store)
        self.screen.wait("^Formula Information$")
        self.screen.key("Return")
        self.screen.wait("^Formula Information$", there=False)
        self.screen.tool("windowfocus", "--sync", self.editor)
        return broken

    def test_cancelled_repair_leaves_the_store_as_it_was(self):
        broken = self.load_broken()
        self.screen.key("Escape")
        self.assertIn("not repaired, and left as it was", self.fail_to_finish())
        self.assertEqual(self.store.read_bytes(), broken)

    def test_invalid_formula_is_repaired_while_loading(self):
        self.load_broken()
        self.screen.type("amount")
        self.screen.key("Return")
        self.finish()
        self.assertEqual(self.orli("show", self.store, "half").strip(), "amount / 2")


if __name__ == "__main__":
    lacking = screen.missing()
    if lacking:
        print(f"skipped: not there: {lacking}")
        sys.exit(77)
    unittest.main(argv=[sys.argv[0], "-v"] if len(sys.argv) == 1 else sys.argv)
