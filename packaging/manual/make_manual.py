#!/usr/bin/env python3
"""Sets the manual, which is a plain text, as a page with pictures.

Usage: make_manual.py TEXT PICTURES STYLE FOLDER_OF_PICTURES RESULT

TEXT      the manual as the person may read it in any editor
PICTURES  where pictures stand in it: chapter, section, file, description, with tabs between them
STYLE     the style sheet of the page
RESULT    the folder that the page goes to, with its style sheet and the pictures that it shows; what was there goes

The text has few conventions: a chapter stands between lines of hyphens, a section begins with a black square, items
begin with a dot or a number, what is indented is a table when it has columns. Whatever does not fit them ends this
with an error, so that the page never says less than the text.
"""

import html
import re
import shutil
import sys
import unicodedata
from pathlib import Path

CHAPTER = re.compile(r"(\d+)\. ([^ 「]+)(?: (「.+」))?$")
RULE = re.compile(r"-{20,}$")
NUMBERED = re.compile(r"\d+\. ")
DRAWN = re.compile("[│├└]")


def width(text):
    """The columns that a text takes in an editor with a Japanese font."""
    return sum(2 if unicodedata.east_asian_width(one) in "WFA" else 1 for one in text)


def indent(line):
    return len(line) - len(line.lstrip(" "))


def is_latin(one):
    return one.isascii() and one.isalnum()


def is_japanese(one):
    return unicodedata.category(one) == "Lo"


def joined(lines):
    """Lines of one sentence. Between Latin words, and between them and Japanese ones, a blank was there."""
    text = ""
    for line in (one.strip() for one in lines):
        if text and line:
            ends, begins = text[-1], line[0]
            if (is_latin(ends) or ends in ",.+") and is_latin(begins):
                text += " "
            elif (is_latin(ends) and is_japanese(begins)) or (is_japanese(ends) and is_latin(begins)):
                text += " "
            elif begins == "(" and (is_latin(ends) or is_japanese(ends)):
                text += " "
        text += line
    return text


def is_open(text):
    return text.count("「") > text.count("」")


class Page:
    def __init__(self, chapters):
        self.lines = []
        titles = "|".join(re.escape(f"{number}. {title}") for number, title, _ in chapters)
        self.references = re.compile(titles)

    def text(self, text):
        """A text as it stands in the page; chapters that it names are links."""
        return self.references.sub(
            lambda found: f'<a href="#{found[0].split(". ", 1)[1]}">{found[0]}</a>', html.escape(text, quote=False))

    def add(self, line):
        self.lines.append(line)

    def block(self, tag, lines):
        self.add(f"<{tag}>{self.text(joined(lines))}</{tag}>")

    def items(self, tag, lines, begins):
        """A list; each of its items goes on in lines that are indented."""
        self.add(f"<{tag}>")
        item = []
        for line in lines + [None]:
            if item and (line is None or begins(line)):
                self.block("li", [re.sub(r"^(・|\d+\. )", "", item[0])] + item[1:])
                item = []
            item.append(line)
        self.add(f"</{tag}>")

    def indented(self, lines):
        """What is indented: a drawing, a table, terms with what they mean, or a text of the program."""
        if any(DRAWN.search(line) for line in lines):
            least = min(map(indent, lines))
            self.add("<pre>" + html.escape("\n".join(line[least:] for line in lines), quote=False) + "</pre>")
            return
        cells = [cells_of(line) for line in lines]
        columns = sorted({column for line in cells for column, _ in line[1:]})
        least = min(map(indent, lines))
        if columns:
            self.table(cells, columns, least)
        elif any(indent(line) > least for line in lines) and not is_open(lines[0]):
            self.terms(lines, least)
        else:
            self.block("blockquote", lines)

    def terms(self, lines, least):
        self.add("<dl>")
        meaning = []
        for line in lines + [" " * least]:
            if indent(line) > least:
                meaning.append(line)
                continue
            if meaning:
                self.block("dd", meaning)
                meaning = []
            if line.strip():
                self.block("dt", [line])
        self.add("</dl>")

    def table(self, lines, columns, least):
        rows = []  # each as its cells; of each cell the lines
        for line in lines:
            row = [[] for _ in range(len(columns) + 1)]
            for column, text in line:
                if column >= columns[0] and column not in columns:
                    raise ValueError(f"this stands between two columns: {text}")
                if len(line) > 1 and any(column < other < column + width(text) for other in columns):
                    raise ValueError(f"this reaches into the next column: {text}")
                row[columns.index(column) + 1 if column in columns else 0].append((column, text))
            goes_on = rows and not row[0] and (not rows[-1][-1] or not any(row[1:-1]))
            if goes_on:
                for cell, more in zip(rows[-1], row):
                    cell.extend(more)
            else:
                rows.append(row)
        has_head = len(columns) > 1
        self.add("<table>")
        for number, row in enumerate(rows):
            tag = "th" if has_head and number == 0 else "td"
            depth = (row[0][0][0] - least) // 2 if row[0] else 0
            attributes = f' class="inner{depth}"' if depth else ""
            texts = [self.text(joined([text for _, text in cell])) for cell in row]
            # The name of a group has the row to itself.
            if not any(row[1:]):
                self.add(f'<tr><td{attributes} colspan="{len(row)}">{texts[0]}</td></tr>')
                continue
            # A first cell stands for all rows below it that have none.
            below = next((more for more, other in enumerate(rows[number + 1:]) if other[0]), len(rows) - number - 1)
            if row[0] and below:
                attributes += f' rowspan="{below + 1}"'
            first = f"<{tag}{attributes}>{texts[0]}</{tag}>" if row[0] else ""
            self.add("<tr>" + first + "".join(f"<{tag}>{text}</{tag}>" for text in texts[1:]) + "</tr>")
        self.add("</table>")

    def body(self, lines):
        """What stands between two headings or blank lines."""
        while lines:
            first = lines[0]
            if first.startswith("・") or NUMBERED.match(first):
                is_dot = first.startswith("・")
                begins = (lambda line: line.startswith("・")) if is_dot else NUMBERED.match
                length = next((number for number, line in enumerate(lines)
                               if not begins(line) and not line.startswith("  ")), len(lines))
                self.items("ul" if is_dot else "ol", lines[:length], begins)
            else:
                is_indented = first.startswith("  ")
                length = next((number for number, line in enumerate(lines)
                               if line.startswith("  ") != is_indented or line.startswith("・")), len(lines))
                if is_indented:
                    self.indented(lines[:length])
                else:
                    self.block("p", lines[:length])
            lines = lines[length:]


