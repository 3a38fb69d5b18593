"""Pages that "clusctl report" writes, in a real browser: Chromium without a window, driven over its debugging pipe."""
import base64
import json
import os
import select
import shutil
import subprocess
import time
from pathlib import Path

WIDTHS = (400, 1200, 2000)
WHOLE_WIDTH = 1200  # from here on a cluster of common size is drawn whole
PAPER_WIDTH = 964  # of a sheet, lying, between its margins: the narrower one of A4 and Letter
TIME_LIMIT = 60  # seconds for one answer of the browser, on a machine with other work

# What is wrong with a page as it is laid out: a list of sentences.
LOOK = """(isWhole => {
    const wrong = [], width = document.documentElement.clientWidth;
    if (document.documentElement.scrollWidth > width) wrong.push('the page is wider than the window');
    const inside = (inner, outer) => inner.left >= outer.left - 1 && inner.right <= outer.right + 1 &&
        inner.top >= outer.top - 1 && inner.bottom <= outer.bottom + 1;
    document.querySelectorAll('.frame').forEach((frame, number) => {
        const drawn = frame.querySelector('svg'), picture = drawn.getBoundingClientRect(), room = frame.getBoundingClientRect();
        // One that would be too small to be read is scrolled in its frame, which shows nothing outside.
        const isScrolled = getComputedStyle(frame).overflowX === 'auto' && picture.left >= room.left - 1 &&
            picture.right <= room.left + frame.scrollWidth + 1 && picture.bottom <= room.bottom + 1;
        if (isWhole && frame.scrollWidth > frame.clientWidth) wrong.push('picture ' + number + ' is scrolled');
        if (!inside(picture, room) && !isScrolled) wrong.push('picture ' + number + ' is not inside its frame');
        if (room.left < 0 || room.right > width + 1) wrong.push('frame ' + number + ' is not inside the window');
        const scale = picture.width / drawn.viewBox.baseVal.width;
        const small = Array.from(drawn.querySelectorAll('text')).find(text => parseFloat(getComputedStyle(text).fontSize) * scale < 8);
        if (small) wrong.push('picture ' + number + ' is too small to be read: ' + small.textContent);
        frame.querySelectorAll('.cp-box').forEach(box => {
            const room = box.getBoundingClientRect();
            if (!inside(room, picture)) wrong.push('a box is not inside its picture');
            box.parentNode.querySelectorAll('text').forEach(text => {
                if (!inside(text.getBoundingClientRect(), room)) wrong.push('not inside its box: ' + text.textContent);
            });
        });
    });
    return wrong;
})"""

# Searches in the last list, and tells how many rows are there, are left, and lack the word.
SEARCH = """(word => {
    const box = Array.from(document.querySelectorAll('.search')).pop(), input = box.querySelector('input');
    const rows = Array.from(box.nextElementSibling.querySelectorAll('tbody tr'));
    input.value = word;
    input.dispatchEvent(new Event('input'));
    const left = rows.filter(row => row.getBoundingClientRect().height > 0);
    return [rows.length, left.length, left.filter(row => !row.textContent.toLowerCase().includes(word)).length,
        box.textContent.trim()];
})"""

# Without scripts, of which this is none of the page's own: whether something is not shown, and how many texts are.
UNSCRIPTED = """(() => {
    const wrong = [], walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
    let count = 0;
    while (walker.nextNode()) {
        const element = walker.currentNode.parentElement;
        if (walker.currentNode.textContent.trim() === '' || element.closest('script, style, noscript, svg title')) continue;
        const range = document.createRange(), style = getComputedStyle(element);
        range.selectNodeContents(walker.currentNode);
        const room = range.getBoundingClientRect();
        ++count;
        if (room.width <= 0 || room.height <= 0 || style.visibility !== 'visible' || style.opacity === '0')
            wrong.push('not shown: ' + walker.currentNode.textContent.trim());
    }
    if (Array.from(document.querySelectorAll('.search')).some(box => box.getBoundingClientRect().height > 0))
        wrong.push('a search is offered that finds nothing');
    if (document.querySelectorAll('tbody tr').length === 0 || count < 20) wrong.push('there are only ' + count + ' texts');
    return wrong;
})()"""


