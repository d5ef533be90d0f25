"""A browser without a window, its console and its requests."""
import json

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service


class Browser:
    def __init__(self):
        options = Options()
        options.binary_location = '/usr/bin/chromium'
        for argument in '--headless=new', '--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage':
            options.add_argument(argument)
        options.set_capability('goog:loggingPrefs', {'browser': 'ALL', 'performance': 'ALL'})
        self.driver = webdriver.Chrome(service=Service('/usr/bin/chromedriver'), options=options)

    def open(self, page, width=1280, scheme='light', media='', scripts=True):
        """Loads the page at a width; returns the console's messages and the URLs that were asked for beside its own."""
        self.driver.execute_cdp_cmd('Emulation.setScriptExecutionDisabled', {'value': not scripts})
        for log in 'browser', 'performance':
            self.driver.get_log(log)
        self.driver.execute_cdp_cmd('Emulation.setEmulatedMedia',
                                    {'media': media, 'features': [{'name': 'prefers-color-scheme', 'value': scheme}]})
        self.driver.execute_cdp_cmd('Emulation.setDeviceMetricsOverride',
                                    {'width': width, 'height': 900, 'deviceScaleFactor': 1, 'mobile': width < 600})
        self.driver.get(page.as_uri())
        assert not scripts or self.run('return document.documentElement.dataset.ready') == 'true'
        messages = [entry['message'] for entry in self.driver.get_log('browser')]
        events = [json.loads(entry['message'])['message'] for entry in self.driver.get_log('performance')]
        urls = [event['params']['request']['url'] for event in events if event['method'] == 'Network.requestWillBeSent']
        return messages, [url for url in urls if url != page.as_uri() and not url.startswith('data:')]

    def run(self, script, *args):
        return self.driver.execute_script(script, *args)

    def text(self, selector='body'):
        return self.run('return document.querySelector(arguments[0]).textContent', selector)
