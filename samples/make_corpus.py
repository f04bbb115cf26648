#!/usr/bin/env python3
"""Writes the sample corpus: folders of documents to learn (corpus/learn) and to decide (corpus/decide).

Sentences come from the phrase banks in corpus/phrases, one file for each class. A bank holds sentences,
titles ("title:") and lists of words ("name = one|two"); "[one|two]" picks one of several wordings, "{n:1-9}"
a number, "{name}" a word of a list. Banks named office.* hold what every office writes, banks
named none.* what belongs to no class. The same banks give the same bytes.

Needs python3-docx, python3-openpyxl, python3-odf and python3-reportlab.
"""

import html
import io
import pathlib
import random
import re
import shutil
import zipfile

import docx
import openpyxl
from odf import opendocument, text as odf_text
from reportlab.lib.styles import ParagraphStyle
from reportlab.pdfbase import pdfmetrics
from reportlab.pdfbase.cidfonts import UnicodeCIDFont
from reportlab.platypus import Paragraph, SimpleDocTemplate

from make_samples import EPOCH, pptx

CORPUS = pathlib.Path(__file__).parent / "corpus"
LEARN, DECIDE, NONE = 14, 5, 2  # documents of each class, and of each topic that is no class
WORDS = (260, 420)

SHARED = {
    "person": "Anna Berg|Tom Keller|Ines Duarte|Paul Novak|Mira Shah|Oskar Lind|Ruth Hale|Ben Ortiz|Eva Maier",
    "company": "Kestrel Pumps Ltd|Ostra Logistics|Lindqvist Tools|Meridian Glass|Tarn Valley Foods|Corvid Optics",
    "city": "Lisbon|Gdansk|Leeds|Lyon|Turku|Graz|Porto|Aarhus|Ghent|Brno",
    "month": "January|February|March|April|May|June|September|October|November",
    "zperson": "王建军|李秀兰|陈志强|刘晓梅|赵文博|孙丽娜|周海涛|吴思远|郑玉华",
    "zcompany": "华辰机电有限公司|东湖信息技术有限公司|远航物流有限公司|金桥建材集团|清源环保科技有限公司",
    "zcity": "杭州|成都|青岛|武汉|西安|南京|长沙|厦门",
}


class Bank:
    def __init__(self, path):
        self.name = path.stem
        self.titles, self.sentences, self.lists = [], [], {}
        for line in path.read_text(encoding="utf-8").splitlines():
            if line.startswith("title: "):
                self.titles.append(line[7:])
            elif match := re.match(r"(\w+) = (.*)", line):
                self.lists[match[1]] = match[2]
            else:
                self.sentences.append(line)


class Writer:
    """The wording of one document: it names few people, companies and places, and those more than once."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.cast = {name: self.random.sample(words.split("|"), 3) for name, words in SHARED.items()}

    def slot(self, match, lists):
        name, low, high = match.groups()
        if name == "n":
            return str(self.random.randint(int(low), int(high)))
        if name == "code":
            return f"{self.random.choice('ABCDHKRTX')}{self.random.randint(10, 99)}-{self.random.randint(1000, 9999)}"
        if name == "date":
            return f"{self.random.randint(1, 28)} {self.random.choice(self.cast['month'])} 2019"
        if name == "zdate":
            return f"2019年{self.random.randint(1, 12)}月{self.random.randint(1, 28)}日"
        if name not in self.cast:
            self.cast[name] = self.random.sample(lists[name].split("|"), 2)
        return self.random.choice(self.cast[name])

    def fill(self, template, lists):
        one = re.compile(r"\[([^\[\]]*)\]")
        slots = re.compile(r"\{(\w+)(?::(\d+)-(\d+))?\}")
        while True:
            text = one.sub(lambda match: self.random.choice(match[1].split("|")), template)
            text = slots.sub(lambda match: self.slot(match, lists), text)
            if text == template:
                return text
            template = text


def is_chinese(text):
    return any("\u4e00" <= c <= "\u9fff" for c in text)


def sentences_of(paragraph):
    return re.split(r"(?<=[.。]) ", paragraph)


def word_count(text):
    return len(re.findall(r"[A-Za-z]+", text)) + len(re.findall(r"[\u4e00-\u9fff]", text)) // 2


def compose(seed, bank, office, others):
    """A title and paragraphs: mostly the bank's sentences, some of any office, one or two of another class."""
    writer = Writer(seed)
    own = writer.random.sample(bank.sentences, len(bank.sentences))
    shared = writer.random.sample(office.sentences, len(office.sentences))
    other = writer.random.choice(others)
    guests = writer.random.sample(other.sentences, writer.random.randint(0, 2))
    sentences = [writer.fill(template, other.lists) for template in guests]
    target = writer.random.randint(*WORDS)
    while sum(map(word_count, sentences)) < target and (own or shared):
        source = shared if shared and (not own or writer.random.random() < 0.25) else own
        sentences.append(writer.fill(source.pop(), bank.lists))
    writer.random.shuffle(sentences)
    title = writer.fill(writer.random.choice(bank.titles), bank.lists)
    paragraphs = []
    while sentences:
        size = writer.random.randint(2, 4)
        paragraphs.append(" ".join(sentences[:size]))
        sentences = sentences[size:]
    return title, paragraphs


