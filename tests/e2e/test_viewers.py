"""Our own page in the real program: every family of files is shown, and what cannot be shown says so."""

import unittest

import fixtures
from harness import EndToEnd


def png_under_another_name(path):
    fixtures.picture(path.with_suffix(".png"))
    path.with_suffix(".png").rename(path)


class Viewers(EndToEnd):
    def shows(self, name, pattern, make):
        path = self.files / name
        make(path)
        program = self.program(path)
        title = program.wait_status("^(shown|error|listing)", patience=240)
        self.assertRegex(title, pattern, name)
        return program

    def test_families(self):
        def repeated(path):
            path.write_text("2026-11-22 08:15:00 INFO the lake was still\n" * 1_700_000)

        table = [
            ("notes.txt", "^shown text", fixtures.text),
            ("depths.py", "^shown text", lambda p: fixtures.text(p, "def depth(x):\n    return x * 2\n")),
            ("trap.html", "^shown text", lambda p: fixtures.text(p, "<script>document.title = 'error'</script>")),
            ("empty.txt", "^shown text", lambda p: fixtures.text(p, "")),
            ("long.log", "^shown largetext", repeated),
            ("unknown.qqq", "^shown text", fixtures.text),
            ("random.qqq", "^shown hex", lambda p: p.write_bytes(bytes(range(256)) * 40)),
            ("picture.png", "^shown image", fixtures.picture),
            ("picture.jpg", "^shown image", fixtures.picture),
            ("picture.svg", "^shown image", lambda p: fixtures.text(
                p, '<svg xmlns="http://www.w3.org/2000/svg" width="40" height="40"><circle r="20"/></svg>')),
            ("broken.png", "^shown text", lambda p: fixtures.text(p, "no picture")),
            ("broken.pdf", "^shown text", lambda p: fixtures.text(p, "no pages")),
            ("damaged.png", "^shown hex", lambda p: p.write_bytes(b"\x89PNG\r\n\x1a\n" + bytes(range(256)))),
            ("picture under a wrong name.txt", "^shown image", png_under_another_name),
            ("gone.txt", "^error The selected item no longer exists or access was denied", lambda p: None),
        ]
        for name, pattern, make in table:
            with self.subTest(name=name):
                self.shows(name, pattern, make)

    def test_conversions(self):
        table = [
            ("scan.tif", "^shown image", fixtures.picture),
            ("scan.jp2", "^shown image", fixtures.picture),
            ("layers.psd", "^shown image", fixtures.picture),
            ("no picture.heic", "^(shown|error)", fixtures.text),
            ("letter.docx", "^shown pdf", fixtures.office),
            ("letter.odt", "^shown pdf", fixtures.office),
            ("letter.rtf", "^shown pdf", fixtures.office),
            ("letter.doc", "^shown pdf", fixtures.office),
            ("talk.pptx", "^shown pdf", fixtures.office),
            ("talk.odp", "^shown pdf", fixtures.office),
            ("program.ts", "^shown text", lambda p: fixtures.text(p, "const a: number = 1;\n")),
        ]
        for name, pattern, make in table:
            with self.subTest(name=name):
                program = self.shows(name, pattern, make)
                left = [f for f in (program.home / "cache/Quillmere").iterdir() if not f.name.endswith((".png", ".pdf"))]
                self.assertEqual([f.name for f in left if f.name not in ("ContainerPreviews", "content-filters")], [])


if __name__ == "__main__":
    unittest.main()
