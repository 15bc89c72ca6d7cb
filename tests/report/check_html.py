#!/usr/bin/env python3
"""Reads the HTML reports that a program writes by a parser of its own.

    check_html.py PROGRAM

PROGRAM FOLDER writes *.html. Every element is closed in its order; nothing runs and nothing is
loaded; ids are unique and what refers to one finds it; every table is named and has headings with a
scope; no text of the samples became markup; and the hostile labels come back as text.
"""

import html.parser
import pathlib
import re
import subprocess
import sys
import tempfile

VOID = {"meta", "link", "br", "hr", "img", "input", "col"}
ELEMENTS = {
    "html", "head", "meta", "title", "style", "body", "main", "header", "footer", "nav", "article",
    "section", "h1", "h2", "h3", "p", "ol", "ul", "li", "a", "dl", "div", "dt", "dd", "table",
    "caption", "thead", "tbody", "tr", "th", "td", "figure", "figcaption", "strong", "cite", "pre",
    "code",
    "svg", "defs", "circle", "clippath", "rect", "g", "use", "text",
}
REFERS = ("href", "xlink:href")


class Page(html.parser.HTMLParser):
    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.open, self.problems, self.ids, self.wanted = [], [], [], []
        self.texts, self.tables = [], []

    def problem(self, what):
        self.problems.append(f"line {self.getpos()[0]}: {what}")

    def attributes(self, tag, attributes):
        for name, value in attributes:
            value = value or ""
            if name.startswith("on") or name == "style" or name == "src":
                self.problem(f"{tag} has {name}")
            if name == "id":
                self.ids.append(value)
            if name == "aria-labelledby":
                self.wanted.append(value)
            if name in REFERS:
                if not value.startswith("#"):
                    self.problem(f"{tag} refers to {value}")
                self.wanted.append(value[1:])
            for target in re.findall(r"url\(#?([^)]*)\)", value):
                self.wanted.append(target)

    def handle_starttag(self, tag, attrs):
        if tag not in ELEMENTS:
            self.problem(f"unexpected element {tag}")
        self.attributes(tag, attrs)
        given = dict(attrs)
        if tag == "table":
            self.tables.append({"caption": False, "headings": 0})
        if tag == "caption":
            self.tables[-1]["caption"] = True
        if tag == "th":
            self.tables[-1]["headings"] += 1
            if given.get("scope") not in ("col", "row", "rowgroup"):
                self.problem("a heading without a scope")
        if tag == "svg" and (given.get("role") != "img" or "aria-label" not in given):
            self.problem("a picture without a name")
        if tag not in VOID:
            self.open.append(tag)

    def handle_startendtag(self, tag, attrs):
        if "svg" not in self.open:
            self.problem(f"{tag} closes itself")
        if tag not in ELEMENTS:
            self.problem(f"unexpected element {tag}")
        self.attributes(tag, attrs)

    def handle_endtag(self, tag):
        if not self.open or self.open[-1] != tag:
            self.problem(f"</{tag}> where {self.open[-1:]} is open")
        else:
            self.open.pop()

    def handle_data(self, data):
        self.texts.append(data)

    def handle_comment(self, data):
        self.problem("a comment")


def check(path):
    text = path.read_bytes().decode("utf-8", "surrogateescape")
    page = Page()
    page.feed(text)
    page.close()
    problems = page.problems
    if page.open:
        problems.append(f"left open: {page.open}")
    if not text.startswith("<!DOCTYPE html>\n<html lang=\"en\">"):
        problems.append("no document type and language at the beginning")
    if "default-src 'none'" not in text:
        problems.append("nothing forbids loading")
    for name in {name for name in page.ids if page.ids.count(name) > 1}:
        problems.append(f"id {name} stands twice")
    for name in set(page.wanted) - set(page.ids):
        problems.append(f"{name} is referred to and not there")
    for number, table in enumerate(page.tables):
        if not table["caption"] or table["headings"] == 0:
            problems.append(f"table {number + 1} has no caption or no headings")
    if re.search("[\udc80-\udcff]", text):
        problems.append("bytes that are no UTF-8")
    bad = re.search("[\x00-\x08\x0b-\x1f\x7f-\x9f\u202a-\u202e\u2066-\u2069]", text)
    if bad:
        problems.append(f"control character {bad[0]!r}")
    return [f"{path.name}: {problem}" for problem in problems], "".join(page.texts), page


def require(problems, holds, what):
    if not holds:
        problems.append(what)


def main():
    problems = []
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([sys.argv[1], folder], check=True, timeout=60)
        pages = {}
        for path in sorted(pathlib.Path(folder).glob("*.html")):
            found, text, page = check(path)
            problems += found
            pages[path.stem] = (text, page)
    require(problems, set(pages) == {"sample", "hostile", "empty", "several"}, f"{set(pages)}")

    hostile = pages["hostile"][0]
    for label in ("a \"quoted\" 'label'", "<script>alert(1)</script>",
                  "</td></table><b onmouseover=alert(1)>&amp;", "two lines  and a tab",
                  "\ufffd[31mred\ufffd \ufffd", "\ufffdturned", "\u05e9\u05dc\u05d5\u05dd", "=1+1",
                  "\U0001f691 ambulance", "not UTF-8: \ufffd\ufffd", "x" * 300):
        # As a row heading, a fact, a method, a note and a setting.
        require(problems, hostile.count(label) >= 5, f"hostile.html: {label!r} is not there")

    sample, page = pages["sample"]
    for text in ("Survival by treatment", "data/leukemia.csv, 42 of 43 rows", "\u2212729.489",
                 "treatment = 6-MP", "0.8571", "1.2", "survmeth life 'a & b.csv'",
                 # Within a picture the text stays; only ids and what refers to them change.
                 "id=\"dot\" <script>alert(1)</script> url(#clip)"):
        require(problems, text in sample, f"sample.html: {text!r} is not there")
    require(problems, "Residuals" not in sample, "sample.html: a table for files only is there")
    require(problems, "Drawing" not in sample, "sample.html: the picture's own title is there")
    require(problems, "report-1-survival-dot" in page.ids, f"sample.html: ids {page.ids}")

    several = pages["several"][1]
    require(problems, {"report-1", "report-2", "report-3"} <= set(several.wanted),
            "several.html: the contents do not lead to every report")
    print("\n".join(problems) or f"{len(pages)} pages hold")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
