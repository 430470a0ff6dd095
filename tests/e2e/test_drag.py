"""Dragging items with the mouse, in all arrangements."""

import os

import desktop
from desktop import Drag, holds, wait_for
from operations import MANY, MOVE, OperationTest

BLUE = (0, 0, 255)


def outlined(cell):
    """Whether a cell of a view has the outline of the place to drop on."""
    x, y, width, height = cell.extents
    colours = desktop.pixels(x, y, width, height)
    left = [row[1] for row in colours]
    return colours[1][1:].count(BLUE) == width - 1 and left[1:].count(BLUE) == height - 1


class Drags(OperationTest):
    window = 0

    def open(self, **entries):
        """Starts with panel 1 in the tree and panel 2 in its folder "d"; returns both."""
        first = super().open("drive={tree}=Tree\nwindow=%d\n" % self.window, **{"d": {}, **entries})
        second = self.program.panel(2)
        if second.extents[2]:
            second.wait_folder(self.tree)
            second.open_row("d")
            second.wait_folder(self.in_tree("d"))
        return first, second

    def grab(self, panel, *names):
        """Selects items of a listing, and takes them up."""
        panel.select(*names)
        return Drag(panel.cell(names[-1]).middle)

    def to_cell(self, drag, cell):
        drag.to(cell.middle)
        wait_for(lambda: outlined(cell), lambda: f"{cell!r} is outlined")

    def nothing_happens(self):
        holds(lambda: not self.program.boxes(), lambda: f"no question; there is {self.program.boxes()}")

    # --- From the listing.

    def test_list_to_the_empty_space_of_the_other_list(self):
        first, second = self.open(a="1", b="22")
        self.grab(first, "a", "b").to(second.empty_place()).drop()
        self.confirm(MANY + self.in_tree("d"))
        self.finished()
        self.assert_tree({"a": "1", "b": "22", "d/": "", "d/a": "1", "d/b": "22"})
        second.wait_names("..", "a", "b")
        wait_for(lambda: second.column("Size")[1:] == ["1", "2"], lambda: second.column("Size"))
        self.assertEqual(first.names, ["..", "d", "a", "b"])

    def test_with_shift_it_moves(self):
        first, second = self.open(a="1", b="22", c="3")
        self.grab(first, "a", "b").to(second.empty_place()).drop(shift=True)
        self.confirm(MOVE + self.in_tree("d"))
        self.finished()
        self.assert_tree({"c": "3", "d/": "", "d/a": "1", "d/b": "22"})
        first.wait_names("..", "d", "c")
        second.wait_names("..", "a", "b")

    def test_onto_a_folder_row(self):
        first, second = self.open(a="1", d={"e": {}, "f": "2"})
        drag = self.grab(first, "a")
        self.to_cell(drag, second.cell("e"))
        drag.drop()
        self.confirm(MANY + self.in_tree("d", "e"))
        self.finished()
        self.assert_tree({"a": "1", "d/": "", "d/e/": "", "d/f": "2", "d/e/a": "1"})

    def test_onto_a_file_row_is_into_its_folder(self):
        first, second = self.open(a="1", d={"f": "2"})
        drag = self.grab(first, "a")
        self.to_cell(drag, second.cell("f"))
        drag.drop(shift=True)
        self.confirm(MOVE + self.in_tree("d"))
        self.finished()
        self.assert_tree({"d/": "", "d/a": "1", "d/f": "2"})

    def test_onto_a_folder_of_the_same_list(self):
        first, _ = self.open(a="1", d={})
        drag = self.grab(first, "a")
        self.to_cell(drag, first.cell("d"))
        drag.drop(shift=True)
        self.confirm(MOVE + self.in_tree("d"))
        self.finished()
        self.assert_tree({"d/": "", "d/a": "1"})

    def test_within_its_folder_nothing_happens(self):
        first, _ = self.open(a="1")
        self.grab(first, "a").to(first.empty_place()).drop()
        self.nothing_happens()
        self.assert_tree({"a": "1", "d/": ""})

    def test_list_to_tree(self):
        first, second = self.open(a="1", d={"e": {}})
        wait_for(lambda: "e" in second.branch_names, lambda: second.branch_names)
        drag = self.grab(first, "a")
        branch = second.branch("e")
        x, y, _, height = branch.extents
        drag.to((x + 20, y + height // 2))
        wait_for(lambda: outlined(branch), "the folder is outlined")
        drag.drop()
        self.confirm(MANY + self.in_tree("d", "e"))
        self.finished()
        self.assert_tree({"a": "1", "d/": "", "d/e/": "", "d/e/a": "1"})

    def test_tree_to_list(self):
        first, second = self.open(s={"x": "1"})
        first.click_branch("s")
        first.wait_folder(self.in_tree("s"))
        x, y, _, height = first.branch("s").extents
        Drag((x + 30, y + height // 2)).to(second.empty_place()).drop()
        self.confirm(MANY + self.in_tree("d"))
        self.finished()
        self.assert_tree({"s/": "", "s/x": "1", "d/": "", "d/s/": "", "d/s/x": "1"})
        second.wait_names("..", "s")

    def test_tree_to_list_with_shift(self):
        first, second = self.open(s={"x": "1"})
        first.click_branch("s")
        first.wait_folder(self.in_tree("s"))
        x, y, _, height = first.branch("s").extents
        Drag((x + 30, y + height // 2)).to(second.empty_place()).drop(shift=True)
        self.confirm(MOVE + self.in_tree("d"))
        self.finished()
        self.assert_tree({"d/": "", "d/s/": "", "d/s/x": "1"})
        # What panel 1 showed is in another place now.
        first.wait_folder(self.tree)

    def test_into_itself(self):
        first, second = self.open(d={"e": {}})
        drag = self.grab(first, "d")
        self.to_cell(drag, second.cell("e"))
        drag.drop()
        box = self.program.message("Vantrel")
        self.assertTrue(box.text.endswith("The destination is a child of the source"), box.text)
        box.press("OK")
        self.assert_tree({"d/": "", "d/e/": ""})

    # --- It comes to nothing.

    def test_cancelled_with_escape(self):
        first, second = self.open(a="1", d={"e": {}})
        drag = self.grab(first, "a")
        cell = second.cell("e")
        self.to_cell(drag, cell)
        drag.escape()
        self.nothing_happens()
        wait_for(lambda: not outlined(cell), "the outline goes")
        self.assert_tree({"a": "1", "d/": "", "d/e/": ""})
        # The next drag works.
        self.grab(first, "a").to(second.empty_place()).drop()
        self.confirm(MANY + self.in_tree("d"))
        self.finished()

    def test_released_outside_of_the_panels(self):
        first, second = self.open(a="1", d={"e": {}})
        drag = self.grab(first, "a")
        cell = second.cell("e")
        self.to_cell(drag, cell)
        drag.to((700, 6))  # the title bar, which is the window manager's
        wait_for(lambda: not outlined(cell), "the outline goes with the pointer")
        drag.drop()
        self.nothing_happens()
        self.assert_tree({"a": "1", "d/": "", "d/e/": ""})

    def test_no_to_the_question(self):
        first, second = self.open(a="1")
        self.grab(first, "a").to(second.empty_place()).drop()
        self.confirm(MANY + self.in_tree("d"), "No")
        self.nothing_happens()
        self.assert_tree({"a": "1", "d/": ""})

    def test_the_way_up_cannot_be_dragged(self):
        first, second = self.open(a="1")
        self.grab(first, "..").to(second.empty_place()).drop()
        # There is nothing to copy, but it is asked.
        self.confirm(MANY + self.in_tree("d"))
        self.finished()
        self.assert_tree({"a": "1", "d/": ""})

    # --- The outline, and the pointer.

    def test_the_outline_follows(self):
        first, second = self.open(a="1", d={"e": {}, "f": {}, "g": "1"})
        drag = self.grab(first, "a")
        before = None
        for name in ("e", "f", "g"):
            cell = second.cell(name)
            self.to_cell(drag, cell)
            self.assertFalse(before and outlined(before), "only one cell is outlined")
            before = cell
        drag.escape()
        wait_for(lambda: not outlined(before), "the outline goes")

    def test_a_move_with_the_button_selects_nothing_more(self):
        first, _ = self.open(a="1", b="1", c="1")
        drag = self.grab(first, "a")
        drag.to(first.cell("c").middle)
        self.assertEqual(first.selected, ["a"])
        drag.escape()
        self.nothing_happens()

    # --- Errors of a move.

    def test_a_move_to_another_file_system(self):
        if os.stat("/dev/shm").st_dev == os.stat(self.tree).st_dev:
            self.skipTest("there is no other file system")
        first, second = OperationTest.open(self, "drive={tree}=Tree\ndrive=/dev/shm=Memory\n", a="1"), None
        second = self.program.panel(2)
        second.press_drive("Memory")
        second.wait_folder("/dev/shm")
        self.grab(first, "a").to(second.empty_place()).drop(shift=True)
        self.confirm(MOVE + "/dev/shm")
        self.error(f"Error moving:\n{self.in_tree('a')}\nInvalid cross-device link", "Retry")
        self.error(f"Error moving:\n{self.in_tree('a')}\nInvalid cross-device link", "Ignore")
        self.finished()
        self.assert_tree({"a": "1"})

    def test_a_move_that_is_not_allowed(self):
        first, second = self.open(a="1", b="2")
        os.chmod(self.in_tree("d"), 0o500)
        self.grab(first, "a", "b").to(second.empty_place()).drop(shift=True)
        self.confirm(MOVE + self.in_tree("d"))
        self.error(f"Error moving:\n{self.in_tree('a')}\nPermission denied", "Retry")
        box = self.program.message("Vantrel")
        os.chmod(self.in_tree("d"), 0o700)
        box.press("Retry")
        self.finished()
        self.assert_tree({"d/": "", "d/a": "1", "d/b": "2"})

    # --- Other arrangements.

    def test_one_above_the_other(self):
        self.window = 2
        self.test_list_to_the_empty_space_of_the_other_list()

    def test_one_above_the_other_onto_a_folder_row(self):
        self.window = 2
        self.test_onto_a_folder_row()

    def test_one_above_the_other_with_shift(self):
        self.window = 2
        self.test_with_shift_it_moves()

    def test_single_panel(self):
        self.window = 1
        self.test_onto_a_folder_of_the_same_list()

    def test_single_panel_list_to_tree(self):
        self.window = 1
        first, _ = self.open(a="1", d={})
        drag = self.grab(first, "a")
        x, y, _, height = first.branch("d").extents
        drag.to((x + 20, y + height // 2)).drop()
        self.confirm(MANY + self.in_tree("d"))
        self.finished()
        self.assert_tree({"a": "1", "d/": "", "d/a": "1"})
