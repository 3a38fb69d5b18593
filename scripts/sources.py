"""What the checking scripts share: the project's files, and C++ text without what is no code."""
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PRODUCT = ("src", "include", "common", "simulator", "support", "tools")

# In this order: whatever begins first hides the others.
NO_CODE = re.compile(r'''
    (?P<comment> //[^\n]* | /\*.*?\*/ )
  | (?P<raw> R"(?P<mark>[^()\\\s]*)\(.*?\)(?P=mark)" )
  | (?P<text> "(?:\\.|[^"\\\n])*" | (?<![0-9A-Za-z_])(?:u8|[LuU])?'(?:\\.|[^'\\\n])*' )
''', re.VERBOSE | re.DOTALL)


def project_files(*patterns, root=ROOT):
    """The existing files that match the patterns of git, committed or not, as sorted paths."""
    command = ["git", "-C", str(root), "ls-files", "--cached", "--others", "--exclude-standard", "--", *patterns]
    names = subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout.splitlines()
    return [root / name for name in sorted(set(names)) if (root / name).is_file()]


def product_sources(*folders, root=ROOT):
    """The product's C++ files, or those below some of its folders."""
    return project_files(*(f"{folder}/*.{kind}" for folder in folders or PRODUCT for kind in ("h", "cpp")), root=root)


def blanked(text):
    return re.sub(r"[^\n]", " ", text)


def code_only(text, keep_texts=False):
    """The text with its comments, and unless kept its character and string literals, replaced by blanks; lines stay lines."""
    def replacement(match):
        if match.group("comment") or not keep_texts:
            return blanked(match.group())
        return match.group()
    return NO_CODE.sub(replacement, text)


def subject(path):
    """The first sentence of the comment that a file, or else the header beside it, begins with; None without any."""
    for file in (path, path.with_suffix(".h")):
        found = first_sentence(file) if file.is_file() else None
        if found:
            return found
    return None


def first_sentence(path):
    words = []
    for line in path.read_text(encoding="utf-8").splitlines():
        if not line.startswith("//"):
            break
        words.append(line[2:].strip())
        sentence = re.match(r"(.*?[^.])\.(?: |$)(?!\.)", " ".join(words))
        if sentence:
            return sentence.group(1)
        if not words[-1]:
            break
    return " ".join(words).strip().rstrip(".:") or None


def cell(text):
    """The text for a cell of a Markdown table."""
    return re.sub(r"([|*<])", r"\\\1", text)


def report(problems, what):
    """Prints the problems and ends the script: with 1 when there are some."""
    for problem in problems:
        print(problem)
    if not problems and not what:
        sys.exit("nothing was checked")
    sys.exit(1 if problems else 0)
