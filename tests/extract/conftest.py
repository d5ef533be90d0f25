import os
import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / 'interop'))
import muxing  # noqa: E402


@pytest.fixture(scope='session')
def mkvx():
    """The tool under test; MKVX_BIN names it."""
    path = os.environ.get('MKVX_BIN', '')
    if not os.access(path, os.X_OK):
        pytest.fail('MKVX_BIN has to name the mkvx binary, it is %r' % path)
    return path


@pytest.fixture(scope='session')
def mux(tmp_path_factory):
    return muxing.Muxer(tmp_path_factory.mktemp('extract'))
