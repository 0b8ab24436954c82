"""Starts what is measured, and reads what it costs."""

import ctypes
import os
import signal
import socket
import struct
import subprocess
import tempfile
import time

_libc = ctypes.CDLL(None)


def cpu_seconds(pid):
    """CPU time of a process, all its threads together, as exact as the scheduler knows it."""
    clock = ctypes.c_int()
    if _libc.clock_getcpuclockid(pid, ctypes.byref(clock)) != 0:
        raise ProcessLookupError(pid)
    return time.clock_gettime(clock.value)


def peak_memory(pid):
    """The most resident memory that a process has had, in bytes."""
    with open(f"/proc/{pid}/status", encoding="ascii") as status:
        return next((int(line.split()[1]) * 1024 for line in status if line.startswith("VmHWM:")), 0)


def x_server():
    """The process of the display's server: the one that listens on its socket."""
    number = os.environ["DISPLAY"].lstrip(":").split(".")[0]
    with socket.socket(socket.AF_UNIX) as connection:
        connection.connect(f"/tmp/.X11-unix/X{number}")
        credentials = connection.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, struct.calcsize("3i"))
    return struct.unpack("3i", credentials)[0]


class Program:
    """A program that runs until it is told to stop."""

    def __init__(self, *command):
        self._output = tempfile.TemporaryFile()
        self._errors = tempfile.TemporaryFile()
        self._process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=self._output, stderr=self._errors)
        self.peak_memory = 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    @property
    def pid(self):
        return self._process.pid

    @property
    def output(self):
        """What it has printed so far."""
        return os.pread(self._output.fileno(), os.fstat(self._output.fileno()).st_size, 0).decode()

    def run_for(self, seconds):
        try:
            self._process.wait(seconds)
        except subprocess.TimeoutExpired:
            return
        errors = os.pread(self._errors.fileno(), 10000, 0).decode()
        raise RuntimeError(f"{self._process.args[0]} ended by itself: {errors}")

    def stop(self):
        """Ends it as a user would."""
        if self._process.poll() is None:
            self.peak_memory = peak_memory(self.pid)
            self._process.send_signal(signal.SIGINT)
            self._process.wait(60)
