"""The web process dies at every moment, and what was shown comes back."""

import os
import signal
import time
import unittest

import fixtures
from harness import EndToEnd, children, open_files, output, until


class Deaths(EndToEnd):
    def kill(self, program, spared=0):
        """Ends a web process other than the spared one; its number. Not before it listens: until it has told the
        engine its number, its end is the program's, by the engine's own will."""
        def other():
            self.assertIsNone(program.process.poll(), program.log.read_text(errors="replace"))
            found = program.web_process()
            return found != spared and found and "ReceiveQueue" in output("ps", "-L", "-o", "comm=", "-p", str(found)) and found
        number = until("a web process", other, pause=0.005)
        os.kill(number, signal.SIGKILL)
        return number

    def test_at_every_moment_of_the_start(self):
        fixtures.text(self.files / "a.txt", "content")
        for pause in (0, 0.05, 0.15, 0.3, 0.6):
            with self.subTest(pause=pause):
                program = self.program(self.files / "a.txt")
                until("the first process", program.web_process, pause=0.005)
                time.sleep(pause)  # from before its first commit to after it
                first = self.kill(program)
                self.kill(program, first)  # and the next one at its start
                program.wait_status("^shown text a.txt")

    def test_while_it_shows_reads_or_plays(self):
        fixtures.film(self.files / "film.webm", "-c:v", "libvpx", "-c:a", "libvorbis", seconds=20)
        fixtures.picture(self.files / "large.png", "3000x3000")
        with (self.files / "lines.log").open("w") as text:
            text.writelines(f"line {i} of a long text\n" for i in range(3_000_000))
        for name, shown in (("film.webm", "^shown video"), ("large.png", "^shown image"), ("lines.log", "^shown largetext")):
            with self.subTest(name=name):
                program = self.program(self.files / name)
                for pause in (0, 0.3, 1):
                    program.wait_status(shown)
                    time.sleep(pause)
                    number = self.kill(program)
                    until("its end", lambda: number not in children(program.process.pid))  # pylint: disable=W0640
                    until("another", program.web_process)
                program.wait_status(shown)
                held = [link for link in open_files(program.process.pid) if link.endswith(name)]
                self.assertLessEqual(len(held), 20, held)
                self.assertIn("WebKitWebProces", output("ps", "-o", "comm=", "-p", str(program.web_process())))


if __name__ == "__main__":
    unittest.main()
