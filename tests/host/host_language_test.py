"""The examples of docs/language.md, computed by orli: formulas over the first row of its file, and
sessions of the shell. Those of docs/orli.md and docs/odbc-functions.md too."""

import json
import re
import subprocess

import host_transcript_test as transcript
import support

PAGE = (support.ROOT / "docs/language.md").read_text()
FUNCTIONS = (support.ROOT / "docs/odbc-functions.md").read_text()
BLOCKS = re.findall(r"^```(\w+) ?(\S*)\n(.*?)^```$", PAGE + (support.ROOT / "docs/orli.md").read_text(),
                    re.DOTALL | re.MULTILINE)
# The notation of the page for a Number or Date without content.
NOTHING = "n,NoNumber,NoDate\n1,,\n1,1,2024-01-31\n"


def blocks(kind):
    return [text for name, _, text in BLOCKS if name == kind]


def shown(value):
    """A value of a row in JSON, as the pages have it; dates and texts differ by quotes alone."""
    return "empty" if value in (None, "") else str(value)


def session(command, folder):
    """What a command writes on a terminal, times left out."""
    result = subprocess.run(["bash", "-c", command], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            env=transcript.ENVIRONMENT, check=False, text=True)
    return transcript.TIMES.sub(r"\1", result.stdout)


class Language(support.FolderCase):
    maxDiff = None

    def setUp(self):
        super().setUp()
        self.files = [self.file(text, name) for kind, name, text in BLOCKS if kind == "csv"]

    def compute(self, data, formulas):
        """The values of formulas in the first row of a file, in JSON but for numbers, which stay text."""
        names = [f"f{index}" for index in range(len(formulas))]
        arguments = [f"--formula={name}={text}" for name, text in zip(names, formulas)]
        status, output, errors = support.run("eval", data, "--limit", "1", "--format", "jsonl", *arguments)
        self.assertEqual(status, 0, errors.decode())
        row = json.loads(output, parse_int=str, parse_float=str)
        return [row[name] for name in names]

    def test_formulas(self):
        lines = [line for text in blocks("formula") for line in text.splitlines()]
        rows = [[part.strip() for part in line.split("=>")] for line in lines]
        self.assertGreater(len(rows), 100)
        good = [(text, result) for text, result in rows if not result.startswith("error")]
        for (text, result), value in zip(good, self.compute(self.files[0], [text for text, _ in good])):
            is_text = result.startswith("'")
            self.assertEqual(shown(value), result[1:-1] if is_text else result, text)
        for text, result in rows:
            if result.startswith("error"):
                with self.subTest(text=text):
                    status, output, _ = support.run("check", self.files[0], "--", text)
                    self.assertEqual(status, 1)
                    self.assertIn(result.removeprefix("error").removeprefix(": "), output.decode())

    def test_sessions(self):
        (self.folder / "data").symlink_to(support.ROOT / "data")
        for text in blocks("console"):
            for command, expected in transcript.commands_of(text):
                with self.subTest(command=command):
                    self.assertEqual(session(command, self.folder), transcript.TIMES.sub(r"\1", expected))

    def test_functions_of_databases(self):
        rows = re.findall(r"^\| `(.*)` \| `(.*)` \|$", FUNCTIONS, re.MULTILINE)
        self.assertEqual(len(rows), 2 * 27)
        formulas = [text.replace("\\|", "|") for text, _ in rows]
        values = self.compute(self.file(NOTHING, "nothing.csv"), formulas)
        for text, (_, result), value in zip(formulas, rows, values):
            self.assertEqual(shown(value), result.strip("'").replace("null", "empty") or "empty", text)


if __name__ == "__main__":
    support.main()
