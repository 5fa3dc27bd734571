# SPDX-License-Identifier: Apache-2.0
"""Documents as large as the program takes: what they cost, and that they can be interrupted."""

import json
import os
import signal
import subprocess
import time

import pytest

from phone import Phone
from servers import Serve

SIZE = 4 * 1024 * 1024  # the largest answer
SOON = 5  # seconds from the first signal to the end


def write_document(folder, setting):
    """A document of the largest size with as many common settings of that text as it takes."""
    document = {
        "templateConfiguration": {
            "commonSettings": ["HERE"],
            "modelSpecificSettings": [
                {
                    "models": ["Varos"],
                    "modelFirmware": [{"firmwareName": "a.img", "firmwareVersion": "2-1-0"}],
                }
            ],
        }
    }
    text = json.dumps(document)
    count = (SIZE - len(text)) // (len(setting) + 1)
    (folder / "large.json").write_text(text.replace('"HERE"', ",".join([setting] * count)))
    return count


def arguments_for(server, accessories):
    arguments = ["--config-url", f"{server.url}/large.json"]
    for i in range(accessories):
        facts = f"id={i},type=headset,vendorId=61525,model=Varos,serialNumber={i}"
        facts += ",softwareVersion=2-0-4"
        arguments += ["--accessory", facts]
    return arguments


@pytest.mark.parametrize("json_lines", [True, False], ids=["json", "words"])
def test_faulty_settings_take_memory_and_output_within_bounds(
    json_lines, program, tmp_path, slowness
):
    count = write_document(tmp_path, '{"name": "Sidetone"}')
    with Serve(program, tmp_path, tmp_path) as server:
        arguments = [*arguments_for(server, 3), *(["--json"] if json_lines else [])]
        process = subprocess.Popen([program, "phone", *arguments], stdout=subprocess.PIPE)
        with process.stdout as output:
            text = output.read().decode("ascii")
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    if json_lines:
        events = [json.loads(line) for line in text.splitlines()]
        document = next(event for event in events if event["event"] == "document")
        assert document["settingsPassedOver"] == count
        assert len(document["passedOver"]) == 100
        assert events[-1]["settingsPassedOver"] == count
    else:
        assert f"  and {count - 20} more passed over\n" in text
        assert f"done: 3 of 3 configured ({count} settings passed over)" in text
    assert len(text) < 100000
    assert usage.ru_maxrss * 1024 < 20 * SIZE * slowness
    assert process.returncode == 0


def test_stopped_while_a_document_is_handed_over(program, tmp_path):
    write_document(tmp_path, "0")
    with Serve(program, tmp_path, tmp_path) as server:
        with Phone(program, arguments_for(server, 100)) as phone:
            phone.wait_for_line("upgrade ")  # of the first of many
            begin = time.monotonic()
            phone.signal(signal.SIGTERM)
            code = phone.finish()
            duration = time.monotonic() - begin
    assert phone.lines[-1] == "failed: interrupted while a document was handed over"
    assert code == 1
    assert duration < SOON
