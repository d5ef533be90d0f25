"""mkvx mend: one new file for all that a file lacks, or none; what each kind of fault needs is in tests/interop/test_remedies.py."""
import json
import os
import signal
import subprocess
from pathlib import Path

import jsonschema
import pytest

import craft
from waiting import until

SCHEMA = json.loads((Path(__file__).parents[2] / 'docs/schemas/mend.schema.json').read_text())


def run(binary, folder, *arguments, path=os.environ['PATH']):
    return subprocess.run([binary, 'mend', *arguments], cwd=folder, capture_output=True, text=True, timeout=120,
                          env={**os.environ, 'PATH': str(path)})


@pytest.fixture(scope='module')
def silent(sample, tmp_path_factory):
    """Sound that no device is offered, and subtitles behind it."""
    folder = tmp_path_factory.mktemp('mend')
    subprocess.run(['ffmpeg', '-v', 'error', '-i', sample, '-map', '0', '-c', 'copy', '-c:a', 'libopus', '-t', '2', "it's.mkv"],
                   cwd=folder, check=True)
    return folder / "it's.mkv"


@pytest.fixture
def desk(silent, tmp_path):
    """A folder with the file, and one for programs that stand in for the muxers."""
    (tmp_path / "it's.mkv").write_bytes(silent.read_bytes())
    (tmp_path / 'bin').mkdir()

    def program(name, script):
        (tmp_path / 'bin' / name).write_text('#!/bin/sh\n' + script)
        (tmp_path / 'bin' / name).chmod(0o755)
    return tmp_path, program


def test_all_findings_at_once(binary, desk):
    folder, _ = desk
    checked = json.loads(subprocess.run([binary, 'check', '--format', 'jsonl', "it's.mkv"], cwd=folder, capture_output=True).stdout)
    done = run(binary, folder, "it's.mkv", '-o', 'out.mkv', '--format', 'json')
    result = json.loads(done.stdout)
    jsonschema.Draft202012Validator(SCHEMA).validate(result)
    assert done.returncode == 0 and result['after']['verdict'] == 'plays' and result['new'] == []
    assert [f['code'] for f in result['gone']] == ['unknown_codec_id', 'subtitle_number']
    assert checked['remedy']['command'][:-1] == result['attempts'][-1]['commands'][0][:-1]
    before = (folder / 'out.mkv').read_bytes()
    again = run(binary, folder, "it's.mkv", '-o', 'out.mkv')
    assert again.returncode == 1 and 'out.mkv: is there already' in again.stderr and (folder / 'out.mkv').read_bytes() == before
    fine = run(binary, folder, 'out.mkv', '-o', 'more.mkv')
    assert fine.returncode == 0 and 'nothing that a command could mend' in fine.stdout and not (folder / 'more.mkv').exists()


def test_subtitles_move_in_front_of_what_cannot_be_mended(binary, tmp_path):
    """Nothing gets lost for them to be heard; and what stays is told with advice."""
    unit = b'\0\0\0\2\x65\x11'
    record = bytes.fromhex('0142c01effe1000867420bf00102030401000468ce3880')
    tracks = [craft.video(1, 'V_MPEG4/ISO/AVC', craft.private(record)), craft.subtitle(2, 'S_VOBSUB'), craft.subtitle(3),
              craft.audio(4, 'A_MPEG/L3')]
    blocks = [craft.simple_block(1, 0, unit), craft.block_group(3, 0, b'text', 9), craft.simple_block(1, 40, unit)]
    (tmp_path / 'a.mkv').write_bytes(craft.matroska(tracks, craft.cluster(0, *blocks), cue_for=1))
    planned = run(binary, tmp_path, 'a.mkv', '-o', 'b.mkv', '--dry-run')
    assert planned.returncode == 0 and '-map 0:v:0 -map 0:s:1 -map 0:s:0 -map 0:t?' in planned.stdout.replace("'", '')
    assert 'OCR' in planned.stdout and 'left out: track number 4' in planned.stdout
    assert [path.name for path in tmp_path.iterdir()] == ['a.mkv']


# What stands in for ffmpeg: (its script, part of what is said of it).
TOOLS = {
    'fails': ('echo no >&2; exit 3', 'ffmpeg ends with 3: no'),
    'writes nothing': ('exit 0', 'track number 1: the new file does not have it'),
    'copies': ('for last; do :; done; cp "$FILM" "$last"', 'what it should mend stays'),
}


@pytest.mark.parametrize('script, problem', TOOLS.values(), ids=TOOLS)
def test_what_is_no_better_is_not_put_in_place(binary, desk, monkeypatch, script, problem):
    folder, program = desk
    program('ffmpeg', script)
    monkeypatch.setenv('FILM', str(folder / "it's.mkv"))
    done = run(binary, folder, "it's.mkv", '-o', 'out.mkv', path='%s:/usr/bin:/bin' % (folder / 'bin'))
    assert done.returncode == 1 and problem in done.stdout and 'out.mkv: not written' in done.stdout
    assert sorted(path.name for path in folder.iterdir()) == ['bin', "it's.mkv"]


