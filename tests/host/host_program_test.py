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

    def test_help_tells_the_commands(self):
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

    def test_a_reader_that_goes_away_ends_the_run_quietly(self):
        path = self.file("a\n" + "1\n" * 200000)
        with subprocess.Popen([support.ORLI, "eval", path, "-f", "x=a", "--format", "csv"],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              env=support.ENVIRONMENT) as process:
            process.stdout.readline()
            process.stdout.close()
            errors = process.stderr.read()
            self.assertEqual((process.wait(), errors), (-signal.SIGPIPE, b""))


if __name__ == "__main__":
    support.main()
