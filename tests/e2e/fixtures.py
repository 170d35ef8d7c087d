"""Small files of every family, made on the spot by the tools that the tests have anyway."""

import struct
import subprocess
import zipfile
import zlib
from pathlib import Path


def tool(*command):
    subprocess.run([str(c) for c in command], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def picture(path, size="640x420"):
    """Whatever the extension says: png, jpg, gif, webp, tif, jp2, psd, ico, bmp."""
    tool("convert", "-size", size, "gradient:#204060-#e0c080", "-fill", "white", "-draw", "circle 320,200 320,120", path)


def film(path, *options, seconds=6):
    tool("ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"testsrc2=size=320x180:rate=25:duration={seconds}",
         "-f", "lavfi", "-i", f"sine=frequency=330:duration={seconds}", "-shortest", *options, path)


def sound(path, *options, seconds=6):
    tool("ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"sine=frequency=330:duration={seconds}", *options, path)


def office(path, words="A quiet lake"):
    """A document of the extension's own kind, made by LibreOffice from a small flat source."""
    slides = path.suffix in (".pptx", ".ppt", ".odp")
    kind = "presentation" if slides else "text"
    body = (f'<draw:page><draw:frame svg:width="10cm" svg:height="3cm"><draw:text-box><text:p>{words}</text:p></draw:text-box>'
            "</draw:frame></draw:page>" if slides else f"<text:h>{words}</text:h><text:p>{words} " + "and more " * 200 + "</text:p>")
    source = path.with_name("source.fodp" if slides else "source.fodt")
    names = " ".join(f'xmlns:{n}="urn:oasis:names:tc:opendocument:xmlns:{u}:1.0"' for n, u in (
        ("office", "office"), ("text", "text"), ("draw", "drawing"), ("svg", "svg-compatible")))
    source.write_text(f'<?xml version="1.0"?><office:document {names} office:version="1.3" '
                      f'office:mimetype="application/vnd.oasis.opendocument.{kind}">'
                      f"<office:body><office:{kind}>{body}</office:{kind}></office:body></office:document>")
    profile = path.parent / "profile"
    tool("soffice", f"-env:UserInstallation={profile.as_uri()}", "--headless", "--convert-to", path.suffix[1:],
         "--outdir", path.parent, source)
    source.with_suffix(path.suffix).rename(path)
    source.unlink()


def archive(path, entries):
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as out:
        for name, content in entries.items():
            out.writestr(name, content)


def text(path, content="The lake was still.\nSecond line.\n"):
    Path(path).write_text(content)


def endless_archive(path):
    """A xar whose second file is linked twice to the first, a ring that its reader never leaves."""
    table = (b'<?xml version="1.0"?><xar><toc><file id="1"><name>a</name><type link="original">file</type></file>'
             b'<file id="2"><name>b</name><type link="1">hardlink</type><type link="1">hardlink</type></file></toc></xar>')
    packed = zlib.compress(table)
    Path(path).write_bytes(b"xar!" + struct.pack(">HHQQI", 28, 1, len(packed), len(table), 0) + packed)