def cells_of(line):
    """The cells of a line with the columns where they begin; two blanks part them."""
    return [(width(line[:found.start()]), found[0]) for found in re.finditer(r"\S+(?: \S+)*", line)]


def chapters_of(lines):
    """Number, title, and the title of the window of each chapter, by the line it stands in."""
    found = {}
    for number in range(1, len(lines) - 1):
        if RULE.match(lines[number - 1]) and RULE.match(lines[number + 1]):
            heading = CHAPTER.match(lines[number])
            if heading is None:
                raise ValueError(f"this is no title of a chapter: {lines[number]}")
            found[number] = heading.groups()
    return found


class Pictures:
    def __init__(self, table):
        self.places = {}
        for line in table.splitlines():
            if line and not line.startswith("#"):
                chapter, section, file, description = line.split("\t")
                self.places.setdefault((chapter, section), []).append((file, description))
        self.shown = []

    def add_to(self, page, chapter, section):
        for file, description in self.places.pop((chapter, section), []):
            page.add(f'<p class="picture"><img src="images/{file}" alt="{html.escape(description)}"></p>')
            self.shown.append(file)


def set_page(text, pictures):
    lines = text.splitlines()
    chapters = chapters_of(lines)
    page = Page(list(chapters.values()))
    first = min(chapters) - 1
    title = lines[0]
    page.add(f"""<!DOCTYPE html>
<html lang="ja">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>{title}</title>
<link rel="stylesheet" type="text/css" href="manual.css">
</head>
<body>
<h1>{title}</h1>
<p class="version">{lines[1]}</p>""")

    # The list of chapters is made anew, with links; the text's own one must name the same.
    contents = lines.index("目次")
    listed = [line.strip() for line in lines[contents + 1:first] if line.strip()]
    if listed != [f"{number}. {title}" for number, title, _ in chapters.values()]:
        raise ValueError("the list of chapters at the beginning is another one")
    page.body([line for line in lines[3:contents] if line])
    page.add('<nav aria-label="目次">\n<p class="contents">目次</p>\n<ol>')
    for _, title, _ in chapters.values():
        page.add(f'<li><a href="#{title}">{title}</a></li>')
    page.add("</ol>\n</nav>")

    chapter = section = ""
    block = []
    number = first
    while number < len(lines):
        line = lines[number]
        if number + 1 in chapters or not line or line.startswith("■"):
            page.body(block)
            block = []
        if number + 1 in chapters:
            heading = chapters[number + 1]
            chapter, section = heading[1], ""
            page.add(f'<h2 id="{chapter}">{html.escape(lines[number + 1])}</h2>')
            pictures.add_to(page, chapter, section)
            number += 2
        elif line.startswith("■"):
            while is_open(line):
                number += 1
                line = joined([line, lines[number]])
            section = line[1:].strip()
            page.add(f"<h3>{html.escape(section)}</h3>")
            pictures.add_to(page, chapter, section)
        elif line:
            block.append(line)
        number += 1
    page.body(block)
    page.add("</body>\n</html>")
    if pictures.places:
        raise ValueError(f"there is no place for these pictures: {pictures.places}")
    return "\n".join(page.lines) + "\n"


def main():
    text_file, pictures_file, style, folder, result = map(Path, sys.argv[1:])
    pictures = Pictures(pictures_file.read_text(encoding="utf-8"))
    page = set_page(text_file.read_text(encoding="utf-8-sig"), pictures)
    shutil.rmtree(result, ignore_errors=True)
    (result / "images").mkdir(parents=True)
    (result / "manual.html").write_bytes(page.encode("utf-8"))
    shutil.copyfile(style, result / "manual.css")
    for name in pictures.shown:
        shutil.copyfile(folder / name, result / "images" / name)


if __name__ == "__main__":
    main()
