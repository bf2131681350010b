#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Adds up test results: prints "PASSED FAILED" over the files given.

    tools/count_results.py [RESULT.json | RESULT.xml]...

.json files are GoogleTest's, .xml files are JUnit's as pytest writes them. A file that cannot be read counts as one
failure: a test program that crashed leaves half a file. A test that did not run counts as neither.
"""
import json
import sys
import xml.etree.ElementTree


def count_googletest(path):
    with open(path, encoding="utf-8") as file:
        result = json.load(file)
    cases = [case for suite in result["testsuites"] for case in suite["testsuite"] if case["status"] == "RUN"]
    failed = sum(1 for case in cases if case.get("failures"))
    return len(cases) - failed, failed


def count_junit(path):
    suites = list(xml.etree.ElementTree.parse(path).getroot().iter("testsuite"))
    total, failed, skipped = (sum(int(suite.get(key, "0")) for suite in suites for key in keys)
                              for keys in (("tests",), ("failures", "errors"), ("skipped",)))
    return total - failed - skipped, failed


def main(paths):
    passed = failed = 0
    for path in paths:
        try:
            more_passed, more_failed = (count_junit if path.endswith(".xml") else count_googletest)(path)
        except (OSError, ValueError, KeyError, xml.etree.ElementTree.ParseError):
            more_passed, more_failed = 0, 1
        passed, failed = passed + more_passed, failed + more_failed
    print(passed, failed)


if __name__ == "__main__":
    main(sys.argv[1:])
