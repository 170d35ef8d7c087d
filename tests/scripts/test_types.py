"""The table of document types against the page that shows them."""
import plistlib
import re
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def documents():
    return plistlib.loads((ROOT / "resources/Info.plist").read_bytes())["CFBundleDocumentTypes"]


class DocumentTypes(unittest.TestCase):
    def test_every_type_with_a_viewer_is_registered_once(self):
        registered = [extension for document in documents() for extension in document["CFBundleTypeExtensions"]]
        self.assertEqual(sorted(registered), sorted(set(registered)))
        viewers = " ".join(re.findall(r"extensions: '([^']*)'", (ROOT / "page/src/registry.ts").read_text())).split()
        self.assertGreater(len(viewers), 30)
        self.assertEqual(sorted(set(viewers) - set(registered)), [])

    def test_every_type_has_its_icon(self):
        for document in documents():
            self.assertTrue((ROOT / "resources" / document["CFBundleTypeIconFile"]).is_file(), document)


if __name__ == "__main__":
    unittest.main()
