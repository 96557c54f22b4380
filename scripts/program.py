"""Starting and ending the program under Wine."""
import os
import subprocess
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PROGRAM = os.path.join(ROOT, "build", "windows-x64", "bin", "Vardeko.exe")


class Program:
    """The program at work in the prefix and on the display of the environment.

    via: a command that runs what follows it."""

    def __init__(self, *arguments, path=PROGRAM, via=()):
        # A program that cannot start says why on its standard error. Wine hands its exit code on.
        self.errors = tempfile.TemporaryFile()
        self.process = subprocess.Popen([*via, "wine", path, *arguments], stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=self.errors)
        self.used_ticks = 0
        self.used_at = time.monotonic()

    def running(self):
        return self.process.poll() is None

    def wait(self, seconds):
        """The exit code; None when the program is not done by then."""
        try:
            return self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            return None

    def error_text(self):
        self.errors.seek(0)
        return self.errors.read().decode("utf-8", "replace").replace("\r", "").strip()

    def window(self):
        """The X window of the main window, or None while there is none."""
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Vardeko x64$"],
                               capture_output=True, text=True, check=False)
        return found.stdout.split()[0] if found.stdout.split() else None

    def screenshot(self, path):
        """Replaces the picture at path; False when there was no window to be photographed."""
        window = self.window()
        if not window:
            return False
        fresh = path + ".new.png"
        shot = subprocess.run(["import", "-window", window, fresh], capture_output=True, check=False)
        if shot.returncode != 0 or not os.path.exists(fresh):
            return False
        os.replace(fresh, path)
        return True

    def idle_seconds(self):
        """For how long the program has used no processor, as far as the calls so far can tell."""
        try:
            with open(f"/proc/{self.process.pid}/stat", encoding="utf-8", errors="replace") as file:
                fields = file.read().rpartition(")")[2].split()
        except OSError:
            return 0.0
        used = int(fields[11]) + int(fields[12])
        # A tick now and then goes to the window's timers.
        if used > self.used_ticks + 2:
            self.used_ticks, self.used_at = used, time.monotonic()
        return time.monotonic() - self.used_at

    def close(self, seconds=15):
        """Closes the window as a user would, and the program by force if that does not help.

        The exit code; None when it took force."""
        subprocess.run(["wine", "taskkill", "/IM", "Vardeko.exe"], stdin=subprocess.DEVNULL,
                       capture_output=True, check=False)
        code = self.wait(seconds)
        if code is None:
            self.process.kill()
            self.process.wait()
        return code
