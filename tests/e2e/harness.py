"""Runs the real program on a virtual display and looks at it as a user and a page would."""

import json
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

BUNDLE = Path(os.environ["QUILLMERE_BUNDLE"])
PAGES = Path(__file__).parent / "pages"
PATIENCE = 60.0  # an upper bound for a loaded machine, never a measurement


class Timeout(AssertionError):
    pass


def until(what, test, patience=PATIENCE, pause=0.05):
    """Polls `test` until it answers something true and returns that."""
    end = time.monotonic() + patience
    while True:
        found = test()
        if found:
            return found
        if time.monotonic() > end:
            raise Timeout(f"waited in vain for {what}")
        time.sleep(pause)


def output(*command, env=None):
    done = subprocess.run(command, capture_output=True, text=True, env=env, check=False)
    return done.stdout if done.returncode == 0 else ""


def link_or_copy(source, destination):
    try:
        os.link(source, destination)
    except OSError:  # another file system
        shutil.copy2(source, destination)


def children(pid):
    """All living descendants of a process, zombies left out."""
    found = []
    for line in output("ps", "-eo", "pid=,ppid=,stat=").splitlines():
        child, parent, state = line.split()
        found.append((int(child), int(parent), state))
    tree, grown = {pid}, True
    while grown:
        more = {c for c, p, s in found if p in tree and not s.startswith("Z")} - tree
        tree |= more
        grown = bool(more)
    return tree - {pid}


class Display:
    """A virtual display with a window manager."""

    def __init__(self):
        read, write = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1400x900x24", "-nolisten", "tcp"],
            pass_fds=[write], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as numbers:
            self.name = ":" + numbers.readline().strip()
        self.manager = subprocess.Popen(["openbox"], env={**os.environ, "DISPLAY": self.name},
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def close(self):
        for process in (self.manager, self.server):
            process.terminate()
            process.wait()


class Program:
    """One run of the program with folders of its own."""

    def __init__(self, display, *arguments, page=None, sparse=None, folders=None, home=None,
                 environment=None):
        self.folder = Path(tempfile.mkdtemp(prefix="quillmere-test-"))
        self.home = Path(home) if home else self.folder / "home"
        self.home.mkdir(exist_ok=True)
        self.temporary = self.folder / "tmp"
        self.temporary.mkdir()
        self.bundle = self._bundle(page, sparse or {}, folders or {})
        self.environment = {
            **{k: v for k, v in os.environ.items() if not k.startswith("XDG_") and k != "DBUS_SESSION_BUS_ADDRESS"},
            "DISPLAY": display.name, "HOME": str(self.home), "XDG_CONFIG_HOME": str(self.home / "config"),
            "XDG_CACHE_HOME": str(self.home / "cache"), "XDG_DATA_HOME": str(self.home / "data"),
            "XDG_RUNTIME_DIR": str(self.folder), "TMPDIR": str(self.temporary), "LIBGL_ALWAYS_SOFTWARE": "1", "NO_AT_BRIDGE": "1",
            "DBUS_SESSION_BUS_ADDRESS": "", **(environment or {}),
        }
        self.folder.chmod(0o700)
        self.display = display
        self.log = self.folder / "output.txt"
        self.window = None
        self.started = time.time()
        with self.log.open("wb") as log:
            self.process = subprocess.Popen([str(self.bundle / "Contents/MacOS/Quillmere"), *map(os.fsencode, arguments)],
                                            env=self.environment, stdout=log, stderr=log)

    def _bundle(self, page, sparse, folders):
        """The built bundle, or a copy with a page of the tests' own, empty files of given sizes and folders beside it."""
        if page is None:
            return BUNDLE
        copy = self.folder / "Quillmere.app"
        shutil.copytree(BUNDLE, copy, copy_function=link_or_copy, ignore=lambda at, names: (
            ["app"] if Path(at).name == "Resources" else []))
        shutil.copytree(PAGES / page, copy / "Contents/Resources/app")
        for name, size in sparse.items():
            with (copy / "Contents/Resources/app" / name).open("wb") as file:
                file.truncate(size)
        for name, folder in folders.items():
            shutil.copytree(folder, copy / "Contents/Resources/app" / name)
        return copy

    def tool(self, *command):
        return output(*command, env=self.environment)

    def find_window(self):
        if self.process.poll() is not None:
            raise AssertionError(f"the program ended with {self.process.returncode}:\n{self.log.read_text(errors='replace')}")
        # By class: a title may hold anything that a file name may.
        for window in self.tool("xdotool", "search", "--class", "quillmere").split():
            properties = self.tool("xprop", "-id", window, "_QUILLMERE_PAGE_STATUS", "_NET_WM_PID")
            if '= "' in properties and re.search(rf"= {self.process.pid}\b", properties):
                return hex(int(window))
        return None

    def status(self):
        """What the page says that it shows; empty before it has said anything."""
        if not self.window:
            self.window = self.find_window()
        if not self.window:
            return ""
        text = self.tool("xprop", "-id", self.window, "-notype", "_QUILLMERE_PAGE_STATUS")
        found = re.search(r'= "(.*)"\s*$', text, re.S)
        return re.sub(r"\\(.)", r"\1", found.group(1)) if found else ""

    def wait_status(self, pattern, patience=PATIENCE):
        return until(f"the page to show {pattern!r} (now {self.status()!r})",
                     lambda: re.search(pattern, self.status()) and self.status(), patience)

    def result(self):
        try:
            return json.loads(self.status())
        except ValueError:
            return {}

    def wait_result(self, test=lambda r: r.get("state") in ("done", "failed"), patience=PATIENCE):
        """The report of the driver page, once it has come to an end."""
        def look():
            report = self.result()
            return report if report and test(report) else None
        report = until(f"the page's report (now {self.status()!r})", look, patience)
        if report.get("state") == "failed":
            raise AssertionError(report["error"])
        return report

    def keys(self, *names):
        self.tool("xdotool", "windowactivate", "--sync", self.window)
        for name in names:
            self.tool("xdotool", "key", name)

    def picture(self, path):
        self.tool("import", "-window", self.window, str(path))
        return Path(path)

    def web_process(self):
        return next((pid for pid in children(self.process.pid)
                     if output("ps", "-o", "comm=", "-p", str(pid)).startswith("WebKitWebProces")), None)

    def close(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            try:
                self.process.wait(20)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)


def open_files(pid):
    """What the process's descriptors stand for."""
    links = []
    for number in os.listdir(f"/proc/{pid}/fd"):
        try:
            links.append(os.readlink(f"/proc/{pid}/fd/{number}"))
        except OSError:  # closed meanwhile
            pass
    return links


class EndToEnd(unittest.TestCase):
    """A test class with one display; every program that a test started is ended after it."""

    @classmethod
    def setUpClass(cls):
        cls.display = Display()

    @classmethod
    def tearDownClass(cls):
        cls.display.close()

    def setUp(self):
        self.running = None
        self.files = Path(tempfile.mkdtemp(prefix="quillmere-files-"))
        self.addCleanup(shutil.rmtree, self.files, ignore_errors=True)

    def program(self, *arguments, **options):
        """Starts the program; the one that this test had before is ended."""
        if self.running:
            self.running.close()
        else:
            self.addCleanup(lambda: self.running and self.running.close())
        self.running = Program(self.display, *arguments, **options)
        return self.running

    def steps(self, text, **options):
        """Runs these steps in the driver page and returns (program, what they returned)."""
        file = self.files / "test.steps.js"
        file.write_text(text)
        program = self.program(file, page="driver", **options)
        return program, program.wait_result()["value"]
