"""Whole-process comparisons on one virtual display, each as a ratio in one run: start-up against a bare window,
throughput against a loopback web server in the same engine, memory while serving a file of 5 GB; and what a listing of
10,000 entries costs the main thread and the page's frame rate."""

import http.server
import json
import os
import re
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tests/e2e"))
from harness import BUNDLE, Display, PAGES, Program, until  # noqa: E402

BARE = os.environ["BARE_WINDOW"]
MEGABYTE = 1024 * 1024

READ = """
    const size = %d, out = {};
    const stream = async () => {
        const begin = performance.now(), reader = (await fetch('large.bin')).body.getReader();
        let got = 0;
        for (;;) { const { done, value } = await reader.read(); if (done) break; got += value.length; }
        if (got !== size) throw new Error('short: ' + got);
        return size / 1048.576 / (performance.now() - begin);
    };
    const ranges = async () => {
        const begin = performance.now(), step = 8 * 1048576;
        for (let at = 0; at < size; at += step) {
            const last = Math.min(at + step, size) - 1;
            const answer = await fetch('large.bin', { headers: { Range: `bytes=${at}-${last}` } });
            if ((await answer.arrayBuffer()).byteLength !== last - at + 1) throw new Error('short range');
        }
        return size / 1048.576 / (performance.now() - begin);
    };
    await stream();
    out.stream = [await stream(), await stream(), await stream()];
    if (%s) out.ranges = [await ranges(), await ranges(), await ranges()];
    return out;
"""

MEMORY = """
    const size = %d, step = 8 * 1048576;
    api.publish({ state: 'idle' });
    await api.sleep(3000);
    const begin = performance.now();
    for (let at = 0; at < size; at += step) await (await fetch('large.bin', { headers: { Range: `bytes=${at}-${Math.min(at + step, size) - 1}` } })).arrayBuffer();
    const all = performance.now() - begin;
    const seek = async (at) => { const b = performance.now(); await (await fetch('large.bin', { headers: { Range: `bytes=${at}-${at + 65535}` } })).arrayBuffer(); return performance.now() - b; };
    const start = [], end = [];
    for (let i = 0; i < 20; i++) { start.push(await seek(i * 65536)); end.push(await seek(size - 65536 * (i + 2))); }
    return { seconds: all / 1000, start, end };
"""


SCROLL = """
    const nextFrame = () => new Promise(requestAnimationFrame);
    /** Frames in a second and the share of them that came late, while `step` runs before each. */
    const rate = async step => {
        await nextFrame();
        const times = [performance.now()];
        while (times.at(-1) - times[0] < 4000) { step(); await nextFrame(); times.push(performance.now()); }
        const gaps = times.slice(1).map((time, i) => time - times[i]);
        const usual = [...gaps].sort((a, b) => a - b)[gaps.length >> 1];
        return { perSecond: gaps.length / (times.at(-1) - times[0]) * 1000, late: gaps.filter(gap => gap > 2 * usual).length / gaps.length };
    };
    (async () => {
        let rows;
        while (!(rows = document.querySelector('.listing .rows'))) await nextFrame();
        while (document.documentElement.dataset.state !== 'listing') await nextFrame();
        await new Promise(resolve => setTimeout(resolve, 2000));
        const marker = document.body.appendChild(Object.assign(document.createElement('i'), { style: 'position:fixed;width:9px;height:9px;background:red' }));
        let at = 0;
        const idle = await rate(() => { marker.style.left = `${at = (at + 7) % 300}px`; });
        marker.remove();
        const slow = await rate(() => { rows.scrollTop += 20; });
        const fast = await rate(() => { rows.scrollTop += 700; });
        window.dispatchEvent(new CustomEvent('page-status', { detail: JSON.stringify({ state: 'done', idle, slow, fast }) }));
    })();
"""

REFRESH = """
    setInterval(() => document.activeElement.dispatchEvent(new KeyboardEvent('keydown', { key: 'F5', bubbles: true })), 1500);
"""


