import os
import shutil

import pytest

pytest.register_assert_rewrite('checks')     # so that a failure shows both sides
import checks  # noqa: E402
import muxing  # noqa: E402


@pytest.fixture(scope='session')
def mkvx():
    """The tool under test; MKVX_BIN names it."""
    path = os.environ.get('MKVX_BIN', '')
    if not os.access(path, os.X_OK):
        pytest.fail('MKVX_BIN has to name the mkvx binary, it is %r' % path)
    for tool in ('ffmpeg', 'ffprobe', 'mkvmerge'):
        if not shutil.which(tool):
            pytest.fail('%s is missing; scripts/install-deps test installs it' % tool)
    return path


@pytest.fixture(scope='session')
def mux(tmp_path_factory):
    return muxing.Muxer(tmp_path_factory.mktemp('interop'))


@pytest.fixture
def check(mkvx):
    return lambda path: checks.check(mkvx, path)
