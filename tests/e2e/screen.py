"""Runs of clusctl that draw on a terminal until they are interrupted, and what stands on its screen then."""
import fcntl
import os
import pty
import struct
import subprocess
import sys
import termios
import threading
import time

sys.path.append("/usr/lib/python3/dist-packages") # Debian's, also for another Python
import pyte  # noqa: E402

COLUMNS, ROWS = 100, 30
HELD_UP = 3000 # milliseconds: how long the call is held up, in which the screen is looked at and Ctrl+C is pressed
SETTLED = 0.5 # seconds without output


def at_call(case, call, program, arguments, variables):
    """The lines that stand on the screen in this call of the cluster, "OpenCluster#3", each with its colours; and the exit code of
    Ctrl+C there."""
    journal = case.folder / "held.journal"
    faults = [variables.get("CLUSSIM_FAULTS", ""), f"{call}=delay_ms:{HELD_UP}"]
    environment = {"CLUSUTIL_RUN_FOREGROUND": "1", **variables, "CLUSSIM_FAULTS": ";".join(filter(None, faults)),
                   "CLUSSIM_JOURNAL": journal.name}
    primary, secondary = pty.openpty()
    fcntl.ioctl(primary, termios.TIOCSWINSZ, struct.pack("HHHH", ROWS, COLUMNS, 0, 0))
    process = subprocess.Popen(case.runner.wine(program, *arguments), cwd=case.folder, env=case.environment(environment),
                               stdin=secondary, stdout=secondary, stderr=secondary, start_new_session=True,
                               preexec_fn=lambda: fcntl.ioctl(secondary, termios.TIOCSCTTY, 0))
    os.close(secondary)
    terminal = Terminal(primary)
    while process.poll() is None and not (journal.is_file() and "delayMs" in journal.read_text(encoding="utf-8")):
        time.sleep(0.01)
    lines = terminal.lines_once_settled()
    if process.poll() is None:
        os.write(primary, b"\x03")
    exit_code = process.wait()
    terminal.close()
    journal.unlink(missing_ok=True)
    return lines, exit_code


class Terminal:
    """Reads what is written to a terminal, and draws it."""

    def __init__(self, primary):
        self.primary = primary
        self.screen = pyte.Screen(COLUMNS, ROWS)
        self.stream = pyte.ByteStream(self.screen)
        self.lock = threading.Lock()
        self.drawn_at = time.monotonic()
        self.reader = threading.Thread(target=self.read)
        self.reader.start()

    def read(self):
        try:
            while data := os.read(self.primary, 4096):
                with self.lock:
                    self.stream.feed(data)
                    self.drawn_at = time.monotonic()
        except OSError: # the program has closed its end
            pass

    def lines_once_settled(self):
        while time.monotonic() - self.drawn_at < SETTLED:
            time.sleep(0.05)
        with self.lock:
            return [self.line(self.screen.buffer[row]) for row in range(ROWS)]

    @staticmethod
    def line(cells):
        text = "".join(cells[column].data for column in range(COLUMNS)).rstrip()
        styles = dict.fromkeys(style for column in range(len(text)) if (style := style_of(cells[column])))
        return (f"[{', '.join(styles)}] " if styles else "") + text

    def close(self):
        self.reader.join()
        os.close(self.primary)


def style_of(cell):
    front = "" if cell.fg == "default" else cell.fg
    back = "" if cell.bg in ("default", "black") else f"on {cell.bg}" # black is the console's own
    return " ".join(filter(None, ["reverse" if cell.reverse else "", "bold" if cell.bold else "", front, back]))
