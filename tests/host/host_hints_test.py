"""What orli suggests below the message for a wrong formula: hints.txt has a line for each rule of its table."""

import support

DATA = 'price,temp_max,"wind speed",day,name,sold,Total,größe²\n1,2,3,4,x,2024-01-31,5,6\n'
FORMULAS = "net=price * 2\nfew=1, 2\n"


def rows():
    """The formulas of hints.txt with their hints."""
    lines = (support.ROOT / "tests/host/hints.txt").read_text().splitlines()
    names = dict(line.split(" := ") for line in lines if " := " in line)
    for line in lines:
        if not line.startswith("#") and " := " not in line:
            text, hint = line.split(" => ")
            yield text, names.get(hint, hint)


class Hints(support.FolderCase):
    def test_hints(self):
        data, formulas = self.file(DATA), self.file(FORMULAS, "formulas.txt")
        for text, hint in rows():
            with self.subTest(text=text):
                status, output, _ = support.run("check", data, "--formulas", formulas, "--", text)
                *message, last = output.decode().splitlines()
                self.assertEqual((status, last), (1, f"hint: {hint}"))
                # What the engine says stays above, with the place.
                self.assertRegex("\n".join(message), r"^ERR_[A-Z]+ ?: .*\n  .*\n *\^+$")

    def test_nothing_is_suggested_for_what_is_right(self):
        data = self.file(DATA)
        for text in ("2 - 1.5", '"day" + 1', "sold + 1 DAY", "price, 1", "name || 'a & b'"):
            self.assertEqual(support.run("check", data, text)[0], 0, text)


if __name__ == "__main__":
    support.main()
