"""A vantry-sim for a session of pytest, and as it was at the start for each test."""
import json
import os
import pathlib
import subprocess
import urllib.request

import pytest

BICYCLES = pathlib.Path(__file__).with_name("bicycles.yaml")


class VantrySim:
    def __init__(self, data):
        self.process = subprocess.Popen(
            [os.environ.get("VANTRY_SIM", "vantry-sim"), "--port", "0", "--admin-port", "0", "--data", data,
             "--seed", f"file:{BICYCLES}"], stdout=subprocess.PIPE, text=True)
        # vantry-sim listening on URL admin on URL
        words = self.process.stdout.readline().split()
        self.url, self.admin = words[3], words[6]

    def control(self, method, path, body=None):
        """Asks the admin port, and gives its answer."""
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.admin + path, data, method=method)
        with urllib.request.urlopen(request) as answer:
            return json.loads(answer.read() or "null")

    def stop(self):
        self.process.terminate()
        self.process.wait()


@pytest.fixture(scope="session")
def server(tmp_path_factory):
    sim = VantrySim(tmp_path_factory.mktemp("vantry") / "data")
    yield sim
    sim.stop()


@pytest.fixture
def plm(server):
    server.control("POST", "reset")
    return server
