#!/usr/bin/env python3
"""Writes the sample documents of this folder: small, real files of each kind, from the texts below.

Run it after changing a text; the files it writes are part of the repository, and the same texts give the
same bytes.
"""

import pathlib
import zipfile

HERE = pathlib.Path(__file__).parent
EPOCH = (2020, 1, 1, 0, 0, 0)

REPORT = [
    "Annual report of the harbour authority",
    "Container traffic through the harbour rose by nine percent during the year. The northern terminal "
    "handled most of the additional containers, while the southern terminal was closed for dredging "
    "between March and June.",
    "Revenue from mooring fees and storage reached a record. Energy costs fell because the cranes of the "
    "northern terminal were converted to shore power, which the authority had financed with a municipal "
    "loan.",
    "Three accidents were reported to the inspectorate. None of them involved dangerous goods. Training "
    "for crane drivers and pilots was extended to two weeks, and the emergency plan was rehearsed with "
    "the fire brigade and the coast guard.",
    "For the coming year the board expects slower growth. The tender for the rail connection will be "
    "published in autumn; construction of the warehouse for refrigerated goods depends on the approval "
    "of the environmental assessment.",
    "The board thanks the employees, the shipping lines and the neighbouring municipalities for their "
    "patience during the dredging works, and recommends that the surplus be kept as a reserve for the "
    "repair of the breakwater.",
]
REVISED = REPORT[:4] + [
    "For the coming year the board expects slower growth. The tender for the rail connection will be "
    "published in winter; construction of the warehouse for refrigerated goods depends on the approval "
    "of the environmental assessment and of the ministry.",
] + REPORT[5:]

CONTRACT = [
    "软件开发服务合同",
    "甲方委托乙方开发文档管理系统，乙方接受委托并承诺按照本合同约定的期限和质量标准完成开发工作。",
    "乙方应当在合同签订后三十日内提交需求分析报告和系统设计方案，经甲方书面确认后开始编码和测试工作。",
    "开发费用总额为人民币八十万元，甲方分三期支付：合同签订后支付百分之三十，系统验收合格后支付百分之五十，"
    "质量保证期届满后支付剩余款项。",
    "乙方保证交付的软件不侵犯任何第三方的知识产权。因软件侵权引起的纠纷由乙方承担全部责任并赔偿甲方的损失。",
    "双方对在合同履行过程中知悉的商业秘密和客户数据负有保密义务，未经对方书面同意不得向任何第三方披露。"
    "保密义务在合同终止后继续有效。",
    "任何一方违反本合同约定给对方造成损失的，应当承担违约责任。因不可抗力不能履行合同的，可以部分或者全部免除责任。",
    "本合同自双方签字盖章之日起生效，一式四份，双方各执两份，具有同等法律效力。",
]

POLICY = [
    "Travel policy",
    "Employees book train journeys through the travel desk. Flights need the approval of the head of "
    "department when the same destination can be reached by train within six hours.",
    "Hotel expenses are reimbursed up to the amount that the table of daily rates allows. Receipts are "
    "submitted within thirty days; later claims are refused unless the employee was ill.",
    "A company credit card may be used for taxis, parking and conference fees. Private expenses on the "
    "card are deducted from the next salary.",
    "Anyone who travels to a country with a security warning informs the safety officer beforehand and "
    "carries the emergency numbers.",
]

BUDGET = [
    ("Department", "Purpose", "Planned", "Spent"),
    ("Research", "Laboratory equipment", 420000, 398250.5),
    ("Research", "Conference travel", 36000, 41210.75),
    ("Sales", "Trade fairs", 88000, 79400),
    ("Sales", "Advertising campaign", 150000, 149999.99),
    ("Production", "Machine maintenance", 265000, 280114.2),
    ("Administration", "Insurance premiums", 54000, 53880),
]

SLIDES = [
    ("Launch of the water sensor", ["Battery lasts four years", "Measures nitrate, temperature and level"],
     "Show the prototype before the demonstration."),
    ("Market", ["Municipal waterworks", "Fish farms and irrigation cooperatives"],
     "Mention the letter of intent from the waterworks."),
    ("Schedule", ["Pilot customers in May", "Certification in August", "Delivery from October"],
     "Certification may slip by a month."),
]


def escape(text):
    return str(text).replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")


def write_zip(name, parts):
    with zipfile.ZipFile(HERE / name, "w") as archive:
        for part, content in parts:
            info = zipfile.ZipInfo(part, EPOCH)
            info.compress_type = zipfile.ZIP_STORED if part == "mimetype" else zipfile.ZIP_DEFLATED
            archive.writestr(info, content)


XML = '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
PACKAGE = "http://schemas.openxmlformats.org/package/2006"
OFFICE = "http://schemas.openxmlformats.org/officeDocument/2006/relationships"
MAIN = "application/vnd.openxmlformats-officedocument."


