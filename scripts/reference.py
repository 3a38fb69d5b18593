#!/usr/bin/env python3
"""Makes the HTML reference of the public headers and the guides with Doxygen, in build/reference/html, and checks its links.

Doxygen reads neither plain comments nor the anchors of Markdown headings: it is given copies, in which the headers' comments
are marked as documentation, headings have explicit anchors, and links to what the reference lacks are plain words.
"""
import re
import shutil
import subprocess
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote

sys.dont_write_bytecode = True
from check_docs import anchor_of  # noqa: E402
from sources import ROOT  # noqa: E402

OUTPUT = ROOT / "build/reference"
GUIDES = [ROOT / "README.md", ROOT / "CHANGELOG.md", ROOT / "CONTRIBUTING.md", ROOT / "examples/README.md",
          *sorted((ROOT / "docs").glob("*.md"))]
PICTURE = "@dotfile architecture.dot\n"


def page_name(path):
    return "page-" + "-".join(path.relative_to(ROOT).with_suffix("").parts).lower()


def linked(match, path):
    text, target = " ".join(match[1].split()), match[2]
    if re.match(r"[a-z]+:", target):
        return match[0]
    name, _, anchor = target.partition("#")
    file = (path.parent / name).resolve() if name else path
    if file not in GUIDES:
        return text
    return f"[{text.replace('`', '')}](@ref {page_name(file)}{'--' + anchor if anchor else ''})"


def with_anchors(text, path, found):
    """A piece of the guide with explicit anchors at its headings; `found` holds those before it."""
    def heading(match):
        name = page_name(path)
        if found:  # the first heading is the page's own
            anchor = anchor_of(match[2])
            name += f"--{anchor}" + (f"-{found.count(anchor)}" if anchor in found else "")
            found.append(anchor)
        else:
            found.append("")
        return f"{match[1]} {match[2].replace('`', '')} {{#{name}}}"
    return re.sub(r"^(#+)\s+(.*)$", heading, text, flags=re.M)


def prepared_guide(path):
    """The guide with explicit anchors and links; of README, the picture in place of its letters."""
    pieces = re.split(r"(^```.*?^```$)", path.read_text(encoding="utf-8"), flags=re.M | re.S)
    found = []
    for number in range(0, len(pieces), 2):  # between the blocks of code
        piece = re.sub(r"\[([^\]]+)\]\(([^)\s]+)\)", lambda match: linked(match, path), pieces[number])
        pieces[number] = with_anchors(piece, path, found)
    text = "".join(pieces)
    if path == GUIDES[0]:
        text, count = re.subn(r"```\n callers.*?```\n", lambda _: PICTURE, text, flags=re.S)
        if count != 1:
            sys.exit("reference.py: README.md has no picture to replace")
    return text


def escaped(comment):
    """The words of a comment, not taken for commands or markup; what stands in backticks stays."""
    parts = re.split(r"(`[^`]*`)", comment)
    return "".join(part if part.startswith("`") else re.sub(r"([\\@<>#&])", r"\\\1", part) for part in parts)


def documentation(lines):
    """A comment's lines as Doxygen reads them."""
    words = []
    for line in lines:
        text = re.sub(r"^// ?", "", line.strip())
        parameter = re.match(r"  (\w+)\s{2,}(.*)", text)
        if parameter:
            text = f"- `{parameter[1]}`: {escaped(parameter[2])}"
        elif not text.startswith("    "):  # code stays
            text = escaped(text)
        words.append(f"/// {text}".rstrip())
    return words


def ends_declaration(line):
    return line.partition("//")[0].rstrip().endswith((";", "}"))


def prepared_header(text):
    """The header with its comments marked. A comment stands for all declarations that follow without a blank line."""
    source = text.splitlines()
    result, comment, index, enumeration = [], [], 0, False
    while index < len(source):
        line = source[index]
        block = []
        while index < len(source) and source[index].strip().startswith("//"):
            block.append(source[index])
            index += 1
        if block:
            if not result:
                result += ["/// @file", *documentation(block)]
            elif index < len(source) and source[index].strip():
                comment = documentation(block)
                result += comment
            continue  # one that stands alone is for readers of the file
        code, _, trailing = line.partition("//")
        if re.match(r"\s*enum\b", code):
            enumeration = True
        if trailing and '"' not in code:
            line = f"{code}///< {escaped(trailing.strip())}"
        elif (comment and not enumeration and result and ends_declaration(source[index - 1]) and code.strip()
              and not re.match(r"\s*(}|#|~|\w+:$|friend|static_assert|.*= delete;)", code) and not result[-1].startswith("///")):
            result += comment
        if code.strip().startswith("}"):
            enumeration = False
        if not code.strip() or code.strip().startswith(("}", "#")) or code.strip().endswith(("{", ":")):
            comment = []
        result.append(line)
        index += 1
    return "\n".join(result) + "\n"


class Page(HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.anchors, self.links = set(), []
        text = path.read_text(encoding="utf-8")
        self.leftover = re.search(r"@(section|ref|dotfile)\b|&lt;tt&gt;", text)
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("id", "name") and value:
                self.anchors.add(value)
            elif name in ("href", "src", "data") and value:
                self.links.append(value)


def check_pages(folder):
    pages = {path.name: Page(path) for path in sorted(folder.glob("*.html"))}
    count = 0
    for name, page in pages.items():
        if page.leftover:
            yield f"{name}: shows '{page.leftover[0]}', which Doxygen should have understood"
        for link in page.links:
            if re.match(r"[a-z]+:", link):
                continue
            count += 1
            target, _, anchor = unquote(link).partition("#")
            target = target or name
            if not (folder / target).exists():
                yield f"{name}: link to {link}: no such file"
            elif anchor and target in pages and anchor not in pages[target].anchors:
                yield f"{name}: link to {link}: no such anchor"
    if count < 1000:
        yield f"only {count} links were found"


def take_picture():
    """Of the first page, for who wants to see whether it looks right."""
    if not shutil.which("chromium"):
        print("No picture of the first page: chromium is not installed")
        return
    picture = OUTPUT / "first-page.png"
    subprocess.run(["timeout", "60", "chromium", "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
                    "--window-size=1300,2600", f"--screenshot={picture}", (OUTPUT / "html/index.html").as_uri()],
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    if not picture.is_file():
        sys.exit("reference.py: chromium made no picture of the first page")
    print(f"A picture of the first page is in {picture.relative_to(ROOT)}")


def main():
    if not shutil.which("doxygen") or not shutil.which("dot"):
        sys.exit("doxygen or dot is missing: they are in Debian's packages doxygen and graphviz")
    shutil.rmtree(OUTPUT, ignore_errors=True)
    (OUTPUT / "input").mkdir(parents=True)
    for path in GUIDES:
        name = "README.md" if path == GUIDES[0] else f"{page_name(path)}.md"
        (OUTPUT / "input" / name).write_text(prepared_guide(path), encoding="utf-8")
    for path in sorted((ROOT / "include").glob("*.h")):
        (OUTPUT / "input" / path.name).write_text(prepared_header(path.read_text(encoding="utf-8")), encoding="utf-8")
    shutil.copy(ROOT / "docs/reference/architecture.dot", OUTPUT / "input")
    if subprocess.run(["doxygen", str(ROOT / "docs/reference/Doxyfile")], cwd=OUTPUT).returncode != 0:
        sys.exit("reference.py: doxygen warned")
    problems = list(check_pages(OUTPUT / "html"))
    take_picture()
    print("\n".join(problems) or f"{len(list((OUTPUT / 'html').glob('*.html')))} pages in build/reference/html")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
