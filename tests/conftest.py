import json
import os
import subprocess
from pathlib import Path

import pytest
from server import Server

ROOT = Path(__file__).parents[1]
BINARY = Path(os.environ.get('MKVX_BIN', ROOT / 'build/release/bin/mkvx')).resolve()


class Run:
    """One finished run of the tool."""

    def __init__(self, *args, **options):
        done = subprocess.run([BINARY, *map(str, args)], capture_output=True, timeout=120, **options)
        self.code = done.returncode
        self.out = done.stdout.decode()
        self.err = done.stderr.decode()

    def json(self):
        return json.loads(self.out)

    def lines(self):
        return [json.loads(line) for line in self.out.splitlines()]


@pytest.fixture(scope='session')
def binary():
    return BINARY


@pytest.fixture(scope='session')
def mkvx():
    return Run


@pytest.fixture(scope='session')
def sample():
    return ROOT / 'samples/sample.mkv'


@pytest.fixture
def serve():
    """serve(bytes, gate=()) -> a web server of one file; see server.py."""
    servers = []

    def start(data, gate=()):
        servers.append(Server(data, gate))
        return servers[-1]
    yield start
    for server in servers:
        server.close()


@pytest.fixture
def write(tmp_path):
    """write(name, bytes) -> path."""
    def write_file(name, data):
        path = tmp_path / name
        path.write_bytes(data)
        return path
    return write_file
