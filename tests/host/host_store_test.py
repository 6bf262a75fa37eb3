"""The file that keeps formulas: its bytes, damaged and foreign files, failing writes. Its commands are in sessions.txt."""

import fcntl
import os
import random
import resource
import stat
import struct
import subprocess

import support
from support import run

SALES = "amount,tax,sold,place\n10,0.5,2024-01-31,a\n20,0.25,2024-02-29,b\n"
SALES_COLUMNS = (("amount", 0), ("tax", 0), ("sold", 1), ("place", 2))
ROUTINE = b"orli column\0"


def block(columns=SALES_COLUMNS, formulas=(), routine=ROUTINE):
    """The stored form, laid down field by field."""
    content = b"\3" + bytes(20)
    if columns:
        content += struct.pack("<HH", 250, len(columns))
    for name, type_ in columns:
        content += struct.pack("<hhII65shHHH", 1, type_, 0, 0, name.encode(), 0, 0, 0, 0) + routine
    if formulas:
        content += struct.pack("<HH", 252, len(formulas))
    return content + b"".join(f"{text}\0{name}\0".encode() for name, text in formulas)


def acl(owner, nobody, group, mask, other):
    """An access control list with an entry for the user 65534, as the kernel takes it."""
    entries = ((1, owner, -1), (2, nobody, 65534), (4, group, -1), (16, mask, -1), (32, other, -1))
    return struct.pack("<I", 2) + b"".join(struct.pack("<HHi", *entry) for entry in entries)


class StoreCase(support.FolderCase):
    def setUp(self):
        super().setUp()
        self.data = self.file(SALES)
        self.store = self.folder / "sales.store"

    def good(self, *arguments):
        """The output of a command that must succeed."""
        status, output, errors = run(*arguments)
        self.assertEqual((status, errors.count(b"orli:")), (0, 0), (arguments, errors))
        return output.decode()

    def refused(self, words, *arguments, status=1):
        """A command that must write these words as its one error and leave the store alone."""
        before = self.store.read_bytes() if self.store.exists() else None
        got, output, errors = run(*arguments)
        self.assertEqual((got, output, support.without_hint(errors)), (status, b"", f"orli: {words}\n"), arguments)
        self.assertEqual(self.store.read_bytes() if self.store.exists() else None, before, arguments)

    def define(self, *formulas):
        return self.good("define", self.store, self.data, *formulas)


class Session(StoreCase):
    def test_a_store_is_what_the_format_says(self):
        self.define("net=gross() - tax", "gross=amount * 2", "late=sold AND sold + 7 DAYS", "few=tax, 1")
        self.assertEqual(self.store.read_bytes(), block(formulas=(
            ("net", "gross() - tax"), ("gross", "amount * 2"), ("late", "sold AND sold + 7 DAYS"),
            ("few", "tax, 1"))))
        # A changed formula keeps its position, even when two swap which one calls the other.
        self.define("gross=net() * 2", "net=amount", '"a=b"=\'ä\'')
        formulas = (("net", "amount"), ("gross", "net() * 2"), ("late", "sold AND sold + 7 DAYS"),
                    ("few", "tax, 1"), ('"a=b"', "'ä'"))
        self.assertEqual(self.store.read_bytes(), block(formulas=formulas))
        for name, text in formulas:
            self.assertEqual(self.good("show", self.store, name), text + "\n")
        self.assertEqual(self.good("show", self.store, "a=b"), "'ä'\n")

    def test_a_column_that_many_rows_lack_is_named(self):
        self.define("net=amount - tax")
        changed = self.folder / "changed.csv"
        changed.write_text("amount,vat\n" + "10,0.5\n" * 1000)
        self.refused(f"{self.store}: column tax is not in {changed}; it is needed by net",
                     "eval", changed, "--store", self.store)

    def test_changes_at_once_wait_for_each_other(self):
        names = [f"f{i}" for i in range(12)]
        running = [subprocess.Popen([support.ORLI, "define", self.store, self.data, f"{name}=amount"])
                   for name in names]
        self.assertEqual([process.wait() for process in running], [0] * len(names))
        lines = self.good("list", self.store).splitlines()[2:]
        self.assertEqual(sorted(line.split()[0] for line in lines), sorted(names))

    def test_a_writer_that_waits_says_so(self):
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        fcntl.flock(folder, fcntl.LOCK_EX)
        with subprocess.Popen([support.ORLI, "define", self.store, self.data, "net=amount"],
                              stderr=subprocess.PIPE) as waiting:
            self.assertEqual(
                waiting.stderr.readline().decode(),
                f"orli: {self.store}: waiting for another program that changes a store in this folder\n")
            self.assertFalse(self.store.exists())
            fcntl.flock(folder, fcntl.LOCK_UN)
            self.assertEqual(waiting.wait(), 0)
        self.assertEqual(self.store.read_bytes(), block(formulas=[("net", "amount")]))


