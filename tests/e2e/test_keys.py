"""The program without a mouse: all is reached by Tab and arrow keys, and used by keys."""

import os

import a11y
import desktop
from case import EXAMPLES, BrowseTest
from commands import CommandTest
from desktop import key, wait_for
from files import read
from panel import steady


class Keys(BrowseTest):
    def parts(self, panel):
        """What keys can be given to in a panel."""
        bars = (panel.part("frame", "Drive bar"), panel.part("filler", "Path bar"))
        return {*(button for bar in bars for button in bar.find_all("push button")), panel.tree, panel.list}

    def tab(self, name="Tab"):
        """Moves the keyboard, and returns to where."""
        main = self.program.main()
        a11y.forget_focus(main)
        key(name)
        return wait_for(lambda: a11y.focus_told(main), f"{name} moves the keyboard")

    def tab_to(self, part):
        for _ in range(40):
            if self.tab() == part:
                return
        self.fail(f"{part!r} is not reached")

    def test_tab_goes_through_all_and_back(self):
        panel = self.open(a="1")
        other = self.program.panel(2)
        other.wait_folder(self.tree)
        self.tab_to(panel.tree)
        everything = self.parts(panel) | self.parts(other)
        there = [self.tab() for _ in everything]
        self.assertEqual(set(there), everything)
        self.assertEqual(there[-1], panel.tree, "it comes round")
        self.assertEqual(there[0], panel.list, "the listing follows its tree")
        back = [self.tab("shift+Tab") for _ in everything]
        self.assertEqual(back, [*reversed(there[:-1]), panel.tree])

    def test_bars_are_pressed_by_keys(self):
        panel = self.open("a", a={"x": "1"})
        bar = panel.part("filler", "Path bar")
        self.tab_to(bar.find("push button", "tree/"))
        key("space")
        panel.wait_folder(self.tree)
        self.tab_to(panel.part("frame", "Drive bar").find("push button", "Sub"))
        key("space")
        panel.wait_folder(self.in_tree("a"))

    # --- The order, in all arrangements.

    def in_order(self, panel):
        bars = (panel.part("frame", "Drive bar"), panel.part("filler", "Path bar"))
        return [*(button for bar in bars for button in bar.find_all("push button")), panel.tree, panel.list]

    def choose(self, menu, entry):
        """Chooses from the menu bar by keys."""
        main = self.program.main()

        def told(name):
            focus = a11y.focus_told(main)
            return focus is not None and focus.name == name
        key("alt")
        wait_for(lambda: told("File"), "the menu bar has the keyboard")
        for title in ("Window", "Help"):
            if told(menu):
                break
            key("Right")
            wait_for(lambda: told(title), f"{title} has the keyboard")
        key("Down")
        wait_for(self.program.menu_is_open, "a menu is open")
        for _ in range(10):
            if told(entry):
                break
            before = a11y.focus_told(main)
            key("Down")
            wait_for(lambda: a11y.focus_told(main) != before, "the next entry has the keyboard")
        key("Return")
        self.program.wait_keyboard()

    def test_arrangements(self):
        panel = self.open(a="1")
        other = self.program.panel(2)
        self.tab_to(panel.tree)
        for arrangement, panels in (("Single Panel", [panel]), ("Tile Horizontally", [panel, other]),
                                    ("Tile Vertically", [panel, other])):
            self.choose("Window", arrangement)
            wait_for(lambda: (other.extents[2] > 0) == (other in panels), f"{arrangement} is there")
            expected = [part for one in panels for part in self.in_order(one)]
            self.tab_to(expected[-1])
            self.assertEqual([self.tab() for _ in expected], expected, arrangement)

    def test_the_keyboard_leaves_a_panel_that_goes(self):
        panel = self.open(a="1")
        other = self.program.panel(2)
        self.tab_to(other.list)
        self.choose("Window", "Single Panel")
        wait_for(lambda: panel.list.has("focused"), "the listing that is seen has the keyboard")

    def test_about_by_keys(self):
        self.open()
        self.choose("Help", "About")
        self.program.box("About Vantrel").keys("Return")

    # --- The focus is seen.

    def picture(self, part):
        """What the screen shows of something, once that does not change any more."""
        seen = [None]

        def still():
            before, seen[0] = seen[0], desktop.pixels(*part.extents)
            return before == seen[0]
        wait_for(still, f"{part!r} stands still")
        return seen[0]

    def test_focus_is_seen(self):
        for example in ("Vantrel.starter", "Vantrel.dark"):
            with self.subTest(example=example):
                self.start(settings=read(os.path.join(EXAMPLES, example)))
                panel = self.program.panel(1)
                panel.wait_folder(self.home)
                desktop.xdo("mousemove", 5, desktop.SCREEN[1] - 5)
                drive, *_, folder, tree, table = self.in_order(panel)
                for part in (drive, folder, tree, table):
                    self.tab_to(part)
                    focused = self.picture(part)
                    self.tab()
                    other = self.picture(part)
                    changed = [contrast(*pair) for rows in zip(focused, other) for pair in zip(*rows)
                               if pair[0] != pair[1]]
                    self.assertGreaterEqual(len(changed), part.extents[2], f"a frame around {part!r}")
                    self.assertGreaterEqual(max(changed), 3, f"contrast of the frame around {part!r}")
                self.program.quit()


