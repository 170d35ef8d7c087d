"""A window full of one drag: run with the addresses to offer; prints "ready" once it is on the screen."""

import sys

import gi

gi.require_version("Gtk", "4.0")
from gi.repository import Gdk, Gio, GLib, Gtk  # noqa: E402


def content(addresses):
    if all(address.startswith("file:") for address in addresses):
        files = Gdk.FileList.new_from_list([Gio.File.new_for_uri(address) for address in addresses])
        return Gdk.ContentProvider.new_for_value(files)
    return Gdk.ContentProvider.new_for_bytes("text/uri-list", GLib.Bytes.new("".join(a + "\r\n" for a in addresses).encode()))


def activate(application):
    window = Gtk.ApplicationWindow(application=application, title="drag source", default_width=150, default_height=150)
    label = Gtk.Label(label="drag me")
    source = Gtk.DragSource(actions=Gdk.DragAction.COPY)
    source.connect("prepare", lambda *_: content(sys.argv[1:]))
    label.add_controller(source)
    window.set_child(label)
    window.present()
    GLib.timeout_add(800, lambda: print("ready", flush=True))


application = Gtk.Application(flags=Gio.ApplicationFlags.NON_UNIQUE)
application.connect("activate", activate)
application.run([])
