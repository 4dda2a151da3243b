"""The C program in the host guide is, to the letter, the one that is compiled and run."""

import pathlib
import re
import sys

guide = pathlib.Path(sys.argv[1]).read_text()
program = pathlib.Path(sys.argv[2]).read_text()

blocks = re.findall(r"```c\n(.*?)```", guide, re.DOTALL)
if program not in blocks:
    sys.exit(f"none of the {len(blocks)} C blocks of {sys.argv[1]} equals {sys.argv[2]}")
