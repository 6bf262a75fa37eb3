"""edit and load where no window opens: what is wrong before that, and stores that need no repair."""

import support
from host_store_test import SALES, StoreCase, block
from support import run

NO_DISPLAY = dict(DISPLAY="", WAYLAND_DISPLAY="", QT_QPA_PLATFORM="")
NO_WINDOW = "no display is there: DISPLAY, WAYLAND_DISPLAY and QT_QPA_PLATFORM are not set"
UNREPAIRED = f"\norli: it cannot be repaired here: {NO_WINDOW}"


class WithoutWindow(StoreCase):
    def setUp(self):
        super().setUp()
        self.addCleanup(support.ENVIRONMENT.update,
                        {name: support.ENVIRONMENT.get(name, "") for name in NO_DISPLAY})
        support.ENVIRONMENT.update(NO_DISPLAY)

    def test_edit_tells_what_is_wrong_before_a_window(self):
        self.define("net=amount - tax")
        missing, folder = self.folder / "new.store", self.folder / "none/x"
        rows = ((1, NO_WINDOW, self.store, self.data, "net"),
                (1, NO_WINDOW, missing, self.data),
                (1, f"{self.store}: has no formula gross", self.store, self.data, "gross"),
                (1, f"{missing}: has no formula net", missing, self.data, "net"),
                (1, f"{folder}: No such file or directory", folder, self.data),
                (1, f"{self.data}: is no store of orli", self.data, self.data),
                (2, "edit needs a file of columns that has a name", self.store, "-"),
                (2, "--mode: list not in {formula,range,set}; orli --help tells more", self.store,
                 self.data, "--mode", "list"),
                (2, "--values: the value is empty; orli --help tells more", self.store, self.data,
                 "--values", ""),
                (2, "DATA.csv is required; orli --help tells more", self.store))
        for status, words, *arguments in rows:
            self.refused(words, "edit", *arguments, status=status)
        self.assertFalse(missing.exists())
        # A display that cannot be reached, or no plugin: one line too.
        status, output, errors = run("edit", self.store, self.data, QT_QPA_PLATFORM="none-such")
        self.assertEqual((status, output, errors.count(b"orli: ")), (1, b"", 1), errors)

    def test_load_counts_and_takes_the_columns_of_a_file(self):
        self.define("net=amount - tax", "word=place")
        before = self.store.read_bytes()
        self.assertEqual(self.good("load", self.store), f"{self.store}: 2 formulas\n")
        self.assertEqual(self.store.read_bytes(), before)
        other = self.file("amount,tax,place,kind\n1,2,3,a\n", "other.csv")
        self.assertEqual(run("load", self.store, other), (
            0, f"{self.store}: 2 formulas, for the columns of {other}\n".encode(),
            f"orli: {self.store}: formula word has type Number now, not String\n".encode()))
        columns = (("amount", 0), ("tax", 0), ("place", 0), ("kind", 2))
        self.assertEqual(self.store.read_bytes(),
                         block(columns, (("net", "amount - tax"), ("word", "place"))))

    def test_load_tells_what_it_cannot_repair(self):
        self.define("net=amount - tax")
        renamed = self.file(SALES.replace("tax", "vat"), "renamed.csv")
        self.refused(f"{self.store}: formula net: ERR_VAR: Unknown input item.\n  amount - tax\n"
                     f"           ^^^{UNREPAIRED}", "load", self.store, renamed)
        for content, words in (
                (block(formulas=[("a", "Old(1)")]),
                 f"formula a: ERR_FUNC: Unknown function.\n  Old(1)\n  ^^^^{UNREPAIRED}"),
                (block(formulas=[("a", "b() + 1"), ("b", "a()")]),
                 "formulas call each other in a circle: a, b"),
                (block(formulas=[("a b", "1")]), "not a valid formula name: a b"),
                (SALES.encode(), "is no store of orli")):
            self.store.write_bytes(content)
            self.refused(f"{self.store}: {words}", "load", self.store)
        self.store.unlink()
        self.refused(f"{self.store}: No such file or directory", "load", self.store)


if __name__ == "__main__":
    support.main()
