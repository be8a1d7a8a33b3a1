"""Headless Chromium, driven through its debugging protocol over two pipes: nothing but Debian's chromium is needed."""
import base64
import json
import os
import pathlib
import select
import shutil
import subprocess
import tempfile
import time

FLAGS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync", "--hide-scrollbars",
         "--force-color-profile=srgb", "--remote-debugging-pipe"]


def program():
    return shutil.which("chromium")


class Browser:
    """One page of one browser, with a profile of its own. `requests` and `complaints` hold what the page did so far."""

    def __init__(self):
        self.profile = tempfile.mkdtemp(prefix="qxbrowser")
        to_browser, self.write_end = os.pipe()
        self.read_end, from_browser = os.pipe()

        def place_pipes():  # the protocol is on 3 and 4
            copies = os.dup(to_browser), os.dup(from_browser)
            high = [os.dup(c) for c in copies]
            os.dup2(high[0], 3)
            os.dup2(high[1], 4)

        self.process = subprocess.Popen([program(), *FLAGS, f"--user-data-dir={self.profile}", "about:blank"],
                                        preexec_fn=place_pipes, pass_fds=(3, 4, to_browser, from_browser),
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.buffer, self.number, self.session = b"", 0, None
        self.events, self.requests, self.complaints = [], [], []
        targets = self.call("Target.getTargets")["targetInfos"]
        page = next(t["targetId"] for t in targets if t["type"] == "page")
        self.session = self.call("Target.attachToTarget", targetId=page, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Network", "Log"):
            self.call(f"{domain}.enable")

    def close(self):
        try:
            self.session = None
            self.call("Browser.close")
            self.process.wait(20)
        except Exception:  # it is to go in any case
            self.process.kill()
            self.process.wait()
        for end in (self.write_end, self.read_end):
            os.close(end)
        shutil.rmtree(self.profile, ignore_errors=True)

    def receive(self, seconds):
        deadline = time.monotonic() + seconds
        while b"\0" not in self.buffer:
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([self.read_end], [], [], left)[0]:
                raise TimeoutError("the browser does not answer")
            data = os.read(self.read_end, 1 << 20)
            if not data:
                raise EOFError("the browser has ended")
            self.buffer += data
        text, self.buffer = self.buffer.split(b"\0", 1)
        return json.loads(text)

    def note(self, message):
        method, params = message.get("method"), message.get("params", {})
        if method == "Network.requestWillBeSent":
            self.requests.append(params["request"]["url"])
        elif method == "Runtime.exceptionThrown":
            self.complaints.append(json.dumps(params["exceptionDetails"]))
        elif method == "Runtime.consoleAPICalled" and params["type"] in ("error", "warning", "assert"):
            self.complaints.append(json.dumps(params["args"]))
        elif method == "Log.entryAdded" and params["entry"]["level"] in ("error", "warning"):
            self.complaints.append(json.dumps(params["entry"]))
        self.events.append(method)

    def call(self, method, **params):
        self.number += 1
        message = {"id": self.number, "method": method, "params": params}
        if self.session:
            message["sessionId"] = self.session
        data = json.dumps(message).encode() + b"\0"
        while data:
            data = data[os.write(self.write_end, data):]
        while True:
            answer = self.receive(90)
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]
            self.note(answer)

    def evaluate(self, expression):
        """The value of a JavaScript expression, awaited when it is a promise."""
        result = self.call("Runtime.evaluate", expression=expression, awaitPromise=True, returnByValue=True)
        if "exceptionDetails" in result:
            raise RuntimeError(json.dumps(result["exceptionDetails"]))
        return result["result"].get("value")

    def open(self, path):
        self.events.clear()
        self.call("Page.navigate", url=pathlib.Path(path).resolve().as_uri())
        deadline = time.monotonic() + 90
        while "Page.loadEventFired" not in self.events:
            self.note(self.receive(max(0.1, deadline - time.monotonic())))

    def size(self, width, height=900, scale=1):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=scale,
                  mobile=width < 600)

    def scheme(self, name):
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": name}])

    def screenshot(self, path, whole=True):
        data = self.call("Page.captureScreenshot", captureBeyondViewport=whole)["data"]
        pathlib.Path(path).write_bytes(base64.b64decode(data))

    def print(self, path):
        """As A4, with the margins that a browser gives by itself."""
        data = self.call("Page.printToPDF", paperWidth=8.27, paperHeight=11.69)["data"]
        pathlib.Path(path).write_bytes(base64.b64decode(data))

    def mouse(self, kind, x, y, buttons=0):
        pressed = kind != "mouseMoved"
        self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, buttons=buttons, button="left" if pressed or buttons else "none",
                  clickCount=1 if pressed else 0)

    def click(self, x, y):
        self.mouse("mousePressed", x, y, 1)
        self.mouse("mouseReleased", x, y)

    def centre(self, selector, across=0.5):
        """Where an element is in the window, scrolled there first."""
        return self.evaluate(f"""(() => {{ const e = document.querySelector({json.dumps(selector)});
            e.scrollIntoView({{block: "center", behavior: "instant"}}); const b = e.getBoundingClientRect();
            return [b.left + b.width * {across}, b.top + b.height / 2]; }})()""")

    def key(self, name, code=0, text=""):
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=name, code=name, windowsVirtualKeyCode=code,
                      text=text if kind == "keyDown" else "")