def same_bytes(archive):
    """The archive with one time for all parts, so that a rerun writes the same bytes."""
    out = io.BytesIO()
    with zipfile.ZipFile(archive) as source, zipfile.ZipFile(out, "w") as target:
        for part in source.infolist():
            info = zipfile.ZipInfo(part.filename, EPOCH)
            info.compress_type = part.compress_type
            content = source.read(part)
            if part.filename == "docProps/core.xml":
                content = re.sub(rb"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d", b"2020-01-01T00:00:00", content)
            target.writestr(info, content, compresslevel=9)
    return out.getvalue()


def write_docx(path, title, paragraphs):
    document = docx.Document()
    document.core_properties.title = title
    document.add_heading(title, 1)
    for paragraph in paragraphs[:-1]:
        document.add_paragraph(paragraph)
    table = document.add_table(rows=1, cols=2)
    table.rows[0].cells[0].text = str(len(paragraphs))
    table.rows[0].cells[1].text = paragraphs[-1]
    out = io.BytesIO()
    document.save(out)
    path.write_bytes(same_bytes(out))


def write_xlsx(path, title, paragraphs):
    book = openpyxl.Workbook()
    sheet = book.active
    sheet.title = "Sheet 1"
    sheet.append([title])
    for number, paragraph in enumerate(paragraphs, 1):
        sheet.append([number, *sentences_of(paragraph)])
    out = io.BytesIO()
    book.save(out)
    path.write_bytes(same_bytes(out))


def write_pptx(path, title, paragraphs):
    slides = [(title if number == 1 else str(number), sentences_of(paragraph), "")
              for number, paragraph in enumerate(paragraphs, 1)]
    pptx(path.resolve(), slides)


def write_odt(path, title, paragraphs):
    document = opendocument.OpenDocumentText()
    document.text.addElement(odf_text.H(outlinelevel=1, text=title))
    for paragraph in paragraphs:
        document.text.addElement(odf_text.P(text=paragraph))
    out = io.BytesIO()
    document.write(out)
    path.write_bytes(same_bytes(out))


def write_pdf(path, title, paragraphs):
    chinese = is_chinese(title)
    style = ParagraphStyle("body", fontName="STSong-Light" if chinese else "Helvetica", fontSize=11, leading=16,
                           spaceAfter=8, wordWrap="CJK" if chinese else None)
    document = SimpleDocTemplate(str(path), title=title, invariant=1)
    document.build([Paragraph(html.escape(text), style) for text in [title, *paragraphs]])


def write_html(path, title, paragraphs):
    encoding = "gb18030" if is_chinese(title) else "utf-8"
    body = "\n".join(f"<p>{html.escape(paragraph)}</p>" for paragraph in paragraphs)
    name = html.escape(title)
    path.write_text(f'<!DOCTYPE html>\n<html><head><meta charset="{encoding}"><title>{name}</title></head>\n'
                    f"<body>\n<h1>{name}</h1>\n{body}\n</body></html>\n", encoding=encoding)


def write_txt(path, title, paragraphs):
    encoding = "gb18030" if is_chinese(title) and path.stem[-1] in "13579" else "utf-8"
    path.write_text("\n\n".join([title, *paragraphs]) + "\n", encoding=encoding)


WRITERS = [("docx", write_docx), ("xlsx", write_xlsx), ("pptx", write_pptx), ("odt", write_odt),
           ("pdf", write_pdf), ("html", write_html), ("txt", write_txt)]


def write(folder, kind, bank, office, others, count, first_format):
    folder.mkdir(parents=True, exist_ok=True)
    name = bank.name.removeprefix("none.")
    for number in range(1, count + 1):
        suffix, write_format = WRITERS[(first_format + number) % len(WRITERS)]
        title, paragraphs = compose(f"{kind}/{name}/{number}", bank, office, others)
        write_format(folder / f"{name}-{number:02}.{suffix}", title, paragraphs)


def main():
    pdfmetrics.registerFont(UnicodeCIDFont("STSong-Light"))
    banks = [Bank(path) for path in sorted((CORPUS / "phrases").glob("*.txt"))]
    office = {is_chinese(bank.sentences[0]): bank for bank in banks if bank.name.startswith("office.")}
    strangers = [bank for bank in banks if bank.name.startswith("none.")]
    classes = [bank for bank in banks if bank not in strangers and bank not in office.values()]
    for folder in ("learn", "decide"):
        shutil.rmtree(CORPUS / folder, ignore_errors=True)

    def chinese(bank):
        return is_chinese(bank.sentences[-1])

    for index, bank in enumerate(classes):
        others = [other for other in classes if other is not bank and chinese(other) == chinese(bank)]
        write(CORPUS / "learn" / bank.name, "learn", bank, office[chinese(bank)], others, LEARN, index)
        write(CORPUS / "decide" / bank.name, "decide", bank, office[chinese(bank)], others, DECIDE, index)
    for index, bank in enumerate(strangers):
        others = [other for other in classes if chinese(other) == chinese(bank)]
        write(CORPUS / "decide" / "none", "none", bank, office[chinese(bank)], others, NONE, index * NONE)


if __name__ == "__main__":
    main()
