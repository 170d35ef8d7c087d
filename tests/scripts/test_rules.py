"""scripts/rules finds what the architecture forbids, and only that."""
import contextlib
import importlib.machinery
import importlib.util
import io
import tempfile
import unittest
from pathlib import Path

RULES = Path(__file__).resolve().parents[2] / "scripts/rules"
LOADER = importlib.machinery.SourceFileLoader("rules", str(RULES))
rules = importlib.util.module_from_spec(importlib.util.spec_from_loader("rules", LOADER))
LOADER.exec_module(rules)


class Rules(unittest.TestCase):
    def found(self, path, text, exceptions=frozenset()):
        with tempfile.TemporaryDirectory() as folder:
            file = Path(folder) / path
            file.parent.mkdir(parents=True)
            file.write_text(text)
            return " | ".join(rules.offences(Path(folder), set(exceptions)))

    def test_rows(self):
        field = "    std::function<void(int)> call{};\n"
        rows = [
            # what, path, text, part of the finding; "" where there is none
            ("down", "shell/A.cpp", '#include "bridge/B.h"\n#include "base/C.h"\n', ""),
            ("up", "base/A.cpp", '#include "platform/B.h"\n', "base/A.cpp:1: base must not include platform"),
            ("up to the top", "lifecycle/A.h", '\n#include "shell/B.h"\n', "lifecycle/A.h:2"),
            ("to a neighbour", "prepare/A.h", '#include "containers/B.h"\n', "prepare must not include containers"),
            ("to a backend", "files/A.h", '#include "platform/gtk/web/B.h"\n', "files must not include platform/gtk"),
            ("helpers and the desktop", "helpers/image-worker/A.h", '#include "platform/gtk/B.h"\n', "image-worker must not"),
            ("the toolkit", "shell/A.h", "#include <gtk/gtk.h>\n", "toolkit headers"),
            ("the toolkit in its place", "platform/gtk/web/A.h", "#include <webkit/webkit.h>\n", ""),
            ("tests go anywhere", "tests/base/A.cpp", '#include "shell/B.h"\n', ""),
            ("long", "base/A.cpp", "\n" * 351, "351 lines"),
            ("just not long", "base/A.cpp", "\n" * 350, ""),
            ("a guard", "base/A.h", "#ifndef BASE_A_H\n", "#pragma once"),
            ("many fields", "base/A.h", "class A : public B<int> {\nprivate:\n" + field * 16 + "};\n", "A has 16 fields"),
            ("just not many", "base/A.h", "struct A {\n" + field * 15 + "    void f(int a) { int b; }\n    using C = int;\n"
             "    static constexpr int d = 1;\n    A& operator=(const A&) = delete;\n};\n", ""),
            ("fields of a class within", "base/A.h", "struct A {\n    struct B {\n" + field * 16 + "    };\n};\n", "B has 16"),
            ("what only looks like fields", "base/A.h", "struct A {\n" + '    // int a;\n    int f(const char* = "int b;");\n' * 16
             + "};\n", ""),
        ]
        for what, path, text, finding in rows:
            with self.subTest(what):
                found = self.found(path, text)
                self.assertIn(finding, found)
                self.assertEqual(bool(found), bool(finding), found)

    def test_exceptions_end_with_their_reason(self):
        exception = {("base/A.cpp", "platform")}
        self.assertEqual(self.found("base/A.cpp", '#include "platform/B.h"\n', exception), "")
        with contextlib.redirect_stderr(io.StringIO()) as told:
            self.assertEqual(self.found("base/A.cpp", "\n", exception), "")
        self.assertIn("no longer needs its exception for platform", told.getvalue())


if __name__ == "__main__":
    unittest.main()
