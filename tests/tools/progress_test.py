"""orvanta.post on a terminal: the line of progress and the warnings that only a person needs."""
import os
import pty
import re
import shlex
import subprocess
import threading
import time

import support

POST = os.environ["ORVANTA_POST"]


def screen(written):
    """The lines that a terminal shows after these bytes, without empty ones at the end."""
    lines, column = [""], 0
    for token in re.findall(r"\x1b\[K|[\s\S]", written):
        if token == "\r":
            column = 0
        elif token == "\n":
            lines.append("")
            column = 0
        elif token == "\x1b[K":
            lines[-1] = lines[-1][:column]
        else:
            lines[-1] = lines[-1][:column].ljust(column) + token + lines[-1][column + 1:]
            column += 1
    return "\n".join(lines).rstrip("\n").split("\n")


def drawn(written):
    """The lines of progress, in the order in which they were drawn."""
    return [line for line in re.findall(r"\r\x1b\[K([^\r\n\x1b]+)", written) if ": " in line]


class Progress(support.ToolTest):
    def setUp(self):
        super().setUp()
        self.sample("--refine=2", "--count=3000")

    def on_terminal(self, words, term="xterm", before=()):
        """What the program writes to a terminal that is its standard error."""
        master, slave = pty.openpty()
        environment = {**os.environ, "TERM": term}
        with open("out", "wb") as out:
            process = subprocess.Popen([*before, *words], stdin=slave, stdout=out, stderr=slave,
                                       env=environment, start_new_session=True)
        os.close(slave)
        written = b""
        while True:
            try:
                written += os.read(master, 65536)
            except OSError:  # the last one has closed the terminal
                break
        os.close(master)
        self.status = process.wait(timeout=60)
        return written.decode()

    def slowly(self, name, seconds=1.6):
        """Name of a pipe that gives the content of this file after some time."""
        os.mkfifo("slow" + name)

        def feed():
            with open("slow" + name, "wb") as pipe:
                time.sleep(seconds)
                with open(name, "rb") as file:
                    pipe.write(file.read())

        feeder = threading.Thread(target=feed)
        feeder.start()
        self.addCleanup(feeder.join)
        return "slow" + name

    def command(self, points="s.xyz", output="t", settings="s.yaml", solution="s.vtkhdf"):
        return [POST, f"--input={solution}", f"--points={points}", f"--output={output}",
                f"--settings={settings}"]

    def test_the_line_is_rewritten_and_leaves_nothing(self):
        # Reading waits for a pipe, writing for whoever reads the table.
        os.mkfifo("t.csv")
        rows = []

        def read_table():
            with open("t.csv", encoding="ascii") as table:
                time.sleep(1)
                rows.extend(table)

        reader = threading.Thread(target=read_table)
        reader.start()
        written = self.on_terminal(self.command(self.slowly("s.xyz")))
        reader.join()
        self.assertEqual((self.status, len(rows), screen(written)), (0, 3001, [""]))
        lines = drawn(written)
        self.assertIn("Reading points: 1 s", lines)
        self.assertTrue(any(line.startswith("Writing the table: ") for line in lines), lines)

    def test_the_application_tells_its_share_and_the_time_left(self):
        for count in (100000, 400000, 1600000):  # until it lasts long enough on this machine
            self.sample("--refine=40", f"--count={count}", "--points=near", "--rmin=0.2", "--rmax=1",
                        "--leaf-size=400", "--threads=1")
            written = self.on_terminal(self.command())
            self.assertEqual((self.status, screen(written)), (0, [""]))
            lines = [line for line in drawn(written) if line.startswith("FMM apply")]
            if len(lines) > 6:
                break
        shares = [int(re.fullmatch(r"FMM apply: (\d+) %(, \d+ s left|, \d+ min \d\d s left)?", line)[1])
                  for line in lines]
        self.assertEqual(shares, sorted(shares))
        self.assertLess(shares[0], 50)
        self.assertGreater(shares[-1], 70)
        self.assertLess(shares.count(100), 3)  # the total is what the tasks add up to

    def test_messages_stand_on_lines_of_their_own(self):
        self.write("s.mesh", "3 1 1 9\n0 1 2 3\nTria3 1 0 0 0\n")
        written = self.on_terminal(self.command(self.slowly("s.mesh"), solution="s.yaml"))
        self.assertIn("Reading points: 1 s", drawn(written))
        lines = screen(written)
        self.assertEqual(lines[0], "(WW) Input file predicted larger size of incidence table")
        self.assertEqual(lines[-1], "(EE) [RANK 0]: Cannot open file 's.yaml'")

    def test_lost_points_are_told_to_a_person_only(self):
        def point(n):
            return f"the first line looks like a point, but its first number, {n}, is taken for the " \
                   "number of points"

        def ignored(n):
            return f"lines behind the {n} points that the first line announces are ignored"

        rows = "1 2 3\n4 5 6\n"
        for text, words in (
                ("# 2\n" + rows, point(1)), ("1.5 2 3\n4 5 6\n", point(1)), ("0.5 2 3\n", point(0)),
                ("1\n" + rows, ignored(1)), ("0\n" + rows, ignored(0)),
                ("2 points\n" + rows + "\n \n# the end\n", None), ("2\n" + rows.rstrip(), None)):
            with self.subTest(text=text):
                command = self.command(self.write("p.xyz", text))
                self.assertEqual(screen(self.on_terminal(command)),
                                 [f"(WW) p.xyz: {words}" if words else ""])
                self.assertEqual((self.status, self.call(*command).stderr), (0, ""))

    def test_nothing_is_written_where_nobody_looks(self):
        in_background = ["setsid", "--ctty", "bash", "-mc", '"$@" & exec 2>/dev/null; wait', "bash"]
        self.assertEqual(self.on_terminal(self.command(self.slowly("s.xyz")), term="dumb"), "")
        for redirection in ("2>err", "2> >(cat >err)"):
            os.unlink("slows.xyz")
            words = ["bash", "-c", f"{shlex.join(self.command(self.slowly('s.xyz')))} {redirection}"]
            self.assertEqual((self.on_terminal(words), self.status), ("", 0))
            self.assertEqual(os.path.getsize("err"), 0)
        os.unlink("slows.xyz")
        words = self.command(self.slowly("s.xyz"))
        self.assertEqual(self.on_terminal(words, before=in_background), "")


if __name__ == "__main__":
    support.main()