class Server:
    """A loopback web server with ranges, which hands whole buffers to the kernel."""

    def __init__(self, folder):
        class Handler(http.server.SimpleHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def __init__(self, *arguments):
                super().__init__(*arguments, directory=str(folder))

            def do_GET(self):
                path = Path(self.translate_path(self.path))
                wanted = re.match(r"bytes=(\d+)-(\d+)$", self.headers.get("Range", ""))
                if not path.is_file() or (path.suffix != ".bin"):
                    super().do_GET()
                    return
                size = path.stat().st_size
                first, last = (int(wanted[1]), int(wanted[2])) if wanted else (0, size - 1)
                self.send_response(206 if wanted else 200)
                self.send_header("Content-Type", "application/octet-stream")
                self.send_header("Content-Length", str(last - first + 1))
                if wanted:
                    self.send_header("Content-Range", f"bytes {first}-{last}/{size}")
                self.end_headers()
                self.wfile.flush()
                with path.open("rb") as file:
                    while first <= last:
                        sent = os.sendfile(self.connection.fileno(), file.fileno(), first, last - first + 1)
                        if sent == 0:
                            break
                        first += sent

            def log_message(self, *arguments):
                pass

        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.address = f"http://127.0.0.1:{self.server.server_address[1]}"
        threading.Thread(target=self.server.serve_forever, daemon=True).start()


def bare(display, address, folder, wanted, environment=None):
    """Runs the bare window until a title satisfies `wanted`; returns (seconds at start, what `wanted` gave)."""
    begin = time.time()
    process = subprocess.Popen([BARE, address, str(folder)], env={**os.environ, "DISPLAY": display.name,
                               "LIBGL_ALWAYS_SOFTWARE": "1", **(environment or {})}, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    try:
        for line in process.stdout:
            found = wanted(line)
            if found:
                return begin, found
    finally:
        process.kill()
        process.wait()
        process.stdout.close()
    raise SystemExit("the bare window ended early")


def report(line):
    try:
        found = json.loads(line)
    except ValueError:
        return None
    if found.get("state") == "failed":
        raise SystemExit(found["error"])
    return found


def ready_at(line):
    found = report(line)
    return found.get("ready") if found else None


def done(line):
    found = report(line)
    return found if found and found.get("state") == "done" else None


PLAIN_DRAWING = {"GSK_RENDERER": "cairo", "WEBKIT_DISABLE_COMPOSITING_MODE": "1"}


def start_up(display, rounds=9):
    """Both keep their home folder, as a user does: the very first start also makes the list of media plug-ins. The bare
    window runs as it comes, and also with the drawing that the program chooses where there is no graphics device."""
    ours, theirs, plain = [], [], []
    with tempfile.TemporaryDirectory() as home:
        def start(then=lambda: True):
            program = Program(display, page="driver", home=home)
            time.sleep(2)  # looking at the title would take part in the race
            at = until("ready", lambda: program.result().get("ready"))
            until("the rest of the start", then)
            program.close()
            return at / 1000 - program.started

        plugins = Path(home) / "cache/gstreamer-1.0"
        start(lambda: any(plugins.glob("registry*.bin")))
        for _ in range(rounds):
            ours.append(start())
            for times, environment in ((theirs, {}), (plain, PLAIN_DRAWING)):
                begin, at = bare(display, "quillmere://app/index.html", PAGES / "driver", ready_at, environment)
                times.append(at / 1000 - begin)
    a, b, c = (statistics.median(times) * 1000 for times in (ours, theirs, plain))
    print(f"start to ready: {a:.0f} ms, bare window {b:.0f} ms, ratio {a / b:.2f} (aim: at most 1.0); "
          f"bare window drawing like ours {c:.0f} ms, ratio {a / c:.2f}")


def throughput(display, size=200 * MEGABYTE):
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name) / "page"
        shutil.copytree(PAGES / "driver", folder)
        with (folder / "large.bin").open("wb") as file:
            file.truncate(size)
        steps = Path(name) / "read.steps.js"
        steps.write_text(READ % (size, "true"))
        program = Program(display, steps, page="driver", sparse={"large.bin": size})
        ours = program.wait_result(patience=600)["value"]
        program.close()
        shutil.copy(steps, folder)
        server = Server(folder)
        steps = "index.html?steps=read.steps.js"
        _, theirs = bare(display, f"{server.address}/{steps}", folder, done)
        server.server.shutdown()
        (folder / "read.steps.js").write_text(READ % (size, "false"))
        _, plain = bare(display, f"quillmere://app/{steps}", folder, done)
        for way, aim in (("stream", 2.0), ("ranges", 1.2)):
            a, b = statistics.median(ours[way]), statistics.median(theirs["value"][way])
            print(f"200 MB, {way}: {a:.0f} MB/s, loopback server {b:.0f} MB/s, ratio {a / b:.2f} (aim: at least {aim})")
        a, b = statistics.median(ours["stream"]), statistics.median(plain["value"]["stream"])
        print(f"200 MB, stream: the same engine's scheme with a plain file stream {b:.0f} MB/s, ratio {a / b:.2f}")


def memory(display, size=5 * 1024 * MEGABYTE):
    with tempfile.TemporaryDirectory() as name:
        steps = Path(name) / "memory.steps.js"
        steps.write_text(MEMORY % size)
        program = Program(display, steps, page="driver", sparse={"large.bin": size})
        program.wait_result(lambda r: r.get("state") == "idle")
        time.sleep(1)

        def resident():
            status = Path(f"/proc/{program.process.pid}/status").read_text()
            return int(re.search(r"VmRSS:\s+(\d+)", status)[1]) / 1024

        idle, peak = resident(), 0
        while program.result().get("state") not in ("done", "failed"):
            for _ in range(20):
                peak = max(peak, resident())
                time.sleep(0.02)
        value = program.wait_result()["value"]
        program.close()
        print(f"5 GB in {value['seconds']:.0f} s: idle {idle:.0f} MB, peak {peak:.0f} MB, {peak - idle:.0f} MB above (aim: at most 40)")
        a, b = statistics.median(value["end"]), statistics.median(value["start"])
        print(f"64 KiB near the end {a:.1f} ms, at the start {b:.1f} ms, ratio {a / b:.2f}")


def page_with(folder, script):
    """The real page and one more script."""
    shutil.copytree(BUNDLE / "Contents/Resources/app", folder)
    (folder / "bench.js").write_text(script)
    index = folder / "index.html"
    index.write_text(index.read_text().replace("</body>", '<script src="./bench.js" defer></script></body>'))
    return folder


def many_files(folder, count=10_000):
    folder.mkdir()
    for i in range(count):
        (folder / f"file {i}.txt").touch()
    return folder


def main_loop(display):
    """The longest turn of the main loop while a folder of 10,000 is read and listed again. The window is minimised:
    what drawing costs is the display's affair."""
    with tempfile.TemporaryDirectory() as name:
        folder = many_files(Path(name) / "many")
        watch = Path(name) / "turns"
        program = Program(display, folder, page=page_with(Path(name) / "page", REFRESH),
                          environment={"LD_PRELOAD": os.environ["LOOP_WATCH_LIBRARY"], "LOOP_WATCH": str(watch)})
        program.wait_status("^listing")
        program.tool("xdotool", "windowminimize", program.window)
        time.sleep(3)
        turns = []
        for _ in range(7):
            program.process.send_signal(signal.SIGWINCH)
            time.sleep(4)
            turns.append(longest_turn(watch))
        program.close()
        wall, cpu = sorted(turns)[len(turns) // 2]
        print(f"main thread, listing of 10,000: longest turn {wall:.1f} ms, {cpu:.1f} ms of it at work (aim: at most 8)")


def longest_turn(watch):
    wall, cpu = watch.read_text().split()
    return float(wall), float(cpu)


def scrolling(display):
    """Frames while 10,000 rows scroll, against a small mark that moves in the same page."""
    with tempfile.TemporaryDirectory() as name:
        folder = many_files(Path(name) / "many")
        program = Program(display, folder, page=page_with(Path(name) / "page", SCROLL))
        value = program.wait_result()
        program.close()
        for way in ("slow", "fast"):
            a, b = value[way], value["idle"]
            print(f"scrolling 10,000 rows, {way}: {a['perSecond']:.0f} frames/s, {a['late']:.1%} late; a moving mark "
                  f"{b['perSecond']:.0f}, {b['late']:.1%}; ratio {a['perSecond'] / b['perSecond']:.2f} (aim: 1.0)")


PARTS = {"start_up": start_up, "throughput": throughput, "memory": memory, "main_loop": main_loop,
         "scrolling": scrolling}

if __name__ == "__main__":
    screen = Display()
    try:
        for part in sys.argv[1:] or PARTS:
            PARTS[part](screen)
    finally:
        screen.close()
