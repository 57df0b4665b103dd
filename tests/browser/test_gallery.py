"""Galleries in Chromium, over http and from files; script/test --browser runs this."""

import functools
import http.server
import itertools
import os
import pathlib
import shutil
import tempfile
import threading
import urllib.parse

import pytest

from support.gallery import jpeg

webdriver = pytest.importorskip("selenium.webdriver")
chrome_service = pytest.importorskip("selenium.webdriver.chrome.service")
connection = pytest.importorskip("selenium.webdriver.remote.remote_connection")

pytestmark = pytest.mark.chromium

CHROMIUM = "/usr/bin/chromium"
FLAGS = """--headless=new --disable-gpu --disable-dev-shm-usage --disable-quic --no-first-run
    --disable-background-networking --disable-component-update --disable-sync --no-proxy-server
    --allow-file-access-from-files""".split()
SECONDS = 30  # for a page or a script

SIZE = 100  # not the default: the option has to arrive
CELLS_PER_ROW = 5

WAYS = ["http", "http with charset", "file"]
# The names of which all this works, and nothing else; docs/names.md says why.
NAMES = {
    "thumbnail link name": [
        b"two words.jpg",
        b"it's.jpg",
        b"a>b.jpg",
        b"a&b.jpg",
        b"100%.jpg",
        b"12:30.jpg",
        b"a b:c.jpg",
        b"a;b+c=d,e!f(g)[h]{i}~$@^`|*.jpg",
        "ä.jpg".encode(),
    ],
    "thumbnail link": [b"two  blanks.jpg", b"a<b.jpg", b"a&copyb.jpg"],
    "thumbnail name": [b"abc:def.jpg"],
    "thumbnail": [b" leading.jpg"],
    "name": [b'a"b.jpg', b"a#b.jpg", b"a?b.jpg", b"a%41b.jpg", b"a\\b.jpg"],
    "": [b"a&copy.jpg", b"a&amp;b.jpg", b"a\tb.jpg", "ä.jpg".encode("latin-1")],
}
# With these, nothing works over http unless the server says in which charset the page is.
NEED_CHARSET = ["ä.jpg".encode()]
# On the pages for today's browsers all works.
NAMES_FOR_TODAY = [b"two  blanks", b" ", b"a#b?", b"a%41b", b"\"'", b"a<b>&copy", b"abc:def"]
NAMES_FOR_TODAY += [b"a\\b", b"\xe4", b"x\ny\t", b"n" * 200, "\u00e4".encode() * 100]

ROWS = """
    return [...document.querySelector('table').rows]
        .map(row => [...row.cells].map(cell => cell.innerText.trim()));"""
CELL = """
    const cell = document.querySelectorAll('td')[arguments[0]];
    const image = cell.querySelector('img');
    return {'name': cell.querySelector('font').innerText, 'link': cell.querySelector('a').href,
            'image': image, 'size': [image.naturalWidth, image.naturalHeight]};"""
# Loads all images of a page, also those that a reader hasn't come to yet.
LOAD = """
    const done = arguments[0];
    const images = [...document.images];
    images.forEach(image => { image.loading = 'eager'; });
    Promise.allSettled(images.map(image => image.decode())).then(() => done({
        'broken': images.filter(image => !image.naturalWidth).map(image => image.src),
        'width': document.documentElement.scrollWidth,
        'window': document.documentElement.clientWidth}));"""


class PlainHandler(http.server.SimpleHTTPRequestHandler):
    def translate_path(self, path):
        """Names are bytes, as they are to other servers."""
        return self.directory + os.fsdecode(urllib.parse.unquote_to_bytes(path.partition("?")[0]))

    def log_message(self, *_):
        pass


class CharsetHandler(PlainHandler):
    extensions_map = {**PlainHandler.extensions_map, ".html": "text/html; charset=utf-8"}


@pytest.fixture(scope="module")
def browser(session_work):
    if not os.path.exists(CHROMIUM):
        pytest.skip("Chromium isn't installed")
    connection.RemoteConnection.set_timeout(2 * SECONDS)
    options = webdriver.ChromeOptions()
    options.binary_location = CHROMIUM
    for flag in [*FLAGS, f"--user-data-dir={session_work}/profile"]:
        options.add_argument(flag)
    if os.geteuid() == 0:
        options.add_argument("--no-sandbox")
    service = chrome_service.Service("/usr/bin/chromedriver")
    browser = webdriver.Chrome(options=options, service=service)
    browser.set_page_load_timeout(SECONDS)
    browser.set_script_timeout(SECONDS)
    yield browser
    browser.quit()


@pytest.fixture(scope="module")
def root(session_work):
    """The folder whose contents are served."""
    (session_work / "galleries").mkdir()
    return session_work / "galleries"


