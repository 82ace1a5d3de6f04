#!/usr/bin/env python3
"""Sound is made without the elementary functions of the C library, whose last bits differ between systems and
processors; zorvcore/math/Elementary.h has them. Usage: check_mathematics.py ROOT"""
import re
import sys
from pathlib import Path

# Functions that are rounded correctly everywhere, such as sqrt and fmod, are not among them.
CALL = re.compile(
    r"(?<![\w:.>])(?:std::|::)?"
    r"((?:sin|cos|tan|asin|acos|atan|atan2|sinh|cosh|tanh|exp|exp2|expm1|log|log2|log10|log1p|pow|cbrt|hypot|polar|arg|"
    r"fma|erf|tgamma|lgamma|cyl_bessel_i)[fl]?)\(")
# Fits of ears of SOFA files, whose sums are in the order of Eigen's vectors anyhow.
EXCEPTED = "Host/Src/Binaural/Sofa/"


def find_calls(text):
    """The calls, without comments and texts."""
    text = re.sub(r'//[^\n]*|"(?:[^"\\\n]|\\.)*"', "", text)
    return [(text.count("\n", 0, match.start()) + 1, match[1]) for match in CALL.finditer(text)]


def main(root):
    planted = "float f(float x)\n{\n\treturn std::sin(x) + sqrt(x) + Sin(x) + a.log(x); // cos(x)\n}\n"
    if find_calls(planted) != [(3, "sin")]:
        print(f"the check does not find what was planted: {find_calls(planted)}")
        return 1
    faults, count = [], 0
    for top in ("API", "Inc", "Src", "Platform", "Host"):
        for path in sorted((root / top).rglob("*")):
            name = path.relative_to(root).as_posix()
            if path.suffix in (".h", ".cpp", ".inc") and not name.startswith(EXCEPTED):
                count += 1
                faults += [f"{name}:{line}: {call} of the C library; zorvcore/math/Elementary.h has one"
                           for line, call in find_calls(path.read_text(encoding="utf-8"))]
    if count < 500:
        faults.append(f"only {count} sources found under {root}")
    print("\n".join(faults) if faults else f"{count} sources")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1])))
