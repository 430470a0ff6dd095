"""Start-up, arrangements and the menus of the main window."""

import os
import subprocess

import a11y
import desktop
from case import EXAMPLES, VantrelTest
from desktop import holds, wait_for
from files import read


class Start(VantrelTest):
    def test_without_settings_a_box_comes_before_any_window(self):
        program = self.start(settings=None, ready=False)
        box = program.box("Error")
        self.assertEqual(box.texts, ["Failed to open .Vantrel"])
        self.assertEqual(box.buttons, ["OK"])
        self.assertEqual(len(program.windows()), 1)
        box.press("OK")
        self.wait_ready()
        self.assert_side_by_side()
        for number in (1, 2):
            panel = program.panel(number)
            panel.wait_folder("/")
            self.assertEqual(panel.drives, [])

    def test_escape_ends_the_box_as_well(self):
        program = self.start(settings=None, ready=False)
        program.box("Error").keys("Escape")
        self.wait_ready()

    def test_a_folder_in_place_of_the_settings(self):
        os.mkdir(os.path.join(self.home, ".Vantrel"))
        program = self.start(settings=None, ready=False)
        self.assertEqual(program.box("Error").text, "Failed to open .Vantrel")

    def test_settings_that_may_not_be_read(self):
        path = os.path.join(self.home, ".Vantrel")
        open(path, "w").close()
        os.chmod(path, 0)
        program = self.start(settings=None, ready=False)
        self.assertEqual(program.box("Error").text, "Failed to open .Vantrel")

    def test_panels_start_in_the_first_drive(self):
        self.make(a={}, f="12345")
        program = self.start()
        for number in (1, 2):
            panel = program.panel(number)
            panel.wait_folder(self.tree)
            total = os.path.getsize(self.in_tree("a")) + 5
            panel.wait_right(f"{self.tree} has 1 dirs, 1 files, {total / 1024:.2f}KB")
            self.assertEqual(panel.drives, ["Tree", "Root"])
            self.assertEqual(panel.names, ["..", "a", "f"])

    def test_starter_file(self):
        program = self.start(settings=read(os.path.join(EXAMPLES, "Vantrel.starter")))
        panel = program.panel(1)
        panel.wait_folder(self.home)
        self.assertEqual(panel.drives, ["Home", "Root", "Temp"])
        self.assert_side_by_side()
        panel.press_drive("Root")
        panel.wait_folder("/")
        self.assertIn("usr", panel.names)

    def test_settings_of_the_set_up(self):
        setup = os.path.join(desktop.WORK, "setup", "vantrel-setup")
        env = dict(os.environ, HOME=self.home, VANTREL_MOUNTS=os.devnull)
        settings = subprocess.run([setup, "--print"], env=env, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                  text=True, check=True).stdout
        self.assertEqual(os.listdir(self.home), [])
        program = self.start(settings=settings)
        panel = program.panel(1)
        panel.wait_folder(self.home)
        self.assertEqual(panel.drives, ["Home", "Root"])
        self.assertEqual(program.boxes(), [])
        self.assertEqual(program.titles(), [("frame", program.main().name)])

    def test_dark_example(self):
        program = self.start(settings=read(os.path.join(EXAMPLES, "Vantrel.dark")))
        panel = program.panel(1)
        panel.wait_folder(self.home)
        x, y = panel.empty_place()
        wait_for(lambda: max(desktop.pixels(x, y, 1, 1)[0][0]) < 100, "the listing is dark")

    def test_style_sheet_reaches_the_window(self):
        program = self.start("drive={tree}=Tree\nstyle=QTableView { background: #102030; }\n"
                             "STYLE = QTableView { alternate-background-color: #102030; }\n")
        panel = program.panel(1)
        panel.wait_folder(self.tree)
        wait_for(lambda: desktop.pixels(*panel.empty_place(), 1, 1)[0][0] == (0x10, 0x20, 0x30),
                 "the colour of the style sheet")

    def test_broken_settings_stop_nothing(self):
        settings = "\0\0\nstyle=QTableView { \nicon=/nowhere.png\nwindow=two\ndrive=/nowhere=Gone\nmenu\nassn\n\xff\xfe"
        self.expected_messages = r"\ACould not parse application stylesheet\n\Z"
        program = self.start(settings)
        self.assert_side_by_side()
        self.assertEqual(program.panel(1).drives, ["Gone"])
        self.assertTrue(program.alive())

    def test_nothing_is_written_and_nothing_complained_about(self):
        self.make(a={"b": {}}, f="x")
        program = self.start()
        panel = program.panel(1)
        panel.wait_folder(self.tree)
        panel.open_row("a")
        panel.wait_folder(self.in_tree("a"))
        panel.select("b")
        program.menu("Window", "Single Panel")
        self.assertEqual(program.quit(), 0)
        self.assertEqual(os.listdir(self.home), [".Vantrel"])

    def test_screens_with_more_dots_to_the_inch(self):
        self.addCleanup(subprocess.run, ["xprop", "-root", "-remove", "RESOURCE_MANAGER"], check=True)
        self.addCleanup(setattr, a11y, "scale", 1)
        heights = {}
        # Only by whole numbers: what is scaled by a little more than one is blurred.
        for dpi, scale in ((100, 1), (144, 2), (192, 2)):
            with self.subTest(dpi=dpi):
                subprocess.run(["xprop", "-root", "-f", "RESOURCE_MANAGER", "8s", "-set", "RESOURCE_MANAGER",
                                f"Xft.dpi:\t{dpi}\n"], check=True)
                program = self.start()
                # It tells places in pixels of its own.
                width = desktop.SCREEN[0] // scale
                wait_for(lambda: program.main().extents[2] == width, lambda: program.main().extents)
                a11y.scale = scale
                heights[dpi] = program.main().find("menu bar").extents[3]
                self.assertEqual(program.quit(), 0)
                a11y.scale = 1
        # The letters have the size that the screen asks for.
        self.assertLess(heights[144], heights[192])

    # --- Arrangements.

    def inner(self):
        """Place and size of the main window, and the height of its menu bar."""
        main = self.program.main()
        return main.extents, main.find("menu bar").extents[3]

    def expect_panels(self, first, second):
        (left, top, _, _), _ = self.inner()
        for number, (x, y, width, height) in ((1, first), (2, second)):
            place = (left + x, top + y, width, height)
            wait_for(lambda: self.program.panel(number).extents == place,
                     lambda: f"panel {number} at {place}; it is at {self.program.panel(number).extents}")

    def assert_side_by_side(self):
        (_, _, width, height), bar = self.inner()
        self.assertEqual(width, desktop.SCREEN[0])  # maximized
        self.expect_panels((0, bar, width // 2, height - bar), (width // 2, bar, width // 2, height - bar))

    def assert_single(self):
        (_, _, width, height), bar = self.inner()
        self.expect_panels((0, bar, width, height - bar), (0, 0, 0, 0))

    def assert_one_above_the_other(self):
        (_, _, width, height), bar = self.inner()
        half = (height - bar) // 2
        self.expect_panels((0, bar, width, half), (0, bar + half, width, half))

    def test_window_0(self):
        self.start("window=0\n")
        self.assert_side_by_side()

    def test_window_1(self):
        self.start("window=1\n")
        self.assert_single()

    def test_window_2(self):
        self.start("window=2\n")
        self.assert_one_above_the_other()

    def test_window_unknown(self):
        self.start("window=7\n")
        self.expect_panels((100, 100, 500, 500), (700, 100, 500, 500))

    def test_without_a_window_manager(self):
        server, display = desktop.start_display()
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        self.start("drive=/=Root\n", ready=False, prefix=["/usr/bin/env", "DISPLAY=" + display])

        def size():
            """What the X server says: nobody looks after windows there."""
            return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Vantrel$", "getwindowgeometry"],
                                  env={**os.environ, "DISPLAY": display}, capture_output=True, text=True,
                                  check=False).stdout
        wait_for(lambda: "Geometry: {}x{}".format(*desktop.SCREEN) in size(), size)

    def test_window_menu(self):
        program = self.start()
        program.menu("Window", "Single Panel")
        self.assert_single()
        program.menu("Window", "Tile Horizontally")
        self.assert_one_above_the_other()
        program.menu("Window", "Tile Vertically")
        self.assert_side_by_side()

    def test_a_panel_keeps_its_folder_while_it_has_no_room(self):
        self.make(a={})
        program = self.start()
        second = program.panel(2)
        second.wait_folder(self.tree)
        second.open_row("a")
        second.wait_folder(self.in_tree("a"))
        program.menu("Window", "Single Panel")
        self.assert_single()
        program.menu("Window", "Tile Horizontally")
        self.assert_one_above_the_other()
        self.assertEqual(program.panel(2).path, self.in_tree("a"))

    # --- Menus.

    def test_menu_bar(self):
        program = self.start()
        bar = program.main().find("menu bar")
        self.assertEqual([item.name for item in bar.children()], ["File", "Window", "Help"])
        entries = {"File": ["Exit"], "Window": ["Tile Vertically", "Single Panel", "Tile Horizontally"],
                   "Help": ["About"]}
        for name, texts in entries.items():
            desktop.click(*bar.find("menu item", name).middle)
            popup = program.popup()
            self.assertEqual(popup.entries, texts)
            popup.dismiss()

    def test_about(self):
        program = self.start()
        program.menu("Help", "About")
        box = program.box("About Vantrel")
        self.assertRegex(box.text, r"^\nVantrel Version 0\.30\n\nCopyright .+$")
        # The box is modal: the drive button does nothing while it stands.
        path = program.panel(1).path
        program.panel(1).press_drive("Root")
        holds(lambda: program.panel(1).path == path, "the main window does not react")
        box.keys("Return")
        program.panel(1).press_drive("Root")
        program.panel(1).wait_folder("/")

    def test_exit(self):
        self.assertEqual(self.start().quit(), 0)

    def test_closed_by_its_title_bar(self):
        program = self.start()
        desktop.key("alt+F4")
        wait_for(lambda: not program.alive(), "the program has ended")
        self.assertEqual(program.process.returncode, 0)
