#!/usr/bin/env python3
"""Tells which tests of a ctest run were skipped, and why. Usage: skipped-tests.py JUNIT.xml"""
import re
import sys
import xml.etree.ElementTree


def reasons(output):
    """The reasons for skipping in a test's output: GoogleTest's, and those of the Python tests."""
    found = re.findall(r": Skipped\n(.+)", output)
    return found + re.findall(r"^skipped: (.+)", output, re.M)


def main(path):
    skipped = {}
    for case in xml.etree.ElementTree.parse(path).getroot().iter("testcase"):
        output = case.findtext("system-out") or ""
        why = reasons(output)
        if case.get("status") == "notrun" and not why:
            why = ["no reason given"]
        for reason in dict.fromkeys(why):
            skipped.setdefault(reason.strip(), []).append(case.get("name"))
    for reason, names in sorted(skipped.items()):
        shown = ", ".join(names[:3]) + (f" and {len(names) - 3} more" if len(names) > 3 else "")
        print(f"skipped {len(names)} test{'' if len(names) == 1 else 's'}: {reason} ({shown})")


if __name__ == "__main__":
    main(sys.argv[1])
