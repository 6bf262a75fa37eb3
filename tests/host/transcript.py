"""Console sessions as data: commands after "$ ", and below each what it writes to both outputs."""

import os
import re
import subprocess

import support

# What differs from run to run.
TIMES = re.compile(r"( rows?) in [0-9.]+ s(, [0-9]+ rows per second)?")


def run_shell(command, folder, **variables):
    """What a command line of the shell writes, with orli found, times left out."""
    environment = dict(support.ENVIRONMENT, PATH=f"{support.ORLI.parent}:{os.environ['PATH']}", **variables)
    result = subprocess.run(["bash", "-c", command], cwd=folder, stdout=subprocess.PIPE, check=False,
                            stderr=subprocess.STDOUT, env=environment, stdin=subprocess.DEVNULL)
    return TIMES.sub(r"\1", result.stdout.decode(errors="replace").replace("\r\n", "\n"))


def commands_of(lines):
    """The commands of a session with what each writes; a command goes on after a backslash."""
    sessions = []
    for line in lines:
        if line.startswith("$ "):
            sessions.append([line[2:], ""])
        elif sessions and sessions[-1][0].endswith("\\"):
            sessions[-1][0] += "\n" + line
        elif sessions:
            sessions[-1][1] += line + "\n"
    return sessions


def check(case, lines, folder):
    """Runs the session and compares what each command writes."""
    for command, expected in commands_of(lines):
        with case.subTest(command=command):
            case.assertEqual(run_shell(command, folder).rstrip("\n"), TIMES.sub(r"\1", expected).rstrip("\n"))


def written(lines, folder):
    """The session with what its commands write now."""
    return "".join(f"$ {command}\n{run_shell(command, folder)}" for command, _ in commands_of(lines))
