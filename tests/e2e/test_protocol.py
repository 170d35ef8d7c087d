"""The private scheme, the bridge and the network block, seen from a page of the tests' own."""

import os
import socket
import unittest

from harness import EndToEnd, until


class Protocol(EndToEnd):
    def test_requests_and_answers(self):
        _, value = self.steps("""
            const whole = await api.fetch(open.url), size = whole.length;
            const facts = async (url, range, method) => {
                const a = await api.fetch(url, { method: method ?? 'GET', headers: range ? { Range: range } : {} });
                return a.failed ? 'failed' : [a.status, a.length, a.headers['content-length'], a.headers['content-range'] ?? null, a.headers['content-type']];
            };
            const refused = {};
            for (const url of ['/nothing.txt', '/%2e%2e/mac-shell.js', '/..%2fInfo.plist', 'quillmere://other/index.html',
                               '/__file/00000000-0000-4000-8000-000000000000/x'])
                refused[url] = await facts(url);
            for (const range of ['bytes=' + size + '-', 'bytes=0-1,3-4'])
                refused[range] = await facts(open.url, range);
            const part = await api.fetch(open.url, { headers: { Range: 'bytes=2-11' } });
            return { size, refused, whole: await facts(open.url), part: await facts(open.url, 'bytes=2-11'), head: await facts(open.url, null, 'HEAD'),
                     page: await facts('/index.html'), same: part.body.every((b, i) => b === whole.body[2 + i]) };
        """)
        size = value["size"]
        self.assertEqual(value["whole"], [200, size, str(size), None, "text/javascript"])
        self.assertEqual(value["part"][:4], [206, 10, "10", f"bytes 2-11/{size}"])
        self.assertEqual(value["head"][:3], [200, 0, str(size)])
        self.assertEqual((value["page"][0], value["page"][4]), (200, "text/html"))
        self.assertTrue(value["same"])
        self.assertEqual(set(value["refused"].values()), {"failed"}, value["refused"])

    def test_nothing_reaches_the_network(self):
        server = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.addCleanup(server.close)
        _, value = self.steps("""
            const at = 'http://127.0.0.1:PORT/';
            const tried = [];
            const attempt = (name, action) => { tried.push(name); try { return action(); } catch (error) { return null; } };
            attempt('fetch', () => fetch(at + 'fetch').catch(() => {}));
            attempt('beacon', () => navigator.sendBeacon(at + 'beacon', 'x'));
            attempt('socket', () => new WebSocket('ws://127.0.0.1:PORT/socket'));
            attempt('events', () => new EventSource(at + 'events'));
            for (const tag of ['img', 'iframe', 'video', 'audio', 'script', 'embed'])
                attempt(tag, () => { const e = document.createElement(tag); e.src = at + tag; document.body.append(e); });
            attempt('link', () => { const e = document.createElement('link'); e.rel = 'stylesheet'; e.href = at + 'link'; document.head.append(e); });
            attempt('style', () => { const e = document.createElement('div'); e.style.backgroundImage = 'url(' + at + 'style)'; document.body.append(e); });
            attempt('prefetch', () => { const e = document.createElement('link'); e.rel = 'prefetch'; e.href = at + 'prefetch'; document.head.append(e); });
            const source = "fetch('" + at + "worker').catch(() => {}); try { importScripts('" + at + "import') } catch {} postMessage(1)";
            const worker = new Worker(URL.createObjectURL(new Blob([source])));
            await Promise.race([new Promise(r => worker.onmessage = r), api.sleep(3000)]);
            attempt('navigate', () => { location.href = at + 'navigate'; });
            const form = document.createElement('form'); form.action = at + 'form'; document.body.append(form);
            attempt('form', () => form.submit());
            await api.sleep(1500);
            return { tried: tried.length, own: (await api.fetch(open.url)).status, blob: (await api.fetch(URL.createObjectURL(new Blob(['abc'])))).length,
                     data: (await api.fetch('data:text/plain,abcd')).length };
        """.replace("PORT", str(server.getsockname()[1])))
        self.assertGreaterEqual(value["tried"], 15)
        server.setblocking(False)
        self.assertRaises(BlockingIOError, server.accept)  # nobody has come
        self.assertEqual((value["own"], value["blob"], value["data"]), (200, 3, 4))

    def test_only_the_main_frame_has_a_voice(self):
        _, value = self.steps("""
            const frame = document.createElement('iframe');
            frame.src = 'frame.html';
            const answer = new Promise(r => addEventListener('message', e => r(e.data), { once: true }));
            document.body.append(frame);
            const voice = await Promise.race([answer, api.sleep(8000)]);
            for (const odd of [null, 7, 'text', [1], { type: 5 }, { kind: 'x' }, { type: 'nothing' }, { type: 'clipboard-copy', text: 5 }])
                api.post(odd);
            let deep = {}; for (let i = 0; i < 20000; i++) deep = { d: deep };
            try { api.post({ type: 'clipboard-copy', text: 'deep', copyRequestId: deep }); } catch (error) {}
            const from = api.messages.length;
            api.post({ type: 'clipboard-copy', text: 'from the page \\u2028 </script>', copyRequestId: 'mine' });
            const copied = await api.wait('clipboard-result', from, m => m.copyRequestId === 'mine');
            return { voice: voice ?? null, copied };
        """)
        self.assertEqual(value["voice"], "no handler")
        self.assertTrue(value["copied"]["success"])

    def test_the_clipboard(self):
        program, value = self.steps("""
            const ask = async (text, id) => { const from = api.messages.length;
                api.post({ type: 'copy-text', text, copyRequestId: id }); return await api.wait('clipboard-result', from); };
            const limit = 16 * 1024 * 1024;
            return [await ask('x'.repeat(limit), 1), await ask('x'.repeat(limit + 1), 2), await ask('', null),
                    await ask('\\n'.repeat(limit), 4.35), await ask('\\x01'.repeat(limit), [1234567.891]), await ask('x'.repeat(33 * limit / 16), 6),
                    await ask('half \\ud83d', { half: 1 / 3 }), await ask('kept', 'k')];
        """)
        self.assertEqual([(v["success"], v["copyRequestId"]) for v in value],
                         [(True, 1), (False, 2), (False, None), (True, 4.35), (True, [1234567.891]), (False, 6), (True, {"half": 1 / 3}), (True, "k")])
        self.assertEqual(until("the clipboard", lambda: program.tool("xclip", "-o", "-selection", "clipboard")), "kept")

    def test_many_requests_leave_nothing_behind(self):
        program, value = self.steps("""
            const rounds = [];
            for (let round = 0; round < 3; round++)
                await Promise.all(Array.from({ length: 20 }, async (_, i) => {
                    const stop = new AbortController(), from = i * 10000000;
                    try {
                        const answer = await fetch('large.bin', { signal: stop.signal, headers: { Range: `bytes=${from}-${from + 7999999}` } });
                        const reader = answer.body.getReader();
                        let got = 0;
                        for (;;) {
                            const { done, value } = await reader.read();
                            if (done) break;
                            got += value.length;
                            if (i % 2) stop.abort();
                        }
                        rounds.push(got);
                    } catch (error) { rounds.push('stopped'); }
                }));
            return rounds;
        """, sparse={"large.bin": 300 * 1024 * 1024})
        self.assertEqual(value.count(8_000_000), 30)
        self.assertEqual(value.count("stopped"), 30)

        def still_open():
            links = (os.readlink(f"/proc/{program.process.pid}/fd/{fd}") for fd in os.listdir(f"/proc/{program.process.pid}/fd")
                     if os.path.exists(f"/proc/{program.process.pid}/fd/{fd}"))
            return [link for link in links if link.endswith("large.bin")]

        until("the descriptors to be closed", lambda: not still_open(), patience=10)


    def test_names_that_a_file_system_allows(self):
        for name in (b"new\nline.txt", b"\xff\xfe broken.txt", b"quote'\"\\.txt", "line\u2028separator <!--<script>.txt".encode(),
                     b"-starts with a dash.txt", b"100% %41 #1? &;${x}`.txt", b"n" * 251 + b".txt", b"\x01\x7f.txt", b" .txt"):
            with self.subTest(name=name):
                path = os.path.join(os.fsencode(self.files), name)
                with open(path, "wb") as file:
                    file.write(b"content")
                report = self.program(path, page="driver").wait_result(lambda r: r.get("last", {}).get("type") in ("open", "error"))
                self.assertEqual((report["last"].get("name"), report.get("fetched")), (name.decode(errors="replace"), 7), report)


if __name__ == "__main__":
    unittest.main()
