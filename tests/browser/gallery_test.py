"""Looks at galleries with Chromium, over http and from files; script/test --browser runs this."""

import functools
import http.server
import itertools
import math
import os
import pathlib
import shutil
import statistics
import subprocess
import tempfile
import threading
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.remote.remote_connection import RemoteConnection

BUILD = pathlib.Path(__file__).resolve().parents[2] / "build" / "release"
FLAGS = """--headless=new --disable-gpu --disable-dev-shm-usage --disable-quic --no-first-run
    --disable-background-networking --disable-component-update --disable-sync --no-proxy-server
    --allow-file-access-from-files""".split()
SECONDS = 30  # for a page or a script

SIZE = 100  # not the default: the option has to arrive
CELLS_PER_ROW = 5
# How far a thumbnail's row may be, of 255, from the mean of the picture's rows: the scaler's steps
# are coarse for large pictures, and a sharp edge may lie a tenth of a row off.
TOLERANCE = 12

# The names of which all this works, and nothing else; docs/names.md says why.
NAMES = {
    "thumbnail link name": (
        b"two words.jpg",
        b"it's.jpg",
        b"a>b.jpg",
        b"a&b.jpg",
        b"100%.jpg",
        b"12:30.jpg",
        b"a b:c.jpg",
        b"a;b+c=d,e!f(g)[h]{i}~$@^`|*.jpg",
        "ä.jpg".encode(),
    ),
    "thumbnail link": (b"two  blanks.jpg", b"a<b.jpg", b"a&copyb.jpg"),
    "thumbnail name": (b"abc:def.jpg",),
    "thumbnail": (b" leading.jpg",),
    "name": (b'a"b.jpg', b"a#b.jpg", b"a?b.jpg", b"a%41b.jpg", b"a\\b.jpg"),
    "": (b"a&copy.jpg", b"a&amp;b.jpg", b"a\tb.jpg", "ä.jpg".encode("latin-1")),
}
# With these, nothing works over http unless the server says in which charset the page is.
NEED_CHARSET = ("ä.jpg".encode(),)

ROWS = """
    return [...document.querySelector('table').rows]
        .map(row => [...row.cells].map(cell => cell.innerText.trim()));"""
CELL = """
    const cell = document.querySelectorAll('td')[arguments[0]];
    const image = cell.querySelector('img');
    return {'name': cell.querySelector('font').innerText, 'link': cell.querySelector('a').href,
            'image': image, 'size': [image.naturalWidth, image.naturalHeight]};"""
# The mean brightness of each row of an image. Where it was left empty, the white behind it shows.
BRIGHTNESS = """
    const image = arguments[0];
    const [width, height] = [image.naturalWidth, image.naturalHeight];
    const context = new OffscreenCanvas(width, height).getContext('2d');
    context.fillStyle = 'white';
    context.fillRect(0, 0, width, height);
    context.drawImage(image, 0, 0);
    const weights = [0.299, 0.587, 0.114, 0].map(weight => weight / width);
    const rows = new Array(height).fill(0);
    context.getImageData(0, 0, width, height).data.forEach((sample, i) => {
        rows[Math.floor(i / (4 * width))] += weights[i % 4] * sample;
    });
    return rows;"""


