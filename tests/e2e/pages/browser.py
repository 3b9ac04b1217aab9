"""A headless Chromium, driven by chromedriver's own protocol, which is HTTP and JSON."""
import http.client
import json
import os
import re
import shutil
import subprocess
import time


def missing():
    """What a browser test lacks on this machine; empty when it can run."""
    return [name for name in ("chromium", "chromedriver") if shutil.which(name) is None]


class Browser:
    """One window. What it is told to find it waits for, up to ten seconds."""

    ELEMENT = "element-6066-11e4-a52e-4f735466cecf"

    def __init__(self, directory):
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                       text=True, env={**os.environ, "HOME": str(directory)})
        port = None
        for line in self.driver.stdout:
            if found := re.search(r"started successfully on port (\d+)", line):
                port = int(found.group(1))
                break
        if port is None:
            raise RuntimeError("chromedriver did not start")
        self.connection = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
        options = {"binary": shutil.which("chromium"), "args": [
            "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run",
            "--disable-background-networking", "--disable-component-update", "--disable-sync", "--no-proxy-server",
            # No request leaves this machine, whatever the browser would like to ask at home.
            "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1", "--window-size=1200,900",
            f"--user-data-dir={directory}/chromium"]}
        answer = self.call("POST", "/session", {"capabilities": {"alwaysMatch": {"goog:chromeOptions": options}}})
        self.session = f"/session/{answer['sessionId']}"

    def close(self):
        try:
            self.call("DELETE", self.session)
        finally:
            self.driver.terminate()
            self.driver.wait()

    def call(self, method, path, body=None):
        text = json.dumps(body) if body is not None else ("{}" if method == "POST" else None)
        self.connection.request(method, path, text, {"Content-Type": "application/json"})
        answer = json.loads(self.connection.getresponse().read())["value"]
        if isinstance(answer, dict) and "error" in answer:
            raise RuntimeError(f"{method} {path}: {answer['error']}: {answer['message'].splitlines()[0]}")
        return answer

    def open(self, url):
        # An address that differs from the last one by what follows "#" alone would not be loaded again.
        self.call("POST", f"{self.session}/url", {"url": "about:blank"})
        self.call("POST", f"{self.session}/url", {"url": url})

    def run(self, script, *arguments):
        return self.call("POST", f"{self.session}/execute/sync", {"script": script, "args": list(arguments)})

    def wait_for(self, what, condition):
        """Asks again until there is an answer that counts as true, and gives it."""
        end = time.monotonic() + 10
        while time.monotonic() < end:
            try:
                if answer := condition():
                    return answer
            except RuntimeError as error:
                if "stale" not in str(error) and "no such element" not in str(error):
                    raise
            time.sleep(0.02)
        raise AssertionError(f"{what} did not come; the page says:\n{self.text('body')[:2000]}")

    def find(self, css):
        found = self.wait_for(css, lambda: self.call("POST", f"{self.session}/elements",
                                                     {"using": "css selector", "value": css}))
        return found[0][self.ELEMENT]

    def find_text(self, css, text):
        """The first element of a selector that shows this text."""
        script = "return [...document.querySelectorAll(arguments[0])].find((e) => e.textContent.includes(arguments[1]))"
        return self.wait_for(f"{css} with {text!r}", lambda: self.run(script, css, text))[self.ELEMENT]

    def text(self, css):
        return self.run("return document.querySelector(arguments[0])?.innerText ?? ''", css)

    def wait_for_text(self, css, text):
        self.wait_for(f"{text!r} in {css}", lambda: text in self.text(css))

    def click(self, element):
        self.call("POST", f"{self.session}/element/{element}/click")

    def type(self, element, text):
        self.call("POST", f"{self.session}/element/{element}/clear")
        self.call("POST", f"{self.session}/element/{element}/value", {"text": text})

    def press(self, *keys):
        """Presses keys one by one, wherever the focus is."""
        actions = [{"type": kind, "value": key} for key in keys for kind in ("keyDown", "keyUp")]
        self.call("POST", f"{self.session}/actions", {"actions": [{"type": "key", "id": "keyboard", "actions": actions}]})

    def command(self, name, **parameters):
        return self.call("POST", f"{self.session}/goog/cdp/execute", {"cmd": name, "params": parameters})
