"""Sessions with orli as data: sessions.txt, each in a folder of its own.

Below a command follow its output, its errors after "! ", and its exit status in brackets unless 0.

    host_transcript_test.py --write    puts what the commands write now into the file, to be read
                                       before it is committed
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile

import support

FILE = pathlib.Path(__file__).with_name("sessions.txt")
SESSIONS = re.split(r"^## (.*)\n", FILE.read_text(), flags=re.MULTILINE)
# What differs from run to run.
TIMES = re.compile(r"( rows?) in [0-9.]+ s(, [0-9]+ rows per second)?")
ENVIRONMENT = dict(support.ENVIRONMENT, PATH=f"{support.ORLI.parent}:{os.environ['PATH']}",
                   DISPLAY="", WAYLAND_DISPLAY="", QT_QPA_PLATFORM="")


def run_shell(command, folder):
    result = subprocess.run(["bash", "-c", command], cwd=folder, capture_output=True, check=False,
                            env=ENVIRONMENT, stdin=subprocess.DEVNULL)
    output, errors = (part.decode(errors="replace").replace("\r\n", "\n")
                      for part in (result.stdout, result.stderr))
    errors = "".join(f"! {line}\n" for line in TIMES.sub(r"\1", errors).splitlines())
    return output + errors + (f"[{result.returncode}]\n" if result.returncode != 0 else "")


def commands_of(session):
    """The commands of a session with what each writes; a command goes on after a backslash."""
    commands = re.split(r"^\$ ((?:.*\\\n)*.*)\n", session, flags=re.MULTILINE)
    return zip(commands[1::2], commands[2::2])


class Sessions(support.FolderCase):
    maxDiff = None

    def test_sessions(self):
        for title, session in zip(SESSIONS[1::2], SESSIONS[2::2]):
            with tempfile.TemporaryDirectory(dir=self.folder) as folder:
                for command, expected in commands_of(session):
                    with self.subTest(title=title, command=command):
                        self.assertEqual(run_shell(command, folder).rstrip("\n"), expected.rstrip("\n"))


def write():
    text = SESSIONS[0]
    for title, session in zip(SESSIONS[1::2], SESSIONS[2::2]):
        with tempfile.TemporaryDirectory() as folder:
            written = (f"$ {command}\n{run_shell(command, folder)}" for command, _ in commands_of(session))
            text += f"## {title}\n{''.join(written)}\n"
    FILE.write_text(text.rstrip("\n") + "\n")


if __name__ == "__main__":
    write() if sys.argv[1:] == ["--write"] else support.main()
