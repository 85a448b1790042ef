"""Prints how many tests of a JUnit report passed and failed. One that was not run has failed."""

import sys
import xml.etree.ElementTree

cases = xml.etree.ElementTree.parse(sys.argv[1]).getroot().findall("testcase")
passed = sum(case.get("status") == "run" and case.find("failure") is None for case in cases)
print(passed, len(cases) - passed if cases else 1)
