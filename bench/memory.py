"""Resident memory of server and host, as the system counts it, beside the size of a frame."""

import pathlib
import json
import os
import select
import shutil
import socket
import struct
import subprocess
import tempfile
import threading
import time

HEADER_BYTES = 64
TOUCH_BYTES = 28
SETUPS = [
    ("touches only", False, (640, 480)),
    ("all streams", True, (640, 480)),
    ("all streams, 1920x1080 colour", True, (1920, 1080)),
]
MANY_CLIENTS = 16


def frame_bytes(header):
    """Length of a frame, from the 64 bytes that a connection begins with."""
    fields = struct.unpack("<16I", header)
    images = [fields[3:7], fields[7:11], fields[11:15]]
    return fields[15] * TOUCH_BYTES + sum(x * y * channels * depth
                                          for x, y, channels, depth in images)


def resident_bytes(process_id):
    for line in pathlib.Path(f"/proc/{process_id}/status").read_text().splitlines():
        if line.startswith("VmRSS:"):
            return int(line.split()[1]) * 1024
    raise RuntimeError(f"process {process_id} has ended")


class Readers:
    """Clients that read whatever comes, on one thread, until closed."""

    def __init__(self, address, count):
        self.sockets = [socket.create_connection(address, timeout=10) for _ in range(count)]
        self.frame_bytes = [frame_bytes(self._header(each)) for each in self.sockets][0]
        self.ended = False
        self.thread = threading.Thread(target=self._read)
        self.thread.start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.ended = True
        self.thread.join()
        for each in self.sockets:
            each.close()

    @staticmethod
    def _header(connection):
        header = b""
        while len(header) < HEADER_BYTES:
            piece = connection.recv(HEADER_BYTES - len(header))
            if not piece:
                raise RuntimeError("the server hung up")
            header += piece
        return header

    def _read(self):
        buffer = bytearray(1 << 20)
        while not self.ended:
            ready, _, _ = select.select(self.sockets, [], [], 0.1)
            for each in ready:
                each.recv_into(buffer)


class Server:
    """A qvr-server on the simulated camera, on a port of its own."""

    def __init__(self, programs, images, color, folder):
        settings = folder / "QVR_calibration/touch.json"
        document = json.loads(settings.read_text())
        document["colorResX"], document["colorResY"] = color
        settings.write_text(json.dumps(document))
        switches = [f"--{'' if images else 'no-'}{stream}"
                    for stream in ("color", "depth", "processed")]
        self.process = subprocess.Popen(
            [programs / "qvr-server", "--camera", "simulated", "--port", "0", "--touch",
             "--keep-running", "--frames", "3600", *switches],
            env={**os.environ, "QVR_VOLUMES": str(folder)},
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        line = self.process.stdout.readline()
        if not line.startswith("listening on "):
            raise RuntimeError("qvr-server did not start")
        host, port = line.removeprefix("listening on ").strip().rsplit(":", 1)
        self.address = (host, int(port))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait(10)
        self.process.stdout.close()


def measure_setup(programs, name, images, color, folder, seconds):
    with Server(programs, images, color, folder) as server:
        address = "%s:%d" % server.address
        host = subprocess.Popen(
            [programs / "qvr-host", "--plain", "--server", address, "--seconds", str(seconds + 3)],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(seconds)
        result = {"streams": name, "host": resident_bytes(host.pid),
                  "server1": resident_bytes(server.process.pid)}
        host.terminate()
        host.wait(10)
        with Readers(server.address, MANY_CLIENTS) as readers:
            time.sleep(seconds)
            result[f"server{MANY_CLIENTS}"] = resident_bytes(server.process.pid)
            result["frameBytes"] = readers.frame_bytes
    return result


def measure(programs, settings, seconds=2):
    """One dictionary for each of SETUPS, sizes in bytes; nothing where there is no /proc."""
    if not pathlib.Path("/proc/self/status").exists():
        return []
    results = []
    for name, images, color in SETUPS:
        with tempfile.TemporaryDirectory(prefix="qvr-memory-") as folder:
            folder = pathlib.Path(folder)
            shutil.copytree(settings, folder / "QVR_calibration")
            results.append(measure_setup(programs, name, images, color, folder, seconds))
    return results
