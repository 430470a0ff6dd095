"""What assistive technology is told: AT-SPI over its bus, asked anew each time, so that nothing is ever stale."""

import os

from gi.repository import Gio, GLib

from desktop import wait_for

_FLAGS = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
_PROPERTIES = "org.freedesktop.DBus.Properties"
_ATSPI = "org.a11y.atspi."
_ROOT = ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
_NULL = "/org/a11y/atspi/null"
_TIMEOUT_MS = 20000
_LABELLED_BY = 2

_STATES = {"active": 1, "checked": 4, "enabled": 8, "expanded": 10, "focused": 12, "modal": 16, "selected": 23,
           "showing": 25, "visible": 30, "read-only": 43, "default": 39}

_bus = None
_focus = {}

#: What one of the program's own pixels measures on the screen, where that has many to the inch. The program tells
#: places in its own.
scale = 1


class Gone(Exception):
    """What was asked about is not there any more."""


def _call(bus, name, path, interface, method, arguments=None):
    try:
        return bus.call_sync(name, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, _TIMEOUT_MS,
                             None).unpack()
    except GLib.Error as error:
        raise Gone(f"{path} {method}: {error.message}") from error


def begin():
    """Switches accessibility on, as a screen reader does, and connects to its bus; before any program starts."""
    global _bus
    session = Gio.DBusConnection.new_for_address_sync(os.environ["DBUS_SESSION_BUS_ADDRESS"], _FLAGS, None, None)
    launcher = ("org.a11y.Bus", "/org/a11y/bus")  # at-spi-bus-launcher, which the session bus starts
    _call(session, *launcher, _PROPERTIES, "Set",
          GLib.Variant("(ssv)", ("org.a11y.Status", "IsEnabled", GLib.Variant("b", True))))
    address, = _call(session, *launcher, "org.a11y.Bus", "GetAddress")
    _bus = Gio.DBusConnection.new_for_address_sync(address, _FLAGS, None, None)
    _call(_bus, "org.a11y.atspi.Registry", "/org/a11y/atspi/registry", _ATSPI + "Registry", "RegisterEvent",
          GLib.Variant("(s)", ("object:state-changed:focused",)))
    _bus.signal_subscribe(None, _ATSPI + "Event.Object", "StateChanged", None, "focused", Gio.DBusSignalFlags.NONE,
                          _note_focus)


def _note_focus(_bus, sender, path, _interface, _signal, arguments):
    if arguments.unpack()[1]:
        _focus[sender] = Accessible(sender, path)


def focus_told(application):
    """What the program has told last to have got the focus, or None. It is told so for the entries of a menu, too."""
    context = GLib.MainContext.default()
    while context.pending():
        context.iteration(False)
    return _focus.get(application.bus_name)


def forget_focus(application):
    focus_told(application)
    _focus.pop(application.bus_name, None)


def registry_pid():
    """The process that programs tell of each key."""
    return _call(_bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                 "GetConnectionUnixProcessID", GLib.Variant("(s)", (_ROOT[0],)))[0]


def application(pid):
    """The program with that process id, or None as long as it has not registered."""
    for child in Accessible(*_ROOT).children():
        try:
            owner, = _call(_bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                           "GetConnectionUnixProcessID", GLib.Variant("(s)", (child.bus_name,)))
        except Gone:
            continue
        if owner == pid:
            return child
    return None


