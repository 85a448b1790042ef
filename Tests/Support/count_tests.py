"""Prints how many tests of a JUnit report passed and failed. One that was not run has failed; one that ran many and says how
many counts as those."""

import re
import sys
import xml.etree.ElementTree

passed = failed = 0
cases = xml.etree.ElementTree.parse(sys.argv[1]).getroot().findall("testcase")
for case in cases:
    has_passed = case.get("status") == "run" and case.find("failure") is None
    many = re.search(r"^(\d+) of (\d+) tests passed$", case.findtext("system-out") or "", re.MULTILINE)
    here, of = map(int, many.groups()) if many else (int(has_passed), 1)
    if not has_passed and here == of:
        here -= 1  # it said so, and then ended badly
    passed += here
    failed += of - here
print(passed, failed if cases else 1)
