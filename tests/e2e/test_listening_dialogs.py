"""Every dialog and box for those who have it read to them: what each control is called, holds and does."""

import os
import re

import a11y
from commands import CommandTest
from desktop import clipboard, key, wait_for
from files import Link, read
from operations import MANY, ONE

#: What is read out, used or filled in; the rest only holds these together.
TOLD_ROLES = ("label", "text", "push button", "progress bar")

TIME = re.compile(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d")


def told(box):
    """What a box tells from top to bottom and from left to right: role, name, value, and what names it otherwise."""
    found = []
    for item in box.window.walk():
        role, name = item.role, item.name
        if role not in TOLD_ROLES or not item.has("showing") or (role == "label" and not name):
            continue
        line = f"{role}: {name}"
        if role == "text":
            line += f" = {item.text}" + ("" if item.has("read-only") else " (edit)")
        elif role == "progress bar":
            line += f" = {item.value:.0f}"
        elif role == "push button" and item.has("default"):
            line += " (default)"
        captions = [label.name for label in item.labels() if label.role == "label" and label.name != name]
        x, y, _, height = item.extents
        found.append((y + height // 2, x, line + "".join(f" <- {caption}" for caption in captions)))
    return [line for *_, line in sorted(found)]


class ListeningToDialogs(CommandTest):
    def choose_row(self, panel, name):
        """Makes an item of the listing current and selects it, as assistive technology does."""
        table = panel.list
        row = wait_for(lambda: next((row for row in range(1, table.size[0]) if table.cell(row, 0).name == name), None),
                       f"{name} in the listing")
        wait_for(lambda: self.program.main().has("active"), "the main window is active")
        table.cell(row, 0).do("SetFocus")
        for other in table.selected_rows:
            table.select_row(other, on=False)
        table.select_row(row)
        return table.cell(row, 0)

    def assert_told(self, box, *lines):
        def say(line):
            return TIME.sub("TIME", line.replace(self.tree, "TREE"))
        wait_for(lambda: [say(line) for line in told(box)] == list(lines), lambda: [say(line) for line in told(box)])
        self.check_names(box)

    def check_names(self, box):
        """Nothing that can be used is without a name, nothing leans out of the window."""
        self.assertTrue(box.title)
        x, y, width, height = box.window.extents
        for item in box.window.walk():
            if item.role in ("push button", "text", "progress bar"):
                self.assertTrue(item.name, repr(item))
                left, top, wide, tall = item.extents
                self.assertTrue(x <= left and left + wide <= x + width and y <= top and top + tall <= y + height)

    def assert_tab(self, box, *names):
        """Tab goes from what has the keyboard first through all that can have it."""
        box.wait_active()
        main = self.program.main()
        reached = [item.name for item in box.window.walk() if item.has("focused") and item.role != "panel"]
        for _ in names:
            a11y.forget_focus(main)
            key("Tab")
            reached.append(wait_for(lambda: a11y.focus_told(main), "Tab moves the keyboard").name)
        self.assertEqual(reached, [*names, names[0]])

    def do(self, box, button):
        """Presses a button, as assistive technology does; the box ends with that."""
        box.window.find("push button", button).do("Press")
        box.wait_gone()

    # --- Facts.

    def test_properties(self):
        panel = self.open(**{"f.txt": "x" * 12345, "l": Link("f.txt")})
        os.chmod(self.in_tree("f.txt"), 0o640)
        self.choose_row(panel, "f.txt")
        key("p")
        box = self.program.dialog("Properties")
        owner, device, kind = [line.split(": ")[1].split(" <- ")[0] for line in told(box)
                               if line.endswith((" <- Group:Owner:", " <- Device:", " <- Filesystem:"))]
        self.assertRegex(owner, r"^\w+:\w+$")
        self.assert_told(
            box, "text: Path = TREE/f.txt", "label: Type:", "label: File: text/plain <- Type:", "label: Size:",
            "label: 12,345 bytes <- Size:", "label: Created:", "label: TIME <- Created:", "label: Modified:",
            "label: TIME <- Modified:", "label: Accessed:", "label: TIME <- Accessed:", "label: Group:Owner:",
            f"label: {owner} <- Group:Owner:", "label: Permissions:", "label: 640 <- Permissions:", "label: Device:",
            f"label: {device} <- Device:", "label: Filesystem:", f"label: {kind} <- Filesystem:",
            "push button: OK (default)")
        self.assert_tab(box, "Path", "OK")
        self.do(box, "OK")

    def test_disk_usage(self):
        panel = self.open(d={"e": {"x": "1" * 1000}}, f="1")
        self.choose_row(panel, "f")
        key("s")
        box = self.program.dialog("Disk Usage")
        device = wait_for(lambda: [line for line in told(box) if line.startswith("label: On device: /")], "the device")
        self.assert_told(
            box, "label: TREE/f", "label: Folders:", "label: 0 <- Folders:", "label: Files:", "label: 1 <- Files:",
            "label: Bytes:", "label: 1 <- Bytes:", *device, "push button: OK (default)")
        self.assertEqual([item.name for item in box.window.find_all("panel")], ["Directory Statistics:"])
        self.do(box, "OK")

    def test_checksums(self):
        panel = self.open(f="abc")
        self.choose_row(panel, "f")
        panel.list.cell(1, 0).do("ShowMenu")
        self.program.popup().press("Sums")
        box = self.program.dialog("Checksums")
        md5, sha1 = "900150983cd24fb0d6963f7d28e17f72", "a9993e364706816aba3e25717850c26c9cd0d89d"
        self.assert_told(
            box, "label: Filename:", "text: Filename: = TREE/f", "label: MD5 Checksum:",
            f"text: MD5 Checksum: = {md5}", "label: SHA1 Checksum:", f"text: SHA1 Checksum: = {sha1}",
            "progress bar: Progress = 100", "push button: CopyClip", "push button: OK (default)")
        self.assertEqual([item.name for item in box.window.find_all("panel")], ["File Checksums:"])
        self.assert_tab(box, "Filename:", "MD5 Checksum:", "SHA1 Checksum:", "OK", "CopyClip")
        box.window.find("push button", "CopyClip").do("Press")
        wait_for(lambda: clipboard() == f"{self.in_tree('f')}\nMD5:  {md5}\nSHA1: {sha1}", clipboard)
        self.do(box, "OK")

    # --- What asks for a name.

    def test_new_folder(self):
        panel = self.open(f="1")
        self.choose_row(panel, "f")
        key("n")
        box = self.program.dialog("Create New Directory")
        self.assert_told(
            box, "label: Current Directory:", "label: TREE", "label: Create new sub-directory:",
            "text: Create new sub-directory: =  (edit)", "push button: OK (default)", "push button: Cancel")
        self.assert_tab(box, "Create new sub-directory:", "OK", "Cancel")
        self.assertTrue(box.window.find("text").set_text("f"))
        box.window.find("push button", "OK").do("Press")
        error = self.program.message("Error")
        self.assert_told(error, "label: f already exists in directory:\nTREE", "push button: OK (default)")
        self.do(error, "OK")
        self.assertTrue(box.window.find("text").set_text("new"))
        self.do(box, "OK")
        self.assertTrue(os.path.isdir(self.in_tree("new")))

    def test_rename(self):
        panel = self.open(f="1")
        self.choose_row(panel, "f")
        key("r")
        box = self.program.dialog("Rename")
        self.assert_told(
            box, "label: Current directory:", "text: Current directory: = TREE", "label: Rename:", "text: Rename: = f",
            "label: New name:", "text: New name: = f (edit)", "push button: OK (default)", "push button: Cancel")
        self.assert_tab(box, "New name:", "OK", "Cancel", "Current directory:", "Rename:")
        field, = box.window.find_all("text", "New name:")
        self.assertTrue(field.set_text("g"))
        self.do(box, "OK")
        self.assertEqual(os.listdir(self.tree), ["g"])

    # --- Operations.

    def test_copy_with_its_questions(self):
        panel = self.open(a="1" * 3500, b="2" * 1000, d={"b": "old"})
        panel.list.grab_focus()
        for name in ("a", "b"):
            panel.list.select_row(["..", "d", "a", "b"].index(name))
        key("c")
        box = self.program.dialog("Vantrel")
        self.assert_told(box, "label: Copy selected items to:", "text: Copy selected items to: =  (edit)",
                         "push button: Cancel", "push button: OK (default)")
        self.assert_tab(box, "Copy selected items to:", "Cancel", "OK")
        self.assertTrue(box.window.find("text").set_text(self.in_tree("d")))
        self.do(box, "OK")
        question = self.program.message("Vantrel")
        self.assert_told(question, f"label: {MANY}TREE/d", "push button: Yes (default)", "push button: No")
        self.assert_tab(question, "Yes", "No")
        self.do(question, "Yes")
        # The question holds the progress dialog still, after the first of the two files.
        question = self.program.message("Vantrel")
        self.assert_told(
            question, "label: Replace file:\nTREE/d/b\nTIME 3 bytes\n\nWith file:\nTREE/b\nTIME 1,000 bytes",
            "push button: YesAll", "push button: Abort", "push button: No", "push button: Yes (default)")
        progress = self.program.dialog("Vantrel")
        self.assert_told(progress, "label: Copying:", "label: TREE/b", "progress bar: Progress = 77",
                         "label: Speed: inf MBytes/sec", "push button: Abort (default)")
        self.do(question, "Yes")
        self.finished()
        self.wait_ready()
        self.assertEqual(read(self.in_tree("d", "b")), "2" * 1000)

    def test_error_and_abort(self):
        panel = self.open(f="1", d={})
        os.chmod(self.in_tree("d"), 0o500)
        self.choose_row(panel, "f")
        key("c")
        box = self.program.dialog("Vantrel")
        box.window.find("text").set_text("d/")
        self.do(box, "OK")
        question = self.program.message("Vantrel")
        self.assert_told(question, f"label: {ONE}TREE/d/f", "push button: Yes (default)", "push button: No")
        self.do(question, "Yes")
        error = self.program.message("Vantrel")
        self.assertIn("Permission denied", error.text)
        self.assertEqual(sorted(line for line in told(error) if not line.startswith("label")), [
            "push button: Abort", "push button: Ignore", "push button: IgnoreAll", "push button: Retry (default)"])
        self.check_names(error)
        self.do(error, "Abort")
        self.finished()

    # --- Menus.

    def test_about(self):
        self.open()
        bar = self.program.main().find("menu bar")
        self.assertEqual([[entry.name for entry in title.children()[0].children()] for title in bar.children()],
                         [["Exit"], ["Tile Vertically", "Single Panel", "Tile Horizontally"], ["About"]])
        self.assertEqual([title.name for title in bar.children()], ["File", "Window", "Help"])
        bar.children()[2].find("menu item", "About").do("Press")
        box = self.program.box("About Vantrel")
        self.assertRegex(box.text, r"^\nVantrel Version 0\.30\n\n.+$")
        self.assertEqual(told(box)[1:], ["push button: OK (default)"])
        self.check_names(box)
        self.do(box, "OK")

    def test_no_settings(self):
        self.start(settings=None, ready=False)
        box = self.program.box("Error")
        self.assert_told(box, "label: Failed to open .Vantrel", "push button: OK (default)")
        self.do(box, "OK")
        self.wait_ready()
