"""The page's own road to granted files, in the real engine and its sandbox."""

import os
import signal
import threading
import unittest

from harness import EndToEnd, open_files, until

LARGE = 40 * 1024 * 1024

# `read` resolves to the count that it is told, or to what the call itself threw.
HEAD = """
    const read = (url, offset, length, buffer) => new Promise((resolve) => {
        try { quillMereRead(url, offset, length, buffer, resolve); } catch (error) { resolve(error.name); }
    });
    const own = new URL(open.url, location).href, page = new URL('/large.bin', location).href;
"""


class Reads(EndToEnd):
    def test_what_is_read_and_what_is_refused(self):
        _, value = self.steps(HEAD + """
            const whole = (await api.fetch(open.url)).body, size = whole.length, out = {}, buffer = new ArrayBuffer(1 << 16);
            const part = async (offset, length) => {
                new Uint8Array(buffer).fill(0);
                const count = await read(own, offset, length, buffer), got = new Uint8Array(buffer, 0, Math.max(0, count));
                return [count, got.every((b, i) => b === whole[offset + i])];
            };
            out.good = [await part(0, size), await part(7, 20), await part(size - 3, 100), await part(size, 10), await part(size + 1e9, 10), await part(0, 0)];
            const bad = [['quillmere://app/__file/00000000-0000-4000-8000-000000000000/x', 0, 5, buffer], ['file:///etc/passwd', 0, 5, buffer],
                ['/etc/passwd', 0, 5, buffer], ['quillmere://app/../../etc/passwd', 0, 5, buffer], [own.replace('//app', '//other'), 0, 5, buffer],
                ['', 0, 5, buffer], [own, -1, 5, buffer], [own, NaN, 5, buffer], [own, 0, -5, buffer], [own, 0, NaN, buffer], [own, 2 ** 60, 5, buffer],
                [own, 0, (1 << 16) + 1, buffer], [own, 0, 5, null], [own, 0, 5, new Uint8Array(16)], [own, 0, 5, 'text'],
                [own, 0, 5, new WebAssembly.Memory({ initial: 1 }).buffer]];
            out.bad = [];
            for (const row of bad) out.bad.push(await Promise.race([read(...row), api.sleep(8000).then(() => 'silence')]));
            for (const wrong of [[], [own], [own, 0, 5, buffer], [own, 0, 5, buffer, 7], [Symbol(), 0, 5, buffer, () => 0]])
                try { quillMereRead(...wrong); } catch (error) {}
            out.alive = await part(1, 5);
            return out;
        """)
        self.assertTrue(all(same for _, same in value["good"]), value)
        size = value["good"][0][0]
        self.assertGreater(size, 1000)
        self.assertEqual([count for count, _ in value["good"]], [size, 20, 3, 0, 0, 0])
        self.assertEqual(set(value["bad"]), {-1}, value["bad"])
        self.assertEqual(value["alive"], [5, True])

    def test_only_the_main_frame_has_it(self):
        (self.files / "frames").mkdir()
        (self.files / "frames" / "inner.html").write_text(
            "<script>parent.postMessage([location.search.slice(1), typeof window.quillMereRead], '*')</script>")
        _, value = self.steps("""
            const told = { main: typeof window.quillMereRead };
            addEventListener('message', (e) => Array.isArray(e.data) && (told[e.data[0]] = e.data[1]));
            const frame = (set) => { const f = document.createElement('iframe'); set(f); document.body.append(f); return f; };
            frame((f) => f.src = 'frames/inner.html?own');
            frame((f) => { f.setAttribute('sandbox', 'allow-scripts'); f.src = 'frames/inner.html?sandboxed'; });
            told.blank = typeof frame(() => 0).contentWindow.quillMereRead;
            const worker = new Worker(URL.createObjectURL(new Blob(["postMessage(['worker', typeof self.quillMereRead])"])));
            worker.onmessage = (e) => told.worker = e.data[1];
            for (let i = 0; i < 100 && Object.keys(told).length < 5; i++) await api.sleep(100);
            return told;
        """, folders={"frames": self.files / "frames"})
        self.assertEqual(value, {"main": "function", "own": "undefined", "sandboxed": "undefined",
                                 "blank": "undefined", "worker": "undefined"})

    def test_buffers_and_files_that_change_meanwhile(self):
        _, value = self.steps(HEAD + """
            const out = { outcomes: {}, many: 0 };
            const note = (count, wanted) => { const kind = count === wanted ? 'whole' : count === -1 ? 'refused' : count >= 0 && count < wanted ? 'short' : 'odd'; out.outcomes[kind] = (out.outcomes[kind] ?? 0) + 1; };
            for (let i = 0; i < 60; i++) {
                const buffer = new ArrayBuffer(1 << 20, { maxByteLength: 1 << 21 });
                const reading = read(page, i * 1000, 1 << 20, buffer);
                if (i % 2) await api.sleep(0);
                try { buffer.resize(i % 3 ? 10 : 1 << 21); } catch (error) {}
                note(await reading, 1 << 20);
            }
            const shared = new ArrayBuffer(1 << 18);
            out.many = (await Promise.all(Array.from({ length: 50 }, (_, i) => read(page, i, 1 << 18, shared)))).filter((n) => n === 1 << 18).length;
            const all = await Promise.all(Array.from({ length: 200 }, (_, i) => read(page, i << 16, 1 << 16, new ArrayBuffer(1 << 16))));
            out.parallel = all.filter((n) => n === 1 << 16 || n === -1).length;
            out.again = await read(page, 5, 100, shared);
            return out;
        """, sparse={"large.bin": LARGE})
        self.assertNotIn("odd", value["outcomes"], value)
        self.assertEqual((value["many"], value["parallel"], value["again"]), (50, 200, 100), value)

    def test_one_grant_too_many_withdraws_the_others(self):
        folder = self.files / "many"
        folder.mkdir()
        for i in range(64):  # with the steps one more than there is room for
            (folder / f"{i:02}.txt").write_text(f"file {i}")
        (folder / "test.steps.js").write_text(HEAD + """
            const { entries, token } = api.messages.findLast((m) => m.container).container, urls = [], out = {}, buffer = new ArrayBuffer(64);
            const both = async (url) => [await read(new URL(url, location).href, 0, 64, buffer), (await api.fetch(url)).status ?? 'failed'];
            for (const entry of entries.filter((e) => e.name.endsWith('.txt'))) {
                const from = api.messages.length;
                api.post({ type: 'container-open', token, id: entry.id });
                urls.push((await api.wait('open', from)).url);
                if (urls.length === 63) out.before = await both(urls[0]);
            }
            return { ...out, first: await both(urls[0]), steps: await both(open.url), last: await both(urls[63]) };
        """)
        value = self.program(folder, page="driver").wait_result()["value"]
        self.assertEqual(value, {"before": [6, 200], "first": [-1, "failed"], "steps": [-1, "failed"], "last": [7, 200]})

    def test_a_file_that_shrinks_and_grows_meanwhile_is_never_made_up(self):
        file = self.files / "test.bin"
        file.write_bytes(bytes([7]) * (8 << 20))
        stop = threading.Event()

        def change(path):
            with path.open("r+b") as kept:
                while not stop.wait(0.01):
                    kept.truncate(1 << 20)
                    stop.wait(0.01)
                    kept.seek(0)
                    kept.write(bytes([7]) * (8 << 20))

        (self.files / "test.steps.js").write_text(HEAD + """
            const size = 4 << 20, out = { whole: 0, short: 0, empty: 0, refused: 0, wrong: [] }, end = Date.now() + 6000;
            const buffer = new ArrayBuffer(size), bytes = new Uint8Array(buffer);
            api.publish({ state: 'reading' });
            while (Date.now() < end) {
                bytes.fill(9);
                const count = await read(page, 1 << 18, size, buffer);
                out[count === size ? 'whole' : count > 0 ? 'short' : count === 0 ? 'empty' : 'refused']++;
                const beyond = bytes.findIndex((b) => b !== 7);
                if (count > 0 && (beyond === -1 ? size : beyond) !== count) out.wrong.push([count, beyond, bytes[beyond]]);
            }
            return out;
        """)
        program = self.program(self.files / "test.steps.js", page="driver", sparse={"large.bin": 0})
        path = program.bundle / "Contents/Resources/app/large.bin"
        path.write_bytes(file.read_bytes())
        thread = threading.Thread(target=change, args=[path])
        thread.start()
        try:
            value = program.wait_result()["value"]
        finally:
            stop.set()
            thread.join()
        self.assertEqual(value["wrong"], [])
        self.assertGreater(value["whole"] and value["short"], 0, value)

    def test_hundreds_of_reads_leave_nothing_behind(self):
        file = self.files / "test.steps.js"
        file.write_text(HEAD + """
            const large = new ArrayBuffer(1 << 20), round = (n) => Promise.all(Array.from({ length: n }, (_, i) => read(page, i << 12, 1 << 16, large)));
            await round(50);
            api.publish({ state: 'warm' });
            await api.sleep(4000);
            for (let i = 0; i < 300; i++) await read(page, i << 12, 1 << 16, large);
            for (let i = 0; i < 6; i++) { await round(100); for (let k = 0; k < 20; k++) fetch('large.bin').then((answer) => answer.body.cancel()); }
            return 'read';
        """)
        program = self.program(file, page="driver", sparse={"large.bin": LARGE})
        program.wait_result(lambda r: r.get("state") == "warm")
        before = [len(open_files(pid)) for pid in (program.process.pid, program.web_process())]
        program.wait_result()

        def after():
            return [len(open_files(pid)) for pid in (program.process.pid, program.web_process())]

        # The engine itself opens a few for the first pressure on memory.
        until("as many descriptors as before", lambda: all(now <= then + 8 for now, then in zip(after(), before)), patience=20)

    def test_a_page_that_goes_while_it_reads(self):
        file = self.files / "test.steps.js"
        file.write_text(HEAD + """
            for (let i = 0; i < 30; i++) quillMereRead(page, 0, 1 << 22, new ArrayBuffer(1 << 22), () => 0);
            location.reload();
            await api.sleep(60000);
        """)
        program = self.program(file, page="driver", sparse={"large.bin": LARGE})
        program.wait_result(lambda r: r.get("last", {}).get("type") == "init")  # nothing is opened by itself afterwards
        until("no file held", lambda: not [link for link in open_files(program.process.pid) if link.endswith("large.bin")])
        self.assertIsNone(program.process.poll())

    def test_the_program_outlives_a_page_that_dies_while_it_reads(self):
        program, _ = self.steps(HEAD + """
            for (let i = 0; i < 30; i++) quillMereRead(page, 0, 1 << 22, new ArrayBuffer(1 << 22), () => 0);
            return 'reading';
        """, sparse={"large.bin": LARGE})
        for _ in range(3):
            before = program.result()["run"]
            os.kill(until("the web process", program.web_process), signal.SIGKILL)
            program.wait_result(lambda r: r.get("run") not in (None, before) and r.get("state") == "done")
        self.assertIsNone(program.process.poll())

        def held():
            return [link for link in open_files(program.process.pid) if link.endswith("large.bin")]

        until("no file held for pages that are dead or done", lambda: not held())


if __name__ == "__main__":
    unittest.main()