# What comes to be at OUT while the programs work: (made how, what stays there).
MEANWHILE = {
    'a file': ('echo kept > "$OUT"', lambda out: out.read_text() == 'kept\n'),
    'an empty folder': ('mkdir "$OUT"', lambda out: out.is_dir() and not list(out.iterdir())),
    'a link to nowhere': ('ln -s elsewhere.mkv "$OUT"', lambda out: out.is_symlink() and not out.exists()),
    'a link to the film': ('ln -s "it\'s.mkv" "$OUT"', lambda out: out.is_symlink()),
}


@pytest.mark.parametrize('script, stays', MEANWHILE.values(), ids=MEANWHILE)
def test_what_came_meanwhile_stays(binary, desk, silent, monkeypatch, script, stays):
    folder, program = desk
    program('ffmpeg', script + '; PATH=/usr/bin:/bin exec ffmpeg "$@"')
    monkeypatch.setenv('OUT', str(folder / 'out.mkv'))
    done = run(binary, folder, "it's.mkv", '-o', 'out.mkv', path='%s:/usr/bin:/bin' % (folder / 'bin'))
    assert done.returncode == 1 and 'out.mkv: is there already' in done.stderr and done.stdout == '' and stays(folder / 'out.mkv')
    assert sorted(path.name for path in folder.iterdir()) == ['bin', "it's.mkv", 'out.mkv']
    assert (folder / "it's.mkv").read_bytes() == silent.read_bytes()


@pytest.mark.parametrize('name, out', [('-i.mkv', '-y.mkv'), ('pipe:1.mkv', 'http:x.mkv'), ('$(touch x)`touch y`.mkv', 'a b;touch z.mkv'),
                                       ('%d\n.mkv', '%03d.mkv'), ('@options.mkv', 'out')])
def test_names_are_names(binary, desk, name, out):
    """Neither options, addresses, patterns nor commands to the other programs."""
    folder, _ = desk
    (folder / "it's.mkv").rename(folder / name)
    done = run(binary, folder, '--format', 'json', '--output=' + out, '--', name)
    assert done.returncode == 0 and json.loads(done.stdout)['after']['verdict'] == 'plays', done.stderr
    assert sorted(path.name for path in folder.iterdir()) == sorted(['bin', name, out])


def test_dry_run_needs_no_tool_and_writes_nothing(binary, desk):
    folder, program = desk
    program('ffmpeg', 'touch "%s/was-run"' % folder)
    for tools in folder / 'bin', folder / 'none':
        result = json.loads(run(binary, folder, "it's.mkv", '-o', 'no/such.mkv', '--dry-run', '--json', path=tools).stdout)
        jsonschema.Draft202012Validator(SCHEMA).validate(result)
        assert not result['written'] and len(result['attempts']) == 1 and 'after' not in result and not result['stays']
    assert sorted(path.name for path in folder.iterdir()) == ['bin', "it's.mkv"]


def test_no_tool_no_place(binary, desk):
    folder, _ = desk
    assert 'ffmpeg' in run(binary, folder, "it's.mkv", '-o', 'out.mkv', path=folder / 'bin').stderr
    (folder / 'link.mkv').symlink_to(folder / 'elsewhere.mkv')
    refused = {'link.mkv': 'is there already', 'no/such.mkv': 'cannot be written', "it's.mkv": 'is the file to read'}
    for out, why in refused.items():
        assert why in run(binary, folder, "it's.mkv", '-o', out).stderr
    (folder / 'link.mkv').unlink()
    (folder / 'link.mkv').symlink_to("it's.mkv")
    assert 'is the file to read' in run(binary, folder, "it's.mkv", '-o', 'link.mkv').stderr
    assert run(binary, folder, '-', '-o', 'out.mkv').returncode == 2
    assert sorted(path.name for path in folder.iterdir()) == ['bin', "it's.mkv", 'link.mkv']


@pytest.mark.parametrize('asked', [signal.SIGINT, signal.SIGTERM])
def test_interruption_leaves_nothing(binary, desk, asked):
    """No file, no folder, and no program that goes on."""
    folder, program = desk
    program('ffmpeg', 'for last; do :; done; echo part > "$last"; echo $$ > "%s/begun"; echo out_time_us=1000; exec sleep 1000' % folder)
    with subprocess.Popen([binary, 'mend', "it's.mkv", '-o', 'out.mkv'], cwd=folder, stderr=subprocess.PIPE, text=True,
                          env={**os.environ, 'PATH': '%s:/usr/bin:/bin' % (folder / 'bin')}) as running:
        until(lambda: (folder / 'begun').exists() and (folder / 'begun').read_text().endswith('\n'))
        running.send_signal(asked)
        assert 'interrupted' in running.communicate(timeout=60)[1] and running.returncode == 130
    assert sorted(path.name for path in folder.iterdir()) == ['begun', 'bin', "it's.mkv"]
    until(lambda: not Path('/proc', (folder / 'begun').read_text().strip()).exists())
