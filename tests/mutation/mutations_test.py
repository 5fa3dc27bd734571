"""What is changed in a piece of C++, and what is left alone."""

import unittest

from mutate import read_equivalents, unknown_among
from mutations import mutants_of


def changes(text):
    """Each mutant as "kind: before -> after", in order."""
    return [f"{m.kind}: {m.before} -> {m.after}" for m in mutants_of("file.cpp", text)]


def in_a_function(statement):
    return changes(f"void f() {{\n    {statement}\n}}\n")


class Equivalents(unittest.TestCase):
    def test_every_entry_fits_a_mutant(self):
        self.assertEqual(unknown_among(read_equivalents()), [])


class Mutations(unittest.TestCase):
    def test_comparison_and_its_constant(self):
        self.assertEqual(
            in_a_function("if (a < 3) {}"),
            [
                "condition negated: if (a < 3) {} -> if (!(a < 3)) {}",
                "operator changed: if (a < 3) {} -> if (a <= 3) {}",
                "constant changed: if (a < 3) {} -> if (a < 4) {}",
            ],
        )

    def test_equality_is_not_negated_twice(self):
        self.assertEqual(
            in_a_function("while (a == b) {}"),
            ["operator changed: while (a == b) {} -> while (a != b) {}"],
        )

    def test_logic(self):
        self.assertEqual(
            in_a_function("if (a && !b) {}"),
            [
                "condition negated: if (a && !b) {} -> if (!(a && !b)) {}",
                "operator changed: if (a && !b) {} -> if (a || !b) {}",
                "negation removed: if (a && !b) {} -> if (a && b) {}",
            ],
        )

    def test_choice(self):
        self.assertEqual(
            in_a_function("f(a ? g(1) : h);")[1:2],
            ["condition negated: f(a ? g(1) : h); -> f(a ? h : g(1));"],
        )

    def test_texts_and_characters(self):
        self.assertEqual(
            in_a_function("""f("a, \\"b\\"", 'x', '\\0');""")[1:],
            [
                """text changed: f("a, \\"b\\"", 'x', '\\0'); -> f("~a, \\"b\\"", 'x', '\\0');""",
                """constant changed: f("a, \\"b\\"", 'x', '\\0'); -> f("a, \\"b\\"", 'y', '\\0');""",
                """constant changed: f("a, \\"b\\"", 'x', '\\0'); -> f("a, \\"b\\"", 'x', 'x');""",
            ],
        )

    def test_answer(self):
        self.assertEqual(
            changes("int f() {\n    return g();\n}\nbool h() {\n    return true;\n}\n"),
            [
                "answer emptied: return g(); -> return {};",
                "constant changed: return true; -> return false;",
            ],
        )

    def test_statements(self):
        found = mutants_of("file.cpp", "void f() {\n    a();\n    b();\n}\n")
        self.assertEqual(
            [(m.kind, m.before, m.after) for m in found],
            [
                ("statement removed", "a();", "(removed)"),
                ("statements swapped", "a(); b();", "b(); a();"),
                ("statement removed", "b();", "(removed)"),
            ],
        )

    def test_statement_of_a_lambda(self):
        self.assertIn(
            "statement removed: g([] { h(); }); -> g([] { });", in_a_function("g([] { h(); });")
        )

    def test_lock_is_removed_and_what_is_used_is_not(self):
        self.assertEqual(
            in_a_function("const Lock lock(mutex);"),
            ["statement removed: const Lock lock(mutex); -> (removed)"],
        )
        self.assertEqual(
            in_a_function("const bool a = g();\n    h(a);"),
            [
                "statements swapped: const bool a = g(); h(a); -> h(a); const bool a = g();",
                "statement removed: h(a); -> (removed)",
            ],
        )

    def test_what_has_no_effect_is_left_alone(self):
        self.assertEqual(
            changes(
                '#include "a.h"\n// if (a == 1)\n/* "b" */\nusing a = b<c>;\n'
                'extern "C" {\n}\ntemplate <typename T>\nvoid f(T&& t) {}\n'
            ),
            [],
        )

    def test_each_is_named_by_its_function_and_its_number_there(self):
        found = mutants_of(
            "file.cpp",
            "bool A::f() {\n    if (a()) {\n        return false;\n    }\n    return false;\n}\n",
        )
        self.assertEqual(
            [(m.line, m.function, m.ordinal) for m in found if m.kind == "constant changed"],
            [(3, "A::f", 1), (5, "A::f", 2)],
        )

    def test_only_the_change_is_made(self):
        text = "int f() {\n    return 1 + 2;\n}\n"
        self.assertIn(
            "int f() {\n    return 1 - 2;\n}\n", [m.applied(text) for m in mutants_of("f", text)]
        )


if __name__ == "__main__":
    unittest.main()
