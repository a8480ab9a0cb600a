"""Makes the user manual: joins the Markdown chapters and lays them out as one PDF file.

    make-manual.py CHAPTERS LOGO VERSION OUTPUT

CHAPTERS lists the chapters' files, which lie beside it. A chapter begins with its one title. A picture or a link
that leads nowhere is an error.
"""

import base64
import html
import mimetypes
import re
import sys
from pathlib import Path

import markdown
from markdown.extensions.toc import TocExtension
from weasyprint import HTML


def embedded(picture):
    """The picture itself as an address: its path would get into the file."""
    data = base64.b64encode(picture.read_bytes()).decode()
    return f"data:{mimetypes.guess_type(picture)[0]};base64,{data}"


def slug(title):
    """What a heading is linked by, as in the Markdown of the web."""
    return "-".join(re.sub(r"[^a-z0-9_\s-]", "", title.lower()).split())


def read_chapter(path):
    """The chapter as HTML whose ids begin with the chapter's name, and its headings as nested tokens."""
    name = path.stem
    ids = TocExtension(slugify=lambda title, _: f"{name}-{slug(title)}")
    reader = markdown.Markdown(extensions=["tables", "fenced_code", "sane_lists", ids])
    text = reader.convert(path.read_text(encoding="utf-8"))
    if len(reader.toc_tokens) != 1 or reader.toc_tokens[0]["level"] != 1:
        raise ValueError(f"{path.name} does not begin with its one title")
    title = reader.toc_tokens[0]
    text = text.replace(f'id="{title["id"]}"', f'id="{name}"', 1)
    title["id"] = name

    def inner_link(match):
        file, _, section = match[1].partition("#")
        chapter = Path(file).stem if file else name
        return f'href="#{chapter}-{section}"' if section else f'href="#{chapter}"'

    def figure(match):
        picture = path.parent / match[2]
        if not picture.is_file():
            raise ValueError(f"{path.name}: there is no picture {match[2]}")
        return f'<figure><img alt="" src="{embedded(picture)}"><figcaption>{match[1]}</figcaption></figure>'

    text = re.sub(r'href="([^":]*)"', inner_link, text)
    text = re.sub(r'<p><img alt="([^"]*)" src="([^"]*)" /></p>', figure, text)
    return f'<section class="chapter">{text}</section>', title


def contents(titles):
    def line(token):
        return f'<li><a href="#{token["id"]}">{token["name"]}</a>'

    rows = "".join(line(title) + "<ul>" + "".join(map(line, title["children"])) + "</ul>" for title in titles)
    return f'<nav><h1>Contents</h1><ul>{rows}</ul></nav>'


def check_links(text):
    ids = set(re.findall(r'id="([^"]*)"', text))
    for target in re.findall(r'href="#([^"]*)"', text):
        if target not in ids:
            raise ValueError(f"a link leads to {target}, which is not there")


def main():
    chapters, logo, version, output = sys.argv[1:]
    folder = Path(chapters).parent
    texts, titles = zip(*(read_chapter(folder / name) for name in Path(chapters).read_text().split()))
    text = contents(titles) + "".join(texts)
    check_links(text)
    page = f"""<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<title>KVT File Editor 2026 – User Manual</title>
<meta name="generator" content="KVT Editor {html.escape(version)}">
<link rel="stylesheet" href="{(folder / "manual.css").resolve().as_uri()}">
<header>
<div><img alt="" src="{embedded(Path(logo))}"></div>
<p class="title">KVT File Editor 2026</p>
<p class="subtitle">User Manual</p>
<p>Version {html.escape(version)}</p>
<p class="maker">Voxworks Automotive - 2026</p>
</header>
{text}
</html>
"""
    HTML(string=page).write_pdf(output)


if __name__ == "__main__":
    try:
        main()
    except (OSError, ValueError) as error:
        sys.exit(f"make-manual: {error}")