class Files(StoreCase):
    def test_damaged_and_foreign_stores_are_refused_and_kept(self):
        circle = (("a", "b() + 1"), ("b", "a()"))
        good = block(formulas=[("a", "amount")])
        no_parse = "formula a: ERR_{}\n  {}\n  {}"
        for content, words in (
                (b"", "is empty, not a store of orli"), (SALES.encode(), "is not a store of orli"),
                (bytes(100), "is not a store of orli"),
                (b"\4" + good[1:], "is stored in version 4, and this orli knows only 3"),
                (good[:1] + b"Add" + good[1:], "an operator needs the routine Add, which orli does not have"),
                (block(routine=b"GetIt\0"), "column amount needs the routine GetIt, which orli does not have"),
                (good + b"x", f"is damaged or cut short at byte {len(good)}"),
                (block([("n" * 66, 0)]), "is damaged or cut short at byte 122"),
                (block([("n", 3)]), "is damaged or cut short at byte 122"),
                (good[:-2], f"is damaged or cut short at byte {len(good) - 2}"),
                (good[:29] + b"\1" + good[30:], "is damaged"),
                (block(formulas=circle), "formulas call each other in a cycle: a, b"),
                (block(formulas=[("a", "1"), ("a", "2")]), "two formulas have the name a"),
                (block(formulas=[("a b", "1")]), "not a valid formula name: a b"),
                (block(formulas=[("a", "Old(1)")]),
                 no_parse.format("FUNC: Unknown function.", "Old(1)", "^^^^")),
                (block(formulas=[("a", "price")]),
                 no_parse.format("VAR: Unknown input item.", "price", "^^^^^"))):
            self.store.write_bytes(content)
            for command in (("list", self.store), ("define", self.store, self.data, "x=1"),
                            ("eval", self.data, "--store", self.store)):
                self.refused(f"{self.store}: {words}", *command)
        os.mkfifo(self.folder / "pipe")
        for path, words in ((self.folder, "is a directory"), (self.folder / "pipe", "is not a regular file"),
                            ("/dev/null", "is not a regular file"),
                            (self.folder / "none/x", "No such file or directory")):
            self.refused(f"{path}: {words}", "define", path, self.data, "x=1")
        self.refused(f"{self.folder / 'none'}: No such file or directory", "list", self.folder / "none")
        for path in ("", "-"):
            self.refused("a store is a file with a name of its own", "list", path)
        with open(self.folder / "huge", "wb") as huge:
            huge.truncate(2**31)
        self.refused(f"{self.folder / 'huge'}: is larger than 2 GiB, which no store is",
                     "list", self.folder / "huge")

    def test_a_large_foreign_file_is_refused_by_its_first_bytes(self):
        for start, words in ((b"", "is not a store of orli"), (b"\3", "is damaged or cut short at byte 21")):
            with open(self.store, "wb") as huge:
                huge.write(start)
                huge.truncate(2**31 - 1)
            with subprocess.Popen([support.ORLI, "list", self.store], stderr=subprocess.PIPE) as listing:
                self.assertEqual(listing.stderr.read().decode(), f"orli: {self.store}: {words}\n")
                _, status, usage = os.wait4(listing.pid, 0)
                listing.returncode = os.waitstatus_to_exitcode(status)
            self.assertEqual(listing.returncode, 1)
            self.assertLess(usage.ru_maxrss, 2**20, "KiB")

    def test_damage_is_refused_or_harmless(self):
        columns, formulas = (("amount", 0), ("a b", 1)), (("net", "amount * 2"), ("x", "net() - 1"))
        good = block(columns, formulas)
        whole = {len(block(columns)), len(good)}
        for size in range(len(good) + 1):
            self.store.write_bytes(good[:size])
            self.assertEqual(run("list", self.store)[0], 0 if size in whole else 1, size)
        random_ = random.Random(11)
        refused = 0
        for _ in range(300):
            content = bytearray(good)
            for _ in range(random_.choice((1, 1, 3))):
                content[random_.randrange(len(content))] ^= 1 << random_.randrange(8)
            self.store.write_bytes(content)
            status, output, errors = run("delete", self.store, "x")
            self.assertIn((status, output), ((0, b""), (1, b"")), (bytes(content), errors))
            if status == 1:
                refused += 1
                self.assertEqual(self.store.read_bytes(), content)
        self.assertGreater(refused, 100)

    def test_a_write_that_fails_leaves_the_old_file(self):
        self.define("net=amount - tax")
        content, names = self.store.read_bytes(), sorted(os.listdir(self.folder))
        command = [support.ORLI, "define", self.store, self.data, "gross=amount"]
        def tried(**how):
            result = subprocess.run(command, capture_output=True, check=False, **how)
            self.assertEqual((self.store.read_bytes(), sorted(os.listdir(self.folder))), (content, names))
            return result.returncode, result.stderr.decode()
        for limit in (0, 1, len(content)):
            self.assertEqual(
                tried(preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))),
                (1, f"orli: {self.store}: not written: File too large\n"), limit)
        user = {"user": 65534, "group": 65534, "extra_groups": []} if os.geteuid() == 0 else {}
        self.folder.chmod(0o555)
        self.addCleanup(self.folder.chmod, 0o755)
        for mode, words in ((0o666, "not written: Permission denied"), (0o444, "Permission denied")):
            self.store.chmod(mode)
            try:
                self.assertEqual(tried(**user), (1, f"orli: {self.store}: {words}\n"))
            except PermissionError:
                self.skipTest("the program is in a folder that other users may not enter")

    def test_permissions_and_links_are_kept(self):
        link = self.folder / "link"
        (self.folder / "inner").mkdir()
        link.symlink_to("inner/next")
        (self.folder / "inner/next").symlink_to("../sales.store")
        # Links may refer to files that do not exist yet.
        self.good("define", link, self.data, "a=amount")
        for mode in (0o600, 0o664, 0o640):
            self.store.chmod(mode)
            self.good("define", link, self.data, "a=amount")
            self.assertEqual(stat.S_IMODE(self.store.stat().st_mode), mode)
        self.assertTrue(link.is_symlink() and not self.store.is_symlink())
        self.assertEqual(self.store.read_bytes(), block(formulas=[("a", "amount")]))

    def acl(self, path=None):
        """The access control list of a file, of the store by itself; None when it has no more than a mode."""
        try:
            return os.getxattr(path or self.store, "system.posix_acl_access")
        except OSError:
            return None

    def test_access_control_lists_are_kept(self):
        wanted = acl(6, 4, 0, 6, 0)
        try:
            os.setxattr(self.data, "system.posix_acl_access", wanted)
        except OSError as error:
            self.skipTest(f"no access control lists here: {error}")
        self.define("a=amount")
        os.setxattr(self.store, "system.posix_acl_access", wanted)
        self.define("b=amount")
        self.assertEqual(self.acl(), wanted)
        # A list that files of the folder begin with is for new files alone.
        os.setxattr(self.folder, "system.posix_acl_default", wanted)
        os.removexattr(self.store, "system.posix_acl_access")
        self.store.chmod(0o640)
        self.define("c=amount")
        self.assertEqual((self.acl(), stat.S_IMODE(self.store.stat().st_mode)), (None, 0o640))
        self.store.unlink()
        self.define("d=amount")
        self.assertEqual(self.acl(), wanted)
        if os.geteuid() == 0:  # another user, who cannot keep the group
            self.folder.chmod(0o777)
            os.setxattr(self.store, "system.posix_acl_access", acl(6, 6, 6, 6, 0))
            try:
                subprocess.run([support.ORLI, "delete", self.store, "d"], check=True,
                               user=65534, group=65534, extra_groups=[])
            except PermissionError:
                self.skipTest("the program is in a folder that other users may not enter")
            self.assertEqual(self.acl(), acl(6, 6, 0, 6, 0))

    def test_files_of_killed_writers_are_removed(self):
        kept = [".orli-backup.tmp", ".orli-1-0", "1-0.tmp", ".orli.tmp"]
        for name in kept + [".orli-1-0.tmp", ".orli-4194304-12.tmp"]:
            self.file("", name)
        self.define("a=amount")
        self.assertEqual(sorted(os.listdir(self.folder)), sorted(kept + ["data.csv", "sales.store"]))


if __name__ == "__main__":
    support.main()
