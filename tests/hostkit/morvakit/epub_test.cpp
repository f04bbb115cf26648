#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"
#include "hostkit/morvakit/zip_writer.h"

namespace {

using Orlec::ParseOutcome;

constexpr char const* container =
    R"(<container xmlns="urn:oasis:names:tc:opendocument:xmlns:container"><rootfiles><rootfile full-path="OPS/book.opf" media-type="application/oebps-package+xml"/></rootfiles></container>)";

std::string xhtml(std::string const& body) {
  return R"(<?xml version="1.0" encoding="UTF-8"?><html xmlns="http://www.w3.org/1999/xhtml"><body>)" +
         body + "</body></html>";
}

std::string item(std::string const& id, std::string const& address,
                 std::string const& type = "application/xhtml+xml",
                 std::string const& properties = {}) {
  return "<item id=\"" + id + "\" href=\"" + address + "\" media-type=\"" + type +
         "\" properties=\"" + properties + "\"/>";
}

/// A book but for its files: `items` and `spine` name them.
ZipWriter book(std::string const& items, std::string const& spine,
               std::string const& metadata = {}) {
  ZipWriter zip;
  zip.add("mimetype", "application/epub+zip");
  zip.add("META-INF/container.xml", container);
  zip.add("OPS/book.opf",
          "<package xmlns=\"http://www.idpf.org/2007/opf\"><metadata "
          "xmlns:dc=\"http://purl.org/dc/elements/1.1/\">" +
              metadata + "</metadata><manifest>" + items + "</manifest><spine>" + spine +
              "</spine></package>");
  return zip;
}

constexpr char const* one_spine = R"(<itemref idref="a"/>)";

std::string encryption(std::string const& algorithm, std::string const& part) {
  return R"(<encryption xmlns="urn:oasis:names:tc:opendocument:xmlns:container" xmlns:e="http://www.w3.org/2001/04/xmlenc#"><e:EncryptedData><e:EncryptionMethod Algorithm=")" +
         algorithm + R"("/><e:CipherData><e:CipherReference URI=")" + part +
         R"("/></e:CipherData></e:EncryptedData></encryption>)";
}

}  // namespace

TEST(Epub, the_order_is_that_of_the_spine) {
  auto zip = book(item("a", "1.xhtml") + item("b", "2.xhtml"),
                  R"(<itemref idref="b"/><itemref idref="a" linear="no"/>)");
  zip.add("OPS/1.xhtml", xhtml("<p>one</p>"));
  zip.add("OPS/2.xhtml", xhtml("<p>two</p>"));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.main(), "two\none");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.counts.i_embed, 0);
}

TEST(Epub, addresses_may_be_written_with_percent_signs) {
  auto zip = book(item("a", "../%E4%B8%80%20x.xhtml"), one_spine);
  zip.add("一 x.xhtml", xhtml("<p>found</p>"));
  EXPECT_EQ(test::parse_bytes(zip.bytes()).main(), "found");
}

TEST(Epub, metadata_are_properties) {
  auto zip = book(item("a", "1.xhtml"), one_spine,
                  "<dc:title>西游记</dc:title><dc:creator>吴承恩</dc:creator>"
                  R"(<meta property="dcterms:modified">2014</meta>)"
                  R"(<meta name="calibre:series" content="Classics"/>)"
                  R"(<meta name="cover" content="img"/>)");
  zip.add("OPS/1.xhtml", xhtml("<p>x</p>"));
  EXPECT_EQ(test::parse_bytes(zip.bytes()).kind(Orlec::ParseTextType_property),
            "title: 西游记\ncreator: 吴承恩\nmodified: 2014\nseries: Classics");
}

TEST(Epub, a_table_of_contents_beside_the_spine_is_other_text) {
  auto zip = book(item("a", "1.xhtml") + item("n", "nav.xhtml", "application/xhtml+xml", "nav"),
                  one_spine);
  zip.add("OPS/1.xhtml", xhtml("<p>x</p>"));
  zip.add("OPS/nav.xhtml",
          xhtml("<nav><h1>Contents</h1><ol><li><a href=\"1.xhtml\">Use\n of <code>mo</code></a>"
                "</li></ol></nav>"));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "Contents\nUse of mo");
  EXPECT_EQ(parsed.main(), "x");
}

TEST(Epub, a_table_of_contents_in_the_spine_is_a_page) {
  auto zip = book(item("a", "nav.xhtml", "application/xhtml+xml", "nav"), one_spine);
  zip.add("OPS/nav.xhtml", xhtml("<nav><a href=\"1.xhtml\">One</a></nav>"));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.main(), "One");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "");
}

TEST(Epub, the_older_table_of_contents_tells_the_pages) {
  auto zip =
      book(item("a", "1.xhtml") + item("n", "toc.ncx", "application/x-dtbncx+xml"), one_spine);
  zip.add("OPS/1.xhtml", xhtml("<p>x</p>"));
  zip.add(
      "OPS/toc.ncx",
      R"(<ncx xmlns="http://www.daisy.org/z3986/2005/ncx/"><navMap><navPoint><navLabel><text>Start</text></navLabel></navPoint></navMap><pageList><pageTarget/><pageTarget/></pageList></ncx>)");
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "Start");
  EXPECT_EQ(parsed.counts.i_page, 2);
}

TEST(Epub, pictures_are_counted_by_the_manifest) {
  auto zip = book(item("a", "1.xhtml") + item("i", "i.png", "image/png"), one_spine);
  zip.add("OPS/1.xhtml", xhtml("<p>x<img src=\"i.png\"/><img src=\"i.png\"/></p>"));
  EXPECT_EQ(test::parse_bytes(zip.bytes()).counts.i_img, 1);
}

