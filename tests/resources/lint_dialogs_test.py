#!/usr/bin/env python3
"""Tests of lint_dialogs.py: a correct dialog has no faults, and each kind of fault is found."""
import unittest

import lint_dialogs

HEADER = "#define IDC_A 1\n#define IDC_B 2\n#define IDC_C 3\n#define IDC_SAME 3\n"
CORRECT = '''
IDD_X DIALOGEX 0, 0, 100, 60
STYLE WS_POPUP
BEGIN
    // a group and its content
    GROUPBOX "Folder", -1, 4, 4, 60, 28
    EDITTEXT IDC_A, 8, 16, 48, 12, ES_READONLY |
        WS_DISABLED
    PUSHBUTTON "", IDC_B, 68, 4, 28, 20
    PUSHBUTTON "go", IDC_C, 68, 28, 28, 20
    EDITTEXT IDC_D, 4, 4, 8, 8, NOT WS_VISIBLE
END
'''
SOURCES = '{IDC_B, L"Open"},'


def faults(old="", new="", sources=SOURCES):
    assert old in CORRECT
    return lint_dialogs.lint(CORRECT.replace(old, new, 1), HEADER + "#define IDC_D 4\n", sources)[0]


class LintTest(unittest.TestCase):
    def expect(self, found, words):
        self.assertEqual(len(found), 1, found)
        self.assertIn(words, found[0])

    def test_correct_dialog(self):
        self.assertEqual(faults(), [])

    def test_counts_controls(self):
        self.assertEqual(lint_dialogs.lint(CORRECT, HEADER + "#define IDC_D 4\n", SOURCES)[1], 5)

    def test_duplicate_id(self):
        self.expect(faults('"go", IDC_C', '"go", IDC_B'), "same id as")

    def test_unknown_id(self):
        self.expect(faults('"go", IDC_C', '"go", IDC_Q'), "undefined id")

    def test_button_without_tooltip(self):
        self.expect(faults(sources=""), "needs a tooltip")

    def test_field_without_label(self):
        self.expect(faults('GROUPBOX "Folder"', 'PUSHBUTTON "Folder"')[:1], "no label precedes it")

    def test_off_grid(self):
        self.expect(faults("68, 28, 28, 20", "68, 28, 26, 20"), "off the grid")

    def test_outside(self):
        self.expect(faults("68, 28, 28, 20", "68, 28, 36, 20"), "outside the dialog")

    def test_overlap(self):
        self.expect(faults("68, 28, 28, 20", "68, 20, 28, 20"), "overlaps")

    def test_content_outside_its_group(self):
        self.expect(faults("8, 16, 48, 12", "8, 24, 48, 12"), "overlaps")

    def test_no_area(self):
        self.expect(faults("68, 28, 28, 20", "68, 28, 28, 0"), "empty area")

    def test_unknown_statement(self):
        with self.assertRaises(ValueError):
            faults("PUSHBUTTON \"go\"", "WIDGET \"go\"")

    def test_no_dialogs(self):
        self.assertEqual(lint_dialogs.lint("", "", "")[0], ["no dialogs found"])


if __name__ == "__main__":
    unittest.main()
