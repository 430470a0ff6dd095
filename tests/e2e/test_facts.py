"""Properties, disk usage and checksums."""

import grp
import os
import pwd

from commands import CommandTest
from desktop import clipboard, holds, key, wait_for
from files import Link


class Facts(CommandTest):
    def facts(self):
        return self.program.dialog("Properties")

    def test_properties(self):
        panel = self.open(**{"f.txt": "x" * 12345})
        os.chmod(self.in_tree("f.txt"), 0o640)
        os.utime(self.in_tree("f.txt"), (1600000000, 1700000000))
        panel.select("f.txt")
        key("p")
        box = self.facts()
        self.assertEqual([field.text for field in box.fields], [self.in_tree("f.txt")])
        user = pwd.getpwuid(os.getuid()).pw_name
        group = grp.getgrgid(os.getgid()).gr_name
        for text in ("Type:", "File: text/plain", "Size:", "12,345 bytes", "Created:", "Modified:",
                     "2023-11-14 22:13:20", "Accessed:", "2020-09-13 12:26:40", "Group:Owner:", f"{group}:{user}",
                     "Permissions:", "640", "Device:", "Filesystem:"):
            self.assertIn(text, box.texts)
        self.assertEqual(box.buttons, ["OK"])
        box.press("OK")
        self.choose(panel, "f.txt", "Facts")
        self.facts().keys("Return")

    def test_properties_of_a_folder_and_of_links(self):
        panel = self.open(d={}, l=Link("d"), m=Link("no where"))
        for name, text in (("d", "Directory"), ("l", "Link to: d"), ("m", "Link to: no where")):
            self.choose(panel, name, "Facts")
            box = self.facts()
            self.assertIn(text, box.texts)
            box.keys("Escape")

    def test_properties_of_the_folder_without_a_selection(self):
        panel = self.open(d={})
        panel.click_branch("d")
        panel.wait_folder(self.in_tree("d"))
        key("p")
        box = self.facts()
        self.assertEqual([field.text for field in box.fields], [self.in_tree("d")])
        box.press("OK")

    # --- Disk usage.

    def counted(self, path, folders, files, size):
        box = self.program.dialog("Disk Usage")
        wait_for(lambda: box.buttons == ["OK"], "the count ends")
        self.assertIn(path, box.texts)
        for caption, count in (("Folders:", folders), ("Files:", files), ("Bytes:", size)):
            self.assertIn(caption, box.texts)
            self.assertIn(f"{count:,}", box.texts)
        self.assertTrue([text for text in box.texts if text.startswith("On device: ")])
        self.assertEqual([group.name for group in box.window.find_all("panel") if group.name],
                         ["Directory Statistics:"])
        return box

    def test_disk_usage(self):
        panel = self.open("norecurse=/skipped$", d={"e": {".f": "x" * 5000}, "g": "x" * 7, "skipped": {"h": "1"}})
        inner = sum(os.path.getsize(self.in_tree("d", name)) for name in ("e", "skipped"))
        panel.select("d")
        key("s")
        self.counted(self.in_tree("d"), 2, 2, inner + 5007).press("OK")
        self.choose(panel, "d", "Usage")
        self.counted(self.in_tree("d"), 2, 2, inner + 5007).keys("Escape")

    def test_disk_usage_of_a_file(self):
        panel = self.open("norecurse=^/none", f="x" * 1234)
        panel.select("f")
        key("s")
        self.counted(self.in_tree("f"), 0, 1, 1234).press("OK")

    def test_without_the_pattern_no_folder_is_entered(self):
        panel = self.open(d={"f": "1"})
        self.choose(panel, "d", "Usage")
        self.counted(self.in_tree("d"), 0, 0, 0).press("OK")

    def test_disk_usage_can_be_cancelled(self):
        panel = self.open("norecurse=^/none")
        panel.press_drive("Root")
        panel.wait_folder("/")
        panel.select("proc")
        key("s")
        box = self.program.dialog("Disk Usage")
        if box.buttons != ["Cancel"]:
            self.skipTest("the count was too fast")
        box.press("Cancel", stays=True)
        wait_for(lambda: "Cancelled..." in box.texts or box.gone(), "it says that it is cancelled")
        if not box.gone():
            box.press("OK")
        # Gone while it counts: nothing is left behind.
        key("s")
        self.program.dialog("Disk Usage").keys("Escape")
        panel.press_drive("Tree")
        panel.wait_folder(self.tree)

    # --- Checksums.

    def sums(self, name):
        box = self.program.dialog("Checksums")
        wait_for(lambda: box.buttons.count("OK") and box.fields[1].text, "the sums are there")
        self.assertEqual(box.fields[0].text, self.in_tree(name))
        return box

    def test_checksums(self):
        panel = self.open(**{"a b": "abc"})
        self.choose(panel, "a b", "Sums")
        box = self.sums("a b")
        digests = ["900150983cd24fb0d6963f7d28e17f72", "a9993e364706816aba3e25717850c26c9cd0d89d"]
        self.assertEqual([field.text for field in box.fields[1:]], digests)
        for text in ("Filename:", "MD5 Checksum:", "SHA1 Checksum:"):
            self.assertIn(text, box.texts)
        box.press("CopyClip", stays=True)
        expected = f"{self.in_tree('a b')}\nMD5:  {digests[0]}\nSHA1: {digests[1]}"
        wait_for(lambda: clipboard() == expected, lambda: repr(clipboard()))
        box.press("OK")

    def test_checksums_of_an_empty_file(self):
        panel = self.open(f="")
        self.choose(panel, "f", "Sums")
        box = self.sums("f")
        self.assertEqual([field.text for field in box.fields[1:]],
                         ["d41d8cd98f00b204e9800998ecf8427e", "da39a3ee5e6b4b0d3255bfef95601890afd80709"])
        box.keys("Return")

    def test_checksums_of_a_file_that_may_not_be_read(self):
        panel = self.open(f="x")
        os.chmod(self.in_tree("f"), 0)
        self.choose(panel, "f", "Sums")
        message = self.program.message("Error")
        self.assertEqual(message.text, f"File: {self.in_tree('f')}\nCannot be read.\nPermission denied")
        message.press("OK")
        self.program.wait_for_no_box()
        panel.select("f")

    def test_checksums_are_modal_and_can_be_cancelled(self):
        panel = self.open(f="")
        os.truncate(self.in_tree("f"), 30 << 30)
        self.choose(panel, "f", "Sums")
        box = self.program.dialog("Checksums")
        self.assertIn("Cancel", box.buttons)
        panel.press_drive("Root")
        holds(lambda: panel.path == self.tree, "the main window does not react")
        box.press("Cancel", stays=True)
        partial = wait_for(lambda: box.fields[1].text, "the sums of the part that was read")
        self.assertRegex(partial, "^[0-9a-f]{32}$")
        box.press("OK")
        self.choose(panel, "f", "Sums")
        self.program.dialog("Checksums").keys("Escape")
        self.program.wait_for_no_box()
        self.assertEqual(self.program.quit(), 0)
