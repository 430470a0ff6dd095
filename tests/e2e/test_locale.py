"""The program in a locale whose encoding is not UTF-8."""

import os
import subprocess

import desktop
from operations import ONE, OperationTest

#: As X spells it, and finds its own files for it.
LOCALE = "de_DE.ISO8859-1"


def make_locale():
    """Makes the locale where it is not made yet, and returns the folder that it is in."""
    folder = os.path.join(desktop.SESSION, "locales")
    if not os.path.isdir(folder):
        os.mkdir(folder)
        subprocess.run(["localedef", "-i", "de_DE", "-f", "ISO-8859-1", os.path.join(folder, LOCALE)], check=True)
    return folder


class OtherLocale(OperationTest):
    def setUp(self):
        super().setUp()
        # The library for keys reads only those of X's files for composing that are UTF-8.
        self.expected_messages = r"\A(qt\.xkb\.compose: failed to create compose table\n)?\Z"

    def open(self, settings=None, prefix=(), **entries):
        prefix = ["/usr/bin/env", f"LOCPATH={make_locale()}", f"LANG={LOCALE}", *prefix]
        return super().open(settings, prefix, **entries)

    def make_raw(self, *names):
        """Makes folders, with a file "in" in each, or files, by the bytes of their names."""
        for name in names:
            path = os.path.join(os.fsencode(self.tree), name)
            if name.endswith(b"/"):
                os.mkdir(path)
                path += b"in"
            with open(path, "wb") as file:
                file.write(name)

    def left(self):
        return sorted(os.listdir(os.fsencode(self.tree)))

    def test_delete_means_the_shown_name(self):
        self.make_raw(b"\xe9", b"\xc3\xa9")
        panel = self.open()
        panel.wait_names("..", "é")
        panel.select("é")
        self.delete()
        self.finished()
        self.assertEqual(self.left(), [b"\xe9"])
        panel.wait_names("..")

    def test_folders_that_would_look_alike(self):
        self.make_raw(b"x\xe9/", "x\ufffd/".encode())
        panel = self.open()
        panel.wait_names("..", "x\ufffd")
        self.assertEqual(panel.branch_names, ["tree", "x\ufffd"])
        panel.select("x\ufffd")
        self.delete()
        self.program.message("Vantrel").press("Yes")
        self.finished()
        self.assertEqual(self.left(), [b"x\xe9"])

    def test_names_that_are_handed_on(self):
        self.make_raw("ä €.txt".encode())
        shown = self.stand_in("shower")
        panel = self.open(f"drive={{tree}}=Tree\nassn=txt={shown}\n")
        panel.open_row("ä €.txt")
        _, arguments = self.launched("shower")
        self.assertEqual(arguments, [self.in_tree("ä €.txt")])

    def test_errors_are_told_in_readable_words(self):
        panel = self.open(a="new")
        panel.select("a")
        self.copy("/dev/full", ONE + "/dev/full")
        self.replace(self.in_tree("a"), "/dev/full", "Yes")
        self.error("Error writing file:\n/dev/full\nAuf dem Gerät ist kein Speicherplatz mehr verfügbar", "Abort")
        self.finished()