def content_types(overrides):
    return (XML + f'<Types xmlns="{PACKAGE}/content-types">'
            '<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
            '<Default Extension="xml" ContentType="application/xml"/>'
            + "".join(f'<Override PartName="{part}" ContentType="{MAIN}{kind}+xml"/>'
                      for part, kind in overrides) + "</Types>")


def relationships(targets):
    return (XML + f'<Relationships xmlns="{PACKAGE}/relationships">'
            + "".join(f'<Relationship Id="rId{i}" Type="{OFFICE}/{kind}" Target="{target}"/>'
                      for i, (kind, target) in enumerate(targets, 1)) + "</Relationships>")


def docx(name, paragraphs, comment=None):
    word = "http://schemas.openxmlformats.org/wordprocessingml/2006/main"
    body = "".join(f'<w:p><w:r><w:t xml:space="preserve">{escape(p)}</w:t></w:r></w:p>' for p in paragraphs)
    parts = [
        ("[Content_Types].xml", content_types([
            ("/word/document.xml", "wordprocessingml.document.main"),
            ("/word/comments.xml", "wordprocessingml.comments")])),
        ("_rels/.rels", relationships([("officeDocument", "word/document.xml")])),
        ("word/document.xml", XML + f'<w:document xmlns:w="{word}"><w:body>{body}</w:body></w:document>'),
    ]
    if comment:
        parts += [
            ("word/_rels/document.xml.rels", relationships([("comments", "comments.xml")])),
            ("word/comments.xml", XML + f'<w:comments xmlns:w="{word}"><w:comment w:id="0" w:author="Editor">'
             f"<w:p><w:r><w:t>{escape(comment)}</w:t></w:r></w:p></w:comment></w:comments>"),
        ]
    write_zip(name, parts)


def xlsx(name, sheet_name, rows):
    sheet = "http://schemas.openxmlformats.org/spreadsheetml/2006/main"
    strings, cells = [], []
    for r, row in enumerate(rows, 1):
        line = ""
        for c, value in enumerate(row):
            ref = f"{chr(65 + c)}{r}"
            if isinstance(value, str):
                strings.append(value)
                line += f'<c r="{ref}" t="s"><v>{len(strings) - 1}</v></c>'
            else:
                line += f'<c r="{ref}"><v>{value}</v></c>'
        cells.append(f'<row r="{r}">{line}</row>')
    write_zip(name, [
        ("[Content_Types].xml", content_types([
            ("/xl/workbook.xml", "spreadsheetml.sheet.main"),
            ("/xl/worksheets/sheet1.xml", "spreadsheetml.worksheet"),
            ("/xl/sharedStrings.xml", "spreadsheetml.sharedStrings")])),
        ("_rels/.rels", relationships([("officeDocument", "xl/workbook.xml")])),
        ("xl/_rels/workbook.xml.rels", relationships([
            ("worksheet", "worksheets/sheet1.xml"), ("sharedStrings", "sharedStrings.xml")])),
        ("xl/workbook.xml", XML + f'<workbook xmlns="{sheet}" xmlns:r="{OFFICE}"><sheets>'
         f'<sheet name="{escape(sheet_name)}" sheetId="1" r:id="rId1"/></sheets></workbook>'),
        ("xl/worksheets/sheet1.xml", XML + f'<worksheet xmlns="{sheet}"><sheetData>'
         + "".join(cells) + "</sheetData></worksheet>"),
        ("xl/sharedStrings.xml", XML + f'<sst xmlns="{sheet}">'
         + "".join(f"<si><t>{escape(s)}</t></si>" for s in strings) + "</sst>"),
    ])


def pptx(name, slides):
    draw = "http://schemas.openxmlformats.org/drawingml/2006/main"
    show = "http://schemas.openxmlformats.org/presentationml/2006/main"

    def shapes(root, texts):
        return (XML + f'<p:{root} xmlns:p="{show}" xmlns:a="{draw}"><p:cSld><p:spTree>'
                + "".join("<p:sp><p:txBody>" + "".join(f"<a:p><a:r><a:t>{escape(t)}</a:t></a:r></a:p>"
                                                      for t in block) + "</p:txBody></p:sp>"
                          for block in texts) + f"</p:spTree></p:cSld></p:{root}>")

    parts = [
        ("[Content_Types].xml", content_types(
            [("/ppt/presentation.xml", "presentationml.presentation.main")]
            + [(f"/ppt/slides/slide{i}.xml", "presentationml.slide") for i in range(1, len(slides) + 1)]
            + [(f"/ppt/notesSlides/notesSlide{i}.xml", "presentationml.notesSlide")
               for i in range(1, len(slides) + 1)])),
        ("_rels/.rels", relationships([("officeDocument", "ppt/presentation.xml")])),
        ("ppt/presentation.xml", XML + f'<p:presentation xmlns:p="{show}" xmlns:r="{OFFICE}"><p:sldIdLst>'
         + "".join(f'<p:sldId id="{255 + i}" r:id="rId{i}"/>' for i in range(1, len(slides) + 1))
         + "</p:sldIdLst></p:presentation>"),
        ("ppt/_rels/presentation.xml.rels", relationships(
            [("slide", f"slides/slide{i}.xml") for i in range(1, len(slides) + 1)])),
    ]
    for i, (title, points, notes) in enumerate(slides, 1):
        parts += [
            (f"ppt/slides/slide{i}.xml", shapes("sld", [[title], points])),
            (f"ppt/slides/_rels/slide{i}.xml.rels",
             relationships([("notesSlide", f"../notesSlides/notesSlide{i}.xml")])),
            (f"ppt/notesSlides/notesSlide{i}.xml", shapes("notes", [[notes]])),
        ]
    write_zip(name, parts)


