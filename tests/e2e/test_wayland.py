"""The program under Wayland. That it writes no warning, which Qt does there of all that only X lets a program do, is
checked at the end of each test."""

import os

import wayland
from commands import CommandTest
from desktop import Drag, holds, key, pointer, type_text, wait_for
from operations import MANY, ONE
from test_drag import outlined

MISSING = wayland.missing()


class Wayland(CommandTest):
    program_type = wayland.WaylandVantrel

    def setUp(self):
        if MISSING:
            self.skipTest(MISSING)
        super().setUp()
        compositor = wayland.Compositor(self.place)
        self.addCleanup(compositor.end)

    def test_browsing(self):
        panel = self.open(d={"e": {"x": "1"}}, a="1")
        panel.open_row("d")
        panel.wait_folder(self.in_tree("d"))
        panel.click_branch("e")
        panel.wait_folder(self.in_tree("d", "e"))
        panel.wait_names("..", "x")
        panel.press_component("tree/")
        panel.wait_folder(self.tree)
        panel.press_drive("Root")
        panel.wait_folder("/")
        self.program.menu("Window", "Single Panel")
        wait_for(lambda: panel.extents[2] > 1300, "the panel has the whole window")

    def test_menus_and_copying(self):
        panel = self.open(d={}, f="1")
        popup = panel.row_menu("f")
        self.assertIn("Sums", popup.entries)
        popup.choose("Copy")
        box = self.program.dialog("Vantrel")
        box.fill("d/")
        box.press("OK")
        self.confirm(ONE + self.in_tree("d", "f"))
        self.finished()
        self.assert_tree({"f": "1", "d/": "", "d/f": "1"})
        # The listing has the keyboard again.
        key("r")
        box = self.program.dialog("Rename").wait_active()
        type_text("g")
        box.keys("Return")
        wait_for(lambda: os.path.exists(self.in_tree("g")), "it is renamed")
        panel.branch_menu("d").choose("Paths")
        key("n")
        box = self.program.dialog("Create New Directory").wait_active()
        field, = [field for field in box.fields if not field.has("read-only")]
        key("ctrl+v")
        wait_for(lambda: field.text.startswith(self.in_tree("d")), lambda: f"the path is pasted; it is {field.text!r}")
        box.keys("Escape")

    def test_the_question_of_a_drop_takes_keys(self):
        panel = self.open(d={}, a="1", b="22")
        other = self.program.panel(2)
        for name, pressed, copied in (("a", "Return", True), ("b", "Escape", False)):
            panel.select(name)
            Drag(panel.cell(name).middle, nudged=False).to(other.cell("d").middle).drop()
            box = self.program.message("Vantrel")
            self.assertEqual(box.text, MANY + self.in_tree("d"))
            box.keys(pressed)
            self.finished()
            self.assertEqual(os.path.exists(self.in_tree("d", name)), copied)
        key("Escape")
        panel.wait_names("..", "d", "a", "b")

    def test_the_questions_of_an_operation_take_keys(self):
        panel = self.open(a="1", b="22", c="333")
        panel.select("a", "b", "c")
        key("Delete")
        self.program.message("Vantrel").keys("Return")
        for left in (2, 1):
            self.program.message("Vantrel").wait_active().keys("Return")
            wait_for(lambda: len(os.listdir(self.tree)) == left, lambda: os.listdir(self.tree))
        self.program.message("Vantrel").press("Abort")
        self.finished()

    def test_dragging(self):
        """The pointer, which is nudged under X while one drags, stays where it is."""
        panel = self.open(d={}, a="1", b="22")
        other = self.program.panel(2)
        panel.select("a", "b")
        cell = other.cell("d")
        drag = Drag(panel.cell("a").middle, nudged=False).to(cell.middle)
        wait_for(lambda: outlined(cell), "the folder is outlined")
        holds(lambda: pointer() == cell.middle, "the pointer stays")
        drag.drop()
        self.confirm(MANY + self.in_tree("d"))
        self.finished()
        self.assert_tree({"a": "1", "b": "22", "d/": "", "d/a": "1", "d/b": "22"})
