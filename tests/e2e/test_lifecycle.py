"""The installed copy on a desktop of its own: a fresh home, a private bus, another application beside it."""

import os
import plistlib
import re
import shutil
import subprocess
import unittest
from pathlib import Path

from harness import BUNDLE, PAGES, EndToEnd, Program, link_or_copy, output, until

ENTRY = "app.quillmere.viewer.desktop"
PREVIEWER = "org.gnome.NautilusPreviewer"
PREVIEW_PATH = "/org/gnome/NautilusPreviewer"
SAMPLE = BUNDLE / "Contents/Resources/samples/Lake report.pdf"


class Desktop:
    """A home, data folders and a session bus that nothing else uses."""

    def __init__(self, folder, display):
        self.home = folder / "home"
        self.data = self.home / ".local/share"
        self.bundle = self.home / "Applications/Quillmere.app"
        system = folder / "system"
        run = folder / "run"
        for made in (self.home, system / "applications", run):
            made.mkdir(parents=True)
        run.chmod(0o700)
        (system / "applications/paper.desktop").write_text(
            "[Desktop Entry]\nType=Application\nName=Paper\nExec=true %f\nMimeType=application/pdf;text/plain;inode/directory;\n")
        subprocess.run(["update-desktop-database", str(system / "applications")], check=True)
        # The types of files are the system's, its applications are not.
        for folder in ("mime", "glib-2.0", "icons"):
            (system / folder).symlink_to(Path("/usr/share") / folder)
        self.environment = {
            **{k: v for k, v in os.environ.items() if not k.startswith(("XDG_", "DBUS_"))},
            "HOME": str(self.home), "XDG_DATA_DIRS": str(system), "XDG_RUNTIME_DIR": str(run), "DISPLAY": display.name,
            **{f"XDG_{name}_HOME": str(self.home / place)
               for name, place in (("CONFIG", ".config"), ("CACHE", ".cache"), ("DATA", ".local/share"))},
            "LIBGL_ALWAYS_SOFTWARE": "1", "GTK_A11Y": "none"}
        self.bus = None

    def start_bus(self):
        self.bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"],
                                    env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.bus.stdout.readline().strip()

    def install(self, page=None):
        leave = (lambda at, names: ["app"] if page and Path(at).name == "Resources" else [])
        shutil.copytree(BUNDLE, self.bundle, copy_function=link_or_copy, ignore=leave)
        if page:
            shutil.copytree(PAGES / page, self.bundle / "Contents/Resources/app")

    def tool(self, *command):
        return output(*map(str, command), env=self.environment).strip()

    def default(self, mime):
        return self.tool("xdg-mime", "query", "default", mime)

    def close(self):
        if not self.bus:
            return
        self.bus.terminate()
        self.bus.wait()
        self.bus.stdout.close()


class InstalledProgram(Program):
    """The copy in the home's applications folder."""

    def __init__(self, display, *arguments, desktop):
        self.desktop = desktop
        super().__init__(display, *arguments, home=desktop.home, environment=desktop.environment)

    def _bundle(self, page, sparse, folders):
        return self.desktop.bundle


