"""What a person sees of scripts/lib.sh where packages are missing or a step takes long."""
import os
import pty
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPTS = Path(__file__).resolve().parents[2] / "scripts"


class Library(unittest.TestCase):
    """Runs functions of the library in a tree of its own, with stand-ins for the system's tools."""

    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        shutil.copytree(SCRIPTS, self.folder / "scripts")
        self.bin = self.folder / "bin"
        self.bin.mkdir()
        for tool in ("bash", "cat", "dirname", "env", "grep", "mkdir", "sed", "sort", "tail", "tr", "cut"):
            (self.bin / tool).symlink_to(shutil.which(tool))

    def stand_in(self, name, lines):
        path = self.bin / name
        path.write_text("#!/usr/bin/env bash\n" + lines)
        path.chmod(0o755)

    def script(self, lines):
        path = self.folder / "scripts" / "under-test"
        path.write_text('. "$(dirname "$0")/lib.sh"\n' + lines)
        return [str(self.bin / "bash"), str(path)]

    def run_script(self, lines):
        return subprocess.run(self.script(lines), env={"PATH": str(self.bin)}, capture_output=True, text=True, timeout=60)

    def test_missing_packages(self):
        # Like the real tool, which fails when a package that was asked for is unknown.
        installed = "printf 'g++ installed\\nlibthing1.81-dev:amd64 installed\\n'; exit 1"
        rows = [
            # what, stand-ins, wanted, status, in the output, not in the output
            ("all there", {"dpkg-query": installed}, "g++ 'libthing*-dev'", 0, "", "missing"),
            ("neither root nor sudo", {"dpkg-query": installed, "id": "echo 1000", "apt-get": "exit 9"}, "g++ cmake", 1,
             "takes root or sudo: cmake", "g++"),
            ("no apt", {"dpkg-query": installed}, "cmake", 1, "Debian packages are needed: cmake", "g++"),
            ("another kind of system", {}, "cmake", 0, "", "cmake"),
            ("apt says no", {"dpkg-query": installed, "id": "echo 0", "apt-get": "echo apt says no; exit 9"}, "cmake", 1,
             "apt says no", "takes root"),
            ("the newest that apt knows", {
                "dpkg-query": "exit 1", "id": "echo 0", "apt-cache": "printf '%s\\n' libboo1.9-dev libboo1.81-dev libboo1.81.0",
                "apt-get": '[[ $* == *update* ]] || { echo "asked for ${@: -1}"; exit 9; }',
            }, "'libboo*-dev'", 1, "asked for libboo1.81-dev", "libboo1.9-dev"),
            ("nothing that fits", {"dpkg-query": "exit 1", "id": "echo 0", "apt-cache": "true", "apt-get": "true"},
             "'libboo*-dev'", 1, "no package like libboo*-dev", "asked"),
        ]
        for what, stand_ins, wanted, status, said, unsaid in rows:
            with self.subTest(what):
                for name in ("dpkg-query", "id", "apt-get", "apt-cache"):
                    (self.bin / name).unlink(missing_ok=True)
                    if name in stand_ins:
                        self.stand_in(name, stand_ins[name] + "\n")
                ended = self.run_script(f"need {wanted}\n")
                self.assertEqual(ended.returncode, status, ended.stderr)
                self.assertIn(said, ended.stderr)
                self.assertNotIn(unsaid, ended.stderr)

    def test_progress(self):
        rows = [
            ("ninja", "[7/312] Building CXX object", "7 of 312 steps"),
            ("apt fetches", "dlstatus:12:3.2:Retrieving file 12 of 40", "12 of 40 packages fetched"),
            ("apt installs", "0 upgraded, 40 newly installed, 0 to remove\npmstatus:a:1.0:Installed a\n"
             "pmstatus:b:50.0:Installing b (amd64)\npmstatus:b:60.1:Installed b (amd64)", "2 of 40 packages installed"),
            ("apt unpacks", "0 upgraded, 40 newly installed, 0 to remove\npmstatus:a:1.0:Preparing a (amd64)\n"
             "pmstatus:a:1.1:Unpacking a (amd64)", "1 of 40 packages unpacked"),
            ("apt counts before it begins", "0 upgraded, 40 newly installed, 0 to remove", ""),
            ("nothing that counts", "[1/2 of the way\n3/4", ""),
        ]
        for what, printed, far in rows:
            with self.subTest(what):
                ours, theirs = pty.openpty()
                command = self.script(f"progress Step <<'END'\n{printed}\nEND\n")
                ended = subprocess.run(command, env={"PATH": str(self.bin)}, stdout=subprocess.PIPE, stderr=theirs, text=True,
                                       timeout=60)
                os.set_blocking(ours, False)
                os.close(theirs)
                try:
                    shown = os.read(ours, 65536).decode()
                except OSError: # The terminal is gone and nothing was written to it.
                    shown = ""
                os.close(ours)
                self.assertEqual(ended.stdout, printed + "\n") # The log has it all.
                self.assertIn(far, shown)
                self.assertEqual(bool(shown), bool(far))


if __name__ == "__main__":
    unittest.main()