def contrast(one, other):
    """Contrast of two colours, from 1 to 21."""
    def luminance(colour):
        linear = [c / 12.92 if c <= 0.03928 else ((c + 0.055) / 1.055) ** 2.4 for c in (v / 255 for v in colour)]
        return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]
    a, b = sorted((luminance(one), luminance(other)))
    return (b + 0.05) / (a + 0.05)


class KeyCommands(CommandTest):
    """Commands without a mouse."""

    def down_to(self, panel, name):
        """Moves the current cell of the listing, which has the keyboard then."""
        self.wait_ready()
        panel.list.grab_focus()
        wait_for(lambda: panel.list.has("focused"), "the listing has the keyboard")
        key("ctrl+Home")

        def current():
            return next((cell.name for cell in steady(panel.cells) if cell.has("focused")), None)
        wait_for(lambda: current() == "..", "the first row")
        for _ in range(panel.names.index(name)):
            before = current()
            key("Down")
            wait_for(lambda: current() not in (before, None), "the next row")
        self.assertEqual(current(), name)

    def test_open_and_up(self):
        panel = self.open(d={"x": ""})
        self.down_to(panel, "d")
        key("ctrl+o")
        panel.wait_folder(self.in_tree("d"))
        self.down_to(panel, "..")
        key("ctrl+o")
        panel.wait_folder(self.tree)

    def offered(self, pressed):
        key(pressed)
        popup = self.program.popup()
        place = popup.window.extents[:2]
        entries = popup.entries
        popup.dismiss()
        return entries, place

    def test_context_menu_of_a_row(self):
        panel = self.open(d={}, **{f"f{number:02}": "" for number in range(80)})
        self.down_to(panel, "d")
        for pressed in ("Menu", "shift+F10"):
            entries, (x, y) = self.offered(pressed)
            self.assertIn("New folder", entries)
            left, top, width, height = panel.cell("d").extents
            self.assertTrue(left <= x <= left + width and top <= y <= top + height, pressed)
        key("ctrl+End")  # a file, which is scrolled to
        for pressed in ("Menu", "shift+F10"):
            entries, _ = self.offered(pressed)
            self.assertIn("Sums", entries)
        # Scrolled away, the row is still what the menu is for.
        desktop.xdo("mousemove", *panel.list.middle, "click", "--repeat", 40, 4)
        wait_for(lambda: panel.names[0] == "..", "the first rows are seen again")
        entries, _ = self.offered("shift+F10")
        self.assertIn("Sums", entries)

    def test_context_menu_of_the_tree(self):
        panel = self.open(d={"e": {}})
        panel.tree.grab_focus()
        key("Right", "Down")
        panel.wait_folder(self.in_tree("d"))
        key("shift+F10")
        popup = self.program.popup()
        for _ in popup.entries:
            if a11y.focus_told(self.program.main()).name == "New folder":
                break
            key("Down")
        key("Return")
        box = self.program.dialog("Create New Directory")
        self.assertIn(self.in_tree("d"), box.texts)
        box.wait_active()
        desktop.type_text("new")
        box.keys("Return")
        wait_for(lambda: os.path.isdir(self.in_tree("d", "new")), "the folder is there")

    def test_dialogs(self):
        panel = self.open(a="1")
        self.down_to(panel, "a")
        key("r")
        box = self.program.dialog("Rename").wait_active()
        desktop.type_text("b")
        box.keys("Tab", "space")  # the button OK
        wait_for(lambda: os.path.exists(self.in_tree("b")), "it is renamed")
        key("n")
        self.program.dialog("Create New Directory").keys("alt+c")
        self.down_to(panel, "b")
        key("c")
        box = self.program.dialog("Vantrel").wait_active()
        desktop.type_text("c")
        box.keys("Return")
        self.program.message("Vantrel").keys("Return")
        wait_for(lambda: os.path.exists(self.in_tree("c")), "it is copied")
        self.program.wait_for_no_box()
        self.down_to(panel, "b")
        key("Delete")
        self.program.message("Vantrel").keys("Right", "Return")
        self.assertTrue(os.path.exists(self.in_tree("b")), "answered No")
