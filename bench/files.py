#!/usr/bin/env python3
"""Measures orli over a generated file beside sqlite3, miller and DuckDB at the same work.

    bench/files.py [ROWS]            a million without it

Needs the groups build and others of scripts/install.sh; DuckDB comes from npm (@duckdb/node-api),
into a folder of this run. Missing ones are reported. Of several runs, one program after
the other in turn, the least processor time and the least wall time count. Exit status 1 when orli
needs more than MOST_MEMORY for eval, or MOST_GROUP_MEMORY for a group for each row.
No memory below that of this script is seen, since the programs are its forks.
"""

import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
ORLI = ROOT / "build/release/bin/orli"
REPETITIONS = 3
MOST_MEMORY = 64 << 10  # KiB, as reported by the system
MOST_GROUP_MEMORY = 200 << 10
REGIONS = ("North", "South", "East", "West", "Centre")

EVAL = ("-f", "total=amount*quantity+tax", "-f", "label=StrUpper(StrLeft(region,3)) || '-' || StrTrim(customer)",
        "-f", "due=DateYear(date + 1 MONTH)")
REPORT = ("--by", "region=region", "--by", "m=DateMonth(date)", "--sum", "total=amount*quantity", "--count", "n")
GROUPS = ("--by", "id=id", "--sum", "total=amount*quantity")

# The month of a date that moves by a month may run over in SQLite; its year is the same but for the last days.
SQLITE = {
    "eval": "SELECT amount*quantity+tax, upper(substr(region,1,3)) || '-' || trim(customer), "
            "strftime('%Y', date, '+1 month') FROM t",
    "report": "SELECT region, strftime('%m', date) AS m, sum(amount*quantity), count(*) FROM t GROUP BY region, m "
              "ORDER BY region, m",
    "groups": "SELECT id, sum(amount*quantity) FROM t GROUP BY id ORDER BY id"}
DUCKDB = {
    "eval": "SELECT amount*quantity+tax, upper(left(region,3)) || '-' || trim(customer), "
            "year(date + INTERVAL 1 MONTH) FROM t",
    "report": "SELECT region, month(date) AS m, sum(amount*quantity), count(*) FROM t GROUP BY ALL ORDER BY ALL",
    "groups": "SELECT id, sum(amount*quantity) FROM t GROUP BY ALL ORDER BY id"}
MILLER = {
    "eval": ("put", "-q", 'emit1 {"total": $amount*$quantity+$tax, "label": toupper(substr($region,0,2))."-".strip($customer),'
             ' "due": splitax($date,"-")[1] + (splitax($date,"-")[2] == "12" ? 1 : 0)}'),
    "report": ("put", '$m = splitax($date,"-")[2]; $total = $amount*$quantity', "then", "stats1", "-a", "sum,count",
               "-f", "total", "-g", "region,m", "then", "sort", "-f", "region,m"),
    "groups": ("put", '$total = $amount*$quantity', "then", "stats1", "-a", "sum", "-f", "total", "-g", "id",
               "then", "sort", "-nf", "id")}
NODE = """
const { DuckDBInstance } = require('@duckdb/node-api');
(async () => {
  const [file, output, threads, statement] = process.argv.slice(2);
  const instance = await DuckDBInstance.create(':memory:', { threads });
  const connection = await instance.connect();
  await connection.run(`COPY (${statement.replace(/FROM t/, `FROM read_csv('${file}')`)}) TO '${output}' (HEADER)`);
})().catch((error) => { console.error(error.message); process.exit(1); });
"""


def write_table(path, rows):
    draw = random.Random(5)
    with open(path, "w", encoding="ascii") as file:
        file.write("id,date,region,customer,amount,tax,quantity\n")
        for i in range(rows):
            file.write(f"{i},20{20 + i % 5}-{1 + i % 12:02}-{1 + i % 28:02},{draw.choice(REGIONS)},"
                       f"Customer {draw.randrange(100000):05},{draw.randrange(10000000) / 100:.2f},"
                       f"{draw.randrange(100000) / 100:.2f},{draw.randrange(1, 100)}\n")


def measure(command, output, folder):
    """Processor seconds, wall seconds and KiB of a run."""
    begin = time.monotonic()
    with open(output, "wb") as file, subprocess.Popen(command, stdout=file, stderr=subprocess.PIPE, cwd=folder,
                                                      env=dict(os.environ, LC_ALL="C")) as process:
        errors = process.stderr.read()
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{command[0]}: {errors.decode()}")
    return usage.ru_utime + usage.ru_stime, time.monotonic() - begin, usage.ru_maxrss


def commands(work, table, folder):
    """The ways to do a work by name, of the programs that are there."""
    options = {"eval": ("eval", *EVAL), "report": ("report", *REPORT), "groups": ("report", *GROUPS)}[work]
    orli = [ORLI, options[0], table, *options[1:], "--format", "csv"]
    ways = {"orli, one job": [*orli, "--jobs", "1"], "orli": orli}
    if shutil.which("sqlite3"):
        ways["sqlite3"] = ["sqlite3", ":memory:", "-cmd", "CREATE TABLE t(id INTEGER, date TEXT, region TEXT, "
                           "customer TEXT, amount REAL, tax REAL, quantity INTEGER)", "-cmd", ".mode csv", "-cmd",
                           f".import --skip 1 {table} t", SQLITE[work]]
    if shutil.which("mlr"):
        ways["miller"] = ["mlr", "--icsv", "--ocsv", *MILLER[work], table]
    if (folder / "node_modules/@duckdb").exists():
        script = folder / "duckdb.js"
        script.write_text(NODE)
        for threads, name in (("1", "DuckDB, one thread"), (str(os.cpu_count()), "DuckDB")):
            ways[name] = ["node", script, table, folder / "duckdb.csv", threads, DUCKDB[work]]
    return ways


def install_duckdb(folder):
    (folder / "package.json").write_text("{}")
    subprocess.run(["npm", "install", "--silent", "@duckdb/node-api"], cwd=folder, check=False,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def main():
    rows = int(sys.argv[1]) if len(sys.argv) > 1 else 1_000_000
    good = True
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        table = folder / "table.csv"
        write_table(table, rows)
        if shutil.which("npm"):
            install_duckdb(folder)
        for work, most in (("eval", MOST_MEMORY), ("report", MOST_MEMORY), ("groups", MOST_GROUP_MEMORY)):
            ways = commands(work, table, folder)
            best = {}
            for _ in range(REPETITIONS):
                for way, command in ways.items():
                    found = measure(command, folder / "output.csv", folder)
                    best[way] = tuple(map(min, best.get(way, found), found))
            print(f"\n{work} over {rows} rows, {table.stat().st_size >> 20} MiB      processor s   wall s    MiB")
            for way, (processor, wall, memory) in best.items():
                print(f"  {way:40}{processor:12.2f}{wall:9.2f}{memory >> 10:7}")
            good = good and best["orli"][2] <= most
    missing = [what for what in ("sqlite3", "mlr", "npm") if not shutil.which(what)]
    if missing:
        print("Left out, as it is not there:", ", ".join(missing))
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
