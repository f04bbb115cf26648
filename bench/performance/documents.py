"""Documents of many formats from the same paragraphs (lists of sentences), byte for byte the same each time."""

import html
import shutil
import zipfile

from records import progress

OFFICE = "http://schemas.openxmlformats.org"
RELATION = f"{OFFICE}/officeDocument/2006/relationships"
XML = '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'


def write(path, paragraphs):
    """Writes the document of the format that the suffix names."""
    WRITERS[path.suffix[1:]](path, paragraphs)


def filled(folder, fill):
    """The folder, which `fill` writes into once: what was cut off is begun again."""
    if not folder.exists():
        progress(f"  writing {folder}")
        unfinished = folder.with_suffix(".unfinished")
        shutil.rmtree(unfinished, ignore_errors=True)
        unfinished.mkdir(parents=True)
        fill(unfinished)
        unfinished.rename(folder)
    return folder


def write_txt(path, paragraphs):
    path.write_text("".join("".join(sentences) + "\n" for sentences in paragraphs), encoding="utf-8")


def write_html(path, paragraphs):
    body = []
    for number, sentences in enumerate(paragraphs):
        first, *others = map(html.escape, sentences)
        if number % 10 == 0:
            body.append(f'<h2 id="part{number}">{first}</h2>')
        elif number % 10 == 5:
            body.append("<ul>" + "".join(f"<li>{sentence}</li>" for sentence in (first, *others)) + "</ul>")
            continue
        body.append(f'<p class="text"><b>{first}</b> <a href="#part{number}">{"".join(others)}</a></p>')
    path.write_text("<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Text</title>"
                    "<style>p.text { margin: 1em }</style></head><body>\n" + "\n".join(body)
                    + "\n</body></html>\n", encoding="utf-8")


def write_docx(path, paragraphs):
    def run(sentence):
        return (f'<w:r><w:rPr><w:sz w:val="21"/></w:rPr><w:t xml:space="preserve">{html.escape(sentence)}</w:t>'
                "</w:r>")

    body = "".join('<w:p><w:pPr><w:jc w:val="both"/></w:pPr>' + "".join(map(run, sentences)) + "</w:p>"
                   for sentences in paragraphs)
    _write_package(path, "word/document.xml", "wordprocessingml.document.main", {
        "word/document.xml": f'<w:document xmlns:w="{OFFICE}/wordprocessingml/2006/main"><w:body>{body}'
                             "</w:body></w:document>"})


def write_xlsx(path, paragraphs):
    sentences = [sentence for paragraph in paragraphs for sentence in paragraph]
    strings = "".join(f'<si><t xml:space="preserve">{html.escape(sentence)}</t></si>' for sentence in sentences)
    rows = "".join(f'<row r="{row}"><c r="A{row}" t="s"><v>{row - 1}</v></c>'
                   + "".join(f'<c r="{column}{row}"><v>{row * 7 % 1000 / 8}</v></c>' for column in "BCD")
                   + "</row>" for row in range(1, len(sentences) + 1))
    main = f'xmlns="{OFFICE}/spreadsheetml/2006/main"'
    _write_package(path, "xl/workbook.xml", "spreadsheetml.sheet.main", {
        "xl/workbook.xml": f'<workbook {main} xmlns:r="{RELATION}"><sheets><sheet name="Sheet" sheetId="1" '
                           'r:id="rId1"/></sheets></workbook>',
        "xl/_rels/workbook.xml.rels": _relations([("worksheet", "worksheets/sheet1.xml"),
                                                  ("sharedStrings", "sharedStrings.xml")]),
        "xl/worksheets/sheet1.xml": f"<worksheet {main}><sheetData>{rows}</sheetData></worksheet>",
        "xl/sharedStrings.xml": f'<sst {main} count="{len(sentences)}" uniqueCount="{len(sentences)}">{strings}'
                                "</sst>"},
        {"xl/worksheets/sheet1.xml": "spreadsheetml.worksheet",
         "xl/sharedStrings.xml": "spreadsheetml.sharedStrings"})


