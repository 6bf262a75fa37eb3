"""What other projects build against: exported names, headers, the README's host."""

import os
import re
import subprocess

import support

LIBRARIES = ("ORLI11", "WRENI11", "PAVNI11")
HEADLESS = "ORLI11-headless"
# Built where Qt is installed.
WINDOW_SYSTEM = "ORLI11-qt"
HAS_WINDOWS = (support.BUILD / f"lib/lib{WINDOW_SYSTEM}.so").exists()
# The installed ones, that of the window system for tests, and the places where hosts had them once.
HEADERS = ("include/orli11/orli11.h", "include/orli11/orli11_block.h", "include/orli11/wreni11.h",
           "include/orli11/pavni11.h", "include/orli11/windows.h", "include/orli11/qt_windows.h",
           "windows/headless/headless.h", "engine/orli11.h", "closed/wren/wreni11.h",
           "closed/pavn/pavni11.h", "platform/windows.h")
CC = os.environ.get("ORLI_CC", "cc")
CXX = os.environ.get("ORLI_CXX", "c++")


def listed_names(library):
    lines = (support.ROOT / f"cmake/exports/{library}.txt").read_text().splitlines()
    return {line.strip() for line in lines if line and line[0] != "#"}


def blocks(text, language):
    return re.findall(rf"^```{language}\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


class Libraries(support.FolderCase):
    def test_export_the_listed_names_and_no_others(self):
        for library in LIBRARIES + (HEADLESS,) + ((WINDOW_SYSTEM,) if HAS_WINDOWS else ()):
            with self.subTest(library=library):
                path = support.BUILD / f"lib/lib{library}.so"
                output = subprocess.check_output(["nm", "-D", "--defined-only", path], text=True)
                names = [line.split()[-1] for line in output.splitlines() if " A " not in line]
                exported = {name.split("@")[0] for name in names}
                self.assertEqual(exported, listed_names(library))
                version = library.upper().replace("-", "_") + "_1"
                self.assertEqual({name.partition("@@")[2] for name in names}, {version})

    def test_need_nothing_but_each_other_and_the_language(self):
        system = {"libstdc++.so.6", "libm.so.6", "libgcc_s.so.1", "libc.so.6",
                  "ld-linux-x86-64.so.2"}
        for library in LIBRARIES:
            with self.subTest(library=library):
                path = support.BUILD / f"lib/lib{library}.so"
                output = subprocess.check_output(["objdump", "-p", path], text=True)
                needed = set(re.findall(r"NEEDED\s+(\S+)", output))
                own = {"libWRENI11.so.1", "libPAVNI11.so.1"} if library == "ORLI11" else set()
                self.assertLessEqual(own, needed)
                self.assertLessEqual(needed - system, own | {"libWRENI11.so.1"})
                self.assertIn(f"SONAME               lib{library}.so.1\n", output)
                self.assertIn(f" {library}_1\n", output)


class Headers(support.FolderCase):
    def test_stand_alone_in_c_and_cpp(self):
        strict = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Werror", "-fsyntax-only"]
        for compiler, language, standard in ((CC, "c", "c11"), (CXX, "c++", "c++20")):
            for header in HEADERS:
                with self.subTest(header=header, standard=standard):
                    source = self.file(f'#include "{header}"\nint main(void) {{ return 0; }}\n',
                                       "alone.txt")
                    run = subprocess.run([compiler, "-x", language, f"-std={standard}", *strict,
                                          f"-I{support.ROOT}", source], capture_output=True, text=True,
                                         check=False)
                    self.assertEqual(run.returncode, 0, run.stderr)


class WindowsWithoutAScreen(support.FolderCase):
    def test_serve_a_host_that_links_both_libraries(self):
        source = self.file("""#include <windows/headless/headless.h>
#include <stdio.h>
static int32_t Script(void *user, OrlWindow window) {
  return ORLHeadlessType(window, 100, "0.1 + 0.2") + ORLHeadlessClick(window, 1) == 2;
}
int main(void) {
  char text[32] = "";
  EC ec = ORLCreateEC(NULL, NULL, NULL, 0);
  ORLHeadlessStart(Script, NULL);
  ORLGetExpressionText(ec, ORLBuildExpression(NULL, ec, NULL, 0), sizeof text, text);
  ORLHeadlessEnd();
  puts(text);
  return ORLGetWindowSystem() != NULL || !ORLDestroyEC(ec);
}
""", "user.c")
        program = self.folder / "user"
        libraries = [f"-L{support.BUILD}/lib", f"-Wl,-rpath,{support.BUILD}/lib",
                     f"-l{HEADLESS}", "-lORLI11", "-lWRENI11"]
        subprocess.run([CC, source, "-o", program, f"-I{support.ROOT}", *libraries], check=True)
        output = subprocess.check_output([program], text=True, env=support.ENVIRONMENT, timeout=60)
        self.assertEqual(output, "0.1 + 0.2\n")


class PageCase(support.FolderCase):
    """A page that shows a program and what it prints."""

    def check_program(self, page, source, name):
        """Builds and runs a program as the console session of the page that names it does."""
        (self.folder / name).write_text(source)
        # The pages are for a reader in the project's folder, who has the release.
        os.symlink(support.ROOT / "include", self.folder / "include")
        (self.folder / "build/release").mkdir(parents=True)
        os.symlink(support.BUILD / "lib", self.folder / "build/release/lib")
        (session,) = [block for block in blocks(page, "console") if f"$ cc {name}" in block]
        commands = [line[2:] for line in session.splitlines() if line.startswith("$ ")]
        expected = "".join(line + "\n" for line in session.splitlines() if not line.startswith("$ "))
        for command in commands[:-1]:
            subprocess.run(command.replace("cc ", CC + " -Wall -Werror ", 1), shell=True,
                           cwd=self.folder, check=True, env=support.ENVIRONMENT)
        output = subprocess.check_output(commands[-1], shell=True, cwd=self.folder, text=True,
                                         env=support.ENVIRONMENT)
        self.assertTrue(expected)
        self.assertEqual(output, expected)


class Embedding(PageCase):
    def test_code_blocks_compile_and_print_what_the_page_shows(self):
        page = (support.ROOT / "docs/embedding.md").read_text()
        self.check_program(page, "".join(blocks(page, "c")), "shop.c")


class Readme(PageCase):
    def setUp(self):
        super().setUp()
        self.text = (support.ROOT / "README.md").read_text()

    def test_host_compiles_and_prints_what_the_page_shows(self):
        (source,) = blocks(self.text, "c")
        self.assertLessEqual(len(source.splitlines()), 33)
        self.check_program(self.text, source, "host.c")

    def test_shows_what_the_demo_prints(self):
        (shown,) = [block for block in blocks(self.text, "console") if "orli items" in block]
        output = subprocess.check_output([support.ROOT / "scripts/demo.sh", support.ORLI], text=True,
                                         env=support.ENVIRONMENT)
        without_time = re.compile(r"(rows? in) [0-9.]+ s, [0-9]+ rows")
        self.assertIn("rows per second", shown)
        self.assertEqual(without_time.sub(r"\1", output).strip(),
                         without_time.sub(r"\1", shown).strip())

    def test_links_lead_to_files(self):
        for target in re.findall(r"\]\(([^)#:]+)\)", self.text):
            self.assertTrue((support.ROOT / target).exists(), target)


if __name__ == "__main__":
    support.main()
