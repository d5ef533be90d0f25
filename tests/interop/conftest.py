import shutil

import pytest

pytest.register_assert_rewrite('checks')     # so that a failure shows both sides
import checks  # noqa: E402
import muxing  # noqa: E402


@pytest.fixture(scope='session')
def mux(tmp_path_factory):
    for tool in ('ffmpeg', 'ffprobe', 'mkvmerge'):
        if not shutil.which(tool):
            pytest.fail('%s is missing; scripts/install-deps test installs it' % tool)
    return muxing.Muxer(tmp_path_factory.mktemp('interop'))


@pytest.fixture
def check(mkvx):
    return lambda path: checks.check(mkvx, path)
