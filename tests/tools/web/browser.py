#!/usr/bin/env python3
"""Opens a page in headless Chromium and reports on it through the DevTools
protocol (over --remote-debugging-pipe, so nothing but Python is needed).

  browser.py CHROMIUM URL [--size WxH] [--wait-for EXPR] [--keys K1,K2,...]
             [--click X,Y] [--sleep S] [--shot OUT.png] [--eval EXPR OUT.json]...

Loads URL, waits until the JavaScript expression of --wait-for is true
(default: window.qvPage && qvPage.ready), presses the keys (names of
KeyboardEvent.key: ArrowRight, Home, m, +), clicks at page pixel (X, Y),
sleeps S seconds, then writes a
screenshot of the page's canvas (#screen) to OUT.png and the JSON value of
each --eval expression to its file. Exit status 0 on success, 1 on failure.
"""
import base64
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time


class Browser:
    def __init__(self, chromium, width, height):
        self.profile = tempfile.mkdtemp(prefix="qvmovie-chromium-")
        to_browser_r, self.to_browser = os.pipe()
        self.from_browser, from_browser_w = os.pipe()

        def child_fds():
            # The browser reads commands on fd 3 and answers on fd 4.
            read_end, write_end = os.dup(to_browser_r), os.dup(from_browser_w)
            os.dup2(read_end, 3)
            os.dup2(write_end, 4)

        self.proc = subprocess.Popen(
            [chromium, "--headless", "--no-sandbox", "--disable-gpu",
             "--remote-debugging-pipe", "--user-data-dir=" + self.profile,
             "--force-device-scale-factor=1", "--force-color-profile=srgb",
             "--hide-scrollbars", "--no-first-run", "--mute-audio", "--disable-dev-shm-usage",
             "--window-size=%d,%d" % (width, height), "about:blank"],
            close_fds=False, preexec_fn=child_fds,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser_r)
        os.close(from_browser_w)
        self.buffer = b""
        self.next_id = 0
        self.session = None
        target = self.call("Target.createTarget", {"url": "about:blank"})["targetId"]
        self.session = self.call("Target.attachToTarget",
                                 {"targetId": target, "flatten": True})["sessionId"]
        self.call("Emulation.setDeviceMetricsOverride",
                  {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})

    def call(self, method, params=None, timeout=30):
        self.next_id += 1
        message = {"id": self.next_id, "method": method, "params": params or {}}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.to_browser, json.dumps(message).encode() + b"\0")
        deadline = time.time() + timeout
        while time.time() < deadline:
            while b"\0" not in self.buffer:
                chunk = os.read(self.from_browser, 1 << 20)
                if not chunk:
                    raise RuntimeError("the browser went away")
                self.buffer += chunk
            raw, self.buffer = self.buffer.split(b"\0", 1)
            reply = json.loads(raw)
            if reply.get("id") == self.next_id:
                if "error" in reply:
                    raise RuntimeError("%s: %s" % (method, reply["error"]))
                return reply.get("result", {})
        raise RuntimeError(method + ": no answer")

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate",
                           {"expression": expression, "returnByValue": True,
                            "awaitPromise": True})
        if "exceptionDetails" in result:
            raise RuntimeError("%s: %s" % (expression, result["exceptionDetails"]))
        return result["result"].get("value")

    def close(self):
        try:
            self.proc.kill()
            self.proc.wait(10)
        finally:
            shutil.rmtree(self.profile, ignore_errors=True)


def main(argv):
    if len(argv) < 3:
        print(__doc__, file=sys.stderr)
        return 1
    chromium, url = argv[1], argv[2]
    width, height, wait_for, sleep, shot, evals = 1000, 800, "window.qvPage && qvPage.ready", 0, None, []
    keys, clicks = [], []
    i = 3
    while i < len(argv):
        if argv[i] == "--size":
            width, height = (int(v) for v in argv[i + 1].split("x"))
            i += 2
        elif argv[i] == "--wait-for":
            wait_for = argv[i + 1]
            i += 2
        elif argv[i] == "--keys":
            keys = argv[i + 1].split(",")
            i += 2
        elif argv[i] == "--click":
            clicks.append([float(v) for v in argv[i + 1].split(",")])
            i += 2
        elif argv[i] == "--sleep":
            sleep = float(argv[i + 1])
            i += 2
        elif argv[i] == "--shot":
            shot = argv[i + 1]
            i += 2
        elif argv[i] == "--eval":
            evals.append((argv[i + 1], argv[i + 2]))
            i += 3
        else:
            print("browser.py: unknown argument " + argv[i], file=sys.stderr)
            return 1
    browser = Browser(chromium, width, height)
    try:
        browser.call("Page.enable")
        browser.call("Page.navigate", {"url": url})
        deadline = time.time() + 30
        while not browser.evaluate("!!(%s)" % wait_for):
            if time.time() > deadline:
                error = browser.evaluate("window.qvPage ? qvPage.error : 'no page'")
                raise RuntimeError("waited in vain for %s (%s)" % (wait_for, error))
            time.sleep(0.05)
        for key in keys:
            for kind in ("keyDown", "keyUp"):
                browser.call("Input.dispatchKeyEvent", {"type": kind, "key": key})
        for x, y in clicks:
            for kind in ("mousePressed", "mouseReleased"):
                browser.call("Input.dispatchMouseEvent", {"type": kind, "x": x, "y": y,
                                                          "button": "left", "clickCount": 1})
        time.sleep(sleep)
        if shot:
            rect = browser.evaluate(
                "(() => { const r = document.getElementById('screen').getBoundingClientRect();"
                " return [r.left, r.top, r.width, r.height]; })()")
            png = browser.call("Page.captureScreenshot",
                               {"format": "png", "clip": {"x": rect[0], "y": rect[1],
                                "width": rect[2], "height": rect[3], "scale": 1}})
            with open(shot, "wb") as f:
                f.write(base64.b64decode(png["data"]))
        for expression, out in evals:
            with open(out, "w") as f:
                json.dump(browser.evaluate(expression), f)
    finally:
        browser.close()
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv))
    except Exception as e:  # reported as a failure of the run, not a trace
        print("browser.py: %s" % e, file=sys.stderr)
        sys.exit(1)
