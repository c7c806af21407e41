"""Plays a file in a real page of Chromium, spoken to by WebDriver, https://www.w3.org/TR/webdriver2."""

import functools
import http.server
import json
import shutil
import socket
import subprocess
import tempfile
import threading
import time
import urllib.request
from pathlib import Path

PAGE = """<!doctype html><video id="v" muted></video>"""
PLAY = """
const done = arguments[arguments.length - 1], v = document.getElementById('v');
// Held in memory whole, so that seeking asks nothing of the server.
fetch(arguments[0]).then(a => a.blob()).then(b => { v.src = URL.createObjectURL(b); start(); });
const fail = () => done({error: (v.error && v.error.message) || 'not supported'});
v.onerror = fail;
v.onended = () => {
  const q = v.getVideoPlaybackQuality();
  const half = v.duration / 2;
  v.onseeked = () => done({duration: v.duration, frames: q.totalVideoFrames,
                            sound: v.webkitAudioDecodedByteCount, seek: Math.abs(v.currentTime - half) < 0.5});
  v.onended = null;
  v.currentTime = half;
};
const start = () => { v.playbackRate = 4; v.play().catch(() => fail()); };
setTimeout(() => done({error: 'did not end in time'}), 20000);
"""


class Quiet(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *arguments):
        pass


class Browser:
    def __init__(self):
        self.directory = tempfile.TemporaryDirectory()
        handler = functools.partial(Quiet, directory=self.directory.name)
        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler)
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            port = free.getsockname()[1]
        self.driver = subprocess.Popen(
            ["chromedriver", f"--port={port}"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL
        )
        self.base = f"http://127.0.0.1:{port}"
        arguments = ["--headless=new", "--no-sandbox", "--disable-gpu", "--autoplay-policy=no-user-gesture-required"]
        wanted = {"capabilities": {"alwaysMatch": {"goog:chromeOptions": {"args": arguments}}}}
        for attempt in range(50):
            try:
                self.session = self.call("POST", "/session", wanted)["sessionId"]
                break
            except OSError:
                if attempt == 49:
                    raise
                time.sleep(0.2)

    def call(self, method, path, body=None):
        data = json.dumps(body).encode() if body is not None else None
        request = urllib.request.Request(
            self.base + path, data, {"Content-Type": "application/json"}, method=method
        )
        with urllib.request.urlopen(request, timeout=60) as answer:
            return json.load(answer)["value"]

    def play(self, path):
        shutil.copy(path, Path(self.directory.name) / ("media" + path.suffix))
        Path(self.directory.name, "page.html").write_text(PAGE)
        session = f"/session/{self.session}"
        self.call("POST", session + "/timeouts", {"script": 30000})
        self.call("POST", session + "/url", {"url": f"http://127.0.0.1:{self.server.server_port}/page.html"})
        return self.call("POST", session + "/execute/async", {"script": PLAY, "args": ["media" + path.suffix]})

    def close(self):
        try:
            self.call("DELETE", f"/session/{self.session}")
        finally:
            self.driver.terminate()
            self.driver.wait()
            self.server.shutdown()
            self.directory.cleanup()
