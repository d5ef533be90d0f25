import json
import os
import subprocess
import sys
from pathlib import Path

import pytest
from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service

ROOT = Path(__file__).parents[2]
BINARY = Path(os.environ.get('MKVX_BIN', ROOT / 'build/release/bin/mkvx'))
sys.path.insert(0, str(ROOT / 'tests/mkvx'))  # for craft


def run(*args):
    return subprocess.run([BINARY, *map(str, args)], capture_output=True, text=True, timeout=120)


@pytest.fixture(scope='session')
def sample():
    return ROOT / 'samples/sample.mkv'


class Browser:
    """A page in a headless browser, its console and its requests."""

    def __init__(self):
        options = Options()
        options.binary_location = '/usr/bin/chromium'
        for argument in '--headless=new', '--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage':
            options.add_argument(argument)
        options.set_capability('goog:loggingPrefs', {'browser': 'ALL', 'performance': 'ALL'})
        self.driver = webdriver.Chrome(service=Service('/usr/bin/chromedriver'), options=options)

    def open(self, page, width=1280, scheme='light'):
        """Loads the page at a width; returns the console's messages and the URLs that were asked for beside its own."""
        for log in 'browser', 'performance':
            self.driver.get_log(log)
        self.driver.execute_cdp_cmd('Emulation.setEmulatedMedia',
                                    {'features': [{'name': 'prefers-color-scheme', 'value': scheme}]})
        self.driver.execute_cdp_cmd('Emulation.setDeviceMetricsOverride',
                                    {'width': width, 'height': 900, 'deviceScaleFactor': 1, 'mobile': width < 600})
        self.driver.get(page.as_uri())
        assert self.run('return document.documentElement.dataset.ready') == 'true'
        messages = [entry['message'] for entry in self.driver.get_log('browser')]
        events = [json.loads(entry['message'])['message'] for entry in self.driver.get_log('performance')]
        urls = [event['params']['request']['url'] for event in events if event['method'] == 'Network.requestWillBeSent']
        return messages, [url for url in urls if url != page.as_uri() and not url.startswith('data:')]

    def run(self, script, *args):
        return self.driver.execute_script(script, *args)

    def text(self, selector='body'):
        return self.run('return document.querySelector(arguments[0]).textContent', selector)


@pytest.fixture(scope='session')
def browser():
    browser = Browser()
    yield browser
    browser.driver.quit()


@pytest.fixture
def report(tmp_path):
    """report(path or bytes, name) -> the page that mkvx makes of it."""
    def make(file, name='film.mkv'):
        if isinstance(file, bytes):
            (tmp_path / name).write_bytes(file)
            file = tmp_path / name
        page = tmp_path / 'page.html'
        done = run('report', file, '-o', page)
        assert done.returncode == 0 and done.stderr == '', done.stderr
        return page
    return make
