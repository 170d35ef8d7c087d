"""Media elements play and seek through the private scheme, in the real program."""

import unittest
from pathlib import Path

import fixtures
from harness import EndToEnd, open_files

STEPS = """
    const names = %s, out = {};
    for (const name of names) {
        const element = document.createElement(/\\.(mp4|webm|mkv|mov)$/.test(name) ? 'video' : 'audio');
        element.muted = true;
        document.body.append(element);
        const once = (event) => new Promise((resolve, reject) => {
            element.addEventListener(event, resolve, { once: true });
            element.addEventListener('error', () => reject(new Error(name + ': media error ' + element.error?.code)), { once: true });
            setTimeout(() => reject(new Error(name + ': no ' + event)), 20000);
        });
        try {
            element.src = new URL('media/' + name, location).href;
            await once('loadedmetadata');
            const duration = element.duration;
            await element.play();
            const sought = once('seeked');
            element.currentTime = 3;
            await sought;
            const from = element.currentTime;
            await new Promise((resolve, reject) => {
                element.addEventListener('timeupdate', () => element.currentTime > from + 0.2 && resolve());
                setTimeout(() => reject(new Error(name + ': stands still at ' + element.currentTime)), 20000);
            });
            out[name] = { duration, from, width: element.videoWidth ?? 0 };
        } catch (error) { out[name] = String(error.message); }
        element.removeAttribute('src');
        element.load();
        element.remove();
    }
    return out;
"""


class Media(EndToEnd):
    def test_formats_play_and_seek(self):
        media = self.files / "media"
        media.mkdir()
        h264 = ("-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "25", "-c:a", "aac")
        fixtures.film(media / "front.mp4", *h264, "-movflags", "+faststart")
        fixtures.film(media / "back.mp4", *h264)
        fixtures.film(media / "film.mov", *h264)
        fixtures.film(media / "film.mkv", *h264)
        fixtures.film(media / "film.webm", "-c:v", "libvpx", "-g", "25", "-c:a", "libvorbis")
        for name in ("sound.mp3", "sound.m4a", "sound.flac", "sound.ogg", "sound.opus", "sound.wav"):
            fixtures.sound(media / name)
        names = sorted(p.name for p in media.iterdir())
        _, value = self.steps(STEPS % names, folders={"media": media})
        for name in names:
            with self.subTest(name=name):
                self.assertIsInstance(value[name], dict, value[name])
                self.assertAlmostEqual(value[name]["duration"], 6, delta=0.5)
                self.assertAlmostEqual(value[name]["from"], 3, delta=0.5)
                self.assertEqual(value[name]["width"] > 0, name.endswith((".mp4", ".mov", ".mkv", ".webm")))

    def test_sound_starts_without_a_click(self):
        media = self.files / "media"
        media.mkdir()
        fixtures.sound(media / "sound.ogg", seconds=3)
        _, value = self.steps("""
            const element = new Audio(new URL('media/sound.ogg', location).href);
            // Where no sound device is, the promise may stay open; a refusal comes at once.
            const refused = await Promise.race([element.play().then(() => null, (error) => error.name), api.sleep(5000)]);
            return { refused: refused ?? null, paused: element.paused };
        """, folders={"media": media})
        self.assertEqual(value, {"refused": None, "paused": False})

    def test_refusals_and_rapid_changes(self):
        media = self.files / "media"
        media.mkdir()
        fixtures.film(media / "film.webm", "-c:v", "libvpx", "-g", "25", "-an", seconds=4)
        _, value = self.steps("""
            const element = document.createElement('video');
            element.muted = true;
            document.body.append(element);
            const outcome = (src) => new Promise((resolve) => {
                element.onloadeddata = () => resolve('loaded');
                element.onerror = () => resolve('error ' + element.error.code);
                element.src = src;
                setTimeout(() => resolve('silence'), 20000);
            });
            const good = new URL('media/film.webm', location).href, out = {};
            out.refused = await outcome('/__file/00000000-0000-4000-8000-000000000000/film.webm');
            out.missing = await outcome(new URL('media/none.webm', location).href);
            for (let i = 0; i < 60; i++) { element.src = good + '?' + i; element.load(); if (i % 3 === 0) await api.sleep(15); }
            out.after = await outcome(good);
            return out;
        """, folders={"media": media})
        self.assertEqual(value, {"refused": "error 4", "missing": "error 4", "after": "loaded"})

    def test_our_player_shows_film_and_sound(self):
        fixtures.film(self.files / "film.webm", "-c:v", "libvpx", "-c:a", "libvorbis")
        fixtures.sound(self.files / "sound.mp3")
        fixtures.film(self.files / "old.avi", "-c:v", "mpeg4", "-c:a", "mp3", seconds=2)
        for name, pattern in (("film.webm", "^shown video"), ("sound.mp3", "^shown audio"), ("old.avi", "^shown video")):
            with self.subTest(name=name):
                program = self.program(self.files / name)
                self.assertRegex(program.wait_status("^(shown|error)", patience=240), pattern)
                # A descriptor for reading can be opened again for writing, so the page's process gets none.
                held = open_files(program.web_process())
                self.assertIn("pipe", {link.split(":")[0] for link in held})
                self.assertFalse([link for link in held if link.endswith(Path(name).suffix)], held)


if __name__ == "__main__":
    unittest.main()
