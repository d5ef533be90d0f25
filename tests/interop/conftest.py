import os
import shutil
from pathlib import Path

import pytest

pytest.register_assert_rewrite('checks', 'judging')     # so that a failure shows both sides
import checks  # noqa: E402
import judging  # noqa: E402
import streams  # noqa: E402

RESULTS = []


@pytest.fixture(scope='session')
def mkvx(binary):
    for tool in ('ffmpeg', 'ffprobe', 'mkvmerge'):
        if not shutil.which(tool):
            pytest.fail('%s is missing; scripts/install-deps test installs it' % tool)
    return str(binary)


@pytest.fixture(scope='session')
def mux(tmp_path_factory):
    return streams.Maker(tmp_path_factory.mktemp('interop'))


@pytest.fixture
def check(mkvx):
    return lambda path: checks.check(mkvx, path)


@pytest.fixture
def judge(mkvx, mux):
    """judge(case): decodes the case's file on both sides, notes the row of the table, checks the case's claim."""
    def run(case):
        row = judging.judge(mkvx, mux, case)
        RESULTS.append(row)
        row.check()
    return run


def pytest_terminal_summary(terminalreporter):
    if not RESULTS:
        return
    text = judging.table(RESULTS)
    terminalreporter.write_line(text)
    if os.environ.get('MKVX_BUILD'):
        claims = {row.case.mime.split('/')[0] for row in RESULTS} - {''}
        (Path(os.environ['MKVX_BUILD']) / ('decoded-%s.txt' % min(claims))).write_text(text + '\n')