TEST(Epub, other_files_of_the_book_follow_as_embedded_ones) {
  auto zip = book(item("p", "notes.txt", "text/plain") + item("a", "1.xhtml"), one_spine);
  zip.add("OPS/1.xhtml", xhtml("<p>page</p>"));
  zip.add("OPS/notes.txt", "attached");
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.main(), "page\nattached");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(Epub, pages_outside_the_spine_follow_those_within) {
  auto zip = book(item("b", "2.xhtml") + item("a", "1.xhtml"), one_spine);
  zip.add("OPS/1.xhtml", xhtml("<p>one</p>"));
  zip.add("OPS/2.xhtml", xhtml("<p>two</p>"));
  zip.add("OPS/unlisted.html", xhtml("<p>three</p>"));
  EXPECT_EQ(test::parse_bytes(zip.bytes()).main(), "one\ntwo\nthree");
}

TEST(Epub, without_a_package_document_the_pages_are_read_by_name) {
  ZipWriter zip;
  zip.add("mimetype", "application/epub+zip");
  zip.add("b.xhtml", xhtml("<p>two</p>"));
  zip.add("a.xhtml", xhtml("<p>one</p>"));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.main(), "one\ntwo");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
}

TEST(Epub, a_package_document_that_nothing_names_is_found) {
  ZipWriter zip;
  zip.add("mimetype", "application/epub+zip");
  zip.add("content.opf",
          "<package><manifest>" + item("a", "b.xhtml") + item("b", "a.xhtml") +
              R"(</manifest><spine><itemref idref="a"/><itemref idref="b"/></spine></package>)");
  zip.add("a.xhtml", xhtml("<p>second</p>"));
  zip.add("b.xhtml", xhtml("<p>first</p>"));
  EXPECT_EQ(test::parse_bytes(zip.bytes()).main(), "first\nsecond");
}

TEST(Epub, scrambled_fonts_are_no_encryption) {
  auto zip = book(item("a", "1.xhtml"), one_spine);
  zip.add("OPS/1.xhtml", xhtml("<p>open</p>"));
  zip.add("META-INF/encryption.xml",
          encryption("http://www.idpf.org/2008/embedding", "OPS/font.otf"));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.main(), "open");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
}

TEST(Epub, a_book_whose_pages_are_encrypted_is_encrypted) {
  auto zip = book(item("a", "1.xhtml"), one_spine);
  zip.add("OPS/1.xhtml", "cipher");
  zip.add("META-INF/encryption.xml",
          encryption("http://www.w3.org/2001/04/xmlenc#aes128-cbc", "OPS/1.xhtml"));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::encrypted);
  EXPECT_EQ(parsed.main(), "");
}

TEST(Epub, pages_beside_encrypted_ones_are_read) {
  auto zip = book(item("a", "1.xhtml") + item("b", "2.xhtml"), one_spine);
  zip.add("OPS/1.xhtml", xhtml("<p>sample</p>"));
  zip.add("OPS/2.xhtml", "cipher");
  zip.add("META-INF/encryption.xml",
          encryption("http://www.w3.org/2001/04/xmlenc#aes128-cbc", "OPS/2.xhtml"));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.main(), "sample");
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
}

TEST(Epub, a_page_over_a_bound_leaves_the_others) {
  Orlec::ParseLimits limits;
  limits.i_xml_depth = 20;
  test::ScopedLimits const scoped(limits);
  auto zip = book(item("a", "1.xhtml") + item("b", "2.xhtml"),
                  R"(<itemref idref="a"/><itemref idref="b"/>)");
  std::string deep;
  for (int i = 0; i < 30; ++i) {
    deep += "<div>";
  }
  zip.add("OPS/1.xhtml", xhtml(deep));
  zip.add("OPS/2.xhtml", xhtml("<p>two</p>"));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.main(), "two");
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
}

TEST(Epub, items_are_charged_with_their_media_types) {
  Orlec::ParseLimits limits;
  limits.i_list_bytes = 100000;
  test::ScopedLimits const scoped(limits);
  std::string items;
  for (int i = 0; i < 50; ++i) {
    items += item("a", "x", std::string(5000, 't'));
  }
  EXPECT_EQ(test::parse_bytes(book(items, one_spine).bytes()).outcome, ParseOutcome::limit_reached);
}

TEST(Epub, items_in_a_long_directory_are_charged_with_their_whole_names) {
  Orlec::ParseLimits limits;
  limits.i_list_bytes = 100000;
  test::ScopedLimits const scoped(limits);
  std::string items;
  for (int i = 0; i < 50; ++i) {
    items += item("a", "x");
  }
  ZipWriter zip;
  zip.add("mimetype", "application/epub+zip");
  zip.add(std::string(5000, 'd') + "/book.opf",
          "<package xmlns=\"http://www.idpf.org/2007/opf\"><manifest>" + items +
              "</manifest></package>");
  EXPECT_EQ(test::parse_bytes(zip.bytes()).outcome, ParseOutcome::limit_reached);
}

TEST(Epub, every_truncation_and_flipped_bytes_end_well) {
  auto zip = book(item("a", "1.xhtml"), one_spine, "<dc:title>t</dc:title>");
  zip.add("OPS/1.xhtml", xhtml("<p>one</p>"));
  auto const bytes = zip.bytes();
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    test::parse_bytes(bytes.substr(0, length));
  }
  std::mt19937 random(7);
  for (int round = 0; round < 400; ++round) {
    auto changed = bytes;
    for (int flips = 0; flips < 3; ++flips) {
      changed[random() % changed.size()] = static_cast<char>(random());
    }
    test::parse_bytes(changed);
  }
}
