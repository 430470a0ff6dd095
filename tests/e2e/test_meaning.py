"""What a row means: its own file, however the drive is spelt, whatever column is hit, and whatever the tree shows."""

import os

import desktop
from desktop import holds, key, wait_for
from operations import OperationTest

DELETE = "Delete selected files in folder: \n\n"


class Meaning(OperationTest):
    def test_drives_spelt_oddly(self):
        self.make(d={"x": "1"}, f0="0", f1="1", f2="2", f3="3")
        drives = ("{tree}/../tree//", "{tree}/./", "/{tree}", "/..{tree}/d/..")
        self.start("".join(f"drive={drive}=Odd{number}\n" for number, drive in enumerate(drives)))
        panel = self.program.panel(1)
        self.assertEqual(panel.drives, ["Odd0", "Odd1", "Odd2", "Odd3"])
        left = ["f0", "f1", "f2", "f3"]
        for number in range(4):
            panel.press_drive(f"Odd{number}")
            panel.wait_folder(self.tree)
            panel.wait_names("..", "d", *left)
            panel.select(left.pop(0))
            key("Delete")
            self.confirm(DELETE + self.tree)
            self.finished()
            panel.wait_names("..", "d", *left)
        self.assert_tree({"d/": "", "d/x": "1"})

    def test_a_drive_that_is_not_there(self):
        self.start("drive=/no/such/place=Gone\nmenu=delete=.|*=Delete\nmenu=properties=.|*=Properties\n")
        panel = self.program.panel(1)
        wait_for(lambda: panel.path == "/no/such/place", lambda: panel.path)
        wait_for(lambda: panel.right_text == "/no/such/place has 0 dirs, 0 files, 0 Bytes", lambda: panel.right_text)
        for name in ("Size", "Name"):
            desktop.click(*panel.header(name).middle)
        x, y, width, height = panel.list.extents
        for button, repeat in ((1, 1), (3, 1), (1, 2)):
            desktop.click(x + 30, y + 40, button=button, repeat=repeat)
        key("ctrl+a")
        for name in ("Delete", "n", "r", "p", "x", "shift+F10"):
            key(name)
        desktop.click(*panel.tree.middle, button=3)
        key("Delete")
        holds(lambda: not self.program.boxes() and not desktop.window_is_menu(desktop.focused_window()),
              "no question and no menu")
        self.assertEqual(panel.branch_names, [])
        self.assertEqual(panel.names, [])

    def test_a_double_click_on_another_column(self):
        for name in ("viewer", "wrong"):
            self.stand_in(name)
        self.make(**{"note.txt": "x"})
        self.start("drive={tree}=Tree\nassn=txt=viewer\nassn=|1=wrong\n")
        panel = self.program.panel(1)
        panel.wait_folder(self.tree)
        for column in ("Size", "Owner", "Modified"):
            desktop.click(*panel.cell("note.txt", column).middle, repeat=2)
            self.assertEqual(self.launched("viewer")[1], [self.in_tree("note.txt")])
        key("ctrl+o")
        self.assertEqual(self.launched("viewer")[1], [self.in_tree("note.txt")])
        self.assertEqual(self.notes("wrong"), [])

    def test_a_root_that_goes(self):
        self.make(d={"f": "1"})
        self.start("drive={tree}/d=Sub\n")
        panel = self.program.panel(1)
        panel.wait_folder(self.in_tree("d"))
        panel.select("f")
        os.rename(self.in_tree("d"), self.in_tree("away"))
        wait_for(lambda: panel.names == [] and panel.branch_names == [], lambda: panel.names)
        key("Delete")
        desktop.click(*panel.list.middle)
        key("Delete")
        holds(lambda: not self.program.boxes(), "no question")
        os.rename(self.in_tree("away"), self.in_tree("d"))
        panel.wait_names("..", "f")
