"""orli sql beside orli eval: the rows of two databases, the words of statements, refusals.

    host_sql_test.py --write    puts what the databases give into docs/sql.md

Ends with status 77 when all is well but a database is not installed.
"""

import atexit
import csv
import ctypes
import decimal
import io
import os
import pathlib
import re
import shutil
import signal
import sqlite3
import subprocess
import sys
import time
import unittest

import support

PAGE = support.ROOT / "docs/sql.md"
MARKS = ("<!-- rows of the test -->\n", "<!-- end of the rows -->\n")
CELL = re.compile(r"(?<!\\)\| ?")
# The rows of the page: the name and text of a formula, its value in the second row of the data, and those of
# SQLite and PostgreSQL: bold where they differ, and a message without quotes where the database refuses it.
ROWS = [[cell.strip() for cell in CELL.split(line)[1:-1]]
        for line in PAGE.read_text().split(MARKS[0])[1].split(MARKS[1])[0].splitlines()
        if re.match(r"\| \w+ \| `", line)]
FORMULAS = [(row[0], row[1][1:-1].replace("\\|", "|")) for row in ROWS]
SKIPPED = 77
LIBC, PR_SET_PDEATHSIG = ctypes.CDLL(None), 1

BOUNDS = ("mild=10 AND 2 * 7.5", "wet='rain', 'snow'", "spring=1 Mar 2012 AND until()", "lengths=3, 4, LENGTH('fog')")
# Conditions, and which rows of data and formulas they keep.
CONDITIONS = (
    (("mean()=mild",), lambda row, made: 10 <= decimal.Decimal(made["mean"]) <= 15),
    (("weather=wet",), lambda row, made: row["weather"] in ("rain", "snow")),
    (("date=spring", "weather=wet", "temp_min * 2=mild"),
     lambda row, made: "2012-03-01" <= row["date"] <= "2012-05-31" and row["weather"] in ("rain", "snow")
     and 10 <= decimal.Decimal(row["temp_min"]) * 2 <= 15),
    (("LENGTH(weather)=lengths",), lambda row, made: len(row["weather"]) in (3, 4)),
)


def drivers():
    """The names of the drivers that are installed."""
    if shutil.which("odbcinst") is None:
        return ""
    return subprocess.run(["odbcinst", "-q", "-d"], capture_output=True, text=True, check=False).stdout


def table_of(types):
    return "CREATE TABLE weather(date {0}, precipitation {1}, temp_max {1}, temp_min {1}, wind {1}, weather {2})".format(*types)


class Sqlite:
    name = "SQLite"

    def __init__(self, case):
        path = case.folder / "weather.db"
        self.source = f"Driver=SQLite3;Database={path}"
        self.path = path
        with open(support.WEATHER, newline="", encoding="utf-8") as file, sqlite3.connect(path) as database:
            database.execute(table_of(("date", "real", "text")))
            database.executemany("INSERT INTO weather VALUES(?,?,?,?,?,?)", list(csv.reader(file))[1:])

    def execute(self, *statements):
        with sqlite3.connect(self.path) as database:
            for statement in statements:
                database.execute(statement)

    @staticmethod
    def missing():
        return "" if "[SQLite3]" in drivers() else "SQLite's ODBC driver (libsqliteodbc) is not installed"