class PlainHandler(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass


class CharsetHandler(PlainHandler):
    extensions_map = {**PlainHandler.extensions_map, ".html": "text/html; charset=utf-8"}


def shrink(rows, count):
    """Averages rows until there are so many; a row on the border of two counts in both."""
    step = len(rows) / count
    return [statistics.fmean(rows[int(i * step) : math.ceil((i + 1) * step)]) for i in range(count)]


class GalleryTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        work = tempfile.TemporaryDirectory(prefix="tessel-")
        cls.addClassCleanup(work.cleanup)
        cls.drawn = os.path.join(work.name, "drawn")
        cls.root = os.path.join(work.name, "galleries")
        os.mkdir(cls.root)
        subprocess.run(
            [BUILD / "demo" / "draw_pictures", cls.drawn], check=True, stdout=subprocess.DEVNULL
        )
        cls.addresses = {
            "http": cls.serve(PlainHandler),
            "charset": cls.serve(CharsetHandler),
            "file": pathlib.Path(cls.root).as_uri(),
        }
        cls.browser = cls.start_browser(os.path.join(work.name, "profile"))

    @classmethod
    def serve(cls, handler):
        server = http.server.ThreadingHTTPServer(
            ("127.0.0.1", 0), functools.partial(handler, directory=cls.root)
        )
        threading.Thread(target=server.serve_forever, daemon=True).start()
        cls.addClassCleanup(server.server_close)
        cls.addClassCleanup(server.shutdown)
        return f"http://127.0.0.1:{server.server_port}"

    @classmethod
    def start_browser(cls, profile):
        RemoteConnection.set_timeout(2 * SECONDS)
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        for flag in [*FLAGS, f"--user-data-dir={profile}"]:
            options.add_argument(flag)
        if os.geteuid() == 0:
            options.add_argument("--no-sandbox")
        browser = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))
        cls.addClassCleanup(browser.quit)
        browser.set_page_load_timeout(SECONDS)
        browser.set_script_timeout(SECONDS)
        return browser

    def make_gallery(self, pictures):
        """Makes a gallery of copies, {name: drawn picture}, and returns its page's addresses."""
        path = tempfile.mkdtemp(dir=self.root)
        for name, picture in pictures.items():
            shutil.copy(os.path.join(self.drawn, picture), os.path.join(path, os.fsdecode(name)))
        subprocess.run(
            [BUILD / "tessel", "-tsize", str(SIZE), path], check=True, stdout=subprocess.DEVNULL
        )
        return {
            way: f"{address}/{os.path.basename(path)}/index.html"
            for way, address in self.addresses.items()
        }

    def shown_picture(self):
        """The picture that the browser shows by itself, or None."""
        if self.browser.execute_script("return document.contentType") != "image/jpeg":
            return None
        return self.browser.find_element(By.TAG_NAME, "img")

    def check_cell(self, index):
        """Follows one thumbnail to its picture."""
        cell = self.browser.execute_script(CELL, index)
        self.assertGreater(min(cell["size"]), 0, "the thumbnail can't be shown")
        rows = self.browser.execute_script(BRIGHTNESS, cell["image"])
        cell["image"].click()
        picture = self.shown_picture()
        self.assertIsNotNone(picture, "the link leads to no picture")
        self.assertTrue(self.browser.current_url.endswith("/" + cell["name"]))
        full = [int(picture.get_property(side)) for side in ("naturalWidth", "naturalHeight")]
        self.assertEqual(cell["size"], [SIZE * side // max(full) for side in full])
        expected = shrink(self.browser.execute_script(BRIGHTNESS, picture), len(rows))
        errors = [abs(found - wanted) for found, wanted in zip(rows, expected)]
        self.assertLessEqual(max(errors), TOLERANCE, f"in row {errors.index(max(errors))}")

    def check_gallery(self, page, names):
        self.browser.get(page)
        rows = self.browser.execute_script(ROWS)
        full, rest = divmod(len(names), CELLS_PER_ROW)
        self.assertEqual([len(row) for row in rows], [CELLS_PER_ROW] * full + [rest] * (rest > 0))
        self.assertEqual(sorted(itertools.chain(*rows)), names)
        for index in range(len(names)):
            with self.subTest(cell=index):
                self.browser.get(page)
                self.check_cell(index)

    def test_every_thumbnail_is_whole_and_leads_to_its_picture(self):
        # Not the largest, and not the one that grows: it has sharp edges only.
        drawn = itertools.cycle(sorted(os.listdir(self.drawn))[1:-1])
        for count in (0, 1, 5, 6, 13):
            names = [f"{number:02}.jpg" for number in range(count)]
            pages = self.make_gallery(dict(zip(names, drawn)))
            for way in ("http", "file"):
                with self.subTest(pictures=count, way=way):
                    self.check_gallery(pages[way], names)

    def check_name(self, page, name, works):
        self.browser.get(page)
        cell = self.browser.execute_script(CELL, 0)
        self.browser.get(cell["link"])
        found = (
            ("thumbnail", cell["size"][0] > 0),
            ("link", self.shown_picture() is not None),
            ("name", cell["name"] == os.fsdecode(name)),
        )
        self.assertEqual(" ".join(what for what, good in found if good), works)

    def test_awkward_names(self):
        for works, names in NAMES.items():
            for name in names:
                pages = self.make_gallery({name: "10_small_boat.jpg"})
                for way, page in pages.items():
                    with self.subTest(name=name, way=way):
                        nothing = way == "http" and name in NEED_CHARSET
                        self.check_name(page, name, "" if nothing else works)

    def test_page_of_galleries_leads_to_each(self):
        names = [b"10 & <b>", b"2#?", b"a%41\"'", "ä".encode(), b"one", b"x\ny"]
        path = os.fsencode(tempfile.mkdtemp(dir=self.root))
        for name in names:
            os.mkdir(os.path.join(path, name))
            shutil.copy(
                os.path.join(self.drawn, "10_small_boat.jpg"), os.fsdecode(os.path.join(path, name))
            )
        subprocess.run(
            [BUILD / "tessel-tree", "--page", path], check=True, stdout=subprocess.DEVNULL
        )
        for address in self.addresses.values():
            page = f"{address}/{os.path.basename(os.fsdecode(path))}/galleries.html"
            self.browser.get(page)
            cells = self.browser.find_elements(By.TAG_NAME, "td")
            self.assertEqual(
                [cell.text.strip() for cell in cells],
                ["2#?: 1", "10 & <b>: 1", "a%41\"': 1", "one: 1", "x y: 1", "ä: 1"],
            )
            for index in range(len(names)):
                image = self.browser.find_elements(By.TAG_NAME, "img")[index]
                self.assertGreater(image.get_property("naturalWidth"), 0)
                image.click()
                self.assertEqual(len(self.browser.find_elements(By.TAG_NAME, "td")), 1)
                self.browser.get(page)


if __name__ == "__main__":
    unittest.main()
