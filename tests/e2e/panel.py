"""One of the two panels of the main window, as it is seen and used."""

import a11y
import desktop
from desktop import wait_for


class Panel:
    """One of the two panels; everything is looked up anew each time."""

    def __init__(self, program, number):
        self.program = program
        self.number = number

    @property
    def frame(self):
        # The second panel is made first.
        frames = [child for child in self.program.main().children() if child.role == "frame"]
        return frames[2 - self.number]

    @property
    def extents(self):
        return self.frame.extents

    def part(self, role, name=None):
        return self.frame.find(role, name)

    @property
    def list(self):
        return self.part(None, "File list")

    @property
    def tree(self):
        return self.part("tree", "Folder tree")

    # --- Texts.

    def _label(self, place):
        labels = sorted(self.part("status bar").find_all("label"), key=lambda label: label.extents[0])
        return labels[place].name

    @property
    def left_text(self):
        """Free space, or the selection."""
        return self._label(0)

    @property
    def right_text(self):
        """Counts of the folder."""
        return self._label(1)

    def wait_left(self, text):
        wait_for(lambda: self.left_text == text, lambda: f"{text!r}; it is {self.left_text!r}")

    def wait_right(self, text):
        wait_for(lambda: self.right_text == text, lambda: f"{text!r}; it is {self.right_text!r}")

    def wait_folder(self, path):
        """Waits until a folder is shown and loaded."""
        wait_for(lambda: self.path == path and self.right_text.startswith(path + " has "),
                 lambda: f"{path}; it is {self.path}, {self.right_text!r}")

    # --- Bars.

    @property
    def components(self):
        return [button.name for button in self.part("filler", "Path bar").find_all("push button")]

    @property
    def path(self):
        return "".join(self.components)[:-1] or "/"

    @property
    def drives(self):
        return [button.name for button in self.part("frame", "Drive bar").find_all("push button")]

    def press_component(self, name):
        desktop.click(*self.part("filler", "Path bar").find("push button", name).middle)

    def press_drive(self, name):
        desktop.click(*self.part("frame", "Drive bar").find("push button", name).middle)

    # --- The listing.

    def header(self, name):
        return next(item for item in self.list.children() if item.role == "column header" and item.name == name)

    def cells(self, column="Name"):
        """The cells of a column that are on the screen, from top to bottom."""
        def look():
            table = self.list
            x, y, width, height = self.header(column).extents
            bottom = table.extents[1] + table.extents[3]
            found = []
            place = y + height + 2
            while place < bottom:
                cell = table.at(x + width // 2, place)
                if cell is None:
                    break
                found.append(cell)
                _, top, _, tall = cell.extents
                place = top + tall + 2
            return found
        return steady(look)

    def column(self, column="Name"):
        return steady(lambda: [cell.name for cell in self.cells(column)])

    @property
    def names(self):
        return self.column("Name")

    def wait_names(self, *names):
        wait_for(lambda: self.names == list(names), lambda: f"{names}; there is {self.names}")

    def cell(self, name, column="Name"):
        """The cell of an item; waits for it."""
        def look():
            names = self.names
            if name not in names:
                return None
            cells = self.cells(column)
            return cells[names.index(name)] if len(cells) == len(names) else None
        return wait_for(look, lambda: f"{name!r} in the listing of {self.path}: {self.names}")

    @property
    def selected(self):
        return steady(lambda: [cell.name for cell in self.cells() if cell.has("selected")])

    def empty_place(self):
        """A place of the listing below its rows."""
        x, _, width, _ = self.list.extents
        _, top, _, height = self.cells()[-1].extents
        return x + width // 2, top + height + 60

    def click_row(self, name, **options):
        desktop.click(*self.cell(name).middle, **options)

    def open_row(self, name):
        """Double-clicks on an item of the listing."""
        self.click_row(name, repeat=2)

    def select(self, *names):
        """Selects items, and with that gives the listing the keyboard."""
        for number, name in enumerate(names):
            self.click_row(name, held=("ctrl",) if number else ())
        wait_for(lambda: sorted(self.selected) == sorted(names), lambda: f"{names} selected; it is {self.selected}")

    def row_menu(self, name):
        """Opens the context menu of an item."""
        self.click_row(name, button=3)
        return self.program.popup()

    # --- The tree.

    def branches(self):
        """The folders that the tree shows, from top to bottom, as name and accessible."""
        def look():
            return [(item.name, item) for item in self.tree.children()
                    if item.role == "tree item" and item.name and item.extents[3] > 0]
        return steady(look)

    @property
    def branch_names(self):
        return [name for name, _ in self.branches()]

    def branch(self, name):
        return wait_for(lambda: dict(self.branches()).get(name),
                        lambda: f"{name!r} in the tree: {self.branch_names}")

    def click_branch(self, name, **options):
        # The middle of a row is beside a short name, which is all the same to a row, but not to an eye.
        x, y, _, height = self.branch(name).extents
        desktop.click(x + 30, y + height // 2, **options)

    def open_branch(self, name):
        self.click_branch(name, repeat=2)

    def branch_menu(self, name):
        self.click_branch(name, button=3)
        return self.program.popup()


def steady(look):
    """The result of a look at things that may be replaced while one looks."""
    def once():
        try:
            return (look(),)
        except (a11y.Gone, IndexError, StopIteration):
            return None
    return wait_for(once, "a look that nothing disturbs")[0]
