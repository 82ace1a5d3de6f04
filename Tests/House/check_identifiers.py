#!/usr/bin/env python3
"""Proves that no two interfaces or classes share a 128-bit identifier. Usage: check_identifiers.py ROOT"""
import os
import re
import sys

PATTERN = re.compile(
    r"Identifier<\s*([\w:]+)\s*>\s+kIdentifier\s*\{\s*(0x[0-9a-fA-F]+)(?:ull)?\s*,\s*(0x[0-9a-fA-F]+)(?:ull)?\s*\}"
)


def main(root):
    owners = {}
    faults = []
    for top in ("API", "Inc", "Src", "Platform", "Host", "Tests"):
        for folder, _, names in os.walk(os.path.join(root, top)):
            for name in sorted(names):
                if not name.endswith((".h", ".cpp")):
                    continue
                path = os.path.join(folder, name)
                with open(path, encoding="utf-8") as file:
                    text = re.sub(r"//.*", "", file.read())
                declared = len(re.findall(r"\bkIdentifier\s*\{", text))
                matches = PATTERN.findall(text)
                if declared != len(matches):
                    faults.append(f"{path}: an identifier is written in a form that this check cannot read")
                for owner, high, low in matches:
                    key = (int(high, 16), int(low, 16))
                    if key in owners:
                        faults.append(f"{path}: {owner} has the identifier of {owners[key]}")
                    owners[key] = owner
    if len(owners) < 20:
        faults.append(f"only {len(owners)} identifiers found under {root}")
    print("\n".join(faults) if faults else f"{len(owners)} identifiers, all different")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
