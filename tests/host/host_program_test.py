"""What orli does that sessions.txt cannot hold: other locales, the pages of the functions, broken pipes."""

import re
import signal
import subprocess

import support
from support import run


class Program(support.FolderCase):
    def test_dates_of_a_country_have_its_own_form(self):
        command = ["localedef", "-f", "UTF-8", "-i", "de_DE", self.folder / "de_DE.UTF-8"]
        try:
            subprocess.run(command, check=True, capture_output=True)
        except (OSError, subprocess.CalledProcessError):
            self.skipTest("localedef or its sources are missing")
        rows = (("31.12.2012", b"Date"), ("31.12.12 10:30", b"Date"), ("2012-12-31", b"Date"),
                ("12 Dez 2012", b"Date"), ("1.2.3", b"String"), ("10.11.12.13", b"String"),
                ("1/12/2012", b"String"))
        for field, expected in rows:
            with self.subTest(field=field):
                _, output, errors = run("items", self.file(f"x,y\n{field},1\n"),
                                        LC_ALL="de_DE.UTF-8", LOCPATH=str(self.folder))
                self.assertEqual(output.splitlines()[2].split()[1], expected, errors)

    def test_help_lists_the_commands(self):
        status, output, errors = run("--help")
        self.assertEqual((status, errors), (0, b""))
        for word in (b"items", b"functions", b"check", b"eval", b"DATA.csv", b"Exit status"):
            self.assertIn(word, output)
        status, output, errors = run("eval", "--help")
        self.assertEqual((status, errors), (0, b""))
        for word in (b"--formula", b"--limit", b"--format", b"NAME=TEXT"):
            self.assertIn(word, output)
        self.assertLessEqual(max(map(len, output.decode().splitlines())), 100)

    def test_functions(self):
        status, output, errors = run("functions")
        self.assertEqual((status, errors), (0, b""))
        listed = ""
        for page, count, mark in (("functions.md", 46, ""), ("odbc-functions.md", 27, "  [databases]")):
            text = (support.ROOT / "docs" / page).read_text()
            functions = re.findall(r"^### (.*)\n\n(.*)\n\n", text, re.MULTILINE)
            self.assertEqual(len(functions), count)
            listed += "".join(f"{call}{mark}\n    {line}\n" for call, line in functions)
        self.assertEqual(output.decode()[:len(listed)], listed)

    def test_a_closed_pipe_ends_the_run_quietly(self):
        path = self.file("a\n" + "1\n" * 200000)
        with subprocess.Popen([support.ORLI, "eval", path, "-f", "x=a", "--format", "csv"],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              env=support.ENVIRONMENT) as process:
            process.stdout.readline()
            process.stdout.close()
            errors = process.stderr.read()
            self.assertEqual((process.wait(), errors), (-signal.SIGPIPE, b""))

    def test_long_files_are_not_read_for_wrong_formulas(self):
        """Errors after the first rows are not reached; errors that depend on types are reported by
        the first rows."""
        path = self.file("a,b\n" + "1,2\n" * 2000 + "1,2,3\n")
        for formula, expected in (("a + nope", b"ERR_VAR"), ("a +", b"ERR_SYNTAX"), ("Nope(a)", b"ERR_FUNC"),
                              ("a || b", b"3 fields"), ("a", b"3 fields")):
            with self.subTest(formula=formula):
                status, output, errors = run("eval", path, "-f", "x=" + formula)
                self.assertEqual((status, output), (1, b""))
                self.assertIn(expected, errors)

    def test_jobs_and_batches_change_nothing(self):
        """By one job, by several, and row by row, as with a condition that every row meets."""
        fields = (("12.5", "-0.75", "7", "1e3", "0.000", "123456789012345678901", "99999999999999.25"),
                  ("2024-02-29", "2024-01-31 10:30", "1999-12-31", "0001-01-01"),
                  ("Ada", "  blanks  ", "\u00e9t\u00e9", "a;b", ""))
        # The columns of the first file are plain, those of the second of all forms.
        plain = "".join(f"{i % 997 / 100:.2f},{1950 + i % 99}-{1 + i % 12:02}-{1 + i % 28:02},n{i},1\n"
                        for i in range(5000))
        mixed = "".join(f"{fields[0][i % 7]},{fields[1][i % 4]},{fields[2][i % 5]},{i % 3 or ''}\n"
                        for i in range(5000))
        formulas = ("-f", "x=a * 3 + a / 7", "-f", "y=d + 1 MONTHS", "-f", "z=StrUpper(t) || '!'",
                    "-f", "u=DateYear(d) - e")
        report = ("--by", "t=StrLeft(t, 1)", "--sum", "s=a", "--greatest", "l=d", "--median", "m=a",
                  "--count-distinct", "k=t", "--count", "n", "--sort", "s:desc")
        for name, rows in (("plain", plain), ("mixed", mixed), ("none", ""), ("wrong", plain + "1,2\n")):
            path = self.file("a,d,t,e\n" + rows)
            for command in (("eval", *formulas), ("eval", *formulas, "--keep", "all", "--format", "json"),
                            ("eval", *formulas, "--sort", "x:desc", "--format", "csv"),
                            ("eval", *formulas, "--limit", "1500", "--format", "tsv"),
                            ("report", *report, "--format", "csv")):
                with self.subTest(rows=name, command=command):
                    one, *others = (run(*command, path, *more) for more in (
                        ("--jobs", "1"), ("--jobs", "3"), ("--where", "1=1"), ("--where", "1=1", "--jobs", "3")))
                    timeless = [(status, output, re.sub(rb" in .* s, .*", b"", errors))
                                for status, output, errors in (one, *others)]
                    for other in timeless[1:]:
                        self.assertEqual(other, timeless[0])


if __name__ == "__main__":
    support.main()
