"""Tests wait for states; the limit only ends what hangs."""
import time


def until(holds):
    end = time.monotonic() + 60
    while not holds():
        assert time.monotonic() < end, 'this never came true'
        time.sleep(0.01)
