"""What all tests have in common."""

import os
import stat
import unittest

import desktop
from desktop import wait_for
from files import make_tree, read, remove_tree, write
from program import Vantrel

EXAMPLES = os.path.join(desktop.WORK, "examples")

#: Settings of most tests: the tree of the test is the first drive.
SETTINGS = "drive={tree}=Tree\ndrive=/=Root\n"

#: Settings with a drive inside of another one.
BROWSE = SETTINGS + "drive={tree}/a=Sub\n"


class VantrelTest(unittest.TestCase):
    """A test with a file tree and a home of its own. start() starts the program."""

    #: How the program is started.
    program_type = Vantrel

    _count = 0

    def setUp(self):
        VantrelTest._count += 1
        self.place = os.path.join(desktop.SESSION, f"t{VantrelTest._count}")
        self.tree = os.path.join(self.place, "tree")
        self.home = os.path.join(self.place, "home")
        self.launched_folder = os.path.join(self.place, "launched")
        self.stand_ins = os.path.join(self.place, "bin")
        for folder in (self.place, self.tree, self.home, self.launched_folder, self.stand_ins):
            os.mkdir(folder)
        self.addCleanup(remove_tree, self.place)
        self.program = None
        #: What the program may write to its standard error, as a regular expression: nothing.
        self.expected_messages = r"\A\Z"

    def tearDown(self):
        if self.program is not None:
            self.assertRegex(self.program.messages(), self.expected_messages)

    def make(self, **entries):
        make_tree(self.tree, entries)

    def in_tree(self, *names):
        return os.path.join(self.tree, *names)

    def start(self, settings=SETTINGS, ready=True, **options):
        """Starts the program; in the settings, {tree}, {home} and {bin} stand for folders of the test."""
        if settings is not None:
            for word, path in (("tree", self.tree), ("home", self.home), ("bin", self.stand_ins)):
                settings = settings.replace("{" + word + "}", path)
        self.program = self.program_type(self.home, self.stand_ins, settings, **options)
        self.addCleanup(self.program.end)
        self.addCleanup(desktop.let_go)
        if ready:
            self.wait_ready()
        return self.program

    def wait_ready(self):
        main = self.program.main()
        wait_for(lambda: main.has("active"), "the main window is active")
        return main

    # --- Programs that are started.

    def stand_in(self, name):
        """Puts a program into the path that only notes its arguments and its working folder."""
        path = os.path.join(self.stand_ins, name)
        note = os.path.join(self.launched_folder, name)
        write(path, f'#!/bin/sh\nprintf "%s\\0" "$PWD" "$@" >"{note}.$$~" && /bin/mv "{note}.$$~" "{note}.$$"\n')
        os.chmod(path, stat.S_IRWXU)
        return path

    def notes(self, name):
        return [file for file in os.listdir(self.launched_folder)
                if file.startswith(name + ".") and not file.endswith("~")]

    def launched(self, name):
        """Waits for the one start of a stand-in, and returns its working folder and arguments."""
        note, = wait_for(lambda: self.notes(name), f"{name} is started")
        path = os.path.join(self.launched_folder, note)
        folder, *arguments = read(path).encode("latin-1").decode().split("\0")[:-1]
        os.remove(path)
        return folder, arguments


class BrowseTest(VantrelTest):
    def open(self, *folders, settings=BROWSE, **entries):
        """Starts in the tree, and goes on into a folder of it."""
        self.make(**entries)
        self.start(settings)
        panel = self.program.panel(1)
        panel.wait_folder(self.tree)
        for depth, name in enumerate(folders, 1):
            panel.open_row(name)
            panel.wait_folder(self.in_tree(*folders[:depth]))
        return panel
