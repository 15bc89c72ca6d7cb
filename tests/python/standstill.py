"""How long other threads stand still while a piece of work runs."""

import threading
import time


def standstill_during(work):
    """The longest standstill of another thread, and how long the work took, in seconds."""
    longest, done = [0.0], threading.Event()

    def look():
        last = time.perf_counter()
        while not done.is_set():
            time.sleep(0.0005)
            now = time.perf_counter()
            longest[0] = max(longest[0], now - last)
            last = now

    watcher = threading.Thread(target=look)
    watcher.start()
    began = time.perf_counter()
    try:
        work()
    finally:
        took = time.perf_counter() - began
        done.set()
        watcher.join()
    return longest[0], took
