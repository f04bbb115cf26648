#include "documents.h"

#include <functional>

#include "hostkit/morvakit/archive_writer.h"
#include "hostkit/morvakit/biff_builder.h"
#include "hostkit/morvakit/office_documents.h"
#include "hostkit/morvakit/pdf_builder.h"
#include "hostkit/morvakit/ppt_builder.h"
#include "hostkit/morvakit/word_builder.h"
#include "hostkit/tessarine/ole_builder.h"

#include "support/repeated.h"

namespace test {

namespace {

using namespace std::string_literals;

constexpr char const* words = "Budget 预算 contract";
constexpr char const* latin_words = "Budget of the contract";

std::string paragraph(std::string const& text) {
  return "<w:p><w:r><w:t>" + text + "</w:t></w:r></w:p>";
}

std::string mail(std::string const& fields, std::string const& content) {
  return "From: a@example.org\r\nTo: b@example.org\r\nSubject: Budget\r\nMIME-Version: 1.0\r\n" +
         fields + "\r\n" + content;
}

std::string zip_of(std::string const& name, std::string const& content) {
  return ZipWriter().add(name, content, {true, false, -1, false}).bytes();
}

std::string word_document(std::string const& text) {
  return OfficeDocument::word(paragraph(text)).bytes();
}

std::string message(std::string const& ascii) {
  std::string body;
  for (char const character : ascii) {
    body += {character, '\0'};
  }
  return make_ole(
      {{"__properties_version1.0", std::string(32, '\0')}, {"__substg1.0_1000001F", body}});
}

std::string slide_show(std::string const& shapes) {
  ppt::Builder builder;
  builder.add_slide(shapes);
  return builder.bytes();
}

std::string rich_text(std::string const& body) {
  return "{\\rtf1\\ansi " + body + "}";
}

/// `innermost` wrapped `depth` times.
std::string nested(std::string innermost, int depth,
                   std::function<std::string(std::string const&)> const& wrap) {
  for (int i = 0; i < depth; ++i) {
    innermost = wrap(innermost);
  }
  return innermost;
}

std::string deep_pages(int depth) {
  PdfBuilder pdf;
  pdf.add("<</Type/Catalog/Pages 2 0 R>>");
  for (int i = 0; i < depth; ++i) {
    auto const next = std::to_string(i + 3);
    pdf.add("<</Type/Pages/Kids[" + next + " 0 R]/Count 1>>");
  }
  pdf.add("<</Type/Page/MediaBox[0 0 600 800]>>");
  return pdf.bytes();
}

std::string deep_forms(int depth) {
  PdfBuilder pdf = one_page("/X Do", helvetica, "", "/Resources<</XObject<</X 6 0 R>>>>");
  for (int i = 0; i < depth; ++i) {
    pdf.add_stream("/X Do", "/Type/XObject/Subtype/Form/BBox[0 0 9 9]/Resources<</XObject<</X " +
                                std::to_string(7 + i) + " 0 R>>>>");
  }
  return pdf.bytes();
}

std::string deep_outline(int depth) {
  PdfBuilder pdf = one_page(show("x"), helvetica, "/Outlines 6 0 R");
  for (int i = 0; i < depth; ++i) {
    auto const next = std::to_string(7 + i) + " 0 R";
    pdf.add("<</Title(t)/First " + next + "/Last " + next + "/Count 1>>");
  }
  return pdf.bytes();
}

std::string nested_storages(std::size_t depth) {
  return make_ole({{repeated("s/", depth) + "CONTENTS", "x"}});
}

std::vector<MadeDocument> deep_texts() {
  constexpr std::size_t deep = 100000;
  std::string const object = repeated("{\\object{\\*\\objdata ", 2000);
  return {
      {"xml", "<?xml version=\"1.0\"?>" + repeated("<a>", deep) + repeated("</a>", deep), ""},
      {"xml at the bound", "<?xml version=\"1.0\"?>" + repeated("<a>", 999) + repeated("</a>", 999),
       ""},
      {"html", "<!DOCTYPE html><html><body>" + repeated("<div><b>", deep), ""},
      {"html of tables", "<html>" + repeated("<table><tr><td>", deep / 3), ""},
      {"rtf", rich_text(repeated("{\\b ", deep)), ""},
      {"rtf at the bound", rich_text(repeated("{\\b ", 990) + "x" + repeated("}", 990)), ""},
      {"rtf objects", rich_text(object), ""},
      {"docx", OfficeDocument::word(repeated("<w:tbl><w:tr><w:tc>", deep)).bytes(), ""},
      {"odt",
       OfficeDocument::open_document("text", repeated("<text:list><text:list-item>", deep)).bytes(),
       ""},
      {"pptx",
       OfficeDocument::show(repeated("<p:grpSp>", 900) + repeated("</p:grpSp>", 900)).bytes(), ""},
      {"ppt groups",
       slide_show(nested(ppt::shape(ppt::text_box(ppt::text("x"))), 2000, ppt::group)), ""},
      {"pdf arrays", one_page(repeated("[", deep), helvetica, "/A " + repeated("[", deep)).bytes(),
       ""},
      {"pdf dictionaries", one_page("", helvetica, "/A " + repeated("<</A ", deep)).bytes(), ""},
      {"pdf pages", deep_pages(3000), ""},
      {"pdf forms", deep_forms(3000), ""},
      {"pdf outline", deep_outline(3000), ""},
      {"ole storages", nested_storages(500), ""},
  };
}

std::string as_attachment(std::string const& inner) {
  return mail("Content-Type: message/rfc822\r\n", inner);
}

std::string as_multipart(std::string const& inner) {
  static int number = 0;
  auto const boundary = "b" + std::to_string(++number);
  return "Content-Type: multipart/mixed; boundary=" + boundary + "\r\n\r\n--" + boundary + "\r\n" +
         inner + "\r\n--" + boundary + "--\r\n";
}

}  // namespace

std::vector<MadeDocument> small_documents() {
  std::string const utf8 = words;
  std::string const html =
      "<!DOCTYPE html><html><head><title>t</title></head><body><p>" + utf8 + "</p></body></html>";
  return {
      {"plain.txt", utf8 + "\n", utf8},
      {"gb18030.txt", "\xd4\xa4\xcb\xe3\xb5\xc4\xba\xcf\xcd\xac\xa1\xa3\xd4\xa4\xcb\xe3\n",
       "预算的合同"},
      {"page.html", html, utf8},
      {"data.xml", "<?xml version=\"1.0\"?><a><b>" + utf8 + "</b></a>", utf8},
      {"letter.rtf", rich_text(latin_words), latin_words},
      {"mail.eml", mail("Content-Type: text/plain; charset=utf-8\r\n", utf8 + "\r\n"), utf8},
      {"message.msg", message(latin_words), latin_words},
      {"text.docx", word_document(utf8), utf8},
      {"sheet.xlsx",
       OfficeDocument::workbook("<row><c t=\"inlineStr\"><is><t>" + utf8 + "</t></is></c></row>")
           .bytes(),
       utf8},
      {"show.pptx", OfficeDocument::show(shape(utf8)).bytes(), utf8},
      {"text.odt", OfficeDocument::open_document("text", "<text:p>" + utf8 + "</text:p>").bytes(),
       utf8},
      {"old.doc", WordBuilder().add(u"Budget of the contract\r").bytes(), latin_words},
      {"old.xls",
       make_ole({{"Workbook", BiffBook().sheet("One", label(0, 0, latin_words)).bytes()}}),
       latin_words},
      {"old.ppt", slide_show(ppt::shape(ppt::text_box(ppt::text(utf8)))), utf8},
      {"page.pdf", one_page(show(latin_words)).bytes(), latin_words},
      {"packed.zip", zip_of("inner.txt", utf8), utf8},
      {"packed.tar", make_tar({{"inner.txt", utf8}}), utf8},
      {"packed.gz", pack(utf8, ARCHIVE_FILTER_GZIP), utf8},
      {"packed.xz", pack(utf8, ARCHIVE_FILTER_XZ), utf8},
      {"packed.7z",
       make_archive("7zip", ARCHIVE_FILTER_NONE, {{"inner.txt", utf8}}, "compression=lzma2"), utf8},
  };
}

std::vector<MadeDocument> deep_documents() {
  auto documents = deep_texts();
  auto const in_zip = [](std::string const& inner) { return zip_of("inner", inner); };
  auto const in_tar = [](std::string const& inner) { return make_tar({{"inner", inner}}); };
  auto const in_seven = [](std::string const& inner) {
    return make_archive("7zip", ARCHIVE_FILTER_NONE, {{"inner", inner}}, "compression=lzma2");
  };
  auto const in_word = [](std::string const& inner) {
    return OfficeDocument::word(paragraph("x"))
        .part("word/embeddings/inner.bin", inner)
        .relation("word/document.xml", "rId7",
                  "http://schemas.openxmlformats.org/officeDocument/2006/relationships/package",
                  "embeddings/inner.bin")
        .bytes();
  };
  // As deep as embedded files are read, with each of the others at the bottom.
  constexpr int bound = 8;
  auto const flat = documents;
  for (MadeDocument const& inner : flat) {
    documents.push_back({inner.name + " in zip", nested(inner.bytes, bound, in_zip), ""});
  }
  for (auto const& inner : {flat[1], flat[2], flat[5], flat[11]}) {
    documents.push_back({inner.name + " in tar", nested(inner.bytes, bound, in_tar), ""});
    documents.push_back({inner.name + " in 7z", nested(inner.bytes, bound, in_seven), ""});
    documents.push_back({inner.name + " in docx", nested(inner.bytes, bound, in_word), ""});
    documents.push_back({inner.name + " in mail", nested(inner.bytes, bound, as_attachment), ""});
  }
  documents.push_back({"zip", nested("x", 30, in_zip), ""});
  documents.push_back({"mail", nested(mail("", "x"), 200, as_attachment), ""});
  documents.push_back(
      {"multipart",
       "From: a@example.org\r\nMIME-Version: 1.0\r\n" + nested("\r\nx", 500, as_multipart), ""});
  return documents;
}

}  // namespace test
