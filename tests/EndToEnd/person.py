"""What the end-to-end tests share: a person before the window, with eyes, a mouse and a keyboard.

The window is read as a screen reader reads it. Runs below own-session.
"""

import os
import re
import subprocess
import sys
import time
from pathlib import Path

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, Gio, GLib  # noqa: E402  the version comes first

LIMIT_SECONDS = 30
SESSION = Path(os.environ["TALLYROOM_SESSION"])
HOME = Path(os.environ["HOME"])
TRASH = Path(os.environ["XDG_DATA_HOME"]) / "Trash"
CONFIRM = "Mettre à la corbeille"
UNDO = "Annuler la suppression"

# AT-SPI 2.56 calls it by another name, and newer toolkits one with a menu.
ROLES = {"push button": "button", "push button menu": "button", "button menu": "button"}


def contents(folder):
    """Everything below a folder, by relative path, with what tells one file from another."""
    found = {}
    for path in sorted(folder.rglob("*")):
        stat = path.lstat()
        content = os.readlink(path) if path.is_symlink() else path.read_bytes() if path.is_file() else None
        found[str(path.relative_to(folder))] = (stat.st_mode, stat.st_ino, stat.st_mtime_ns, content)
    return found


def expect_equal(what, actual, wanted):
    if actual != wanted:
        differing = sorted(key for key in actual.keys() | wanted.keys() if actual.get(key) != wanted.get(key))
        sys.exit(f"{what}: {differing} differ")


class FileManager:
    """Stands in for the desktop's own, and writes down what it is asked to show."""

    NAME = "org.freedesktop.FileManager1"

    def __init__(self):
        self.shown = []
        bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        offered = Gio.DBusNodeInfo.new_for_xml(
            f'<node><interface name="{self.NAME}"><method name="ShowItems">'
            '<arg type="as" direction="in"/><arg type="s" direction="in"/></method></interface></node>')
        bus.register_object("/" + self.NAME.replace(".", "/"), offered.interfaces[0], self.show, None, None)
        Gio.bus_own_name_on_connection(bus, self.NAME, Gio.BusNameOwnerFlags.NONE, None, None)

    def show(self, _bus, _sender, _path, _interface, _method, arguments, call):
        self.shown += arguments.unpack()[0]
        call.return_value(None)

    def has_shown(self, *urls):
        while GLib.MainContext.default().iteration(False):
            pass
        return self.shown == list(urls)


class Item:
    """Something that is to be seen now."""

    def __init__(self, accessible, states):
        self.accessible, self.states = accessible, states
        role = accessible.get_role_name()
        self.role = ROLES.get(role, role)
        self.name = accessible.get_name() or ""

    def box(self):
        return self.accessible.get_extents(Atspi.CoordType.SCREEN)

    def middle(self):
        box = self.box()
        return box.x + box.width // 2, box.y + box.height // 2


