"""The window: drop, keys, crash, full screen, a second start, the end of the process, and what it looks like."""

import os
import signal
import socket
import subprocess
import sys
import time
import unittest
from pathlib import Path

from harness import EndToEnd, children, until


class Window(EndToEnd):
    def drag(self, program, *addresses):
        """Drags the addresses from another program's window onto ours."""
        source = subprocess.Popen([sys.executable, str(Path(__file__).parent / "drag_source.py"), *addresses],
                                  env=program.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(source.stdout.close)
        self.addCleanup(source.kill)
        self.assertEqual(source.stdout.readline().strip(), "ready")
        program.tool("xdotool", "search", "--sync", "--name", "^drag source$", "windowmove", "0", "0", "windowraise")
        time.sleep(0.5)
        move = ["xdotool", "mousemove", "75", "95", "sleep", "0.2", "mousedown", "1", "sleep", "0.2"]
        for step in range(1, 11):
            move += ["mousemove", str(75 + step * 60), str(95 + step * 40), "sleep", "0.06"]
        program.tool(*move, "sleep", "0.4", "mouseup", "1")
        time.sleep(0.5)
        source.kill()  # or the next drag might begin in this one's window
        source.wait()

    def started(self, *arguments, **options):
        program = self.program(*arguments, page="driver", **options)
        program.wait_result(lambda r: r.get("state") in ("ready", "message"))
        return program

    def test_dropping(self):
        for name in ("first file.txt", "second.txt"):
            (self.files / name).write_text("content")
        (self.files / "folder").mkdir()
        program = self.started()
        self.drag(program, (self.files / "first file.txt").as_uri(), (self.files / "second.txt").as_uri())
        report = program.wait_result(lambda r: r.get("last", {}).get("type") == "open")
        self.assertEqual((report["last"]["name"], report["fetched"]), ("first file.txt", 7))

        program = self.started()
        self.drag(program, "https://example.invalid/")
        self.assertNotEqual(program.result().get("last", {}).get("type"), "open")

        program = self.started()
        self.drag(program, (self.files / "folder").as_uri())
        report = program.wait_result(lambda r: r.get("last", {}).get("type") in ("open", "error"))
        self.assertEqual((report["last"]["kind"], report["last"]["name"]), ("container", "folder"))

    def test_a_killed_web_process_comes_back_with_its_document(self):
        program, value = self.steps("return api.messages.map(m => m.type)")
        first = program.result()["run"]
        for _ in range(2):
            os.kill(until("the web process", program.web_process), signal.SIGKILL)
            report = program.wait_result(lambda r: r.get("state") == "done" and r["run"] != first)
            self.assertEqual(report["value"][0], "init")
            first = report["run"]

    def test_full_screen_and_keys(self):
        program, _ = self.steps("return 1")
        program.keys("F11")
        program.wait_result(lambda r: r.get("last", {}).get("type") == "state" and r["last"]["maximized"])
        program.keys("F11")
        program.wait_result(lambda r: r.get("last", {}).get("type") == "state" and not r["last"]["maximized"])
        program.keys("ctrl+o")
        until("the open panel", lambda: program.tool("xdotool", "search", "--name", "Open File or Folder"))

    def test_closing_ends_everything(self):
        program = self.started()
        below = children(program.process.pid)
        self.assertTrue(below)
        program.keys("ctrl+w")
        self.assertEqual(program.process.wait(20), 0)
        until("the children to end", lambda: not [p for p in below if os.path.exists(f"/proc/{p}") and
                                                  " Z" not in Path(f"/proc/{p}/stat").read_text()], patience=10)
        self.assertEqual(list(program.temporary.iterdir()), [])

    def test_a_second_start_hands_its_file_over(self):
        (self.files / "later #1 100%.txt").write_text("content")
        bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(bus.stdout.close)
        self.addCleanup(bus.kill)
        environment = {"DBUS_SESSION_BUS_ADDRESS": bus.stdout.readline().strip()}
        first = self.started(environment=environment)
        second = subprocess.run([str(first.bundle / "Contents/MacOS/Quillmere"), "later #1 100%.txt"], cwd=self.files,
                                env=first.environment, timeout=60, check=False, capture_output=True)
        self.assertEqual(second.returncode, 0, second.stderr)
        report = first.wait_result(lambda r: r.get("last", {}).get("type") == "open")
        self.assertEqual((report["last"]["name"], report["fetched"]), ("later #1 100%.txt", 7))

    def test_a_bus_that_never_answers_delays_nothing_for_ever(self):
        path = str(self.files / "silent")
        with socket.socket(socket.AF_UNIX) as silent:
            silent.bind(path)
            silent.listen(8)
            self.started(environment={"DBUS_SESSION_BUS_ADDRESS": f"unix:path={path}"})


class Picture(EndToEnd):
    def test_the_window_is_not_blank(self):
        program = self.program()
        program.wait_title("^start")
        picture = self.files / "start.png"

        def colours():
            return int(program.tool("identify", "-format", "%k", str(program.picture(picture))) or 0)

        self.assertGreater(until("a picture with more than a ground", lambda: max(0, colours() - 300), patience=20), 0)


if __name__ == "__main__":
    unittest.main()
