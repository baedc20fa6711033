"""Prints what installations left in private roots, as other programs read it: a JSON array with one object a root.

Usage: read_root.py ROOT...

    preferences  {domain: {key: [type, value]}}, read by plistlib; a text for a file that it does not read
    finder       {path: the Finder information in hexadecimal digits, or null}, read by getfattr
    files        every path in the root, sorted
"""

import datetime
import json
import os
import plistlib
import subprocess
import sys

FINDER_OBJECTS = ["/Applications/Corvane", "/Applications/Corvane/Icon\r"]


def typed(value):
    if isinstance(value, datetime.datetime):
        return ["datetime", value.isoformat()]
    if isinstance(value, bytes):
        return ["bytes", value.hex()]
    return [type(value).__name__, value]


def read_preferences(path):
    try:
        with open(path, "rb") as file:
            return {key: typed(value) for key, value in plistlib.load(file).items()}
    except Exception as fault:  # whatever plistlib makes of a damaged file
        return f"{type(fault).__name__}: {fault}"


def finder_information(path):
    command = ["getfattr", "--absolute-names", "--encoding=hex", "--only-values", "--name=user.com.apple.FinderInfo", path]
    result = subprocess.run(command, capture_output=True, check=False)
    return result.stdout.hex() if result.returncode == 0 else None


def read_root(root):
    preferences = {}
    folder = root + "/Library/Preferences"
    for name in os.listdir(folder) if os.path.isdir(folder) else []:
        if name.endswith(".plist"):
            preferences[name[: -len(".plist")]] = read_preferences(f"{folder}/{name}")
    files = []
    for parent, folders, names in os.walk(root):
        files += [os.path.relpath(os.path.join(parent, name), root) for name in folders + names]
    finder = {path: finder_information(root + path) for path in FINDER_OBJECTS if os.path.exists(root + path)}
    return {"preferences": preferences, "finder": finder, "files": sorted(files)}


json.dump([read_root(root) for root in sys.argv[1:]], sys.stdout)
