"""The documentation site: made twice it is the same, nothing in it leads nowhere or out of it, and
in a browser, from disk, the search finds every member, and it can be read by day, by night and on
a phone."""

import html.parser
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

from browser import Browser
import winetest

sys.path.insert(0, str(winetest.TOP / "tools"))
import check_docs  # noqa: E402

PHONE, DESK = 360, 1280

# Elements that are wider than the window and cannot be moved in a box of their own.
TOO_WIDE = """(() => {
  const scrolls = e => e && e.tagName != 'ARTICLE' &&
    (/auto|scroll/.test(getComputedStyle(e).overflowX) || scrolls(e.parentElement));
  const found = [...document.querySelectorAll('article *')].filter(e =>
    e.getBoundingClientRect().right > innerWidth + 1 && !scrolls(e.parentElement));
  const whole = document.documentElement.scrollWidth;
  return [whole > innerWidth ? 'page ' + whole : '', ...found.map(e => e.outerHTML.slice(0, 80))]
    .filter(Boolean);
})()"""

# Texts that stand out from what is behind them by less than 4.5 to 1, as WCAG 2 counts it.
FAINT = """(() => {
  const parts = c => (c.match(/[\\d.]+/g) || [0, 0, 0, 0]).map(Number);
  const light = c => { const [r, g, b] = parts(c).slice(0, 3).map(v => (v /= 255) <= 0.04045 ?
    v / 12.92 : ((v + 0.055) / 1.055) ** 2.4); return 0.2126 * r + 0.7152 * g + 0.0722 * b; };
  const behind = e => { for (; e; e = e.parentElement) {
    const c = getComputedStyle(e).backgroundColor, p = parts(c);
    if (p.length < 4 || p[3] == 1) return c; } return 'rgb(255, 255, 255)'; };
  const found = {};
  const texts = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  while (texts.nextNode()) {
    const e = texts.currentNode.parentElement;
    if (!texts.currentNode.data.trim() || !e.checkVisibility() || !e.getClientRects().length ||
        e.closest('.headerlink, .visually-hidden, .back-to-top')) continue;
    const a = light(getComputedStyle(e).color), b = light(behind(e));
    const ratio = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
    if (ratio < 4.5)
      found[e.tagName + '.' + e.className] = ratio.toFixed(2) + ' ' + e.textContent.slice(0, 40);
  }
  return found;
})()"""

# {name: where the best results lead}, by the page's own search; it shows one result each 5 ms.
FIND = """names => {
  const later = setTimeout;
  window.setTimeout = (f, ms) => ms == 5 ? f() : later(f, ms);
  const found = {};
  for (const name of names) {
    document.getElementById('search-results').textContent = '';
    Search.performSearch(name);
    const best = [...Search.output.querySelectorAll('a')].slice(0, 3);
    found[name] = best.map(a => a.getAttribute('href'));
  }
  return found;
}"""


