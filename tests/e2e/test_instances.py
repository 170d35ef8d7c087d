"""Several starts of the program in one desktop session, and odd systems to start on."""

import os
import re
import signal
import subprocess
import unittest
from pathlib import Path

import fixtures
from harness import EndToEnd, until


class Bus:
    """A session bus of the test's own."""

    def __init__(self):
        self.daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL, text=True)
        self.address = self.daemon.stdout.readline().strip()

    def close(self):
        self.daemon.kill()
        self.daemon.wait()
        self.daemon.stdout.close()


class Instances(EndToEnd):
    def setUp(self):
        super().setUp()
        self.bus = Bus()
        self.addCleanup(self.bus.close)
        for name in ("first.txt", "second.txt"):
            fixtures.text(self.files / name, name)
        self.first = self.program(self.files / "first.txt", environment={"DBUS_SESSION_BUS_ADDRESS": self.bus.address})
        self.first.wait_status("shown text first.txt")

    def start_again(self, *arguments, **environment):
        program = str(self.first.bundle / "Contents/MacOS/Quillmere")
        second = subprocess.Popen([program, *map(str, arguments)], env={**self.first.environment, **environment},
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

        def end():
            if second.poll() is None:
                second.terminate()
            second.wait()
        self.addCleanup(end)
        return second

    def test_the_first_gets_the_file_and_the_desktops_tokens(self):
        monitor = subprocess.Popen(["dbus-monitor", "--address", self.bus.address, "destination=app.quillmere.viewer"],
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(monitor.stdout.close)
        self.addCleanup(monitor.wait)
        self.addCleanup(monitor.kill)
        monitor.stdout.readline()  # it listens
        second = self.start_again(self.files / "second.txt", DESKTOP_STARTUP_ID="test-7_TIME1", XDG_ACTIVATION_TOKEN="token-7")
        self.assertEqual(second.wait(30), 0)
        self.first.wait_status("shown text second.txt")
        monitor.terminate()
        told = monitor.stdout.read()
        self.assertRegex(told, r'(?s)"desktop-startup-id".*?"test-7_TIME1"')
        self.assertRegex(told, r'(?s)"activation-token".*?"token-7"')

    def test_a_busy_first_is_waited_for(self):
        os.kill(self.first.process.pid, signal.SIGSTOP)
        try:
            second = self.start_again(self.files / "second.txt")
            with self.assertRaises(subprocess.TimeoutExpired):
                second.wait(4)
        finally:
            os.kill(self.first.process.pid, signal.SIGCONT)
        self.assertEqual(second.wait(30), 0)
        self.first.wait_status("shown text second.txt")

    def test_what_a_silent_first_was_given_is_withdrawn(self):
        os.kill(self.first.process.pid, signal.SIGSTOP)
        try:
            second = self.start_again(self.files / "second.txt")
            until("the second's own window", lambda: self.windows_of(second.pid))
        finally:
            os.kill(self.first.process.pid, signal.SIGCONT)
        self.assertIsNone(second.poll())
        third = self.start_again()  # what comes later is answered later
        self.assertEqual(third.wait(30), 0)
        self.assertRegex(self.first.status(), "first.txt")

    def test_a_first_that_ends_meanwhile_is_replaced(self):
        os.kill(self.first.process.pid, signal.SIGSTOP)
        second = self.start_again(self.files / "second.txt")
        with self.assertRaises(subprocess.TimeoutExpired):
            second.wait(2)
        os.kill(self.first.process.pid, signal.SIGKILL)
        until("the second's own window", lambda: self.windows_of(second.pid))
        third = self.start_again()
        self.assertEqual(third.wait(30), 0)  # the second has taken the name

    def test_the_end_of_the_bus_is_not_the_programs(self):
        self.bus.close()
        with self.assertRaises(subprocess.TimeoutExpired):
            self.first.process.wait(3)
        self.first.keys("ctrl+a")
        self.assertRegex(self.first.status(), "first.txt")

    def windows_of(self, pid):
        found = self.first.tool("xdotool", "search", "--class", "quillmere").split()
        return [w for w in found if re.search(rf"= {pid}\b", self.first.tool("xprop", "-id", w, "_NET_WM_PID"))]


class OddSystems(EndToEnd):
    def test_without_user_namespaces_a_sentence_names_cause_and_remedy(self):
        bundle = Path(os.environ["QUILLMERE_BUNDLE"])
        done = subprocess.run(
            ["bwrap", "--unshare-user", "--disable-userns", "--dev-bind", "/", "/", "--proc", "/proc", "--",
             str(bundle / "Contents/MacOS/Quillmere")], timeout=60, capture_output=True, text=True, check=False,
            env={**os.environ, "DISPLAY": self.display.name, "HOME": str(self.files), "DBUS_SESSION_BUS_ADDRESS": ""})
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertRegex(done.stderr, "could not start: .*sandbox.*user namespaces")

    def test_many_files_may_be_open(self):
        fixtures.text(self.files / "a.txt")
        program = self.program(self.files / "a.txt")
        program.wait_status("^shown")
        soft, hard = re.search(r"Max open files +(\d+) +(\d+)", Path(f"/proc/{program.process.pid}/limits").read_text()).groups()
        self.assertEqual(soft, hard)


if __name__ == "__main__":
    unittest.main()
