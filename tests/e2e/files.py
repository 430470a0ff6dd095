"""Files that tests make and look at."""

import os
import shutil


class Link(str):
    """A symbolic link with this target."""


def make_tree(folder, entries):
    """Makes files (from str or bytes), folders (from dict) and Links."""
    os.makedirs(folder, exist_ok=True)
    for name, content in entries.items():
        path = os.path.join(folder, name)
        if isinstance(content, dict):
            make_tree(path, content)
        elif isinstance(content, Link):
            os.symlink(content, path)
        else:
            write(path, content)


def write(path, content):
    """Writes a file that appears at once as a whole."""
    content = content if isinstance(content, bytes) else content.encode()
    with open(path + "~", "wb") as file:
        file.write(content)
    os.rename(path + "~", path)


def read(path):
    with open(path, "rb") as file:
        return file.read().decode("latin-1")


def listing(folder):
    """Everything below a folder: names of folders end in "/"; files stand with their content, links with "->"."""
    found = {}
    for place, folders, files in os.walk(folder):
        for name in folders + files:
            path = os.path.join(place, name)
            key = os.path.relpath(path, folder)
            if os.path.islink(path):
                found[key] = "-> " + os.readlink(path)
            elif os.path.isdir(path):
                found[key + "/"] = ""
            else:
                found[key] = read(path)
    return found


def remove_tree(folder):
    for place, folders, _ in os.walk(folder):
        for name in folders:
            path = os.path.join(place, name)
            if not os.path.islink(path):
                os.chmod(path, 0o700)
    shutil.rmtree(folder, ignore_errors=True)
