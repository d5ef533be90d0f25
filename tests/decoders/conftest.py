import os
import shutil
import sys
from pathlib import Path

import pytest

TESTS = Path(__file__).parents[1]
sys.path += [str(TESTS / 'interop'), str(TESTS / 'mkvx')]    # the Matroska reader and writer of those tests
pytest.register_assert_rewrite('judging')
import judging  # noqa: E402
import streams  # noqa: E402

RESULTS = []


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
def maker(tmp_path_factory):
    return streams.Maker(tmp_path_factory.mktemp('decoders'))


@pytest.fixture
def judge(mkvx, maker):
    """judge(case): decodes the case's file on both sides, notes the row of the table, checks the case's claim."""
    def run(case):
        row = judging.judge(mkvx, maker, case)
        RESULTS.append(row)
        row.check()
    return run


def pytest_terminal_summary(terminalreporter):
    if not RESULTS:
        return
    text = judging.table(RESULTS)
    terminalreporter.write_line(text)
    if os.environ.get('MKVX_DECODER_TABLE'):
        Path(os.environ['MKVX_DECODER_TABLE']).write_text(text + '\n')
