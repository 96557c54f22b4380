"""Makes one HTML page with its pictures in it from the guide's pages, for readers who have only a browser.

usage: make_guide.py GUIDE.md [OTHER.md...] PAGE.html
The first page gives the title; a link from one to another leads to its heading.
Fails when a picture is missing or a link leads nowhere. Takes cmark-gfm.
"""
import base64
import html
import os
import re
import subprocess
import sys
from urllib.parse import unquote

STYLE = """
:root { color-scheme: light dark; }
body { max-width: 52rem; margin: 0 auto; padding: 1.5rem; font: 1rem/1.55 "Segoe UI", system-ui, sans-serif;
       color: #1d2127; background: #fff; }
h1, h2, h3 { line-height: 1.25; margin: 2rem 0 .75rem; }
h2 { border-bottom: 1px solid #d4d9e0; padding-bottom: .3rem; }
a { color: #1560bd; }
img { display: block; max-width: 100%; height: auto; margin: 1rem 0; border-radius: 6px; }
table { border-collapse: collapse; width: 100%; margin: 1rem 0; }
th, td { border: 1px solid #d4d9e0; padding: .4rem .6rem; text-align: left; vertical-align: top; }
th { background: #f1f3f6; }
code { font: .9em/1.4 Consolas, monospace; background: #f1f3f6; border-radius: 4px; padding: .1em .3em;
       overflow-wrap: anywhere; }
pre { background: #f1f3f6; border-radius: 6px; padding: .8rem 1rem; overflow-x: auto; }
pre code { padding: 0; }
blockquote { margin: 1rem 0; padding: .1rem 1rem; border-left: 4px solid #e0a100; background: #fff8e6; }
@media (prefers-color-scheme: dark) {
  body { color: #e8eaed; background: #17191d; }
  a { color: #6cb2ff; }
  h2, th, td { border-color: #3a4048; }
  th, code, pre { background: #23272d; }
  blockquote { background: #2b2617; }
}
"""


def anchor(heading):
    """The name that Markdown viewers give a heading, by which the guide's own links find it."""
    text = html.unescape(re.sub(r"<[^>]+>", "", heading)).lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def embedded(folder, name):
    with open(os.path.join(folder, name), "rb") as file:
        return "data:image/png;base64," + base64.b64encode(file.read()).decode("ascii")


def body_of(guide):
    """The page as HTML, and the name of its title."""
    with open(guide, encoding="utf-8") as file:
        source = file.read()
    body = subprocess.run(["cmark-gfm", "--to", "html", "--extension", "table"], input=source.encode("utf-8"),
                          stdout=subprocess.PIPE, check=True).stdout.decode("utf-8")
    body = re.sub(r"<h([1-6])>(.*?)</h\1>",
                  lambda found: f'<h{found[1]} id="{anchor(found[2])}">{found[2]}</h{found[1]}>', body)
    body = re.sub(r'(<a href=")([^"]*)', lambda found: found[1] + unquote(found[2]), body)
    folder = os.path.dirname(guide)
    body = re.sub(r'(<img src=")([^"]*)', lambda found: found[1] + embedded(folder, found[2]), body)
    return body, re.search(r'<h1 id="([^"]*)"', body)[1]


def page_of(guides):
    bodies, titles = zip(*map(body_of, guides))
    body = "<hr>\n".join(bodies)
    for guide, title in zip(map(os.path.basename, guides), titles):
        body = body.replace(f'<a href="{guide}#', '<a href="#').replace(f'<a href="{guide}"', f'<a href="#{title}"')
    dead = set(re.findall(r'<a href="([^"]*)"', body)) - {f"#{name}" for name in re.findall(r' id="([^"]*)"', body)}
    if dead:
        sys.exit(f"links that lead nowhere: {', '.join(sorted(dead))}")
    title = re.search(r"<h1[^>]*>(.*?)</h1>", body)[1]
    return (f'<!DOCTYPE html>\n<html lang="de">\n<head>\n<meta charset="utf-8">\n'
            f'<meta name="viewport" content="width=device-width, initial-scale=1">\n<title>{title}</title>\n'
            f"<style>{STYLE}</style>\n</head>\n<body>\n{body}</body>\n</html>\n")


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    page = page_of(sys.argv[1:-1])
    with open(sys.argv[-1], "w", encoding="utf-8", newline="\n") as file:
        file.write(page)


if __name__ == "__main__":
    main()