class Page(html.parser.HTMLParser):
    """What a page leads to, what it loads, and what can be led to in it."""

    def __init__(self, file):
        super().__init__()
        self.links, self.loaded, self.names, self.titles = [], [], set(), {}
        self._open = []
        self.feed(file.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        if "id" in values:
            self.names.add(values["id"])
        if tag == "section":
            self._open.append(values.get("id"))
        if tag == "a" and "href" in values:
            self.links.append(values["href"])
        elif tag in ("img", "script", "link", "iframe", "source", "form"):
            self.loaded += [values[key] for key in ("src", "href", "action") if key in values]

    def handle_endtag(self, tag):
        if tag == "section":
            self._open.pop()

    def handle_data(self, data):
        if self._open and data.strip():  # what a section begins with is its title
            self.titles.setdefault(self._open[-1], data.strip())


def start(target):
    return subprocess.Popen([str(winetest.TOP / "tools" / "docs.sh"), str(target)],
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True,
                            env={**os.environ, "TZ": f"UTC{len(target.name)}"})


class Site(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="site-")))
        cls.site, cls.again = folder / "site", folder / "the same again"
        for making in [start(cls.site), start(cls.again)]:
            said = making.communicate()[0]
            if making.returncode:
                raise AssertionError("tools/docs.sh failed:\n" + said)
        cls.pages = {file: Page(file) for file in sorted(cls.site.rglob("*.html"))}
        cls.browser = cls.enterClassContext(Browser())

    def window(self, width, scheme="light"):
        self.browser.call("Emulation.setDeviceMetricsOverride", width=width, height=800,
                          deviceScaleFactor=1, mobile=False)
        self.browser.call("Emulation.setEmulatedMedia",
                          features=[{"name": "prefers-color-scheme", "value": scheme}])

    def members(self):
        """[(name, address)] as the page from A to Z has them."""
        listed = (self.site / "reference" / "members.html").read_text(encoding="utf-8")
        return re.findall(r'<td><p><a [^>]*href="([^"]+)"><[^>]*>(?:<[^>]*>)*(\w+)<', listed)

    def test_made_again_it_is_the_same(self):
        files = [{file.relative_to(top): file.read_bytes() for file in top.rglob("*") if
                  file.is_file()} for top in (self.site, self.again)]
        self.assertEqual([], [name for name in {**files[0], **files[1]}
                              if files[0].get(name) != files[1].get(name)])

    def goal(self, file, address):
        path, _, name = address.partition("#")
        path = urllib.parse.unquote(path.partition("?")[0])
        return ((file.parent / path).resolve() if path else file), urllib.parse.unquote(name)

    def test_nothing_leads_nowhere_or_out(self):
        self.assertIn(self.site / "index.html", self.pages)
        for file, page in self.pages.items():
            for address in [*page.links, *page.loaded]:
                with self.subTest(page=file.relative_to(self.site), address=address):
                    if re.match(r"https?:", address):
                        self.assertNotIn(address, page.loaded)
                        continue
                    self.assertNotRegex(address, r"^(/|[a-z]+:)")
                    goal, name = self.goal(file, address)
                    self.assertTrue(goal.is_file() and goal.is_relative_to(self.site), goal)
                    if name and goal.suffix == ".html":
                        self.assertIn(name, self.pages[goal].names)
        for style in self.site.rglob("*.css"):
            self.assertNotRegex(style.read_text(), r"@import|url\(\W*(https?:)?//")

    def test_every_member_from_a_to_z(self):
        page = self.site / "reference" / "members.html"
        names = []
        for address, name in self.members():
            goal, anchor = self.goal(page, address)
            self.assertEqual(name, self.pages[goal].titles[anchor])
            names.append(name.lower())
        self.assertEqual(sorted(names), names)
        for name, interfaces in check_docs.idl_members(check_docs.IDL).items():
            self.assertEqual(len(interfaces), names.count(name.lower()), name)

    def test_the_search_finds_every_member(self):
        self.window(DESK)
        self.browser.open(self.site / "search.html")
        members = self.members()
        for spelling in (str, str.lower):
            names = sorted({spelling(name) for _, name in members})
            found = self.browser.evaluate(f"({FIND})({names})")
            for address, name in members:
                self.assertIn("reference/" + address, found[spelling(name)], name)

    def search(self, asked):
        """[(title, address, what stands there)], by the box of a page."""
        self.browser.open(self.site / "zip.html")
        with self.browser.loading():
            self.browser.evaluate("const box = document.querySelector('.sidebar-search');"
                                  f"box.value = '{asked}'; box.form.requestSubmit()")
        return self.browser.evaluate("""new Promise(done => {
          const text = (li, which) => (li.querySelector(which) || {}).textContent;
          const look = () => document.querySelector('.search-summary').textContent ?
            done([...document.querySelectorAll('#search-results li')].map(li =>
              [text(li, 'a'), li.querySelector('a').getAttribute('href'), text(li, '.context')])) :
            setTimeout(look, 20);
          look(); })""")

    def test_a_user_searches(self):
        self.window(DESK)
        for asked, title in (("AddRecipientTo", "AddRecipientTo"), ("smtpsecurity", "SMTPSecurity"),
                             ("Internet mail settings", "Internet mail settings")):
            self.search(asked)
            with self.browser.loading():
                self.browser.evaluate("document.querySelector('#search-results a').click()")
            shown = self.browser.evaluate(
                "(document.querySelector(location.hash || 'h1').querySelector('h1, h2, h3') ||"
                " document.querySelector('h1')).textContent")
            self.assertEqual(title, shown.rstrip("#"))

    def test_words_of_the_text_are_found(self):
        texts = {address: text for _, address, text in self.search("pinned certificate")}
        self.assertIn("security.html", texts)
        for address, text in texts.items():
            self.assertRegex(text or "", "(?i)pinned|certificate", address)
        self.assertEqual([], self.search("there is no such word as qwertz"))

    def test_errors_are_found_by_their_numbers(self):
        invalid = "529 \u00b7 0x80040211 \u00b7 Invalid property value."
        for asked, text in (("529", invalid), ("0x80040211", invalid), ("-2147220975", invalid),
                            ("6043", "SMTP 43 \u00b7 The server refused the login."),
                            ("6043", "POP3 43 \u00b7 The server refused the login."),
                            ("6503", "500 to 504 \u00b7 SMTP command error."),
                            ("9063", "The mail database could not be opened."),
                            ("438", "there is no such member")):
            found = self.search(asked)
            self.assertIn(text, " ".join(said for _, address, said in found
                                         if address.startswith("reference/errors.html#")))

    def test_every_page_fits_a_phone(self):
        self.window(PHONE)
        for file in self.pages:
            with self.subTest(page=file.relative_to(self.site)):
                self.browser.open(file)
                self.assertEqual([], self.browser.evaluate(TOO_WIDE))

    def test_day_and_night(self):
        read = ("index.html", "reference/receiving.html", "reference/members.html",
                "languages.html", "contributing.html",
                "source/examples/provider/mail_directory.cpp.html")
        paper = "getComputedStyle(document.body).backgroundColor"
        papers = set()
        for scheme in ("light", "dark"):
            self.window(DESK, scheme)
            for name in read:
                with self.subTest(scheme=scheme, page=name):
                    self.browser.open(self.site / name)
                    self.assertEqual({}, self.browser.evaluate(FAINT))
            papers.add(self.browser.evaluate(paper))
        self.assertEqual(2, len(papers))
        # The button's choice holds on the next page, whatever the system says.
        self.window(DESK, "dark")
        self.browser.open(self.site / "index.html")
        for _ in range(3):
            if self.browser.evaluate("document.body.dataset.theme") != "light":
                self.browser.evaluate(
                    "document.querySelector('.theme-toggle-content button').click()")
        chosen = self.browser.evaluate(paper)
        self.browser.open(self.site / "zip.html")
        self.assertEqual(["light", chosen], self.browser.evaluate(
            f"[document.body.dataset.theme, {paper}]"))
        self.browser.evaluate("localStorage.clear()")
        self.window(DESK, "light")
        self.assertEqual(chosen, self.browser.evaluate(paper))

    def tearDown(self):
        self.assertEqual([], self.browser.complaints)
        self.assertEqual([], [url for url in self.browser.requests
                              if not url.startswith(("file:", "data:", "about:"))])


if __name__ == "__main__":
    unittest.main()