def write_pptx(path, paragraphs):
    spaces = f'xmlns:p="{OFFICE}/presentationml/2006/main" xmlns:a="{OFFICE}/drawingml/2006/main"'
    shape = ('<p:nvGrpSpPr><p:cNvPr id="1" name=""/><p:cNvGrpSpPr/><p:nvPr/></p:nvGrpSpPr><p:grpSpPr/><p:sp>'
             '<p:nvSpPr><p:cNvPr id="2" name="Text"/><p:cNvSpPr/><p:nvPr/></p:nvSpPr><p:spPr/>'
             "<p:txBody><a:bodyPr/>")
    on_a_slide = 8
    slides = [paragraphs[first:first + on_a_slide] for first in range(0, len(paragraphs), on_a_slide)]
    names = [f"slides/slide{number}.xml" for number in range(1, len(slides) + 1)]
    parts = {
        "ppt/presentation.xml": f'<p:presentation {spaces} xmlns:r="{RELATION}"><p:sldIdLst>' + "".join(
            f'<p:sldId id="{255 + number}" r:id="rId{number}"/>' for number in range(1, len(slides) + 1))
            + "</p:sldIdLst></p:presentation>",
        "ppt/_rels/presentation.xml.rels": _relations([("slide", name) for name in names])}
    for name, slide in zip(names, slides):
        text = "".join("<a:p>" + "".join(f'<a:r><a:rPr lang="zh-CN"/><a:t>{html.escape(sentence)}</a:t></a:r>'
                                         for sentence in sentences) + "</a:p>" for sentences in slide)
        parts[f"ppt/{name}"] = (f"<p:sld {spaces}><p:cSld><p:spTree>{shape}{text}</p:txBody></p:sp></p:spTree>"
                                "</p:cSld></p:sld>")
    _write_package(path, "ppt/presentation.xml", "presentationml.presentation.main", parts,
                   {f"ppt/{name}": "presentationml.slide" for name in names})


def write_pdf(path, paragraphs):
    # Here, so that the other formats can be written without it.
    from reportlab.pdfbase import pdfmetrics
    from reportlab.pdfbase.cidfonts import UnicodeCIDFont
    from reportlab.pdfgen import canvas
    pdfmetrics.registerFont(UnicodeCIDFont("STSong-Light"))
    pages = canvas.Canvas(str(path), pagesize=(595, 842), pageCompression=1, invariant=1)
    columns, lines_of_page = 44, 52
    lines = []
    for sentences in paragraphs:
        text = "".join(sentences)
        lines += [text[first:first + columns] for first in range(0, len(text), columns)]
    for first in range(0, len(lines), lines_of_page):
        page = pages.beginText(60, 790)
        page.setFont("STSong-Light", 10)
        for line in lines[first:first + lines_of_page]:
            page.textLine(line)
        pages.drawText(page)
        pages.showPage()
    pages.save()


def _relations(targets):
    listed = "".join(f'<Relationship Id="rId{number}" Type="{RELATION}/{kind}" Target="{target}"/>'
                     for number, (kind, target) in enumerate(targets, 1))
    return f'<Relationships xmlns="{OFFICE}/package/2006/relationships">{listed}</Relationships>'


def _write_package(path, main, main_type, parts, types=None):
    types = {main: main_type, **(types or {})}
    overrides = "".join(f'<Override PartName="/{name}" '
                        f'ContentType="application/vnd.openxmlformats-officedocument.{kind}+xml"/>'
                        for name, kind in types.items())
    parts = {
        "[Content_Types].xml": f'<Types xmlns="{OFFICE}/package/2006/content-types">'
                               '<Default Extension="rels" '
                               'ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
                               f'<Default Extension="xml" ContentType="application/xml"/>{overrides}</Types>',
        "_rels/.rels": _relations([("officeDocument", main)]), **parts}
    with zipfile.ZipFile(path, "w") as package:
        for name, content in parts.items():
            # Without a date of today.
            package.writestr(zipfile.ZipInfo(name), XML + content, zipfile.ZIP_DEFLATED)


WRITERS = {"txt": write_txt, "html": write_html, "docx": write_docx, "xlsx": write_xlsx, "pptx": write_pptx,
           "pdf": write_pdf}
