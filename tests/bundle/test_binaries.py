"""Every binary of the bundle carries the marks of the options that cmake/Hardening.cmake asks for."""
import json
import os
import platform
import subprocess
import unittest
from pathlib import Path

CONTENTS = Path(os.environ["QUILLMERE_BUNDLE"]) / "Contents"
EXPECTED = {"MacOS/Quillmere", "Helpers/quillmere-archive-reader", "Helpers/quillmere-image-worker"}
# These call nothing that the C library could check.
UNCHECKED = {"quillmere-archive-reader", "libquillmere-media.so"}


def readelf(*arguments):
    return subprocess.run(["readelf", "--wide", *arguments], capture_output=True, text=True, check=True).stdout


def is_elf(path):
    with path.open("rb") as file:
        return file.read(4) == b"\x7fELF"


class Binaries(unittest.TestCase):
    def setUp(self):
        self.binaries = [path for path in CONTENTS.rglob("*") if path.is_file() and is_elf(path)]

    def test_all_are_there(self):
        names = {str(path.relative_to(CONTENTS)) for path in self.binaries}
        self.assertLessEqual(EXPECTED, names)
        self.assertTrue(any("web-process" in name for name in names), names)

    def test_hardened(self):
        optimised = os.environ["QUILLMERE_BUILD_TYPE"] != "Debug"
        for path in self.binaries:
            header, segments, dynamic, symbols = (readelf(option, path) for option in ("-h", "-l", "-d", "--dyn-syms"))
            program = path.suffix != ".so"
            marks = [
                ("loaded anywhere", "DYN (" in header),
                ("marked as such", not program or "PIE" in dynamic),
                ("tables read-only", "GNU_RELRO" in segments),
                ("bound at start", "BIND_NOW" in dynamic or "NOW" in dynamic),
                ("no code on the stack", "GNU_STACK" in segments and "RWE" not in segments),
                ("stack guarded", "__stack_chk_fail" in symbols),
                ("lengths checked", not optimised or path.name in UNCHECKED
                 or "_chk@" in symbols.replace("__stack_chk_fail", "")),
                ("jumps land on marks", self.landing_marks(path) > 10),
            ]
            for what, holds in marks:
                with self.subTest(f"{path.name}: {what}"):
                    self.assertTrue(holds)

    def test_every_unit_is_compiled_so(self):
        commands = json.loads((CONTENTS.parents[1] / "compile_commands.json").read_text())
        wanted = ["-fstack-protector-strong", "-fstack-clash-protection"]
        if os.environ["QUILLMERE_BUILD_TYPE"] != "Debug":
            wanted.append("-D_FORTIFY_SOURCE=3")
        self.assertGreater(len(commands), 100)
        for unit in commands:
            missing = [option for option in wanted if option not in unit["command"].split()]
            self.assertFalse(missing, unit["file"])

    def landing_marks(self, path):
        """The marks in the code itself: the linker keeps its note only where the C library's parts carry it too."""
        if platform.machine() != "x86_64":
            self.skipTest("known for x86-64 alone")
        return path.read_bytes().count(b"\xf3\x0f\x1e\xfa")


if __name__ == "__main__":
    unittest.main()
