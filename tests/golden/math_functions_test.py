#!/usr/bin/python3
"""No result depends on the machine: of the math library, the libraries and the program call only what is exact
or rounded as IEEE 754 says. Others, the logarithm and the hypotenuse among them, differ between machines in their
last bits.

usage: math_functions_test.py NM FILE...   (NM: the one of the machine that the files are for)
"""

import subprocess
import sys

INEXACT = {
    "acos", "acosh", "asin", "asinh", "atan", "atan2", "atanh", "cbrt", "cos", "cosh", "erf", "erfc", "exp", "exp10",
    "exp2", "expm1", "hypot", "j0", "j1", "jn", "lgamma", "log", "log10", "log1p", "log2", "pow", "sin", "sincos",
    "sinh", "tan", "tanh", "tgamma", "y0", "y1", "yn",
}


def imported(nm, path):
    listed = subprocess.run([nm, "--dynamic", "--undefined-only", path], capture_output=True, text=True, check=True)
    return {line.split()[-1].split("@")[0] for line in listed.stdout.splitlines()}


def main():
    nm, *paths = sys.argv[1:]
    forms = {name + suffix for name in INEXACT for suffix in ("", "f", "l")}
    problems = [f"{path} calls {name}" for path in paths for name in sorted(imported(nm, path) & forms)]
    print("\n".join(problems) or f"{len(paths)} files call nothing that is inexact")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
