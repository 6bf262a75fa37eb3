"""The program orli from outside: outputs, messages and exit statuses."""

import os
import re
import signal
import subprocess
import threading

import support
from support import run

SMALL = "sold,amount,tax,note\n2024-01-31,10,0.5,a\n2024-02-29 13:05:09,,0.25,\"b, \"\"c\"\"\"\n,-3,1e2,\n"


class Columns(support.FolderCase):
    def types(self, content):
        status, output, errors = run("items", self.file(content))
        self.assertEqual((status, errors), (0, b""), content)
        return [re.split(r"  +", line)[1] for line in output.decode().splitlines()[2:]]

    def test_table_of_columns(self):
        status, output, errors = run("items", self.file(SMALL))
        self.assertEqual((status, errors), (0, b""))
        self.assertEqual(output.decode(), """\
name    type    filled  empty  least       greatest             example     why
------  ------  ------  -----  ----------  -------------------  ----------  -----------
sold    Date         2      1  2024-01-31  2024-02-29 13:05:09  2024-01-31
amount  Number       2      1  -3          10                   10
tax     Number       3      0  0.25        100                  0.5
note    String       2      1                                   a           line 2: 'a'
""")

    def test_types_come_from_the_data(self):
        rows = (
            (("1", "2"), "Number"), (("1", ""), "Number"), (("", ""), "String"),
            (("1", "x"), "String"), (("x", "1"), "String"), (("-1.5e-3", ".5"), "Number"),
            (("1", "1."), "Number"), (("0x10", "1"), "String"), (("1,5", "2"), "String"),
            (("1 2", "3"), "String"), (("nan", "1"), "String"), (("inf", "1"), "String"),
            (("2024-01-31", ""), "Date"), (("2024-01-31 10:30:15", "2024-01-31"), "Date"),
            (("2024-01-31", "2024-02-30"), "String"), (("2024-13-01", ""), "String"),
            (("2024-01-31", "5"), "String"), (("5", "2024-01-31"), "String"),
            (("10:30", "11:45"), "String"), (("12/31/2024", "1/2/2024"), "Date"),
            (("1.2.3", ""), "String"), (("10.11.12.13", ""), "String"), (("31.12.2012", ""), "String"),
            (("1/2/3", ""), "String"), (("1-2-2012", ""), "String"), (("2012-01-02-03", ""), "String"),
            (("2012/12/31", "12/31/12 10pm"), "Date"), (("12 Jan 2012", "12-Jan-2012"), "Date"),
            (("2024-01-31T10:30", "2024-01-31 10:30:15.25"), "Date"),
            (("1234567890123456789012345", "1"), "Number"),
            (("1234567890123456789012345678901234", "1"), "String"),
            (("0." + "0" * 30 + "1", "1"), "Number"),
        )
        for fields, expected in rows:
            content = "x,y\n" + "".join(f'"{field}",1\n' for field in fields)
            with self.subTest(fields=fields):
                self.assertEqual(self.types(content)[0], expected)

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

    def test_names_are_told_as_formulas_write_them(self):
        rows = (
            ("wind", "wind"), ("wind speed", '"wind speed"'), ("2nd", '"2nd"'), ("AND", '"AND"'),
            ("Day", '"Day"'), ("hours", '"hours"'), ("a-b", '"a-b"'), ("x.y", "x.y"),
            ("x.", '"x."'), ("a.b.c.d", '"a.b.c.d"'), ("@pi", '"@pi"'), ("größe", "größe"),
            ("日本", "日本"), ("naïve café", '"naïve café"'), ('5"pipe', '`5"pipe`'),
            ("it`s", '"it`s"'), ("n" * 64, "n" * 64), ("n n" + "n" * 59, '"n n' + "n" * 59 + '"'),
            ("two\nlines", '"two\nlines"'), ("It's", '"It\'s"'), ("a||b", '"a||b"'),
        )
        for header, written in rows:
            with self.subTest(header=header):
                quoted = '"' + header.replace('"', '""') + '"'
                path = self.file(f"{quoted},other\n7,8\n")
                formula = f"f={written} + 1"
                status, output, errors = run("eval", path, "--format", "csv", "--formula", formula)
                self.assertEqual((status, output), (0, b"f\r\n8\r\n"), errors)
                _, items, _ = run("items", path)
                self.assertIn(written.replace("\n", "\N{SYMBOL FOR LINE FEED}"), items.decode())

    def test_reads_what_csv_files_hold(self):
        rows = (
            ("byte order mark", b"\xef\xbb\xbfa\n1\n", "a", b"1"),
            ("CR LF", b"a,b\r\n1,2\r\n", "a + b", b"3"),
            ("CR alone", b"a,b\r1,2\r", "a + b", b"3"),
            ("no line end", b"a,b\n1,2", "a + b", b"3"),
            ("empty lines", b"\n\na,b\n\n1,2\n\n", "a + b", b"3"),
            ("blanks around fields", b"a , b\n 1 ,\t2 \n", "a + b", b"3"),
            ("blanks in quotes", b'a,b\n" x ",1\n', "'<' || a || '>'", b"< x >"),
            ("line break in a field", b'a,b\n"x\ny",1\n', "a", b'"x\ny"'),
            ("quotes", b'a,b\n"say ""hi""",1\n', "a", b'"say ""hi"""'),
            ("long text", b"a,b\n" + b"x" * 100000 + b",1\n", "a || a", b"x" * 200000),
            ("not UTF-8", b"a,b\n\xff\xfe,1\n", "a", b"\xff\xfe"),
            ("empty text", b"a,b\nx,1\n,2\n", "a", b'x\r\n""'),
            ("null number is zero in a sum", b"a,b\n5,1\n,2\n", "a + b", b"6\r\n2"),
            ("null date", b"a,b\n2024-01-01,1\n,2\n", "a", b'2024-01-01\r\n""'),
        )
        for what, content, formula, expected in rows:
            with self.subTest(what=what):
                arguments = ("--format", "csv", "--formula", f"f={formula}")
                result = (0, b"f\r\n" + expected + b"\r\n")
                self.assertEqual(run("eval", self.file(content), *arguments)[:2], result)
                # A pipe cannot be read twice; it is the same data all the same.
                self.assertEqual(run("eval", "-", *arguments, stdin=content)[:2], result)

    def test_wrong_files_get_one_clear_line(self):
        rows = (
            (b"", "the file is empty"),
            (b"\n\n", "the file is empty"),
            (b"a,b\n1,2\n3\n", "line 3: 1 field, but the header has 2"),
            (b"a,b\n1,2\n3,4,5\n", "line 3: 3 fields, but the header has 2"),
            (b'a,b\r\n"x\r\ny",2\r\n\r\n3\r\n', "line 5: 1 field, but the header has 2"),
            (b"a,b\n1,2\nx\0y,2\n", "line 3: a zero byte"),
            (b'a,b\n1,2\n3,"4\n5,6\n', "line 3: a double quote"),
            (b'a,b\n1,2\n3,4"5\n', "line 3: a double quote"),
            (b"a,b\n" + b'"' + b"x" * (17 << 20), "a field of more than 16 MiB"),
        )
        for content, words in rows:
            with self.subTest(words=words):
                path = self.file(content)
                status, output, errors = run("items", path)
                self.assertEqual((status, output), (1, b""))
                self.assertRegex(errors.decode(), f"^orli: {re.escape(str(path))}: .*{re.escape(words)}.*\n$")

    def test_files_that_cannot_be_read(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        writer = threading.Thread(target=lambda: pipe.write_bytes(b"a\n41\n"))
        writer.start()
        self.assertEqual(run("eval", pipe, "--format", "csv", "-f", "f=a+1")[1], b"f\r\n42\r\n")
        writer.join()
        for path, words in ((self.folder / "missing.csv", "No such file or directory"),
                            (self.folder, "is a directory"),
                            (self.folder / "pipe/data.csv", "Not a directory")):
            status, output, errors = run("check", path, "1")
            self.assertEqual((status, output), (1, b""))
            self.assertEqual(errors.decode(), f"orli: {path}: {words}\n")
        self.assertEqual(run("items", ""), (1, b"", b"orli: the name of the file is empty\n"))
        self.assertIn("two\u240alines: No such file".encode(), run("items", "two\nlines")[2])


class Check(support.FolderCase):
    def test_tells_the_type(self):
        path = self.file(SMALL)
        rows = (
            ("amount * tax", "Number"), ("sold + 3 DAYS", "Date"), ("sold - sold", "Number"),
            ("note || 'x'", "String"), ("amount AND tax", "range of Number"),
            ("sold, sold + 1", "set of Date"), ("'a', note", "set of String"), ("-1", "Number"),
        )
        for text, expected in rows:
            with self.subTest(text=text):
                status, output, errors = run("check", path, "--", text)
                self.assertEqual((status, output.decode(), errors), (0, expected + "\n", b""))

    def test_underlines_what_is_wrong(self):
        path = self.file(SMALL)
        rows = (
            ("amount + taxes", "ERR_VAR: Unknown input item.\n  amount + taxes\n           ^^^^^\n"),
            ("Foo(1)", "ERR_FUNC: Unknown function.\n  Foo(1)\n  ^^^^\n"),
            ("amount +", "ERR_SYNTAX: Incomplete or invalid formula\n  amount +\n          ^\n"),
            ("", "ERR_SYNTAX: Incomplete or invalid formula\n  \n  ^\n"),
            ("amount\t+ ;", "ERR_UNKNOWNCHAR: This character is not allowed here.\n"
                            "  amount  + ;\n            ^\n"),
            ("1 +\nsold", "ERR_TYPENUM: Input item, constant, or function must be Number data type.\n"
                         "  1 +\n  sold\n  ^^^^\n"),
            ("note || 'ä' || sold", "ERR_TYPESTR: Literal or function must be String data type.\n"
                                   "  note || 'ä' || sold\n                 ^^^^\n"),
            ("amount AND sold", "ERR_BETWEEN: Data types must match.\n"
                               "  amount AND sold\n             ^^^^\n"),
        )
        for text, expected in rows:
            with self.subTest(text=text):
                status, output, errors = run("check", path, text)
                self.assertEqual((status, support.without_hint(output), errors), (1, expected, b""))


class Eval(support.FolderCase):
    def evaluate(self, *arguments, content=SMALL):
        return run("eval", self.file(content), *arguments)

    def test_table(self):
        status, output, errors = self.evaluate(
            "--formula", "sold=sold", "--formula", "total=amount + tax", "--formula", "note=note")
        self.assertEqual(status, 0, errors)
        self.assertEqual(output.decode(), """\
sold                 total  note
-------------------  -----  ------
2024-01-31            10.5  a
2024-02-29 13:05:09   0.25  b, "c"
                        97
""")
        self.assertRegex(errors.decode(), r"^orli: 1 empty value counted as zero: 1 of amount\n"
                         r"3 rows in [0-9.]+ s, [0-9]+ rows per second\n$")

    def test_columns_of_a_table_fit_wide_and_foreign_text(self):
        content = "a,b\nxyz,1\n日本,22\né,333\n\"p\tq\nr\",4\n"
        _, output, _ = self.evaluate("-f", "text=a", "-f", "n=b", content=content)
        self.assertEqual(output.decode(), "text     n\n-----  ---\nxyz      1\n日本    22\n"
                         "é      333\np␉q␊r    4\n")

    def test_a_long_table_keeps_the_widths_of_its_start(self):
        content = "a,b\n" + "x,1\n" * 1000 + "longer,2\n" * 2
        _, output, _ = self.evaluate("-f", "t=a", "-f", "n=b", content=content)
        lines = output.decode().splitlines()
        self.assertEqual(len(lines), 1004)
        self.assertEqual((lines[2], lines[-1]), ("x  1", "longer  2"))

    def test_csv(self):
        status, output, _ = self.evaluate("--format", "csv", "-f", "n=amount * 2", "-f", "note=note",
                                          "-f", '"a, b"=tax')
        self.assertEqual(status, 0)
        self.assertEqual(output, b'n,note,"a, b"\r\n20,a,0.5\r\n0,"b, ""c""",0.25\r\n-6,,100\r\n')

    def test_formulas_call_each_other_in_any_order(self):
        arguments = []
        for index in range(12):
            arguments += ["--formula", f"f{index}=f{index + 1}() + 1"]
        status, output, errors = self.evaluate("--format", "csv", *arguments, "--formula", "f12=amount")
        self.assertEqual(status, 0, errors)
        self.assertEqual(output.splitlines()[1].decode(),
                         ",".join(str(10 + 12 - index) for index in range(13)))

    def test_limit(self):
        for limit, rows in (("0", 0), ("2", 2), ("3", 3), ("99", 3)):
            with self.subTest(limit=limit):
                status, output, errors = self.evaluate("--format", "csv", "-f", "a=tax", "--limit", limit)
                self.assertEqual((status, len(output.splitlines())), (0, rows + 1))
                self.assertTrue(errors.startswith(f"{rows} row".encode()), errors)

    def test_a_formula_without_value_is_empty_and_counted(self):
        status, output, errors = self.evaluate(
            "--format", "csv", "-f", "a=tax", "-f", "b=StrRepeat('ab', (tax - 0.25) * 99999999999)")
        self.assertEqual((status, output), (0, b"a,b\r\n0.5,\r\n0.25,\r\n100,\r\n"))
        self.assertIn(b"orli: formula b has no value in 2 of 3 rows\n", errors)

    def test_numbers_are_written_exactly(self):
        rows = (("0.1 + 0.2", "0.3"), ("1 / 3", "0." + "3" * 26), ("1000000 * 1000000", "1" + "0" * 12),
                ("-0.5", "-0.5"), ("12.50", "12.5"), ("big * 1", "1" + "0" * 90),
                ("big * 1234567890123 * 0.5", "6.172839450615e101"), ("big * -1 * 10000000000", "-1e100"),
                ("small / 10000000000", "1e-110"))
        for text, expected in rows:
            with self.subTest(text=text):
                status, output, errors = self.evaluate("--format", "csv", "--type", "big=number", "-f", f"f={text}",
                                                       content="big,small\n1e90,1e-100\n")
                self.assertEqual((status, output.decode()), (0, f"f\r\n{expected}\r\n"), errors)

    def test_dates_are_written_with_what_they_have(self):
        fields = ("2024-01-31 00:00:00.5", "2024-01-31 10:30:15.000120", "2024-01-31 10:30:15",
                  "2024-01-31 00:00:00", "1/31/2024 0:00:00.000001")
        _, output, _ = self.evaluate("--format", "csv", "-f", "d=d",
                                     content="d,e\n" + "".join(f"{field},1\n" for field in fields))
        self.assertEqual(output.decode().splitlines()[1:], [
            "2024-01-31 00:00:00.5", "2024-01-31 10:30:15.00012", "2024-01-31 10:30:15",
            "2024-01-31", "2024-01-31 00:00:00.000001"])

    def test_wrong_formulas(self):
        # Calls many formulas behind it, and names one in a text that calls it in turn.
        many = " + ".join(f"f{i}()" for i in range(40)) + " + StrLength('z()') + q"
        rows = (
            ([f"a={many}", *(f"f{i}=1" for i in range(40)), "z=a()"],
             f"orli: formula a: ERR_VAR: Unknown input item.\n  {many}\n  {'^':>{len(many)}}\n"),
            (["a=amount +"], "orli: formula a: ERR_SYNTAX: Incomplete or invalid formula\n"
                             "  amount +\n          ^\n"),
            (["a=amount", "a=tax"], "orli: two formulas have the name a\n"),
            (["a b=amount"], "orli: not a valid formula name: a b\n"),
            (["=amount"], "orli: a formula has no name\n"),
            (["DAY=amount"], "orli: DAY is a date unit word; write it in double quotes\n"),
            (["StrLeft=amount"], "orli: formula StrLeft has the name of a function\n"),
            (["x\ny=1"], "orli: not a valid formula name: x\u240ay\n"),
            (['"x\ny"=1', '"x\ny"=2'], 'orli: two formulas have the name "x\u240ay"\n'),
            (['"x\ny"=1, 2'], "orli: formula x\u240ay is a set and has no value\n"),
            (['"x\ny"=q'], "orli: formula x\u240ay: ERR_VAR: Unknown input item.\n  q\n  ^\n"),
            (["a=amount, tax"], "orli: formula a is a set and has no value\n"),
            (["a=amount AND tax"], "orli: formula a is a range and has no value\n"),
            (["a=b() + 1", "b=c()", "c=a()"],
             "orli: formulas call each other in a circle: a, b, c\n"),
            (["z=a()", "a=b() + 1", "b=a()"], "orli: formulas call each other in a circle: a, b\n"),
            (["a=a() + 1"], "orli: formula a calls itself\n"),
            (["a=b()", "b=d()"], "orli: formula b: ERR_FUNC: Unknown function.\n  d()\n  ^^\n"),
        )
        for formulas, expected in rows:
            with self.subTest(formulas=formulas):
                arguments = [part for formula in formulas for part in ("--formula", formula)]
                status, output, errors = self.evaluate(*arguments)
                self.assertEqual((status, output), (1, b""))
                self.assertEqual(support.without_hint(errors), expected)


class CommandLine(support.FolderCase):
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

    def test_wrong_command_lines_get_one_line_and_status_2(self):
        path = str(self.file(SMALL))
        rows = ((), ("nonsense",), ("items",), ("--nonsense",),
                ("eval", path), ("eval", path, "--formula"), ("eval", path, "--nonsense"),
                ("eval", path, "-f", "a=1", "--limit", "-1"), ("eval", path, "-f", "a=1", "--limit", "x"),
                ("eval", path, "-f", "a=1", "--format", "pdf"), ("check", path),
                ("check", path, "1", "2"))
        for arguments in rows:
            with self.subTest(arguments=arguments):
                status, output, errors = run(*arguments)
                self.assertEqual((status, output), (2, b""))
                self.assertRegex(errors.decode(), r"^orli: [^\n]+\n$")

    def test_wrong_command_lines_are_told_what_is_wrong(self):
        path = str(self.file(SMALL))
        limit = "--limit: '{}' is not a whole number from 0 to 9223372036854775807"
        behind = "unknown option: {} (a name or text that begins with a minus stands after --)"
        rows = [(("eval", path, "-f", "a=1", "--limit", text), limit.format(text))
                for text in ("-1", "abc", "0x2", "1.5", "", "9" * 20)]
        rows += [
            (("foo",), "unknown command: 'foo'"), (("fo\no", "--help"), "unknown command: 'fo\u240ao'"),
            ((), "no command is given"), (("check", path, "-a + 1"), behind.format("-a + 1")),
            (("items", "-x.csv"), behind.format("-x.csv")),
            (("check", path, "--limit"), behind.format("--limit")),
            (("eval", path, "-f", "a=1", "--limit"), "--limit needs a value after it"),
        ]
        for arguments, words in rows:
            with self.subTest(arguments=arguments):
                expected = f"orli: {words}; orli --help tells more\n"
                self.assertEqual(run(*arguments), (2, b"", expected.encode()))
        # What is no formula is told before the file is read.
        self.assertEqual(run("eval", "missing.csv", "-f", "x"),
                         (2, b"", b"orli: a formula is given as NAME=TEXT, not as x\n"))
        self.assertEqual(run("check", path, "--", "-.5 + tax")[:2], (0, b"Number\n"))

    def test_names_of_commands_are_no_commands_inside_one(self):
        path = self.file("items,eval\n1,2\n")
        self.assertEqual(run("check", path, "items")[:2], (0, b"Number\n"))
        self.assertEqual(run("check", path, "eval")[:2], (0, b"Number\n"))

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

    def test_output_that_cannot_be_written_is_an_error(self):
        path = self.file(SMALL)
        with open("/dev/full", "wb") as full:
            result = subprocess.run([support.ORLI, "items", path], stdout=full, check=False,
                                    stderr=subprocess.PIPE, env=support.ENVIRONMENT)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr, b"orli: the output cannot be written\n")


if __name__ == "__main__":
    support.main()
