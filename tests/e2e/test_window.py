"""The window: drop, keys, crash, full screen, a second start, the end of the process, and what it looks like."""

import os
import re
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

    def test_full_screen_twice_is_there_and_back(self):
        program, value = self.steps("""
            const from = api.messages.length;
            api.post({ type: 'max' }); api.post({ type: 'max' });
            await api.sleep(1500);
            return api.messages.slice(from).filter(m => m.type === 'state').map(m => m.maximized).at(-1) ?? false""")
        self.assertFalse(value)
        self.assertNotIn("FULLSCREEN", program.tool("xprop", "-id", program.window, "_NET_WM_STATE"))

    def test_the_main_menu_is_used_by_keyboard(self):
        program, _ = self.steps("return 1")
        program.keys("F10")
        time.sleep(1)
        program.keys("Down", "Return")  # the second item
        until("the settings", lambda: self.popups(program) == 1)

    def popups(self, program):
        """How many surfaces that no window manager looks after are to be seen."""
        children = re.findall(r"^\s+(0x[0-9a-f]+) .* (\d+)x(\d+)\+", program.tool("xwininfo", "-root", "-children"), re.M)
        facts = [program.tool("xwininfo", "-id", window) for window, width, height in children
                 if int(width) > 60 and int(height) > 60]
        return sum("IsViewable" in each and "Override Redirect State: yes" in each for each in facts)

    def test_a_size_changed_just_before_the_end_is_kept(self):
        for end in ("ctrl+q", signal.SIGTERM):
            program = self.started(home=self.files)
            width = 901 if end == "ctrl+q" else 902
            program.tool("xdotool", "windowactivate", "--sync", program.window, "windowsize", "--sync", program.window,
                         str(width), "700", "sleep", "0.1")
            if end == signal.SIGTERM:
                program.process.send_signal(end)
            else:
                program.tool("xdotool", "key", end)
            self.assertEqual(program.process.wait(30), 0)
            stored = (self.files / "config/app.quillmere.viewer.plist").read_bytes()
            self.assertIn(f"{width} 700".encode(), stored)

    def test_other_programs_read_large_selections(self):
        program, _ = self.steps("""
            const area = document.body.appendChild(document.createElement('pre'));
            area.textContent = 'wort '.repeat(200000);
            getSelection().selectAllChildren(area);
            await api.sleep(500);
            return getSelection().toString().length""")
        program.keys("ctrl+c")
        for selection in ("primary", "clipboard"):
            for target in ("UTF8_STRING", "STRING"):
                text = program.tool("timeout", "30", "xclip", "-o", "-selection", selection, "-t", target)
                self.assertEqual(len(text.strip()), 999_999, f"{selection} {target}")
        program.keys("F11")  # it lives
        program.wait_result(lambda r: r.get("last", {}).get("type") == "state" and r["last"]["maximized"])

    def test_the_menu_key_opens_no_editing_menu(self):
        program, _ = self.steps("return 1")
        for key in ("Menu", "shift+F10"):
            program.keys(key)
            time.sleep(1)
            self.assertEqual(self.popups(program), 0, key)

    def test_the_settings_open_and_close(self):
        program, _ = self.steps("return 1")
        program.keys("ctrl+comma")
        until("the settings", lambda: self.popups(program) == 1)
        program.keys("ctrl+comma")
        until("the settings to go", lambda: self.popups(program) == 0)
        program.keys("ctrl+comma")
        until("the settings", lambda: self.popups(program) == 1)
        program.keys("Escape")
        until("the settings to go", lambda: self.popups(program) == 0)

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
        program.wait_status("^start")
        picture = self.files / "start.png"

        def colours():
            return int(program.tool("identify", "-format", "%k", str(program.picture(picture))) or 0)

        self.assertGreater(until("a picture with more than a ground", lambda: max(0, colours() - 300), patience=20), 0)


if __name__ == "__main__":
    unittest.main()