class PostgreSQL:
    """A private server in a temporary folder, run by an unprivileged user: it refuses root. It ends
    with the test, however that ends: stopped by a cleanup, at exit, or by the system when its
    parent dies."""
    name = "PostgreSQL"
    server = None

    def __init__(self, case):
        self.folder = folder = case.folder / "server"
        folder.mkdir()
        self.user = {"user": "nobody", "extra_groups": []} if os.geteuid() == 0 else {}
        if self.user:
            shutil.chown(folder, "nobody")
            folder.parent.chmod(0o755)
        self.source = f"Driver=PostgreSQL ANSI;Server={folder};Database=postgres;UID=orli"
        case.addCleanup(self.close)
        atexit.register(self.close)
        self.call("initdb", "-D", folder / "data", "-U", "orli", "-A", "trust", "--no-sync", "-E", "UTF8", "--locale=C")
        self.server = self.start("postgres", "-D", folder / "data", "-c", "listen_addresses=", "-c", "fsync=off",
                                 "-c", f"unix_socket_directories={folder}")
        self.wait()
        # The user without rights may not read the folder that the project is in.
        data = folder / "weather.csv"
        shutil.copyfile(support.WEATHER, data)
        data.chmod(0o644)
        self.execute(table_of(("date", "numeric", "text")), f"\\copy weather from '{data}' csv header")

    def execute(self, *statements):
        commands = [word for statement in statements for word in ("-c", statement)]
        self.call("psql", "-h", self.folder, "-U", "orli", "-d", "postgres", "-q", *commands)

    @staticmethod
    def program(name):
        """That of the newest version."""
        found = sorted(pathlib.Path("/usr/lib/postgresql").glob(f"*/bin/{name}"),
                       key=lambda path: [int(number) for number in re.findall(r"\d+", path.parts[-3])])
        return str(found[-1]) if found else shutil.which(name)

    def start(self, name, *arguments):
        with open(self.folder / "log", "ab") as log:
            return subprocess.Popen([self.program(name), *arguments], stdout=log, stderr=log, cwd=self.folder, **self.user,
                                    preexec_fn=lambda: LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGQUIT))

    def call(self, name, *arguments):
        if self.start(name, *arguments).wait() != 0:
            raise RuntimeError(f"{name} fails: " + (self.folder / "log").read_text(errors="replace"))

    def wait(self):
        """Waits until the server accepts connections."""
        end = time.monotonic() + 60
        while self.start("pg_isready", "-q", "-h", self.folder, "-d", "postgres").wait() != 0:
            if self.server.poll() is not None or time.monotonic() > end:
                raise RuntimeError("postgres does not start: " + (self.folder / "log").read_text(errors="replace"))
            time.sleep(0.1)

    def close(self):
        server, self.server = self.server, None
        if server is not None:
            server.send_signal(signal.SIGQUIT)
            server.wait()

    @classmethod
    def missing(cls):
        found = "[PostgreSQL ANSI]" in drivers() and cls.program("initdb")
        return "" if found else "PostgreSQL or its ODBC driver (postgresql, odbc-postgresql) is not installed"


def rows_of(output):
    return list(csv.DictReader(io.StringIO(output.decode(), newline="")))


def same(cell, expected):
    """Equal, numbers in as many digits as a double holds."""
    if re.fullmatch(r"-?\d+(\.\d+)?", expected) and re.fullmatch(r"-?\d+(\.\d+)?(e-?\d+)?", cell):
        value = decimal.Decimal(expected)
        return abs(decimal.Decimal(cell) - value) <= abs(value) * decimal.Decimal("1e-13")
    return cell == expected


