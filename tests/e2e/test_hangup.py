# SPDX-License-Identifier: Apache-2.0
"""SIGHUP: the end of the terminal or session that started the program does not end it."""

import signal

from phone import Phone
from servers import Serve


def test_server_goes_on_after_a_hangup(program, documents, tmp_path):
    with Serve(program, documents, tmp_path) as server:
        server.process.send_signal(signal.SIGHUP)
        assert server.stop() == 0
    assert server.events("stopped")[0]["requests"] == 0


def test_phone_goes_on_after_a_hangup(program):
    accessory = "id=desk,type=headset,model=K30,softwareVersion=2-1-0"
    # Nothing listens on this port.
    arguments = ["--accessory", accessory, "--config-url", "http://127.0.0.1:1/"]
    with Phone(program, arguments) as phone:
        phone.wait_for_line("next attempt (2) in ")
        phone.signal(signal.SIGHUP)
        phone.wait_for_line("next attempt (3) in ")
        phone.signal(signal.SIGTERM)
        assert phone.finish() == 1
