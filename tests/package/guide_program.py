#!/usr/bin/env python3
"""Makes one program of the pieces of code in a guide.

    guide_program.py GUIDE PROGRAM EXPECTED

Each piece of C++ becomes a function, with its includes before all. EXPECTED gets what the guide says that they print.
"""

import pathlib
import re
import sys

guide, program, expected = map(pathlib.Path, sys.argv[1:])
pieces = re.findall(r"^```cpp\n(.*?)^```\n```text\n(.*?)^```$", guide.read_text(), re.MULTILINE | re.DOTALL)
if len(pieces) != guide.read_text().count("```cpp"):
    sys.exit("a piece of code has no text below it that says what it prints")

includes, functions = set(), []
for number, (code, _) in enumerate(pieces):
    lines = code.splitlines()
    includes.update(line for line in lines if line.startswith("#include"))
    body = "\n".join(line for line in lines if not line.startswith("#include"))
    functions.append(f"void piece{number}() {{\n{body}\n}}\n")
calls = "".join(f"    piece{number}();\n" for number in range(len(pieces)))
program.write_text("\n".join([*sorted(includes), *functions, f"int main() {{\n{calls}}}\n"]))
expected.write_text("".join(text for _, text in pieces))