class Databases(support.FolderCase):
    maxDiff = None

    def setUp(self):
        super().setUp()
        self.store = self.folder / "weather.store"
        self.define(support.WEATHER, *[f"{name}={text}" for name, text in FORMULAS], *BOUNDS)
        formulas = [word for name, text in FORMULAS for word in ("--formula", f"{name}={text}")]
        self.rows = rows_of(support.run("eval", support.WEATHER, "--format", "csv", *formulas)[1])
        self.assertEqual(len(self.rows), 1461)

    def define(self, data, *formulas):
        status, _, errors = support.run("define", self.store, data, *formulas)
        self.assertEqual(status, 0, errors)

    def database(self, kind):
        if kind.missing():
            self.skipTest(kind.missing())
        return kind(self)

    def ask(self, database, *arguments):
        return support.run("sql", self.store, support.WEATHER, *arguments, "--dsn", database.source, "--format", "csv")

    def given(self, database, name):
        """What a database gives for the second row, as the page shows it."""
        status, output, errors = self.ask(database, name)
        if status != 0:
            self.assertRegex(errors.decode(), r"^orli: SQLSTATE \w{5}: .*\n$")
            return re.sub(r".*?(\[SQLite\]|ERROR: )|\W*(\(1\))?\n", "", errors.decode())
        cells = [row[name] for row in rows_of(output)]
        self.assertEqual(len(cells), len(self.rows), name)
        good = all(same(cell, row[name]) for cell, row in zip(cells, self.rows))
        shown = f"`{cells[1]}`" if cells[1] else "NULL"
        return shown if good else f"**{shown}**"

    def check(self, kind):
        """The rows are those of eval where the page says so."""
        database, column = self.database(kind), 3 + (Sqlite, PostgreSQL).index(kind)
        self.assertEqual(len(ROWS), 30)
        for row in ROWS:
            self.assertEqual([f"`{self.rows[1][row[0]]}`", self.given(database, row[0])], [row[2], row[column]], row)
        self.check_conditions(database)
        self.check_texts(database)
        self.check_numbers(database)

    def check_conditions(self, database):
        with open(support.WEATHER, newline="", encoding="utf-8") as file:
            data = list(csv.DictReader(file))
        for conditions, keeps in CONDITIONS:
            options = [word for condition in conditions for word in ("--where", condition)]
            status, output, errors = self.ask(database, "reported", *options)
            self.assertEqual(status, 0, errors)
            expected = [made["reported"] for row, made in zip(data, self.rows) if keeps(row, made)]
            self.assertTrue(0 < len(expected) < len(data), conditions)
            self.assertEqual([row["reported"] for row in rows_of(output)], expected, conditions)

    def check_texts(self, database):
        text = "it's ü; -- {d '1'} ? " * 70
        constant = "'" + text.replace("'", "''") + "'"
        self.define(support.WEATHER, "long=" + " || ".join([constant] * 9), "\"; -- 'ü\"=long()")
        status, output, errors = self.ask(database, "; -- 'ü", "reported", "--where", "date=spring")
        self.assertEqual((status, errors), (0, b""))
        self.assertEqual(rows_of(output)[0], {"; -- 'ü": text * 9, "reported": "2012-03-01"})
        status, _, errors = self.ask(database, "mean", "--table", 'weather"; DROP TABLE weather; --')
        self.assertEqual(status, 1)
        self.assertRegex(errors.decode(), r"^orli: SQLSTATE .*DROP TABLE.*\n$")
        self.assertEqual(self.ask(database, "mean")[0], 0)

    def check_numbers(self, database):
        """Numbers that formulas cannot hold, an empty field, and rows up to the one that fails."""
        least, kind = ("0." + "0" * 299 + "1", "numeric") if database.name == "PostgreSQL" else ("1.0e-300", "real")
        database.execute(f"CREATE TABLE least(wind {kind}, temp_max {kind})", f"INSERT INTO least VALUES({least}, NULL)")
        self.define(support.WEATHER, "plain=wind", "nil=FLOOR(temp_max)", "fails=1 / (temp_max - 5)")
        self.assertEqual(rows_of(self.ask(database, "plain", "nil", "--table", "least")[1]), [{"plain": least, "nil": ""}])
        if database.name == "PostgreSQL":
            database.source += ";UseDeclareFetch=1;Fetch=10"
            status, output, errors = self.ask(database, "fails")
            self.assertEqual(status, 1)
            self.assertRegex(errors.decode(), r"^orli: SQLSTATE .*division by zero.*\n$")
            self.assertTrue(0 < len(rows_of(output)) < len(self.rows))

    def test_sqlite_gives_the_rows_of_eval(self):
        self.check(Sqlite)

    def test_postgresql_gives_the_rows_of_eval(self):
        self.check(PostgreSQL)

    def test_statements(self):
        data = self.file('a,wind speed,"b""c",Order,x.y,fn,Day,s,-- e,E,ABS\n1,2,3,4,5,6,7,x,,9,9\n1,2,3,4,5,6,7,x,8,9,9\n',
                         "odd.csv")
        self.store = self.folder / "odd.store"
        rows = (
            ('a + "wind speed" + `b"c` / x.y + fn * "Day"-Order',
             't."a" + t."wind speed" + t."b""c" * 1.0 / t."x.y" + t."fn" * t."Day"-t."Order"'),
            ("'\" -- ;' || s || 'a\\b {fn }'", "'\" -- ;' || t.\"s\" || 'a\\b {fn }'"),
            ("1.5E-3 -1.5E+3--.5", "1.5E-3 -1.5E+3- -.5"),
            ("ABS ( (a)\n/ 3 )", ' {fn ABS ( (t."a")\n* 1.0 / 3 ) } '),
            ("Text() || LTRIM(s)", "('x''' ||  {fn UCASE('y') } ) ||  {fn LTRIM(t.\"s\") } "),
            ("1.5E+2 + E-1.5 / E", '1.5E+2 + t."E"-1.5 * 1.0 / t."E"'), ("ABS+ABS(ABS)", 't."ABS"+ {fn ABS(t."ABS") } '),
            ("2012-01-31 21:30:00.050", "{ts '2012-01-31 21:30:00.05'}"), ("2012-01-31 21:30", "{ts '2012-01-31 21:30:00'}"), ("12/31/2012", "{d '2012-12-31'}"),
        )
        self.define(data, "Text='x''' || UCASE('y')", *[f"n{i}={text}" for i, (text, _) in enumerate(rows)])
        for i, (text, expected) in enumerate(rows):
            result = support.run("sql", self.store, data, f"n{i}", "--table", 'main.a"b')
            expected = f'SELECT {expected} AS "n{i}" FROM "main"."a""b" AS t\n'
            self.assertEqual(result, (0, expected.encode(), b""), text)
        self.define(data, "low=0 AND 9", "few='x', Text()", 'empty="-- e" + 1')
        status, output, errors = support.run("sql", self.store, data, "empty", "n1", "--where", "a * 2=low", "--where", '"-- e"=low',
                                            "--where", "s=few")
        self.assertEqual((status, output.decode().partition(" FROM ")[2]),
                         (0, '"odd" AS t WHERE (t."a" * 2) BETWEEN 0 AND 9'
                          " AND (t.\"-- e\") BETWEEN 0 AND 9 AND (t.\"s\") IN ('x', ('x''' ||  {fn UCASE('y') } ))\n"))
        for name in (b"empty", b"of --where"):
            self.assertIn(b'orli: formula %s computes with the empty fields of "-- e"' % name, errors)

    def test_refusals(self):
        self.define(support.WEATHER, "padded=StrPad(weather, 9)", "user='x' || padded()", "next=date + 7 DAYS", "noon=12:30",
                    "quote='it\\'s'", "end='C:\\'", "d0=mean()", *[f"d{i}=d{i - 1}() + d{i - 1}()" for i in range(1, 20)])
        rows = (
            (["padded"], "formula padded uses StrPad, which has no counterpart in databases"),
            (["mean", "user"], "formula padded uses StrPad"), (["next"], "not for a database: formula next: ERR_OPERATORDATE"),
            (["noon"], "formula noon has a time without a day"), (["quote"], "formula quote has a text with a backslash"),
            (["end"], "formula end has a text with a backslash"),
            (["mild"], "formula mild is a range and has no value"), (["nope"], "the store has no formula nope"),
            (["d19"], "formula d19 is too long"), (["mean", "--where", "mean()"], "a condition is given as TEXT=NAME"),
            (["mean", "--where", "wind=mean"], "mean is a formula;"),
            (["mean", "--where", "weather=mild"], "mild has type Number and cannot bound a String"),
            (["mean", "--where", "2 AND 3=mild"], "formula of --where is a range"),
            (["mean", "--where", "rain=mild"], "formula of --where: ERR_VAR"),
            (["mean", "--dsn", "Driver=NoSuchDriver"], "SQLSTATE "),
        )
        for arguments, expected in rows:
            status, output, errors = support.run("sql", self.store, support.WEATHER, *arguments)
            self.assertEqual((status, output), (1, b""), arguments)
            self.assertTrue(errors.decode().startswith("orli: " + expected), errors)
        for arguments in ([], ["mean", "--format", "csv"], ["mean", "--dsn", ""], ["mean", "--table", ""]):
            self.assertEqual(support.run("sql", self.store, support.WEATHER, *arguments)[0], 2)
        self.assertEqual(support.run("sql", self.store, "-", "mean", stdin=support.WEATHER.read_bytes())[0], 2)