class Lifecycle(EndToEnd):
    def setUp(self):
        super().setUp()
        self.desktop = Desktop(self.files, self.display)
        self.addCleanup(self.desktop.close)

    def start(self, *arguments):
        if not self.desktop.bus:
            self.desktop.start_bus()
        self.running = InstalledProgram(self.display, *arguments, desktop=self.desktop)
        self.addCleanup(self.running.close)
        return self.running

    def registered(self):
        cache = self.desktop.data / "applications/mimeinfo.cache"
        until("the registration", lambda: cache.exists() and ENTRY in cache.read_text())

    def defaults_of_user(self):
        stored = self.desktop.home / ".config/app.quillmere.viewer.plist"
        return plistlib.loads(stored.read_bytes()) if stored.exists() else {}

    def windows(self, title):
        return self.desktop.tool("xdotool", "search", "--onlyvisible", "--name", title).split()

    def test_the_life_of_an_installation(self):
        desktop = self.desktop
        desktop.install()
        report = self.files / "My report.PDF"
        shutil.copy(SAMPLE, report)
        self.assertEqual(desktop.default("application/pdf"), "paper.desktop")
        program = self.start()
        program.wait_status("^start")
        self.registered()
        entry = desktop.data / "applications" / ENTRY
        self.assertNotIn("error", subprocess.run(["desktop-file-validate", entry], capture_output=True, text=True,
                                                 check=False).stdout)
        for mime in ("application/pdf", "text/plain", "text/x-python", "inode/directory"):
            self.assertEqual(desktop.default(mime), "paper.desktop", mime)
            self.assertIn(ENTRY, desktop.tool("gio", "mime", mime), mime)

        # The invitation, its panel, and what is said in the end.
        until("the invitation's record", lambda: "Quillmere.defaultPrompt.installIdentity" in self.defaults_of_user())
        program.keys("Return")
        panel = until("the panel", lambda: self.windows("Choose a File Type"))[0]
        desktop.tool("xdotool", "windowactivate", "--sync", panel)
        desktop.tool("xdotool", "type", "--delay", "30", str(report))
        desktop.tool("xdotool", "key", "Return")
        until("the default", lambda: desktop.default("application/pdf") == ENTRY)
        self.assertEqual(desktop.default("text/plain"), "paper.desktop")
        until("the panel's end", lambda: not self.windows("Choose a File Type"))
        program.keys("Return")  # answers the alert

        # The desktop's opener reaches the running window.
        subprocess.run(["gio", "open", str(report)], env=desktop.environment, check=True)
        program.wait_status("^shown pdf My report.PDF")
        recent = desktop.data / "recently-used.xbel"
        until("the list of recent files", lambda: recent.exists() and "My%20report.PDF" in recent.read_text())
        program.close()

        # Another start of the same copy neither invites again nor gives anything away.
        identity = self.defaults_of_user()["Quillmere.defaultPrompt.installIdentity"]
        program = self.start()
        program.wait_status("^start")
        self.assertEqual(desktop.default("application/pdf"), ENTRY)
        self.assertEqual(self.defaults_of_user()["Quillmere.defaultPrompt.installIdentity"], identity)

    def test_uninstalling_leaves_what_is_the_users(self):
        desktop = self.desktop
        desktop.install(page="driver")
        document = self.files / "kept.txt"
        document.write_text("mine")
        steps = self.files / "uninstall.steps.js"
        steps.write_text("api.post({type: 'uninstall'}); api.post({type: 'uninstall'}); return 1;")
        program = self.start()
        self.registered()
        config = desktop.home / ".config/mimeapps.list"
        config.parent.mkdir(exist_ok=True)
        config.write_text(f"[Default Applications]\napplication/pdf={ENTRY}\ntext/html=paper.desktop\n")
        until("the invitation's record", lambda: "Quillmere.defaultPrompt.installIdentity" in self.defaults_of_user())
        until("the window", program.status)
        program.keys("Escape")
        subprocess.run([desktop.bundle / "Contents/MacOS/Quillmere", steps], env=program.environment, check=True)
        program.wait_result()
        program.keys("Tab", "Return")
        self.assertEqual(program.process.wait(30), 0)
        self.assertFalse(desktop.bundle.exists())
        self.assertTrue((desktop.data / "Trash/files/Quillmere.app/Contents/Info.plist").exists())
        self.assertEqual(document.read_text(), "mine")
        self.assertNotIn("Quillmere.defaultPrompt.installIdentity", self.defaults_of_user())
        self.assertEqual(config.read_text(), "[Default Applications]\ntext/html=paper.desktop\n")
        left = [str(f.relative_to(desktop.data)) for f in desktop.data.rglob("*")
                if f.is_file() and "quillmere" in f.name.lower() and "Trash" not in f.parts]
        self.assertEqual(left, [])
        self.assertEqual(desktop.default("application/pdf"), "paper.desktop")


class Preview(EndToEnd):
    def setUp(self):
        super().setUp()
        self.desktop = Desktop(self.files, self.display)
        self.addCleanup(self.desktop.close)
        self.desktop.install()
        for action in ("add", "preview"):
            subprocess.run([BUNDLE.parent / "desktop-files", action, self.desktop.bundle, self.desktop.data],
                           env=self.desktop.environment, check=True)
        self.desktop.start_bus()  # it knows the services that are there

    def show(self, file, toggles="false"):
        subprocess.run(["gdbus", "call", "--session", "--timeout", "60", "--dest", PREVIEWER, "--object-path", PREVIEW_PATH,
                        "--method", "org.gnome.NautilusPreviewer2.ShowFile", file.as_uri(), "x11:1", toggles],
                       env=self.desktop.environment, check=True, stdout=subprocess.DEVNULL)

    def title(self):
        found = self.desktop.tool("xdotool", "search", "--onlyvisible", "--class", "quillmere").split()
        return self.desktop.tool("xdotool", "getwindowname", found[-1]) if found else ""

    def visible(self):
        return "true" in self.desktop.tool(
            "gdbus", "call", "--session", "--dest", PREVIEWER, "--object-path", PREVIEW_PATH, "--method",
            "org.freedesktop.DBus.Properties.Get", "org.gnome.NautilusPreviewer2", "Visible")

    def owned(self):
        return "true" in self.desktop.tool(
            "gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path", "/org/freedesktop/DBus",
            "--method", "org.freedesktop.DBus.NameHasOwner", PREVIEWER)

    def key(self, name):
        window = self.desktop.tool("xdotool", "search", "--onlyvisible", "--class", "quillmere").split()[-1]
        self.desktop.tool("xdotool", "windowactivate", "--sync", window)
        self.desktop.tool("xdotool", "key", name)

    def test_space_in_the_file_manager(self):
        first, second = self.files / "first one.txt", self.files / "second.txt"
        first.write_text("one")
        second.write_text("two")
        self.show(first)  # starts the program
        until("the first", lambda: "first one.txt" in self.title())
        self.assertTrue(self.visible())

        told = self.files / "told.txt"
        with told.open("w") as log:
            monitor = subprocess.Popen(["gdbus", "monitor", "--session", "--dest", PREVIEWER],
                                       env=self.desktop.environment, stdout=log, stderr=log)
        self.addCleanup(monitor.wait)
        self.addCleanup(monitor.terminate)
        until("the monitor", lambda: "The name" in told.read_text())
        self.key("Down")
        until("the arrow", lambda: re.search(r"SelectionEvent \(uint32 3,?\)", told.read_text()), 20)
        self.show(second)
        until("the second", lambda: "second.txt" in self.title())

        self.show(second, "true")
        until("the end", lambda: not self.owned())
        self.show(first)
        until("the first again", lambda: "first one.txt" in self.title())
        self.key("space")
        until("the end by Space", lambda: not self.owned())


if __name__ == "__main__":
    unittest.main()
