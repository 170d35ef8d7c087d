"""Whole-process comparisons on one virtual display, each as a ratio in one run: start-up against a bare window,
throughput by the private scheme and by native reads against a loopback web server in the same engine, memory and the
page's turns while a file of 5 GB is read; and what a listing of 10,000 entries costs the main thread and the page's
frame rate."""

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
    const size = %d, step = 8 * 1048576, ways = %s, out = {};
    const address = new URL('large.bin', location).href, scratch = new ArrayBuffer(step / 2);
    const rate = async (all) => { const begin = performance.now(); await all(); return size / 1048.576 / (performance.now() - begin); };
    /** As the page reads: by way of a buffer that it keeps. */
    const native = async (at, length, bytes = new Uint8Array(length)) => {
        for (let got = 0; got < length; got += scratch.byteLength) {
            const part = Math.min(scratch.byteLength, length - got);
            const count = await new Promise((done) => quillMereRead(address, at + got, part, scratch, done));
            if (count !== part) throw new Error('short range');
            bytes.set(new Uint8Array(scratch, 0, part), got);
        }
        return bytes;
    };
    const scheme = async (at, length) => {
        const answer = await fetch('large.bin', { headers: { Range: `bytes=${at}-${at + length - 1}` } });
        const bytes = new Uint8Array(await answer.arrayBuffer());
        if (bytes.length !== length) throw new Error('short range');
        return bytes;
    };
    const ranges = (read) => async () => { for (let at = 0; at < size; at += step) await read(at, Math.min(step, size - at)); };
    const drain = async (body) => {
        let got = 0;
        for (const reader = body.getReader();;) { const { done, value } = await reader.read(); if (done) break; got += value.length; }
        if (got !== size) throw new Error('short: ' + got);
    };
    const nativeBody = () => {
        let at = 0;
        return new ReadableStream({ async pull(sink) {
            if (at === size) return sink.close();
            const length = Math.min(scratch.byteLength, size - at);
            sink.enqueue(await native(at, length));
            at += length;
        } });
    };
    /** The mean of 64 KiB at random. */
    const latency = async (read) => {
        const begin = performance.now();
        for (let i = 0; i < 200; i++) await read(Math.floor(Math.random() * (size - 65536)), 65536);
        return (performance.now() - begin) / 200;
    };
    const all = {
        stream: () => rate(async () => drain((await fetch('large.bin')).body)),
        ranges: () => rate(ranges(scheme)),
        small: () => latency(scheme),
        nativeStream: () => rate(async () => drain(nativeBody())),
        nativeRanges: () => rate(ranges(native)),
        nativeSmall: () => latency(native),
    };
    await all.stream();
    for (const way of ways) out[way] = [];
    for (let round = 0; round < 3; round++) for (const way of ways) out[way].push(await all[way]());
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

