"""Operates a window on a virtual display as a user does: finds fields and buttons by their accessible names, clicks
and types through XTest, and takes pictures."""

import os
import re
import subprocess
import time

import gi

gi.require_version("Gdk", "3.0")
from gi.repository import Gdk, Gio, GLib  # noqa: E402

TIMEOUT = 30  # seconds
ROOT = "/org/a11y/atspi/accessible/root"

# Numbers of AtspiRole, AtspiStateType and AtspiCoordType.
CHECK_BOX = 7
BUTTONS = {CHECK_BOX, 43, 88}  # push button, link
FIELDS = {40, 61, 79}  # password text, text, entry
FRAME = 23
SENSITIVE, SHOWING = 24, 25
ON_SCREEN = 0


def start_display():
    """Starts the display and the accessibility service, which end with this process's session. Sets DISPLAY. Returns
    the connection to the service."""
    reader, writer = os.pipe()
    subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", "1024x768x24", "-r", "-nolisten", "tcp"],
                     pass_fds=[writer], stderr=subprocess.DEVNULL)
    os.environ["DISPLAY"] = ":" + os.read(reader, 16).decode().strip()
    session = Gio.bus_get_sync(Gio.BusType.SESSION)
    service = Thing(session, "org.a11y.Bus", "/org/a11y/bus")
    on = GLib.Variant("(ssv)", ("org.a11y.Status", "IsEnabled", GLib.Variant("b", True)))
    service.call("org.freedesktop.DBus.Properties", "Set", on)
    address = service.call("org.a11y.Bus", "GetAddress")[0]
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    connection = Gio.DBusConnection.new_for_address_sync(address, flags)
    # Programs report their pages only if someone listens.
    registry = Thing(connection, "org.a11y.atspi.Registry", "/org/a11y/atspi/registry")
    registry.call("org.a11y.atspi.Registry", "RegisterEvent", GLib.Variant("(sass)", ("object:", [], "")))
    Gdk.init([])
    return connection


def wait_for(what, condition):
    end = time.monotonic() + TIMEOUT
    while time.monotonic() < end:
        if result := condition():
            return result
        time.sleep(0.1)
    raise TimeoutError("no " + what)


class Thing:
    """An accessible object. A call to one that no longer exists returns None."""

    def __init__(self, connection, owner, path):
        self.connection, self.owner, self.path = connection, owner, path

    def call(self, interface, method, arguments=None):
        try:
            reply = self.connection.call_sync(self.owner, self.path, interface, method, arguments, None, 0, 5000)
            return reply.unpack()
        except GLib.Error:
            return None

    def _property(self, interface, name):
        return self.call("org.freedesktop.DBus.Properties", "Get", GLib.Variant("(ss)", (interface, name)))

    def children(self):
        """One by one: GetChildren of GTK omits the page, which belongs to another process."""
        count = (self._property("org.a11y.atspi.Accessible", "ChildCount") or [0])[0]
        found = (self.call("org.a11y.atspi.Accessible", "GetChildAtIndex", GLib.Variant("(i)", (i,)))
                 for i in range(count))
        return [Thing(self.connection, *child[0]) for child in found if child]

    def role(self):
        return (self.call("org.a11y.atspi.Accessible", "GetRole") or [None])[0]

    def name(self):
        """The first line, without marks of direction and the characters of icon fonts. A field whose label is an icon
        has the name of its placeholder."""
        name = (self._property("org.a11y.atspi.Accessible", "Name") or [""])[0]
        name = re.sub("[\u200e\u200f\u2066-\u2069\ue000-\uf8ff]", "", name).strip().partition("\n")[0]
        if name or self.role() not in FIELDS:
            return name
        attributes = self.call("org.a11y.atspi.Accessible", "GetAttributes")
        return attributes[0].get("placeholder-text", "") if attributes else ""

    def takes_input(self):
        states = self.call("org.a11y.atspi.Accessible", "GetState")
        return states is not None and all(states[0][0] >> state & 1 for state in (SENSITIVE, SHOWING))

    def area(self):
        """Left, top, width, height."""
        found = self.call("org.a11y.atspi.Component", "GetExtents", GLib.Variant("(u)", (ON_SCREEN,)))
        return found[0] if found else None

    def length(self):
        return (self._property("org.a11y.atspi.Text", "CharacterCount") or [None])[0]


class Hand:
    """Pictures are saved as PICTURES-1.png, PICTURES-2.png, …"""

    def __init__(self, connection, pictures, window):
        self.window = window  # the process that has started it
        self.desktop = Thing(connection, "org.a11y.atspi.Registry", ROOT)
        self.pictures = pictures
        self.count = 0

    def click(self, name):
        """Clicks a button, link or check box, and waits until it is gone or the window shows something else."""
        thing = self._find(name, BUTTONS)
        before = self.names()
        self._press(thing, name)
        if thing.role() != CHECK_BOX:
            wait_for(f"end of '{name}'", lambda: self.window.poll() is not None or thing.role() is None or
                     self.names() != before)

    def write(self, name, text):
        """Clicks the field and types into it, each character when the last one is shown. Three clicks select what it
        contains."""
        field = self._find(name, FIELDS)
        self._press(field, name, 3 if field.length() else 1)
        for count, character in enumerate(text, 1):
            subprocess.run(["xdotool", "type", character], check=True)
            wait_for(f"character {count} in '{name}'", lambda count=count: field.length() == count)

    def picture(self):
        if frame := self._frame():
            self.count += 1
            picture = Gdk.pixbuf_get_from_window(Gdk.get_default_root_window(), *frame)
            picture.savev(f"{self.pictures}-{self.count}.png", "png", [], [])

    def names(self):
        """What the window shows: roles and names."""
        return sorted({f"{thing.role()} '{name}'" for thing in self._things() if (name := thing.name())})

    def _find(self, name, roles):
        """Waits until the object takes input and no longer moves."""
        where = None

        def found():
            nonlocal where
            if self.window.poll() is not None:
                raise RuntimeError(f"the window ended before '{name}' was shown")
            for thing in self._things():
                if thing.role() in roles and thing.name() == name and thing.takes_input():
                    before, where = where, thing.area()
                    return thing if where == before else None
            return None

        return wait_for(f"'{name}'", found)

    def _press(self, thing, name, clicks=1):
        x, y, width, height = thing.area()
        left, top, all_width, all_height = self._frame()
        if not (left <= x and top <= y and x + width <= left + all_width and y + height <= top + all_height):
            raise RuntimeError(f"'{name}' is outside the window: {x}, {y}, {width}, {height}")
        self.picture()
        subprocess.run(["xdotool", "mousemove", str(x + width // 2), str(y + height // 2), "click", "--delay", "50",
                        "--repeat", str(clicks), "1"], check=True)

    def _frame(self):
        for program in self.desktop.children():
            for window in program.children():
                if window.role() == FRAME:
                    return window.area()
        return None

    def _things(self):
        pending = [self.desktop]
        while pending:
            thing = pending.pop()
            yield thing
            pending.extend(reversed(thing.children()))
