#!/usr/bin/env python3
"""Measures a formula over the rows of a file by orli, and by databases with the SQL that orli writes.

    bench/databases.py [ROWS]

A database computes the sum of the formula over a table, and returns its rows through ODBC. Costs
are processor time a row: of PostgreSQL's backend as it reports it, of SQLite and orli as the system does.
"""

import contextlib
import os
import pathlib
import re
import resource
import subprocess
import sys
import tempfile
import time
import types

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "tests/host"), str(ROOT / "bench")]

import host_sql_test as databases  # noqa: E402
import rows as tables  # noqa: E402
import support  # noqa: E402


def orli(*arguments):
    """What orli prints, and its seconds of processor time."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    shown = subprocess.check_output([support.ORLI, *arguments], env=support.ENVIRONMENT, text=True,
                                    stderr=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return shown, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def of_sqlite(folder, frame, statement):
    import sqlite3
    with contextlib.closing(sqlite3.connect(folder / "orders.db")) as database:
        frame.to_sql("orders", database, index=False)
        begin = time.process_time()
        (total,) = database.execute(f"SELECT sum(net) FROM ({statement})").fetchone()
        return total, time.process_time() - begin, f"Driver=SQLite3;Database={folder / 'orders.db'}"


def of_postgresql(server, path, statement):
    server.execute("CREATE TABLE orders(price numeric, discount numeric, quantity integer, ordered date, region text)",
                   f"\\copy orders from '{path}' csv header", "VACUUM ANALYZE orders")
    settings = "-c max_parallel_workers_per_gather=0 -c log_statement_stats=on -c client_min_messages=log"
    run = subprocess.run([server.program("psql"), "-h", server.folder, "-U", "orli", "-d", "postgres", "-tA", "-c",
                          f"SELECT sum(net) FROM ({statement}) AS computed"], capture_output=True, text=True, check=True,
                         env=dict(os.environ, PGOPTIONS=settings))
    user, system = re.search(r"!\s+([\d.]+) s user, ([\d.]+) s system,", run.stderr).groups()
    return float(run.stdout), float(user) + float(system), server.source


def show(rows, what, seconds):
    print(f"  {what:44}{seconds * 1e9 / rows:8.0f}")


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 1_000_000
    frame = tables.table(count)
    with contextlib.ExitStack() as cleanups, tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        path = folder / "orders.csv"
        frame.to_csv(path, index=False)
        store = str(folder / "orders.store")
        orli("define", store, str(path), f"net={tables.FORMULA}")
        statement = orli("sql", store, str(path), "net")[0]
        print(f"{tables.FORMULA}, {count} rows: ns a row of processor time")
        show(count, "orli eval, from CSV to CSV", orli("eval", str(path), "--store", store, "--format", "csv")[1])
        case = types.SimpleNamespace(folder=folder, addCleanup=cleanups.callback)
        server = databases.PostgreSQL(case)
        public = server.folder / "orders.csv"
        path.replace(public)
        public.chmod(0o644)
        totals = []
        for database, measured in (("SQLite", of_sqlite(folder, frame, statement)),
                                   ("PostgreSQL", of_postgresql(server, public, statement))):
            total, seconds, source = measured
            totals.append(round(total, 2))
            show(count, f"{database}, the sum of all", seconds)
            show(count, f"{database}, rows to orli: orli's part",
                 orli("sql", store, str(public), "net", "--dsn", source, "--format", "csv")[1])
        exact = round(sum(price * quantity for price, quantity in zip(
            (frame["price"] * 100 - frame["discount"] * 100).round().astype(int), frame["quantity"])) / 100, 2)
        print("equal sums" if totals == [exact, exact] else f"THE SUMS DIFFER: {totals}, {exact}")
        return totals != [exact, exact]


if __name__ == "__main__":
    sys.exit(main())
