# SPDX-License-Identifier: MIT
"""The sums in the last line of ./check."""
import json
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
import count_results  # noqa: E402


def googletest_result(*cases):
    return json.dumps({"testsuites": [{"testsuite": list(cases)}]})


def counted(capsys, *paths):
    count_results.main([str(path) for path in paths])
    return capsys.readouterr().out.split()


def test_cases_that_ran_are_counted_and_disabled_ones_are_not(tmp_path, capsys):
    result = tmp_path / "a.json"
    result.write_text(googletest_result({"status": "RUN"}, {"status": "RUN", "failures": [{"failure": "no"}]},
                                        {"status": "NOTRUN"}))
    assert counted(capsys, result) == ["1", "1"]


def test_results_of_several_programs_are_added(tmp_path, capsys):
    (tmp_path / "a.json").write_text(googletest_result({"status": "RUN"}))
    (tmp_path / "b.xml").write_text('<testsuites><testsuite tests="5" failures="1" errors="1" skipped="1"/></testsuites>')
    assert counted(capsys, tmp_path / "a.json", tmp_path / "b.xml") == ["3", "2"]


def test_half_a_result_file_is_a_failure(tmp_path, capsys):
    (tmp_path / "a.json").write_text('{"testsuites": [')
    (tmp_path / "b.xml").write_text("<testsuites>")
    assert counted(capsys, tmp_path / "a.json", tmp_path / "b.xml", tmp_path / "none.json") == ["0", "3"]


def test_without_results_there_is_nothing_to_count(capsys):
    assert counted(capsys) == ["0", "0"]