class Window:
    """The program, its keys, its mouse, and what it tells assistive technology."""

    def __init__(self, program, *arguments):
        self.process = subprocess.Popen([program, *map(str, arguments)])

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()

    def wait(self, what, condition):
        limit = time.monotonic() + LIMIT_SECONDS
        while not (result := condition()):
            if self.process.poll() is not None:
                sys.exit(f"The program has ended with {self.process.returncode}, waiting for: {what}")
            if time.monotonic() > limit:
                sys.exit(f"Did not happen: {what}. Shown, * has the keyboard: "
                         f"{[item.name + '*' * ('focused' in item.states) for item in self.shown() if item.name]}")
            time.sleep(0.02)
        return result

    def wait_until_open(self):
        """Until the window has come and has the keyboard."""
        self.wait("the window is open and active", lambda: any(
            item.name == "Tallyroom" and "active" in item.states for item in self.shown()))

    def popup(self):
        """Place and size of the menu that is open over the window, of which the toolkit tells nothing else."""
        def told(*command):
            return subprocess.run(["xdotool", *command], check=False, capture_output=True, text=True).stdout

        active = told("getactivewindow").strip()
        for window in told("search", "--onlyvisible", "--class", "tallyroom").split():
            if window != active:
                place = told("getwindowgeometry", "--shell", window)
                return {key: int(value) for key, value in re.findall(r"(\w+)=(\d+)", place)}
        return None

    @staticmethod
    def press(*keys):
        subprocess.run(["xdotool", "key", *keys], check=True)

    @staticmethod
    def type(text):
        subprocess.run(["xdotool", "type", "--delay", "20", text], check=True)

    @staticmethod
    def shown():
        """All that is to be seen now, what lies in front first."""
        desktop = Atspi.get_desktop(0)
        desktop.clear_cache()
        found = []
        waiting = [(desktop.get_child_at_index(i), False) for i in range(desktop.get_child_count())]
        while waiting:
            accessible, is_in_focus = waiting.pop()
            try:
                states = {state.value_nick for state in accessible.get_state_set().get_states()}
                if "showing" not in states:
                    continue  # with all that lies in it, though the rows of a hidden list claim to be shown
                item = Item(accessible, states)
                if item.role in ("list item", "table cell", "page tab") and not is_in_focus:
                    states.discard("focused")  # the current one of a list that has not the keyboard claims it too
                found.append(item)
                waiting += [(accessible.get_child_at_index(i), is_in_focus or "focused" in states)
                            for i in range(accessible.get_child_count())]
            except (AttributeError, GLib.Error):
                pass  # gone since its parent was asked
        return found

    def find(self, role, name, *states):
        """The first thing of a role whose name is this one, or matches it."""
        def fits(item):
            return item.role == role and set(states) <= item.states and (
                name.fullmatch(item.name) if isinstance(name, re.Pattern) else item.name == name)
        return next(filter(fits, self.shown()), None)

    def click(self, role, name, *states, at=None, times=1):
        """Clicks on a thing once it is there and no longer moves."""
        place = None

        def rests():
            nonlocal place
            before, item = place, self.find(role, name, "enabled", *states)
            place = item and item.middle()
            return place is not None and place == before
        self.wait(f"“{name}” can be clicked", rests)
        x, y = place if at is None else at(place)
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "--repeat", str(times), "1"], check=True)

    def find_text(self, text):
        """Something in whose name the text is a word."""
        return next((item for item in self.shown() if re.search(rf"\b{re.escape(text)}\b", item.name)), None)

    def focus(self):
        """Role and name of what has the keyboard: of a list the current row, where it has one."""
        focused = [(item.role, item.name) for item in self.shown() if "focused" in item.states and item.name]
        return next((what for what in focused if what[0] in ("list item", "table cell", "page tab")), (*focused, ("", ""))[0])

    def has_row(self, name, state=""):
        """Whether a list has a row that begins with a name, and ends with a state: ", coché"."""
        return any(item.role == "table cell" and item.name.startswith(name + ", ") and item.name.endswith(state)
                   for item in self.shown())

    def has_button(self, name, *states):
        return self.find("button", name, *states) is not None

    def leave(self):
        self.press("ctrl+q")
        if (code := self.process.wait(LIMIT_SECONDS)) != 0:
            sys.exit(f"The program left with {code}")


class Mouse:
    """All is done by pressing its first button."""

    def __init__(self, window):
        self.window = window

    def delete(self):
        self.window.click("button", "Supprimer…")

    def confirm(self):
        self.window.click("button", CONFIRM)

    def undo(self):
        self.window.click("button", UNDO)


class Keyboard:
    """All is done by the keys that the README names, and by Tab."""

    def __init__(self, window):
        self.window = window

    def go_to(self, what, is_there, key, most):
        """Presses a key until a thing has the keyboard; each press is seen before the next one."""
        for _ in range(most):
            if is_there():
                return
            before = self.window.focus()
            self.window.press(key)
            self.window.wait(f"{key} moves on to {what}", lambda: self.window.focus() != before)
        sys.exit(f"{key} does not lead to {what}, but to {self.window.focus()}")

    def delete(self):
        self.window.press("Delete")

    def confirm(self):
        self.window.wait("the trash is proposed first", lambda: self.window.has_button(CONFIRM, "focused"))
        self.window.press("Return")

    def undo(self):
        self.window.press("ctrl+z")


def remove_and_put_back(window, hand, folder, name, place, is_listed):
    """Trashes an item by its name and undoes it; `is_listed(name, state)` tells what the window shows of it."""
    def seen():
        """All but the folders around it, whose dates change."""
        return {path: what for path, what in contents(folder).items() if not place.startswith(path + "/")}

    before = seen()
    rest = {path: what for path, what in before.items() if not f"{path}/".startswith(place + "/")}
    hand.check(name)
    window.wait(f"{name} is checked", lambda: is_listed(name, ", coché"))
    hand.delete()
    window.wait("the confirmation asks", lambda: window.has_button(CONFIRM))
    expect_equal("Before the confirmation", seen(), before)
    hand.confirm()
    window.wait("an undo is offered", lambda: window.has_button(UNDO))
    expect_equal(f"The folder without {place}", seen(), rest)
    if len(list((TRASH / "info").iterdir())) != 1:
        sys.exit("The trash holds something else.")
    window.wait(f"{name} is gone", lambda: not is_listed(name))
    hand.undo()
    window.wait(f"{name} is back", lambda: is_listed(name))
    expect_equal("The folder after the undo", seen(), before)
    expect_equal("The trash after the undo", {**contents(TRASH / "files"), **contents(TRASH / "info")}, {})
