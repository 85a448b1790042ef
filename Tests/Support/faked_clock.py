"""The clocks of a program as a test has them, by libfaketime."""

import glob


class FakedClock:
    """Right until it is set or put forward, which the program notices at once."""

    def __init__(self, folder):
        self._file = folder / "clock"
        self.put_forward(0)

    def environment(self):
        """What the program is to be started with."""
        [library] = glob.glob("/usr/lib/*/faketime/libfaketime.so.1")
        return {"LD_PRELOAD": library, "FAKETIME_TIMESTAMP_FILE": str(self._file), "FAKETIME_NO_CACHE": "1"}

    def set(self, day_and_time):
        """In the program's own zone."""
        self._write(f"@{day_and_time}")

    def put_forward(self, seconds):
        self._write(f"+{seconds}")

    def _write(self, text):
        side = self._file.with_suffix(".new")
        side.write_text(f"{text}\n")
        side.rename(self._file)
