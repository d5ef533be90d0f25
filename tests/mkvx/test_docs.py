"""README and docs/*.md: their transcripts are replayed, their options are those of the help, and the bytes in the tables of
docs/formats.md are those of the sample and of the records that the plug-in makes."""
import os
import re
import shutil
import signal
import subprocess
from pathlib import Path

import pytest

from waiting import until

ROOT = Path(__file__).parents[2]
PAGES = {path.name: path.read_text() for path in [ROOT / 'README.md', *sorted((ROOT / 'docs').glob('*.md'))]}

# --- transcripts -------------------------------------------------

# What a cluster has and this machine may not.
STAND_INS = r'''
sbatch() { local t; for t in $(seq 100); do
  SLURM_ARRAY_TASK_ID=$t SLURM_ARRAY_TASK_COUNT=100 SLURM_CPUS_PER_TASK=1 sh "$2" >> tasks || echo failed; done; }
'''


def transcripts():
    """(page and command, command, output): what is indented and begins with a prompt, up to the next prompt or the block's end."""
    for page, text in PAGES.items():
        for block in re.findall(r'(?:^    .*\n(?:\n(?=    ))?)+', text, re.M):
            for entry in re.split(r'^    \$ ', block, flags=re.M)[1:]:
                command, output = re.fullmatch(r'((?:[^\n]*\\\n)*[^\n]*\n)(.*)', entry, re.S).groups()
                yield pytest.param(command, re.sub('^    ', '', output, flags=re.M).strip('\n'), id=page + ' ' + command[:60].strip())


@pytest.fixture(scope='module')
def desk(binary, tmp_path_factory):
    """The folder that transcripts are from, with a library of films; its path and the environment."""
    folder = tmp_path_factory.mktemp('desk')
    (folder / 'build').mkdir()
    shutil.copytree(ROOT / 'samples', folder / 'samples', ignore=shutil.ignore_patterns('make-sample'))
    shutil.copytree(ROOT / 'samples', folder / 'films/old')
    plugin = (binary.parent.parent / 'lib/libmatroska_ext.so').read_bytes()
    (folder / 'build/same.so').write_bytes(plugin)
    (folder / 'build/other.so').write_bytes(plugin.replace(b'video/avc', b'video/abc'))
    return folder, {**os.environ, 'PATH': '%s:%s' % (binary.parent, os.environ['PATH'])}


def until_interrupted(command, **where):
    run = subprocess.Popen(['bash', '-c', 'exec ' + command], stderr=subprocess.PIPE, text=True, **where)
    until(lambda: int(re.search(r'SigCgt:\s*(\w+)', Path('/proc/%d/status' % run.pid).read_text())[1], 16) >> signal.SIGINT - 1 & 1)
    run.send_signal(signal.SIGINT)
    return '^C' + run.communicate(timeout=60)[1]


def without_size_of_page(text):
    return re.sub(r'(?<=tracks offered, )\d+', '0', text)


def without_measures(text):
    return re.sub(r'(?<=interrupted after ).*|\d[\d.]*(e-\d+)?', '0', text)


@pytest.mark.parametrize('command, output', transcripts())
def test_transcript(desk, serve, sample, command, output):
    folder, environment = desk
    places = {'/media/films': 'films'}
    if 'http:' in command:
        server = serve(sample.read_bytes())
        places = {'http://media.example/sample.mkv': server.url('good'), 'http://media.example/stalls.mkv': server.url('stalls')}
    for place, here in places.items():
        command = command.replace(place, here)
    if output.startswith('#!'):     # a script that is shown: the next command uses it
        name = command.split()[-1]
        (folder / name).write_text(output + '\n')
    if output.startswith('^C'):
        shown = until_interrupted(command, cwd=folder, env=environment)
    else:
        shown = subprocess.run(['bash', '-c', STAND_INS + command], cwd=folder, env=environment, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, timeout=120).stdout.decode()
    for place, here in places.items():
        shown = shown.replace(here, place)
    clean = without_measures if 'bench' in command or output.startswith('^C') else without_size_of_page
    assert clean(shown.rstrip('\n')) == clean(output)


# --- links -------------------------------------------------

def anchors(path):
    titles = re.findall(r'^#+ (.*)', path.read_text(), re.M)
    return {re.sub(r'[^\w -]', '', title.lower()).replace(' ', '-') for title in titles}


@pytest.mark.parametrize('page', PAGES)
def test_links_lead_somewhere(page):
    folder = ROOT if page == 'README.md' else ROOT / 'docs'
    for file, anchor in re.findall(r'\]\(([^)#:]*)#?([\w-]*)\)', PAGES[page]):
        target = folder / (file or page)
        assert target.exists() and (not anchor or anchor in anchors(target)), (file, anchor)


# --- options -------------------------------------------------

def test_options_are_those_of_the_help(mkvx):
    page = PAGES['mkvx.md']
    everywhere = set(re.findall(r'--[a-z]+(?:-[a-z]+)*', page.split('| Exit code')[0])) | {'--progress', '--output'}
    commands = re.findall(r'^\| \[(\w+)\]\(#', page, re.M)
    assert len(commands) == 20
    for command in commands:
        section = re.search(r'^## %s\n(.*?)(?=^## |\Z)' % command, page, re.M | re.S)[1]
        told = set(re.findall(r'--[a-z]+(?:-[a-z]+)*', ' '.join(re.findall(r'`[^`]*`', section))))
        helped = set(re.findall(r'--[a-z]+(?:-[a-z]+)*', mkvx(command, '--help').out.split('Example:')[0]))
        assert helped - everywhere <= told and told <= helped | everywhere, command


# --- tables of bytes -------------------------------------------------

ROW = re.compile(r'^\| (\d+) \| ((?:[0-9A-F]{2} ?)+)\|', re.M)


def tables():
    """The heading of each table's first column, and its rows of (offset, bytes)."""
    for table in re.findall(r'(?:^\|.*\n)+', PAGES['formats.md'], re.M):
        yield table.split('|')[1].strip(), [(int(at), bytes.fromhex(hexes)) for at, hexes in ROW.findall(table)]


def test_offsets_of_the_sample(sample):
    data = sample.read_bytes()
    rows = [row for title, table in tables() if title == 'Offset' for row in table]
    assert len(rows) > 30
    for at, expected in rows:
        assert data[at:at + len(expected)] == expected, at


def test_records(mkvx, sample):
    tracks = mkvx('info', '--format', 'json', sample).json()['tracks']
    described = [(*title.split(' of track '), table) for title, table in tables() if ' of track ' in title]
    assert [(key, track) for key, track, _ in described] == [('avcc', '0'), ('esds', '1')]
    for key, track, table in described:
        whole = b''
        for at, part in table:
            assert at == len(whole)
            whole += part
        assert whole.hex() == tracks[int(track)]['config'][key]
