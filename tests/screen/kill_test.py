"""kill_test.py [COUNT] - kills the editor at random moments of a session that saves, renames and
deletes, by default 3 times. The store must be whole each time, and hold all that the window had
shown to be done."""

import random
import subprocess
import sys
import threading
import time

import screen

ORLI = screen.BUILD / "bin/orli"
LONGEST = 4  # seconds from its window until a session is killed
VICTIMS = [f"victim{number:02}" for number in range(12)]
FIRST = {"left": "amount / 2", "right": "tax * 2", **{name: "amount" + " + tax" for name in VICTIMS}}


class Killed(Exception):
    """The editor is gone."""


class Session:
    """One editor over a store of its own. `states`: what the store is to hold after each step that
    was begun; `done`: how many of these the window has shown to be done."""

    def __init__(self, shown, data, store, delay):
        self.shown, self.states, self.done = shown, [dict(FIRST)], 0
        self.program = shown.start([ORLI, "edit", store, data])
        self.end = threading.Timer(delay, self.program.kill)

    def wait(self, title, there=True):
        end = time.monotonic() + screen.PATIENCE
        while time.monotonic() < end:
            found = self.shown.windows(title)
            if bool(found) == there:
                if found:
                    self.shown.tool("windowfocus", found[-1])
                return
            if self.program.poll() is not None:
                raise Killed
            time.sleep(0.02)
        raise AssertionError(f"{title!r} does not come" if there else f"{title!r} stays open")

    def key(self, *keys):
        if self.program.poll() is not None:
            raise Killed
        self.shown.tool("key", "--delay", 4, *keys)

    def begin(self, change):
        state = dict(self.states[-1])
        change(state)
        self.states.append(state)

    def select(self, row, name):
        """Selects a row and has what was changed until then saved."""
        self.key("alt+u", "Home", *["Down"] * row, "alt+s")
        self.wait("^Formula Save$")
        self.key("alt+y")
        self.wait(f"^Formula Editor - {name}$")
        self.done = len(self.states) - 1

    def run(self):
        self.wait("^Formula Editor")
        self.end.start()
        self.key("alt+u", "Home", "Down", "alt+s")
        self.wait("^Formula Editor - left$")
        left = "left"
        for number, victim in enumerate(reversed(VICTIMS)):
            self.key("1", "plus")
            self.begin(lambda state: state.update({left: "1+" + state[left]}))
            self.select(2, "right")
            self.key("alt+u", "Home", "Down", "alt+s")
            self.wait(f"^Formula Editor - {left}$")
            self.key("alt+m", "alt+m", "x", str(number % 10))
            named = f"x{number % 10}"
            self.begin(lambda state: state.update({named: state.pop(left)}))
            left = named
            self.select(2, "right")
            self.key("alt+u", "End", "alt+d")
            self.wait("^Formula Delete$")
            self.begin(lambda state: state.pop(victim))
            self.key("alt+y")
            self.wait("^Formula Delete$", there=False)
            self.wait("^Formula Editor - right$")
            self.key("alt+u", "Home", "Down", "alt+s")
            self.wait(f"^Formula Editor - {left}$")
            self.done = len(self.states) - 1
        raise AssertionError("the session is too short")


def contents(store):
    """The formulas of a store, which is read as a whole."""
    listed = subprocess.run([ORLI, "list", store, "--format", "csv"], capture_output=True, text=True,
                            check=True).stdout.splitlines()[1:]
    names = [line.split(",")[0] for line in listed]
    return {name: subprocess.run([ORLI, "show", store, name], capture_output=True, text=True,
                                 check=True).stdout.strip() for name in names}


def kill_one(shown, folder, random_numbers):
    data, store = folder / "sales.csv", folder / "sales.store"
    store.unlink(missing_ok=True)
    data.write_text("amount,tax\n10,0.5\n")
    subprocess.run([ORLI, "define", store, data, *(f"{name}={text}" for name, text in FIRST.items())],
                   check=True, capture_output=True)
    session = Session(shown, data, store, random_numbers.uniform(0.1, LONGEST))
    try:
        session.run()
    except Killed:
        pass
    session.program.communicate()
    shown.programs.remove(session.program)
    found = contents(store)
    if found not in session.states[session.done:]:
        raise AssertionError(f"{session.done} of {len(session.states) - 1} changes were shown to be "
                             f"done, and the store holds {found}")
    return session.done


def main(count, seed):
    shown = screen.Screen(1000, 800)
    random_numbers = random.Random(seed)
    done = 0
    try:
        for _ in range(count):
            done += kill_one(shown, screen.pathlib.Path(shown.folder.name), random_numbers)
    except AssertionError as failure:
        raise SystemExit(f"seed {seed}: {failure}") from failure
    finally:
        shown.close()
    print(f"{count} kills, {done} changes shown to be done before them, seed {seed}")


if __name__ == "__main__":
    lacking = screen.missing()
    if lacking:
        print(f"skipped: not there: {lacking}")
        sys.exit(77)
    main(int(sys.argv[1]) if len(sys.argv) > 1 else 3, int(time.time()))