@pytest.fixture(scope="module")
def addresses(root):
    """The address of the root by each way."""
    servers = []
    for handler in PlainHandler, CharsetHandler:
        handler = functools.partial(handler, directory=os.fspath(root))
        servers.append(http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler))
        threading.Thread(target=servers[-1].serve_forever, daemon=True).start()
    urls = [f"http://127.0.0.1:{server.server_port}" for server in servers]
    yield dict(zip(WAYS, [*urls, root.as_uri()]))
    for server in servers:
        server.shutdown()
        server.server_close()


@pytest.fixture
def folder(root):
    folder = pathlib.Path(tempfile.mkdtemp(dir=root))
    yield folder
    shutil.rmtree(folder)


@pytest.fixture
def page_of(tessel, folder, addresses):
    """Makes a gallery of {name: picture}, and returns its page's address by a way."""

    def page_of(pictures, way):
        for name, picture in pictures.items():
            (folder / name).write_bytes(picture)
        tessel.run("-tsize", str(SIZE), folder)
        return f"{addresses[way]}/{folder.name}/index.html"

    return page_of


def shown_picture(browser):
    """The picture that the browser shows by itself, or None."""
    if browser.execute_script("return document.contentType") != "image/jpeg":
        return None
    return browser.find_element("tag name", "img")


def links_on(browser):
    return [link.get_property("href") for link in browser.find_elements("css selector", "li a")]


@pytest.mark.parametrize("way", ["http", "file"])
@pytest.mark.parametrize("count", [0, 5, 6])
def test_every_thumbnail_leads_to_its_picture(browser, page_of, count, way):
    pictures = itertools.cycle([jpeg(300, 200), jpeg(40, 130, depth=3)])
    names = [f"{number}.jpg" for number in range(count)]
    page = page_of(dict(zip(names, pictures)), way)
    browser.get(page)
    rows = browser.execute_script(ROWS)
    full, rest = divmod(count, CELLS_PER_ROW)
    assert [len(row) for row in rows] == [CELLS_PER_ROW] * full + [rest] * (rest > 0)
    assert sorted(itertools.chain(*rows)) == names
    for index in range(count):
        browser.get(page)
        cell = browser.execute_script(CELL, index)
        cell["image"].click()
        picture = shown_picture(browser)
        assert picture, f"{cell['name']}: the link leads to no picture"
        assert browser.current_url.endswith("/" + cell["name"])
        sides = [int(picture.get_property(side)) for side in ("naturalWidth", "naturalHeight")]
        assert cell["size"] == [SIZE * side // max(sides) for side in sides], cell["name"]


@pytest.mark.parametrize("way", WAYS)
@pytest.mark.parametrize(
    "works, name", [(works, name) for works, names in NAMES.items() for name in names], ids=ascii
)
def test_of_an_awkward_name_works(browser, page_of, picture, works, name, way):
    page = page_of({os.fsdecode(name): picture}, way)
    browser.get(page)
    cell = browser.execute_script(CELL, 0)
    browser.get(cell["link"])
    found = {
        "thumbnail": cell["size"][0] > 0,
        "link": shown_picture(browser) is not None,
        "name": cell["name"] == os.fsdecode(name),
    }
    if way == "http" and name in NEED_CHARSET:
        works = ""
    assert " ".join(what for what, good in found.items() if good) == works


@pytest.fixture
def galleries(tree, folder, picture):
    """A collection with a gallery of each name for today's browsers, and one with all names."""
    for name in map(os.fsdecode, NAMES_FOR_TODAY):
        for album in name, "all":
            (folder / album).mkdir(exist_ok=True)
            (folder / album / f"{name}.jpg").write_bytes(picture)
    tree.run("--page", folder)
    return folder


def check_page(browser):
    """A page shows each of its images, and is no wider than the window."""
    found = browser.execute_async_script(LOAD)
    assert found["broken"] == []
    assert found["width"] <= found["window"]


@pytest.fixture(params=[390, 1280], ids="{} pixels".format)
def window(browser, request):
    """The browser, with a window of another width."""
    size = {"width": request.param, "height": 800, "deviceScaleFactor": 1, "mobile": False}
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", size)
    yield browser
    browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


@pytest.mark.parametrize("way", WAYS)
def test_each_link_on_the_pages_for_today_leads_where_it_should(window, galleries, addresses, way):
    top = f"{addresses[way]}/{galleries.name}/galleries.html"
    window.get(top)
    check_page(window)
    pictures = []
    for gallery in links_on(window):
        window.get(gallery)
        check_page(window)
        for index in range(len(links_on(window))):
            window.get(gallery)
            window.find_elements("css selector", "li a")[index].click()
            assert shown_picture(window), window.current_url
            pictures.append(urllib.parse.unquote_to_bytes(window.current_url))
        window.get(gallery)
        window.find_element("link text", "All galleries").click()
        assert window.current_url == top
    root = urllib.parse.unquote_to_bytes(top.removesuffix("/galleries.html"))
    expected = [root + b"/%s/%s.jpg" % (name, name) for name in NAMES_FOR_TODAY]
    expected += [root + b"/all/%s.jpg" % name for name in NAMES_FOR_TODAY]
    assert sorted(pictures) == sorted(expected)
