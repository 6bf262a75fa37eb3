"""Sessions with orli as data: sessions.txt, each in a folder of its own.

    host_transcript_test.py --write    puts what the commands write now into the file, to be read
                                       before it is committed
"""

import pathlib
import re
import sys
import tempfile

import support
import transcript

FILE = pathlib.Path(__file__).with_name("sessions.txt")
SESSIONS = re.split(r"^## (.*)\n", FILE.read_text(), flags=re.MULTILINE)


class Sessions(support.FolderCase):
    maxDiff = None

    def test_sessions(self):
        for title, text in zip(SESSIONS[1::2], SESSIONS[2::2]):
            with self.subTest(title=title), tempfile.TemporaryDirectory(dir=self.folder) as folder:
                transcript.check(self, text.splitlines(), folder)


def write():
    text = SESSIONS[0]
    for title, session in zip(SESSIONS[1::2], SESSIONS[2::2]):
        with tempfile.TemporaryDirectory() as folder:
            text += f"## {title}\n{transcript.written(session.splitlines(), folder)}\n"
    FILE.write_text(text.rstrip("\n") + "\n")


if __name__ == "__main__":
    write() if sys.argv[1:] == ["--write"] else support.main()
