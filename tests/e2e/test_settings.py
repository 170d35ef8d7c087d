"""The settings panel as assistive tools find it, used through them and by keyboard."""

import json
import os
import plistlib
import signal
import subprocess
import time
import unittest

from gi.repository import Gio, GLib
from harness import EndToEnd, until


class Tree:
    """What the programs on a bus tell assistive tools; an element is (bus name, path)."""

    ROOT = ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")

    def __init__(self, session):
        address = self._connect(session).call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None,
                                                   None, Gio.DBusCallFlags.NONE, -1, None).unpack()[0]
        self.bus = self._connect(address)

    @staticmethod
    def _connect(address):
        flags = Gio.DBusConnectionFlags
        return Gio.DBusConnection.new_for_address_sync(
            address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None)

    def call(self, element, interface, method, arguments=None):
        name, path = element
        return self.bus.call_sync(name, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, 10_000,
                                  None).unpack()

    def get(self, element, interface, name):
        """None where the element has no such interface."""
        try:
            return self.call(element, "org.freedesktop.DBus.Properties", "Get",
                             GLib.Variant("(ss)", ("org.a11y.atspi." + interface, name)))[0]
        except GLib.Error:
            return None

    def set_value(self, element, value):
        self.call(element, "org.freedesktop.DBus.Properties", "Set",
                  GLib.Variant("(ssv)", ("org.a11y.atspi.Value", "CurrentValue", GLib.Variant("d", value))))

    def children(self, element):
        return self.call(element, "org.a11y.atspi.Accessible", "GetChildren")[0]

    def role(self, element):
        return self.call(element, "org.a11y.atspi.Accessible", "GetRoleName")[0]

    def name(self, element):
        return self.get(element, "Accessible", "Name")

    def checked(self, element):
        return bool(self.call(element, "org.a11y.atspi.Accessible", "GetState")[0][0] & 1 << 4)

    def below(self, element):
        """All elements below this one, in order."""
        for child in self.children(element):
            yield child
            yield from self.below(child)

    def find(self, role, name, within=None):
        try:
            return next((each for each in self.below(within or self.ROOT)
                         if self.role(each) == role and self.name(each) == name), None)
        except GLib.Error:  # an element has gone meanwhile
            return None


class Settings(EndToEnd):
    maxDiff = None

    def setUp(self):
        super().setUp()
        daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL, text=True, env={**os.environ, "DISPLAY": self.display.name})
        self.addCleanup(daemon.stdout.close)
        self.addCleanup(daemon.wait)
        self.addCleanup(daemon.kill)
        address = daemon.stdout.readline().strip()
        self.window = self.program(home=self.files, environment={"DBUS_SESSION_BUS_ADDRESS": address})
        self.window.wait_status("^start")
        self.window.keys("ctrl+comma")
        self.tree = Tree(address)
        self.panel = until("the panel", lambda: self.tree.find("group", "Settings"))

    def stored(self):
        file = self.files / "config/app.quillmere.viewer.plist"
        values = plistlib.loads(file.read_bytes()) if file.exists() else {}
        return json.loads(values.get("Quillmere.appearance", b"{}"))

    def control(self, role, name):
        return self.tree.find(role, name, self.panel)

    def test_its_items_have_roles_names_and_values_in_order(self):
        found = []
        inside_buttons = {part for each in self.tree.below(self.panel) if self.tree.role(each) == "button"
                          for part in self.tree.below(each)}
        for each in self.tree.below(self.panel):
            if each in inside_buttons:
                continue
            role, name = self.tree.role(each), self.tree.name(each)
            if role == "slider":
                found.append((role, name, *(self.tree.get(each, "Value", value)
                                            for value in ("MinimumValue", "CurrentValue", "MaximumValue"))))
            elif role == "switch":
                found.append((role, name, self.tree.checked(each)))
            elif role in ("label", "button", "separator"):
                found.append((role, name) if role != "separator" else (role,))
        line = ("separator",)
        self.assertEqual(found, [
            ("label", "Appearance"), line, ("label", "Window color"), ("button", "Window color"), line,
            ("label", "Background photo"), ("button", "Alps"), ("button", "Mountain Valley"), ("button", "Snow Peaks"),
            ("button", "Glass Drop"), ("button", "Choose photo…"), ("button", "None"),
            ("label", "Photo opacity"), ("label", "100%"), ("slider", "Photo opacity", 0, 1, 1),
            ("label", "Photo blur"), ("label", "0%"), ("slider", "Photo blur", 0, 0, 100), line,
            ("label", "Air button outlines"), ("switch", "Air button outlines", True),
            ("label", "Show zoom buttons"), ("switch", "Show zoom buttons", False),
            ("button", "Default app settings…"), line, ("button", "Uninstall Quillmere…")])

    def test_changes_are_shown_at_once_and_outlive_a_crash_a_second_later(self):
        self.tree.set_value(self.control("slider", "Photo opacity"), 0.5)
        self.tree.set_value(self.control("slider", "Photo blur"), 37.6)
        for text in ("50%", "37%"):
            until(text, lambda text=text: self.control("label", text))
        self.window.keys("Tab", "Tab", "Return")  # past the colour and the first photo
        time.sleep(1)
        self.window.process.send_signal(signal.SIGKILL)
        self.window.process.wait()
        self.assertEqual(self.stored(), {"tint": "#141614", "photo": "bg2.jpg", "photoOpacity": 0.5, "photoBlur": 37.6,
                                         "airOutline": True, "showZoom": False})


if __name__ == "__main__":
    unittest.main()