# The turns of the page's thread are seen by messages to itself, each in a turn of its own.
NATIVE_MEMORY = """
    const size = %d, part = 4 * 1048576, address = new URL('large.bin', location).href;
    const scratch = new ArrayBuffer(part), bytes = new Uint8Array(2 * part), { port1, port2 } = new MessageChannel();
    let last, turns, watching;
    port1.onmessage = () => { const now = performance.now(); turns.push(now - last); last = now; if (watching) port2.postMessage(0); };
    /** The longest turn while `work` is done, and one that 999 of 1000 stay within. */
    const watch = async (work) => {
        [last, turns, watching] = [performance.now(), [], true];
        port2.postMessage(0);
        await work();
        watching = false;
        await api.sleep(100);
        turns.sort((a, b) => a - b);
        return [turns.at(-1), turns[Math.floor(turns.length * 0.999)], turns.length];
    };
    const idle = await watch(() => api.sleep(5000));
    api.publish({ state: 'idle' });
    await api.sleep(3000);
    const begin = performance.now();
    let seconds;
    const reading = await watch(async () => {
        for (let at = 0; at < size; at += part) {
            const count = await new Promise((done) => quillMereRead(address, at, part, scratch, done));
            if (count !== part) throw new Error('short range');
            bytes.set(new Uint8Array(scratch), at / part %% 2 * part);
        }
        seconds = (performance.now() - begin) / 1000;
    });
    return { seconds, reading, idle };
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


SCHEME_WAYS = ["stream", "ranges", "small"]
NATIVE_WAYS = ["nativeStream", "nativeRanges", "nativeSmall"]


def throughput(display, size=200 * MEGABYTE):
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name) / "page"
        shutil.copytree(PAGES / "driver", folder)
        with (folder / "large.bin").open("wb") as file:
            file.truncate(size)
        steps = Path(name) / "read.steps.js"
        steps.write_text(READ % (size, json.dumps(SCHEME_WAYS + NATIVE_WAYS)))
        program = Program(display, steps, page="driver", sparse={"large.bin": size})
        ours = program.wait_result(patience=600)["value"]
        program.close()
        (folder / "read.steps.js").write_text(READ % (size, json.dumps(SCHEME_WAYS)))
        server = Server(folder)
        address = "index.html?steps=read.steps.js"
        _, answer = bare(display, f"{server.address}/{address}", folder, done)
        theirs = answer["value"]
        server.server.shutdown()
        (folder / "read.steps.js").write_text(READ % (size, '["stream"]'))
        _, plain = bare(display, f"quillmere://app/{address}", folder, done)
        for way, peer, aim in (("nativeRanges", "ranges", 8), ("nativeStream", "stream", 5), ("ranges", "ranges", 1.2), ("stream", "stream", 2.0)):
            a, b = statistics.median(ours[way]), statistics.median(theirs[peer])
            print(f"200 MB, {way}: {a:.0f} MB/s, loopback server {b:.0f} MB/s, ratio {a / b:.2f} (aim: at least {aim})")
        for way in ("nativeSmall", "small"):
            a, b = statistics.median(ours[way]), statistics.median(theirs["small"])
            print(f"64 KiB at random, {way}: {a:.2f} ms, loopback server {b:.2f} ms, ratio {a / b:.2f} (aim: at most 1.0)")
        a, b = statistics.median(ours["stream"]), statistics.median(plain["value"]["stream"])
        print(f"200 MB, stream: the same engine's scheme with a plain file stream {b:.0f} MB/s, ratio {a / b:.2f}")


def resident(pid):
    return int(re.search(r"VmRSS:\s+(\d+)", Path(f"/proc/{pid}/status").read_text())[1]) / 1024


def memory_of(display, source, size, process):
    """Runs the steps; (what they returned, megabytes of `process` before, at most)."""
    with tempfile.TemporaryDirectory() as name:
        steps = Path(name) / "memory.steps.js"
        steps.write_text(source % size)
        program = Program(display, steps, page="driver", sparse={"large.bin": size})
        program.wait_result(lambda r: r.get("state") == "idle")
        time.sleep(1)
        watched = process(program)
        idle, peak = resident(watched), 0
        while program.result().get("state") not in ("done", "failed"):
            for _ in range(20):
                peak = max(peak, resident(watched))
                time.sleep(0.02)
        value = program.wait_result()["value"]
        program.close()
        return value, idle, peak


def memory(display, size=5 * 1024 * MEGABYTE):
    value, idle, peak = memory_of(display, MEMORY, size, lambda program: program.process.pid)
    print(f"5 GB in {value['seconds']:.0f} s: idle {idle:.0f} MB, peak {peak:.0f} MB, {peak - idle:.0f} MB above (aim: at most 40)")
    a, b = statistics.median(value["end"]), statistics.median(value["start"])
    print(f"64 KiB near the end {a:.1f} ms, at the start {b:.1f} ms, ratio {a / b:.2f}")


def native_memory(display, size=5 * 1024 * MEGABYTE):
    value, idle, peak = memory_of(display, NATIVE_MEMORY, size, lambda program: program.web_process())
    print(f"5 GB natively in {value['seconds']:.1f} s, web process: idle {idle:.0f} MB, peak {peak:.0f} MB, {peak - idle:.0f} MB above (aim: at most 120)")
    (longest, usual, count), (idle_longest, idle_usual, _) = value["reading"], value["idle"]
    print(f"turns of its main thread: longest {longest:.1f} ms (aim: at most 16), 999 of 1000 within {usual:.1f} ms of {count}; "
          f"doing nothing {idle_longest:.1f} ms, {idle_usual:.1f} ms")


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


PARTS = {"start_up": start_up, "throughput": throughput, "memory": memory, "native_memory": native_memory,
         "main_loop": main_loop, "scrolling": scrolling}

if __name__ == "__main__":
    screen = Display()
    try:
        for part in sys.argv[1:] or PARTS:
            PARTS[part](screen)
    finally:
        screen.close()
