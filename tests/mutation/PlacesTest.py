"""What the mutants are: the places that are found in a few lines of source, and what stands there instead."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent))
from places import places_of


def changes(source, operator):
    return [(source[p.start : p.end], p.others) for p in places_of("a.cpp", source) if p.operator == operator]


class Places(unittest.TestCase):
    def test_comparisons_are_exchanged_for_every_other(self):
        self.assertEqual(changes("bool b = x < y;", "relation"), [("<", ["<=", ">", ">=", "==", "!="])])

    def test_brackets_of_templates_and_declared_operators_are_no_comparisons(self):
        source = "std::vector<int> f(Row<T>(c, y)); bool operator==(const A& a, const A& b);"
        self.assertEqual(changes(source, "relation"), [])

    def test_the_end_of_a_counting_loop_is_not_exchanged_for_the_same(self):
        ((_, others),) = changes("for (int i = 0; i < n; ++i)", "relation")
        self.assertEqual(others, ["<=", ">", ">=", "=="])

    def test_constants_move_by_one_and_keep_their_form(self):
        found = changes("a = 41 + 0x0fu + 0 + 2.5 + 0.5f;", "constant")
        self.assertEqual([others for _, others in found],
                         [["42", "40"], ["0x10u", "0xeu"], ["1", "(-1)"], ["(3.5)", "(1.5)"], ["(1.5f)", "(-0.5f)"]])

    def test_nothing_is_found_in_comments_texts_macros_assertions_and_template_heads(self):
        source = ('// x < 1\n/* x < 1 */ const char* sz = "x < 1";\n#define A x < 1\n'
                  'static_assert(sizeof(int) == 4, "1");\ntemplate <class T, int N = 3> void f(T (&a)[N]);\n')
        self.assertEqual(places_of("a.cpp", source), [])

    def test_casts_of_floating_values_are_rounded(self):
        source = "n = static_cast<int>(dWidth * nScale) + static_cast<double>(dX) + static_cast<long>(nY);"
        self.assertEqual(changes(source, "rounding"), [("dWidth * nScale", ["MutantRound(dWidth * nScale)"])])

    def test_whole_divisions_are_rounded_with_all_their_factors(self):
        self.assertEqual(changes("n = b + a[1] * f(x) / (c + 2);", "rounding"),
                         [("a[1] * f(x) / (c + 2)", ["MutantQuotient(a[1] * f(x), (c + 2))"])])
        self.assertEqual(changes("d = dSum / nCount;", "rounding"), [])

    def test_calls_and_assignments_are_dropped_but_declarations_are_not(self):
        source = ("void f()\n{\n    int n = 3;\n    ClImage cImage(n, n);\n    m_n = n;\n    g(n,\n      2);\n    ++n;\n"
                  "    aRows[n].nEnd += n;\n    return g(n);\n}\n")
        self.assertEqual([old for old, _ in changes(source, "statement")],
                         ["m_n = n;", "g(n,\n      2);", "++n;", "aRows[n].nEnd += n;"])

    def test_a_dropped_statement_keeps_the_number_of_lines(self):
        source = "void f()\n{\n    g(n,\n      2);\n}\n"
        (place,) = (p for p in places_of("a.cpp", source) if p.operator == "statement")
        self.assertEqual(place.apply(";"), "void f()\n{\n    ;\n\n}\n")

    def test_neighbouring_arguments_of_one_kind_are_swapped(self):
        source = "f(nA, nB, dC);\ng(std::max(nA, nB));\nvoid h(int nA, int nB);\nk(2, 3);"
        self.assertEqual(changes(source, "arguments"), [("nA, nB", ["nB, nA"]), ("2, 3", ["3, 2"])])

    def test_a_place_is_known_again_after_lines_were_added(self):
        (one,) = places_of("a.cpp", "bool b = x < y;\n")
        (two,) = places_of("a.cpp", "\n// more\nbool b = x < y;\n")
        self.assertEqual(one.key, two.key)


unittest.main()
