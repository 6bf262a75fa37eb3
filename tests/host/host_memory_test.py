"""Long files need no more memory than short ones."""

import resource
import subprocess

import support

ROWS = 500000
# A program that kept eight bytes of each row would need more. The stack does not count.
LIMIT = 3900 << 10
EVAL = ("eval", "--format", "csv", "-f", "a=StrProper(name) || NumberToStrPicture(amount, '#,##0.00')",
        "-f", "b=DateToStrPicture(sold, 'd MMMM yyyy')", "-f", "c=StrRepeat(name, 3)",
        "-f", "d=NumberIFF(amount, Power(amount, 2), 0, NumberMod(amount, 7))")
REPORT = ("report", "--by", "y=DateYear(sold)", "--by", "s=StrLeft(name, 1)", "--sum", "s2=amount",
          "--greatest", "l=sold")


class Memory(support.FolderCase):
    def run_limited(self, path, command, *options, **more):
        """The status of a run that may use LIMIT bytes of memory, and how many lines it wrote."""
        limit = lambda: resource.setrlimit(resource.RLIMIT_DATA, (LIMIT, LIMIT))
        with open(self.folder / "output", "wb") as output:
            result = subprocess.run([support.ORLI, command, path, *options], stdout=output, check=False,
                                    stderr=subprocess.PIPE, preexec_fn=limit, env=support.ENVIRONMENT, **more)
        self.assertNotIn(b"no value", result.stderr)
        return result.returncode, (self.folder / "output").read_bytes().count(b"\n")

    def test_only_groups_take_memory(self):
        words = ("rain", "sun", "fog", "snow", "drizzle")
        path = self.file("id,name,amount,sold\n" + "".join(
            f"{i},{words[i % 5]} {'x' * (i % 60)},{(i * 7919 % 20011 - 9999) / 100},"
            f"{1950 + i % 99}-{1 + i % 12:02}-{1 + i % 28:02}\n" for i in range(ROWS)))
        self.assertEqual(self.run_limited(path, *EVAL), (0, ROWS + 1))
        self.assertEqual(self.run_limited(path, *REPORT), (0, 99 * 4 + 2))
        # From a pipe, which cannot be read twice.
        with subprocess.Popen(["cat", path], stdout=subprocess.PIPE) as cat:
            self.assertEqual(self.run_limited("-", *EVAL, stdin=cat.stdout), (0, ROWS + 1))
        # The limit takes effect: a group for each row is too much.
        self.assertEqual(self.run_limited(path, "report", "--by", "i=id"), (1, 0))


if __name__ == "__main__":
    support.main()
