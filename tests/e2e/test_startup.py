"""tarvo_server's command line, end to end: the options that end the process before it serves
anyone. How each option is read is unit-tested."""

import subprocess

from tarvo_client import find_server_binary

TIMEOUT = 120


def run_to_end(*args):
    return subprocess.run([find_server_binary(), *args], capture_output=True, text=True,
                          timeout=TIMEOUT, stdin=subprocess.DEVNULL)


def test_help_lists_the_options_and_ends_the_process():
    done = run_to_end("--help")
    assert done.returncode == 0
    assert "Listening on port" not in done.stdout
    help_text = " ".join(done.stdout.split())
    for text in ["Run an instance of the Tarvo server on the specified port",
                 "--port <port>", "--tls", "--notls", "--connection-id <connection-id>",
                 "--debug-json", "--timeout-after-disconnect",
                 "The connection id used to determine which client connections to accept."]:
        assert text in help_text, text


def test_an_unknown_option_ends_the_process_before_listening():
    done = run_to_end("-driver", "x")
    assert done.returncode != 0
    assert "Listening on port" not in done.stdout
    assert "driver" in done.stderr