class Browser:
    def __init__(self, profile):
        commands, self.commands = os.pipe()
        self.answers, answers = os.pipe()

        def pass_pipe():
            saved = os.dup(answers), os.dup(commands)
            os.dup2(saved[1], 3)
            os.dup2(saved[0], 4)

        self.process = subprocess.Popen(
            ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars",
             "--no-first-run", "--disable-background-networking", "--disable-component-update", "--remote-debugging-pipe",
             f"--user-data-dir={profile}", "about:blank"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, preexec_fn=pass_pipe, close_fds=False)
        os.close(commands)
        os.close(answers)
        self.rest = b""
        self.number = 0
        self.events = []
        self.session = None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Network", "Log"):
            self.call(f"{domain}.enable")

    def message(self):
        end = time.monotonic() + TIME_LIMIT
        while b"\0" not in self.rest:
            if not select.select([self.answers], [], [], max(0, end - time.monotonic()))[0]:
                raise TimeoutError("the browser does not answer")
            data = os.read(self.answers, 1 << 16)
            if not data:
                raise EOFError("the browser has ended")
            self.rest += data
        text, _, self.rest = self.rest.partition(b"\0")
        return json.loads(text)

    def call(self, method, **parameters):
        self.number += 1
        command = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            command["sessionId"] = self.session
        data = json.dumps(command).encode("utf-8") + b"\0"
        while data:
            data = data[os.write(self.commands, data):]
        while True:
            message = self.message()
            if message.get("id") == self.number:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']['message']}")
                return message["result"]
            self.events.append(message)

    def open(self, page):
        """Waits until the page is there. What was fetched and what went wrong meanwhile is among the events."""
        self.events = []
        self.call("Page.navigate", url=page.as_uri())
        while not any(event.get("method") == "Page.loadEventFired" for event in self.events):
            self.events.append(self.message())

    def value(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"]["text"])
        return result["result"]["value"]

    def set_width(self, width):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=900, deviceScaleFactor=1, mobile=False)

    def set_scripts(self, are_run):
        self.call("Emulation.setScriptExecutionDisabled", value=not are_run)

    def set_dark(self, is_dark, media=""):
        self.call("Emulation.setEmulatedMedia", media=media,
                  features=[{"name": "prefers-color-scheme", "value": "dark" if is_dark else "light"}])

    def picture(self, file, height=None, scale=1):
        size = self.value("[document.documentElement.clientWidth, document.documentElement.scrollHeight]")
        clip = {"x": 0, "y": 0, "width": size[0], "height": min(height or size[1], 6000), "scale": scale}
        data = self.call("Page.captureScreenshot", clip=clip, captureBeyondViewport=True)["data"]
        file.write_bytes(base64.b64decode(data))

    def close(self):
        try:
            self.session = None
            self.call("Browser.close")
        except (EOFError, OSError, TimeoutError):
            pass
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        os.close(self.commands)
        os.close(self.answers)


def problems_of_events(browser, page):
    problems = []
    for event in browser.events:
        method, parameters = event.get("method"), event.get("params", {})
        if method == "Runtime.exceptionThrown":
            problems.append(f"an exception: {parameters['exceptionDetails']['text']}")
        elif method == "Runtime.consoleAPICalled":
            problems.append(f"the console says: {parameters['args']}")
        elif method == "Log.entryAdded":
            problems.append(f"the browser says: {parameters['entry']['text']}")
        elif method == "Page.javascriptDialogOpening":
            problems.append(f"a script of a name runs: {parameters['message']}")
        elif method == "Network.requestWillBeSent":
            url = parameters["request"]["url"]
            if url != page.as_uri() and not url.startswith("data:"):
                problems.append(f"fetched: {url}")
    return problems


def problems_of_search(browser, word, least):
    there, left, wrong, told = browser.value(f"({SEARCH})({json.dumps(word)})")
    problems = []
    if not least <= left < there or wrong:
        problems.append(f"a search for {word} leaves {left} of {there} rows, {wrong} of them without it")
    if told != f"{left} of {there}":
        problems.append(f"a search tells {told}")
    if browser.value(f"({SEARCH})('')")[:2] != [there, there]:
        problems.append("rows are hidden without a search")
    return problems


def problems_of_page(browser, page, pictures, word, is_whole):
    def look(is_looked_at_whole):
        return browser.value(f"({LOOK})({json.dumps(is_looked_at_whole)})")

    problems = []
    browser.set_dark(False)
    browser.set_width(WIDTHS[0])
    browser.open(page)
    for width in WIDTHS:
        browser.set_width(width)
        problems += [f"{width} wide: {problem}" for problem in look(is_whole and width >= WHOLE_WIDTH)]
        browser.picture(pictures / f"{page.stem}-{width}.png")
    problems += problems_of_search(browser, word, 1)
    light = browser.value("getComputedStyle(document.body).backgroundColor")
    browser.set_dark(True)
    if browser.value("getComputedStyle(document.body).backgroundColor") == light:
        problems.append("the page is no other where the reader wants it dark")
    browser.picture(pictures / f"{page.stem}-dark.png")
    browser.set_dark(True, "print")  # what is printed is light
    browser.set_width(PAPER_WIDTH)
    problems += [f"on paper: {problem}" for problem in look(is_whole) if is_whole or "too small" not in problem]
    if browser.value("getComputedStyle(document.body).backgroundColor") != light:
        problems.append("the page is dark on paper")
    browser.picture(pictures / f"{page.stem}-paper.png")
    browser.set_dark(False)
    problems += problems_of_events(browser, page)
    browser.set_scripts(False)
    browser.open(page)
    problems += [f"without scripts: {problem}" for problem in browser.value(UNSCRIPTED)[:5]]
    browser.set_scripts(True)
    return [f"{page.name}: {problem}" for problem in problems + problems_of_events(browser, page)]


def check(pages, folder, shown=None):
    """What is wrong with pages, each given with a word that a search in its list of resources finds, in some of the rows, and whether its
    cluster is of common size, so that nothing of it has to be scrolled on a full screen. The pictures lie in `folder` afterwards; `shown` is a file for one of the beginning of the first page."""
    if shutil.which("chromium") is None:
        return ["chromium is not installed"]
    pictures = folder / "pictures"
    pictures.mkdir(parents=True, exist_ok=True)
    profile = folder / "profile"
    shutil.rmtree(profile, ignore_errors=True)
    browser = Browser(profile)
    problems = []
    try:
        for page, word, is_whole in pages:
            problems += problems_of_page(browser, Path(page), pictures, word, is_whole)
        if shown:
            browser.set_dark(False)
            browser.set_width(900)
            browser.open(Path(pages[0][0]))
            browser.picture(shown, 760, 0.8)
    finally:
        browser.close()
        shutil.rmtree(profile, ignore_errors=True)
    return problems
