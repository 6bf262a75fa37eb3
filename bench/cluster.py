#!/usr/bin/env python3
"""Computes a report over many generated rows on a cluster of this machine, and in one process.

    bench/cluster.py [--rows 10000000] [--partitions 40] [--workers 2]

Starts a scheduler and workers as processes of their own, which talk over TCP as they would between
machines. Each partition is made on the worker that computes it. The report is computed a second
time here, partition by partition without Dask; exit status 1 when the two differ.

Costs are processor time, so that what else the machine does counts as little as it can; of the
workers all of theirs together, the generation of the rows included as in the one process.
"""

import argparse
import pathlib
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "bindings/python"))

import dask.dataframe  # noqa: E402
import distributed  # noqa: E402
import numpy  # noqa: E402
import pandas  # noqa: E402

import orli11.dask  # noqa: E402

FORMULAS = {
    "region": "StrUpper(region)",
    "quarter": "DateToStrPicture(ordered, 'yyyy') || ' Q' || NumberToStr(DateQuarter(ordered), 0)",
    "net": "NumberRound((price - discount) * quantity, 2)",
    "tax": "net() * 19 / 100",
}
EXACT = {"numbers": int, "scale": 2}  # cents, whose sums do not depend on the order of rows


def rows_of(part, rows):
    """The rows of one partition, the same wherever it is made."""
    draw = numpy.random.default_rng(part)
    return pandas.DataFrame({
        "region": draw.choice(["north", "south", "east", "west"], rows),
        "ordered": numpy.datetime64("2020-01-01", "ns") + draw.integers(0, 1461, rows).astype("timedelta64[D]"),
        "price": draw.integers(100, 100_000, rows) / 100, "discount": draw.integers(0, 500, rows) / 100,
        "quantity": draw.integers(1, 100, rows)})


def report_of(values):
    return values.groupby(["region", "quarter"])[["net", "tax"]].sum()


def sizes(rows, partitions):
    return [rows // partitions + (part < rows % partitions) for part in range(partitions)]


def on_cluster(counts, client):
    """The report, the seconds on the clock, and the processor time of the workers and of this process."""
    frame = dask.dataframe.from_map(rows_of, range(len(counts)), counts, meta=rows_of(0, 0))
    client.run(lambda: orli11.dask.__name__)  # imports are not a cost of rows
    begin, here = time.perf_counter(), time.process_time()
    before = sum(client.run(time.process_time).values())
    report = report_of(orli11.dask.evaluate(frame, FORMULAS, **EXACT)).compute()
    workers = sum(client.run(time.process_time).values()) - before
    return report, {"clock": time.perf_counter() - begin, "workers": workers, "here": time.process_time() - here}


def in_one_process(counts):
    """The same without Dask, partition by partition: the report and the seconds of its parts."""
    times = {"clock": -time.perf_counter(), "rows": 0.0, "formulas": 0.0, "sums": 0.0}
    sums = []
    with orli11.Context(rows_of(0, 1)) as context:
        context.add_formulas(FORMULAS)
        for part, rows in enumerate(counts):
            moments = [time.process_time()]
            frame = rows_of(part, rows)
            moments.append(time.process_time())
            values = context.evaluate_all(frame, FORMULAS, **EXACT)
            moments.append(time.process_time())
            sums.append(report_of(values))
            moments.append(time.process_time())
            for name, begin, end in zip(("rows", "formulas", "sums"), moments, moments[1:]):
                times[name] += end - begin
    times["clock"] += time.perf_counter()
    return pandas.concat(sums).groupby(level=[0, 1]).sum(), times


def show(name, times, rows):
    parts = {part: seconds * 1e9 / rows for part, seconds in times.items() if part != "clock"}
    print(f"{name:12}{times['clock']:8.1f} s on the clock{sum(parts.values()):8.0f} ns: "
          + ", ".join(f"{part} {cost:.0f}" for part, cost in parts.items()))


def main():
    options = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    options.add_argument("--rows", type=int, default=10_000_000)
    options.add_argument("--partitions", type=int, default=40)
    options.add_argument("--workers", type=int, default=2)
    given = options.parse_args()
    counts = sizes(given.rows, given.partitions)

    with distributed.LocalCluster(n_workers=given.workers, threads_per_worker=1, processes=True, protocol="tcp",
                                  dashboard_address=None) as cluster, distributed.Client(cluster) as client:
        client.wait_for_workers(given.workers)
        client.run(sys.path.insert, 0, str(ROOT / "bindings/python"))
        spread, cluster_times = on_cluster(counts, client)
    alone, times = in_one_process(counts)

    print(spread.sort_index().head(4).div(100).to_string())
    print(f"{len(spread)} groups of {given.rows} rows in {given.partitions} partitions; ns a row of processor time")
    show("one process", times, given.rows)
    show(f"{given.workers} workers", cluster_times, given.rows)
    equal = spread.sort_index().astype("int64").equals(alone.sort_index().astype("int64"))
    print("equal results" if equal else "THE RESULTS DIFFER")
    return not equal


if __name__ == "__main__":
    sys.exit(main())
