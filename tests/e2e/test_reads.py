"""The page's own road to granted files, in the real engine and its sandbox."""

import os
import signal
import unittest

from harness import EndToEnd, until

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
            numbers = os.listdir(f"/proc/{program.process.pid}/fd")
            links = []
            for number in numbers:
                try:
                    links.append(os.readlink(f"/proc/{program.process.pid}/fd/{number}"))
                except OSError:
                    pass
            return [link for link in links if link.endswith("large.bin")]

        until("no file held for pages that are dead or done", lambda: not held())


if __name__ == "__main__":
    unittest.main()