class Writer(Databases):
    """Writes the rows of the page."""

    def runTest(self):
        databases = [self.database(Sqlite), self.database(PostgreSQL)]
        lines = ["\n| Name | Formula | `orli eval` | SQLite | PostgreSQL |\n", "|---|---|---|---|---|\n"]
        for name, text, *_ in ROWS:
            cells = [f"`{self.rows[1][name]}`", *(self.given(database, name) for database in databases)]
            lines.append(f"| {name} | {text} | {' | '.join(cells)} |\n")
        before, rest = PAGE.read_text().split(MARKS[0])
        PAGE.write_text(before + MARKS[0] + "".join(lines) + "\n" + MARKS[1] + rest.split(MARKS[1])[1])


def load_tests(loader, _tests, _pattern):
    return unittest.TestSuite([Writer()]) if WRITE else loader.loadTestsFromTestCase(Databases)


def main():
    # Ends like Ctrl-C, with what is registered for the exit.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    result = unittest.main(argv=[sys.argv[0], "-v"] if len(sys.argv) == 1 else sys.argv, exit=False).result
    sys.exit(1 if not result.wasSuccessful() else SKIPPED if result.skipped else 0)


if __name__ == "__main__":
    WRITE = "--write" in sys.argv
    sys.argv = [word for word in sys.argv if word != "--write"]
    main()
