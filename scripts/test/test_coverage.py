"""Coverage finds what no test reaches."""

import sys
import unittest
from collections import Counter
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
import coverage

CODE = "if (late) return;"


class Findings(unittest.TestCase):
    def findings(self, often_true=1, reasons=None, executed=1):
        file = coverage.File(text=["int Wait() {", f"  {CODE}"], lines={2: executed}, regions=Counter({(2, 3, 2, 20): executed}),
                             branches=Counter({(2, 7, 2, 11, "true"): often_true, (2, 7, 2, 11, "false"): 1}))
        return list(coverage.findings_of({"Wait.cpp": file}, reasons or {}))

    def test_what_is_reached_is_good(self):
        self.assertEqual(self.findings(), [])

    def test_an_outcome_that_never_happens_is_found(self):
        self.assertEqual(self.findings(often_true=0),
                         [f"ClimateS/src/Wait.cpp:2: no test reaches it, it is never true: {CODE}"])

    def test_code_that_is_never_executed_is_found(self):
        self.assertEqual(self.findings(executed=0),
                         [f"ClimateS/src/Wait.cpp:2: no test reaches it, it is never executed: {CODE}"])

    def test_a_reason_excuses_it(self):
        self.assertEqual(self.findings(often_true=0, reasons={("Wait.cpp", CODE): ("never", "why")}), [])

    def test_a_reason_for_what_is_reached_is_found(self):
        self.assertEqual(self.findings(reasons={("Wait.cpp", CODE): ("never", "why")}),
                         [f"ClimateS/test/unreached.txt: a test reaches it: Wait.cpp: {CODE}"])

    def test_what_is_reached_sometimes_may_be_reached_or_not(self):
        reasons = {("Wait.cpp", CODE): ("sometimes", "why")}
        self.assertEqual(self.findings(often_true=0, reasons=reasons), [])
        self.assertEqual(self.findings(reasons=reasons), [])

    def test_a_reason_for_code_that_is_gone_is_found(self):
        self.assertEqual(self.findings(reasons={("Wait.cpp", "gone();"): ("sometimes", "why")}),
                         ['ClimateS/test/unreached.txt: Wait.cpp has no line "gone();"'])

    def test_a_source_that_no_program_has_is_found(self):
        self.assertEqual(list(coverage.findings_of({"Wait.cpp": coverage.File(text=[])}, {})),
                         ["ClimateS/src/Wait.cpp: is in none of the programs"])


if __name__ == "__main__":
    unittest.main()
