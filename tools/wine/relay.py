"""relay.py COMMAND [ARGUMENT...]: runs a command and passes on what it writes, until it ends.

What it has started may live longer, a server above all, and keeps the streams that it was given; a
pipe behind the command would stay open as long. So the command writes into pipes of its own, and
what is in them when it ends is the last that is passed on. Its exit status is returned."""

import os
import selectors
import signal
import subprocess
import sys

BLOCK = 65536


def pass_on(source, target):
    """What there is to read; False at the end, or when nobody reads it any more."""
    block = os.read(source, BLOCK)
    try:
        while block:
            block = block[os.write(target, block):]
            if not block:
                return True
    except BrokenPipeError:
        pass
    return False


def relay(command):
    signal.signal(signal.SIGINT, signal.SIG_IGN)  # meant for the command, which ends by it
    ended_read, ended_write = os.pipe()
    os.set_blocking(ended_write, False)
    signal.set_wakeup_fd(ended_write)
    signal.signal(signal.SIGCHLD, lambda *_: None)
    pipes = {1: os.pipe(), 2: os.pipe()}
    process = subprocess.Popen(
        command, stdout=pipes[1][1], stderr=pipes[2][1],
        preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
    signal.signal(signal.SIGTERM, lambda *_: process.terminate())
    with selectors.DefaultSelector() as waiting:
        waiting.register(ended_read, selectors.EVENT_READ)
        for target, (read, write) in pipes.items():
            os.close(write)
            waiting.register(read, selectors.EVENT_READ, target)
        while True:
            ready = waiting.select(0 if process.poll() is not None else None)
            if not any(key.data for key, _ in ready) and process.poll() is not None:
                break
            for key, _ in ready:
                if key.data is None:
                    os.read(ended_read, BLOCK)
                elif not pass_on(key.fd, key.data):
                    waiting.unregister(key.fd)
                    os.close(key.fd)
    return process.returncode


if __name__ == "__main__":
    status = relay(sys.argv[1:])
    sys.exit(status if status >= 0 else 128 - status)
