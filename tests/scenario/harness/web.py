"""Asking the hub over HTTP, as a program would."""

import json
import urllib.error
import urllib.parse
import urllib.request

from harness.hub import HTTP_PORT

PATIENCE = 10.0  # seconds


def ask(path: str, **arguments) -> tuple[int, str]:
    """The status and the body of an answer."""
    query = urllib.parse.urlencode(arguments)
    url = f"http://127.0.0.1:{HTTP_PORT}{path}" + (f"?{query}" if query else "")
    try:
        with urllib.request.urlopen(url, timeout=PATIENCE) as answer:
            return answer.status, answer.read().decode()
    except urllib.error.HTTPError as refusal:
        with refusal:
            return refusal.code, refusal.read().decode()


def ask_json(path: str, **arguments):
    """What is answered; the answer must be a success."""
    status, body = ask(path, **arguments)
    assert status == 200, f"{path}: {status} {body}"
    return json.loads(body)