class Accessible:
    """One thing on the screen, as it is told to assistive technology."""

    def __init__(self, bus_name, path):
        self.bus_name = bus_name
        self.path = path

    def __eq__(self, other):
        return isinstance(other, Accessible) and (self.bus_name, self.path) == (other.bus_name, other.path)

    def __hash__(self):
        return hash((self.bus_name, self.path))

    def __repr__(self):
        return f"<{self.role} {self.name!r}>"

    def _ask(self, interface, method, *signature_and_values):
        arguments = GLib.Variant(*signature_and_values) if signature_and_values else None
        return _call(_bus, self.bus_name, self.path, _ATSPI + interface, method, arguments)

    def _property(self, interface, name):
        return _call(_bus, self.bus_name, self.path, _PROPERTIES, "Get",
                     GLib.Variant("(ss)", (_ATSPI + interface, name)))[0]

    def _reference(self, *question):
        found = Accessible(*self._ask(*question)[0])
        return None if found.path == _NULL else found

    @property
    def name(self):
        return self._property("Accessible", "Name")

    @property
    def role(self):
        return self._ask("Accessible", "GetRoleName")[0]

    @property
    def parent(self):
        return Accessible(*self._property("Accessible", "Parent"))

    def children(self):
        return [Accessible(*child) for child in self._ask("Accessible", "GetChildren")[0] if child[1] != _NULL]

    def has(self, state):
        low, high = self._ask("Accessible", "GetState")[0]
        number = _STATES[state]
        return bool((low >> number if number < 32 else high >> (number - 32)) & 1)

    @property
    def extents(self):
        """x, y, width and height on the screen."""
        return tuple(round(place * scale) for place in self._ask("Component", "GetExtents", "(u)", (0,))[0])

    @property
    def middle(self):
        x, y, width, height = self.extents
        return x + width // 2, y + height // 2

    def at(self, x, y):
        """What is at that place of the screen inside of this, or None."""
        child = Accessible(*self._ask("Component", "GetAccessibleAtPoint", "(iiu)", (int(x / scale), int(y / scale), 0))[0])
        return None if child.path == _NULL else child

    @property
    def description(self):
        return self._property("Accessible", "Description")

    # --- A table.

    @property
    def size(self):
        """Number of rows and columns."""
        return self._property("Table", "NRows"), self._property("Table", "NColumns")

    def cell(self, row, column):
        return self._reference("Table", "GetAccessibleAt", "(ii)", (row, column))

    def column_header(self, column):
        return self._ask("Table", "GetColumnDescription", "(i)", (column,))[0]

    def child_at(self, index):
        return self._reference("Accessible", "GetChildAtIndex", "(i)", (index,))

    def index_of(self, row, column):
        """The number of a cell among all children."""
        return self._ask("Table", "GetIndexAt", "(ii)", (row, column))[0]

    def row_of(self, index):
        return self._ask("Table", "GetRowAtIndex", "(i)", (index,))[0]

    def column_of(self, index):
        return self._ask("Table", "GetColumnAtIndex", "(i)", (index,))[0]

    @property
    def selected_rows(self):
        return self._ask("Table", "GetSelectedRows")[0]

    def select_row(self, row, on=True):
        return self._ask("Table", "AddRowSelection" if on else "RemoveRowSelection", "(i)", (row,))[0]

    # --- What can be done.

    @property
    def actions(self):
        return [action[0] for action in self._ask("Action", "GetActions")[0]]

    def do(self, action):
        """Does an action by its name."""
        return self._ask("Action", "DoAction", "(i)", (self.actions.index(action),))[0]

    def grab_focus(self):
        return self._ask("Component", "GrabFocus")[0]

    def set_text(self, text):
        return self._ask("EditableText", "SetTextContents", "(s)", (text,))[0]

    def labels(self):
        """What names it, by relation."""
        return [Accessible(*target) for kind, targets in self._ask("Accessible", "GetRelationSet")[0]
                if kind == _LABELLED_BY for target in targets]

    @property
    def text(self):
        """The text of an edit field."""
        count = self._property("Text", "CharacterCount")
        return self._ask("Text", "GetText", "(ii)", (0, count))[0]

    @property
    def value(self):
        """The value of a progress bar."""
        return self._property("Value", "CurrentValue")

    def walk(self, closed=("table", "tree", "tree table")):
        """This and all that is in it. What is in lists and trees is left out."""
        yield self
        if self.role not in closed:
            for child in self.children():
                yield from child.walk(closed)

    def find_all(self, role=None, name=None):
        return [item for item in self.walk() if (role is None or item.role == role)
                and (name is None or item.name == name)]

    def find(self, role=None, name=None):
        """The first with that role and name; waits for it."""
        def look():
            try:
                found = self.find_all(role, name)
            except Gone:
                return None
            return found[0] if found else None
        return wait_for(look, lambda: f"{role} {name!r} in {self!r}")