def odt(name, paragraphs):
    odf = "urn:oasis:names:tc:opendocument:xmlns"
    mime = "application/vnd.oasis.opendocument.text"
    write_zip(name, [
        ("mimetype", mime),
        ("META-INF/manifest.xml", XML + f'<manifest:manifest xmlns:manifest="{odf}:manifest:1.0">'
         f'<manifest:file-entry manifest:full-path="/" manifest:media-type="{mime}"/>'
         '<manifest:file-entry manifest:full-path="content.xml" manifest:media-type="text/xml"/>'
         "</manifest:manifest>"),
        ("content.xml", XML + f'<office:document-content xmlns:office="{odf}:office:1.0" '
         f'xmlns:text="{odf}:text:1.0" office:version="1.2"><office:body><office:text>'
         + f"<text:h>{escape(paragraphs[0])}</text:h>"
         + "".join(f"<text:p>{escape(p)}</text:p>" for p in paragraphs[1:])
         + "</office:text></office:body></office:document-content>"),
    ])


def pdf(name, paragraphs):
    """One page of Chinese text in a font that names a predefined character map and brings no Unicode table."""
    lines = [p[i:i + 32] for p in paragraphs for i in range(0, len(p), 32)]
    text = "".join(f"<{line.encode('gbk').hex()}> Tj T*\n" for line in lines)
    stream = f"BT /F1 12 Tf 16 TL 72 770 Td\n{text}ET".encode()
    objects = [
        b"<< /Type /Catalog /Pages 2 0 R >>",
        b"<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 4 0 R "
        b"/Resources << /Font << /F1 5 0 R >> >> >>",
        b"<< /Length %d >>\nstream\n%s\nendstream" % (len(stream), stream),
        b"<< /Type /Font /Subtype /Type0 /BaseFont /STSong-Light /Encoding /GBK-EUC-H "
        b"/DescendantFonts [6 0 R] >>",
        b"<< /Type /Font /Subtype /CIDFontType0 /BaseFont /STSong-Light "
        b"/CIDSystemInfo << /Registry (Adobe) /Ordering (GB1) /Supplement 2 >> /DW 1000 "
        b"/FontDescriptor 7 0 R >>",
        b"<< /Type /FontDescriptor /FontName /STSong-Light /Flags 6 /FontBBox [0 -200 1000 900] "
        b"/ItalicAngle 0 /Ascent 880 /Descent -120 /CapHeight 880 /StemV 93 >>",
    ]
    out = b"%PDF-1.4\n"
    offsets = []
    for number, body in enumerate(objects, 1):
        offsets.append(len(out))
        out += b"%d 0 obj\n%s\nendobj\n" % (number, body)
    start = len(out)
    out += b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1)
    out += b"".join(b"%010d 00000 n \n" % offset for offset in offsets)
    out += b"trailer\n<< /Size %d /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (len(objects) + 1, start)
    (HERE / name).write_bytes(out)


def main():
    docx("harbour-report.docx", REPORT, "Please check the figures of the southern terminal.")
    docx("harbour-report-revised.docx", REVISED)
    xlsx("budget.xlsx", "Budget", BUDGET)
    pptx("launch.pptx", SLIDES)
    odt("travel-policy.odt", POLICY)
    docx("软件开发合同.docx", CONTRACT)
    pdf("软件开发合同.pdf", CONTRACT)
    (HERE / "软件开发合同.gb18030.txt").write_bytes("\n".join(CONTRACT).encode("gb18030"))
    (HERE / "travel-policy.html").write_text(
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>"
        + escape(POLICY[0]) + "</title></head>\n<body>\n" + "\n".join(
            f"<p>{escape(p)}</p>" for p in POLICY[1:]) + "\n</body></html>\n", encoding="utf-8")


if __name__ == "__main__":
    main()
