"""Folders and archives, walked in the real program by keyboard."""

import io
import unittest
import zipfile

import fixtures
from harness import children, EndToEnd, output, until


class Containers(EndToEnd):
    def build(self):
        inner = io.BytesIO()
        with zipfile.ZipFile(inner, "w") as out:
            out.writestr("deep.txt", "at the bottom")
        folder = self.files / "tree"
        (folder / "sub").mkdir(parents=True)
        fixtures.text(folder / "sub" / "in sub.txt")
        fixtures.archive(folder / "box.zip", {"docs/one.txt": "one", "docs/two.txt": "two", "inner.zip": inner.getvalue()})
        return folder

    def test_a_walk_by_keyboard(self):
        program = self.program(self.build())
        program.wait_status("^listing .*/tree$")
        walk = [
            ("Down Home Return", "^listing .*/tree/sub$"),         # the folder comes first
            ("Home Return", "^shown text .*in sub.txt"),
            ("BackSpace", "^listing .*/tree/sub$"),
            ("BackSpace", "^listing .*/tree$"),
            ("End Return", "^listing .*box.zip$"),
            ("Home Return", "^listing .*box.zip / docs$"),
            ("Home Return", "^shown text .*one.txt"),
            ("Right", "^shown text .*two.txt"),             # the next document, without the list between
            ("Left", "^shown text .*one.txt"),
            ("BackSpace", "^listing .*box.zip / docs$"),
            ("BackSpace", "^listing .*box.zip$"),
            ("End Return", "^listing .*inner.zip$"),
            ("Home Return", "^shown text .*deep.txt"),
            ("BackSpace", "^listing .*inner.zip$"),
            ("BackSpace", "^listing .*box.zip$"),
            ("BackSpace", "^listing .*/tree$"),
        ]
        for keys, title in walk:
            program.keys(*keys.split())
            program.wait_status(title, patience=30)

    def test_the_protocol_of_a_listing(self):
        folder = self.build()
        (folder / "link").symlink_to("/etc/passwd")
        program = self.program(folder, page="driver")
        report = program.wait_result(lambda r: r.get("last", {}).get("kind") == "container")
        listing = report["last"]["container"]
        self.assertEqual([e["name"] for e in listing["entries"]], ["sub", "box.zip", "link"])
        self.assertEqual(listing["entries"][2]["blockedReason"], "Symbolic links are not opened from the folder browser.")
        self.assertEqual((listing["kind"], listing["parentId"]), ("folder", None))
        self.assertEqual(report["last"]["containerToken"], listing["token"])

    def readers(self, program):
        return {p for p in children(program.process.pid) if "quillmere-archive-reader" in output("ps", "-o", "args=", "-p", str(p))}

    def test_an_archive_that_never_ends_is_stopped(self):
        fixtures.endless_archive(self.files / "ring.zip")
        for keys, title in ((["Escape"], "^error Preview cancelled"),
                            ([], r"^error This archive took too long to read\. The operation was stopped\.$")):
            program = self.program(self.files / "ring.zip")
            program.wait_status("^busy")
            working = until("the reader", lambda: self.readers(program))
            program.keys(*keys)
            program.wait_status(title)
            # Another one may stand ready for the next archive.
            until("the reader's end", lambda: not working & self.readers(program), patience=5)

    def test_archives_that_cannot_be_browsed(self):
        (self.files / "garbage.zip").write_bytes(b"no archive at all" * 100)
        fixtures.archive(self.files / "climbs.zip", {"../outside.txt": "x"})
        for name, sentence in (("garbage.zip", "The archive could not be read: "),
                               ("climbs.zip", "The archive contains an unsafe entry path.")):
            with self.subTest(name=name):
                program = self.program(self.files / name, page="driver")
                report = program.wait_result(lambda r: r.get("last", {}).get("type") == "error")
                self.assertTrue(report["last"]["message"].startswith(sentence), report["last"])


if __name__ == "__main__":
    unittest.main()
