"""The page that mkvx report makes, as a reader's browser shows it."""
import re

import pytest
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

import craft
from browser import Browser


@pytest.fixture(scope='session')
def browser():
    window = Browser()
    yield window
    window.driver.quit()


@pytest.fixture
def report(mkvx, tmp_path):
    """report(path or bytes, name) -> the page that mkvx makes of it."""
    def make(file, name='film.mkv'):
        if isinstance(file, bytes):
            (tmp_path / name).write_bytes(file)
            file = tmp_path / name
        page = tmp_path / 'page.html'
        done = mkvx('report', file, '-o', page)
        assert done.code == 0 and done.err == '', done.err
        return page
    return make


def clock(us):
    ms = us // 1000
    return '%02d:%02d:%02d.%03d' % (ms // 3600000, ms // 60000 % 60, ms // 1000 % 60, ms % 1000)


def units_of(mkvx, path, track):
    return mkvx('packets', '--all', '--track', track, '--format', 'jsonl', path).lines()


# How many strokes a chart of a track has in one of its lanes.
STROKES = '''const path = document.querySelectorAll('figure.track')[arguments[0]].querySelector('path.' + arguments[1]);
             return (path.getAttribute('d') || '').split('M').length - 1;'''
# Of text on what is behind it, as WCAG computes it.
CONTRAST = '''const rgb = color => color.match(/[0-9.]+/g).slice(0, 3).map(v => v / 255)
                .map(v => v <= 0.04045 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4);
              const light = color => { const [r, g, b] = rgb(color); return 0.2126 * r + 0.7152 * g + 0.0722 * b; };
              const behind = e => getComputedStyle(e).backgroundColor === 'rgba(0, 0, 0, 0)' && e.parentElement
                ? behind(e.parentElement) : getComputedStyle(e).backgroundColor;
              return Math.min(...[...document.querySelectorAll(arguments[0])].map(e => {
                const [a, b] = [light(getComputedStyle(e)[arguments[1]]), light(behind(e))].sort((x, y) => y - x);
                return (a + 0.05) / (b + 0.05); }));'''


@pytest.mark.parametrize('scheme', ['light', 'dark'])
@pytest.mark.parametrize('width', [390, 1280])
def test_loads_alone_and_is_legible(browser, report, sample, width, scheme):
    assert browser.open(report(sample), width, scheme) == ([], [])
    assert browser.run('return document.documentElement.scrollWidth') <= width
    assert browser.run(CONTRAST, 'h1, h2, p, dt, dd, th, td, a, summary, figcaption span, button, .state', 'color') >= 4.5
    assert browser.run(CONTRAST, 'svg text', 'fill') >= 4.5
    assert browser.run(CONTRAST, 'svg .keys, svg .cues, svg .entries, svg .clusters', 'stroke') >= 3
    cut = browser.run('''return [...document.querySelectorAll('svg text')].filter(e => {
        const text = e.getBoundingClientRect(), box = e.closest('figure').getBoundingClientRect();
        return text.left < box.left - 1 || text.right > box.right + 1; }).map(e => e.textContent)''')
    assert cut == []


def test_key_frames_are_those_that_are_delivered(browser, mkvx, report, sample):
    browser.open(report(sample))
    for track in 0, 1, 2:
        units = units_of(mkvx, sample, track)
        keys = sum(unit['sync'] for unit in units)
        assert browser.run(STROKES, track, 'keys') == keys > 0
        caption = browser.run("return document.querySelectorAll('figure.track figcaption')[arguments[0]].textContent", track)
        assert f'{len(units)} units' in caption and f'{keys} key frames' in caption


def test_pointing_and_keys_tell_a_unit(browser, mkvx, report, sample, tmp_path):
    browser.open(report(sample))
    # The video as an elementary stream, in which a unit differs from the file only by its start codes.
    assert mkvx('extract', '--track', 0, '-o', tmp_path / 'video.h264', sample).code == 0
    stream = (tmp_path / 'video.h264').read_bytes()
    known = {clock(unit['time_us']): unit for unit in units_of(mkvx, sample, 0)}
    chart = browser.driver.find_element('css selector', 'figure.track svg')
    tip = browser.driver.find_element('id', 'tip')
    for move in -200, 0, 123:
        ActionChains(browser.driver).move_to_element_with_offset(chart, move, 0).perform()
        time, size, place = re.match(r'(\S+) · (?:no )?key frame\n([\d,]+) bytes? at byte ([\d,]+)\nindex 0', tip.text).groups()
        unit = known[time]
        assert int(size.replace(',', '')) == unit['size'] and ('no key frame' in tip.text) == (not unit['sync'])
        assert sample.read_bytes()[int(place.replace(',', '')) + 4:][:16] in stream
    chart.send_keys(Keys.SHIFT + Keys.ARROW_LEFT)
    assert 'no key frame' not in tip.text and browser.text('#spoken') == tip.text.replace('\n', ', ')


def test_zoom_shows_less_and_all_again(browser, report, sample):
    browser.open(report(sample))
    whole = browser.text('#zoom-range'), browser.run(STROKES, 1, 'keys')
    for _ in range(3):
        browser.driver.find_element('id', 'zoom-in').click()
    assert 0 < browser.run(STROKES, 1, 'keys') < whole[1] / 4 and browser.text('#zoom-range') != whole[0]
    browser.driver.find_element('id', 'zoom-all').click()
    assert (browser.text('#zoom-range'), browser.run(STROKES, 1, 'keys')) == whole


def test_charts_reach_as_far_as_anything_in_them(browser, report):
    """The last Clusters hold nothing that is delivered, and seeks go on to the duration."""
    tracks = [craft.audio(1, 'A_MPEG/L3'), craft.audio(2, 'A_UNHEARD')]
    late = [craft.cluster(1000 * i, craft.simple_block(2, 0, b'none')) for i in range(1, 6)]
    for duration_ms, end in (8000.0, '00:00:08.000'), (500.0, '00:00:05.000'):
        browser.open(report(craft.matroska(tracks, craft.cluster(0, GOOD, craft.simple_block(1, 400, b'last')), *late,
                                           duration_ms=duration_ms, cue_for=1)))
        assert browser.text('#zoom-range').endswith(end)
        outside = browser.run("""return [...document.querySelectorAll('#seek-chart circle')].map(e => [
            e.getBoundingClientRect().right, e.closest('svg').getBoundingClientRect().right]).filter(([at, end]) => at > end + 1)""")
        assert outside == []


EVIL = '</script><script>window.caught=1</script><img src=x onerror="window.caught=1">{{script}}'


def test_texts_of_the_file_stay_texts(browser, report):
    chapter = craft.element(0xB6, craft.uint(0x91, 0) + craft.element(0x80, craft.text(0x85, EVIL)))
    attached = craft.element(0x61A7, craft.text(0x466E, EVIL) + craft.text(0x4660, EVIL) + craft.element(0x465C, b'x'))
    # The name of a track stands for its language, without its last character.
    tracks = [craft.audio(1, 'A_MPEG/L3', craft.name(EVIL + '!')), craft.audio(2, EVIL)]
    media = craft.cluster(0, craft.simple_block(1, 0, b'sound'))
    extras = [craft.element(0x1043A770, craft.element(0x45B9, chapter)), craft.element(0x1941A469, attached)]
    page = report(craft.matroska(tracks, media, led_to=extras), name=EVIL.replace('/', '\u2215') + '.mka')
    assert browser.open(page) == ([], [])
    assert browser.run('return [window.caught === undefined, document.images.length, document.scripts.length]') == [True, 0, 3]
    for selector in '#track-table', '#chapter-table', '#attachment-table':
        assert EVIL in browser.text(selector)
    assert '<img' in browser.text('h1')
    assert browser.open(page, scripts=False) == ([], []) and browser.run('return document.images.length') == 0
    browser.open(page)
    # What did get in could do nothing: the page's policy stops scripts and requests.
    blocked = browser.driver.execute_async_script('''const done = arguments[0], seen = [];
        addEventListener('securitypolicyviolation', event => { seen.push(event.effectiveDirective); if (seen.length === 2) done(seen); });
        const box = document.body.appendChild(document.createElement('div'));
        box.innerHTML = '<p onclick="window.caught=1"></p><img src="http://127.0.0.1:9/x">';''')
    assert sorted(blocked) == ['img-src', 'script-src-attr']


@pytest.fixture
def silent(report, mkvx, sample, tmp_path):
    """The page of a file with losses, and what check says of it in the file's folder."""
    page = report((sample.parent / 'silent.mkv').read_bytes(), name='it is silent.mkv')
    return page, mkvx('check', '--json', 'it is silent.mkv', cwd=tmp_path).json()['files'][0]


@pytest.mark.parametrize('width', [390, 1280])
def test_is_readable_without_scripts(browser, silent, width):
    page, checked = silent
    assert browser.open(page, width, scripts=False) == ([], [])
    seen = browser.driver.find_element('tag name', 'body').text
    assert re.match('(?s)What a device gets out of\nit is silent.mkv\nplays with losses: no sound.*47,155 bytes.*' + re.escape(checked['remedy']['text']), seen)
    for track in checked['tracks']:
        for finding in track['findings'] + [track.get('dropped')] * ('dropped' in track):
            assert finding['sentence'] in seen and f"at {finding['evidence']['data_offset']}: " in seen
    assert 'scripts switched off' in seen and not {'Timeline', 'Seeking', 'Copy', 'None.'} & set(seen.split('\n'))
    assert browser.run('return document.documentElement.scrollWidth') <= width


def test_command_is_copied(browser, silent):
    browser.open(silent[0])
    browser.driver.execute_cdp_cmd('Browser.grantPermissions', {'permissions': ['clipboardReadWrite', 'clipboardSanitizedWrite']})
    browser.driver.find_element('class name', 'copy').click()
    assert browser.driver.execute_async_script('navigator.clipboard.readText().then(arguments[0])') == silent[1]['remedy']['text']


def test_is_dark_on_white_paper(browser, report, sample):
    """Whatever the screen's colours; what only a screen can use is left out."""
    browser.open(report(sample), width=700, scheme='dark', media='print')
    browser.run("dispatchEvent(new Event('beforeprint'))")
    assert browser.run("return [...document.querySelectorAll('html, .table')].filter(e => e.scrollWidth > e.clientWidth).length") == 0
    assert browser.run("return document.querySelector('#seek-details td').offsetWidth") > 0
    assert browser.run("return [...document.querySelectorAll('nav, .toolbar, .copy, footer details')].every(e => !e.offsetWidth)")
    assert browser.run("return getComputedStyle(document.body).backgroundColor") == 'rgb(255, 255, 255)'
    assert browser.run(CONTRAST, 'h1, h2, p, dt, dd, th, td, figcaption span, .state', 'color') >= 4.5


def many_units(count):
    cluster = [craft.cluster(1000 * i, *(craft.simple_block(1, t, b'sound') for t in range(0, 1000, 10)))
               for i in range(count // 100)]
    return craft.matroska([craft.audio(1, 'A_MPEG/L3')], *cluster, duration_ms=10.0 * count)


def test_page_stays_small(browser, report):
    page = report(many_units(100000))
    assert page.stat().st_size < 1.5e6
    assert browser.open(page) == ([], [])
    assert '100,000 units' in browser.text('#charts') and '1 of 8 key frames' in browser.text('#charts')


GOOD = craft.simple_block(1, 0, b'good')
LONG = craft.simple_block(1, 0, b'long' * 4096)
AUDIO = [craft.audio(1, 'A_MPEG/L3')]


@pytest.mark.parametrize('file, section, told', [
    (craft.matroska(AUDIO, craft.cluster(0, GOOD), b'\0' * 1021, craft.cluster(9, LONG)), '#layout', r'next element[\d,]+?1,022$'),
    (craft.matroska([craft.audio(1, 'A_MPEG/L3', craft.stripped(b'>'))], craft.cluster(0, GOOD, craft.bad_laces(1, 1), GOOD)), '#charts', '1 block could not be read: a player stops after 00:00:00.000'),
    (craft.matroska(AUDIO, craft.cluster(0, GOOD))[:-3], '#layout', r'goes on behind the end of the file[\d,]+3'),
    (craft.matroska([craft.audio(1, 'A_UNHEARD')], craft.cluster(0, GOOD)), '#track-table', 'dropped.*A_UNHEARD'),
    (craft.matroska([craft.audio(1, 'A_VORBIS', craft.private(b''))], craft.cluster(0, GOOD)), 'main', r'Not examined.*ends over it'),
    (craft.matroska(AUDIO, craft.cluster(0, GOOD), doctype='other'), 'main', r'^((?!Chapters|Timeline|Size).)*Not examined((?!None).)*$'),
    (craft.matroska(AUDIO, duration_ms=0.0), '#seeking', 'ends the stream'),
], ids=['damage', 'unreadable block', 'cut off', 'dropped', 'stops', 'refused', 'empty'])
def test_what_is_wrong_is_said(browser, report, file, section, told):
    assert browser.open(report(file)) == ([], [])
    assert re.search(told, browser.text(section).strip(), re.S), browser.text(section)


@pytest.mark.parametrize('args, code', [(['{file}', '-o', '{file}'], 2), (['{file}'], 2), (['{text}', '-o', '{out}'], 1),
                                        (['{file}', '-o', '/no/such/folder/x.html'], 1)])
def test_failures_leave_nothing(mkvx, tmp_path, sample, args, code):
    file, text, out = tmp_path / 'film.mkv', tmp_path / 'text.mkv', tmp_path / 'out.html'
    file.write_bytes(sample.read_bytes())
    text.write_bytes(b'no film')
    done = mkvx('report', *(arg.format(file=file, text=text, out=out) for arg in args))
    assert done.code == code and done.err.startswith('mkvx: ') and done.err.count('\n') == 1
    assert not out.exists() and file.read_bytes() == sample.read_bytes()


@pytest.mark.parametrize('data, verdict, why', [
    (craft.matroska([craft.audio(1, 'A_VORBIS', craft.private(b''))], craft.cluster(0, GOOD)), 'stops the media process', 'CHECK(codecPrivateSize &gt;= 3) failed'),
    (craft.matroska(AUDIO, craft.cluster(0, GOOD), doctype='other'), 'nothing plays', 'the document type is &quot;other&quot;'),
], ids=['stopped', 'refused'])
def test_static_body_of_what_was_not_examined(report, data, verdict, why):
    """Without a browser: it says so, draws nothing, and has no place for what was not looked at."""
    body = re.sub('(?s)<script.*?</script>|<style.*?</style>|<footer>.*', '', report(data, name='a&<b>.mka').read_text().split('<body>')[1])
    assert f'>{verdict}</span>' in body and why in body and 'Not examined' in body and '<h1 id="file">a&amp;&lt;b&gt;.mka</h1>' in body
    assert not re.search('<svg|<canvas|<img| on[a-z]+=|javascript:|<b>|id="(charts|seeking|layout)"', body)
    anchors, ids = set(re.findall('href="#([^"]+)"', body)), re.findall(' id="([^"]+)"', body)
    assert anchors <= set(ids) and len(ids) == len(set(ids))
