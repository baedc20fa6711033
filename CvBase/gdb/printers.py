"""Shows the texts and paths of CvBase in gdb: the build puts this into the library, and gdb finds it there.

    (gdb) print name
    $1 = "report.txt" (shared by 2)

gdb runs it for libraries and programs below its auto-load safe path only: add-auto-load-safe-path FOLDER.
"""

import gdb
import gdb.printing

WORD = gdb.lookup_type("long").sizeof
ESCAPES = {0: r"\0", 9: r"\t", 10: r"\n", 13: r"\r", 34: r"\"", 92: r"\\"}


def read(address, size):
    return bytes(gdb.selected_inferior().read_memory(address, size))


def number(address, size):
    return int.from_bytes(read(address, size), "little")


def shown(text):
    """The bytes as a text in quotes: what is not UTF-8 as \\xNN."""
    characters = text.decode("utf-8", "surrogateescape")
    return '"%s"' % "".join(
        r"\x%02x" % (ord(c) - 0xDC00) if "\udc80" <= c <= "\udcff" else ESCAPES.get(ord(c), c if c.isprintable() else r"\x%02x" % ord(c))
        for c in characters
    )


class StringPrinter:
    """Reads the std::string by its layout, which debug information of a program need not describe."""

    def __init__(self, value):
        self.text = int(value["text_"]["pointer_"])
        self.count = int(value["text_"]["count_"])

    def to_string(self):
        try:
            return self.described()
        except gdb.MemoryError:
            return "<not a String: its memory cannot be read>"

    def described(self):
        if self.count == 0:
            return "<disposed of>"
        holders = number(self.count, 4)
        if self.text == 0:
            return "null"
        length = number(self.text + WORD, WORD)
        limit = gdb.parameter("print elements") or length
        text = read(number(self.text, WORD), min(length, limit))
        rest = "..." if length > limit else ""
        return shown(text) + rest + (" (shared by %d)" % holders if holders > 1 else "")


class PathPrinter(StringPrinter):
    def __init__(self, value):
        super().__init__(value["path_"])


def printers():
    collection = gdb.printing.RegexpCollectionPrettyPrinter("CvBase")
    collection.add_printer("String", "^String$", StringPrinter)
    collection.add_printer("Path", "^(FilePath|FolderPath)$", PathPrinter)
    return collection


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
