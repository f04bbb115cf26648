#include "morvakit/rtf/rtf_words.h"

#include <unordered_map>

#include "host/Orlec/ParseText.h"

namespace morvakit {

namespace {

using Table = std::unordered_map<std::string_view, RtfWord>;

void add_all(Table& table, RtfWord const& word, std::initializer_list<std::string_view> names) {
  for (auto const name : names) {
    table.emplace(name, word);
  }
}

/// Destinations that hold no text of the document, beside those that are marked as to be ignored by
/// readers that do not know them.
void add_left_out(Table& table) {
  add_all(table, {RtfRole::left_out},
          {"colortbl",    "stylesheet", "listtable",    "listoverridetable",
           "listpicture", "filetbl",    "revtbl",       "rsidtbl",
           "generator",   "xmlnstbl",   "themedata",    "datastore",
           "pgptbl",      "mmathPr",    "pnseclvl",     "ftnsep",
           "ftnsepc",     "ftncn",      "aftnsep",      "aftnsepc",
           "aftncn",      "nonshppict", "shprslt",      "nonesttables",
           "mmathPict",   "datafield",  "fldtype",      "objclass",
           "objname",     "objtime",    "objsect",      "objalias",
           "xe",          "tc",         "tcn",          "rxe",
           "txe",         "atnid",      "atnauthor",    "atndate",
           "atnref",      "atntime",    "atnicn",       "atnparent",
           "atrfstart",   "atrfend",    "bkmkstart",    "bkmkend",
           "private",     "template",   "latentstyles", "oldcprops",
           "oldpprops",   "oldsprops",  "oldtprops"});
}

void add_destinations(Table& table) {
  add_left_out(table);
  add_all(
      table, {RtfRole::kept},
      {"shppict", "nesttableprops", "moMath", "moMathPara", "picprop", "formfield", "userprops"});
  add_all(table, {RtfRole::suspended}, {"upr", "shpinst", "do"});
  add_all(table, {RtfRole::resumed, 1}, {"shptxt", "dptxbxtext"});
  table.emplace("ud", RtfWord{RtfRole::resumed});
  add_all(table, {RtfRole::beside, Orlec::ParseTextType_hf},
          {"header", "headerl", "headerr", "headerf", "footer", "footerl", "footerr", "footerf"});
  add_all(table, {RtfRole::beside, Orlec::ParseTextType_control},
          {"ffname", "ffdeftext", "ffl", "ffhelptext", "ffstattext"});
  add_all(table, {RtfRole::document}, {"rtf", "urtf"});
  table.emplace("footnote", RtfWord{RtfRole::beside, Orlec::ParseTextType_fn});
  table.emplace("annotation", RtfWord{RtfRole::beside, Orlec::ParseTextType_comment});
  table.emplace("ftnalt", RtfWord{RtfRole::endnote});
  table.emplace("fonttbl", RtfWord{RtfRole::fonts});
  table.emplace("fldinst", RtfWord{RtfRole::field_code});
  table.emplace("sn", RtfWord{RtfRole::shape_name});
  table.emplace("sv", RtfWord{RtfRole::shape_value});
  table.emplace("pict", RtfWord{RtfRole::picture});
  table.emplace("objdata", RtfWord{RtfRole::object_data});
}

/// Properties carry the names that Office Open XML has for them.
void add_properties(Table& table) {
  table.emplace("info", RtfWord{RtfRole::information});
  table.emplace("title", RtfWord{RtfRole::property, 0, "title"});
  table.emplace("subject", RtfWord{RtfRole::property, 0, "subject"});
  table.emplace("author", RtfWord{RtfRole::property, 0, "creator"});
  table.emplace("keywords", RtfWord{RtfRole::property, 0, "keywords"});
  table.emplace("doccomm", RtfWord{RtfRole::property, 0, "description"});
  table.emplace("comment", RtfWord{RtfRole::property, 0, "description"});
  table.emplace("operator", RtfWord{RtfRole::property, 0, "lastModifiedBy"});
  table.emplace("category", RtfWord{RtfRole::property, 0, "category"});
  table.emplace("manager", RtfWord{RtfRole::property, 0, "Manager"});
  table.emplace("company", RtfWord{RtfRole::property, 0, "Company"});
  table.emplace("hlinkbase", RtfWord{RtfRole::property, 0, "HyperlinkBase"});
  table.emplace("creatim", RtfWord{RtfRole::date, 0, "created"});
  table.emplace("revtim", RtfWord{RtfRole::date, 0, "modified"});
  table.emplace("printim", RtfWord{RtfRole::date, 0, "lastPrinted"});
  table.emplace("propname", RtfWord{RtfRole::property_name});
  table.emplace("staticval", RtfWord{RtfRole::property_value});
  table.emplace("nofpages", RtfWord{RtfRole::page_count});
  table.emplace("yr", RtfWord{RtfRole::date_part, 0});
  table.emplace("mo", RtfWord{RtfRole::date_part, 1});
  table.emplace("dy", RtfWord{RtfRole::date_part, 2});
  table.emplace("hr", RtfWord{RtfRole::date_part, 3});
  table.emplace("min", RtfWord{RtfRole::date_part, 4});
}

void add_text(Table& table) {
  add_all(table, {RtfRole::separator, '\n'}, {"par", "row", "nestrow", "sect", "page", "column"});
  add_all(table, {RtfRole::separator, '\t'}, {"cell", "nestcell"});
  add_all(table, {RtfRole::character, '\n'}, {"line", "lbr"});
  table.emplace("tab", RtfWord{RtfRole::character, '\t'});
  table.emplace("emdash", RtfWord{RtfRole::character, 0x2014});
  table.emplace("endash", RtfWord{RtfRole::character, 0x2013});
  table.emplace("emspace", RtfWord{RtfRole::character, 0x2003});
  table.emplace("enspace", RtfWord{RtfRole::character, 0x2002});
  table.emplace("qmspace", RtfWord{RtfRole::character, 0x2005});
  table.emplace("bullet", RtfWord{RtfRole::character, 0x2022});
  table.emplace("lquote", RtfWord{RtfRole::character, 0x2018});
  table.emplace("rquote", RtfWord{RtfRole::character, 0x2019});
  table.emplace("ldblquote", RtfWord{RtfRole::character, 0x201C});
  table.emplace("rdblquote", RtfWord{RtfRole::character, 0x201D});
  table.emplace("zwj", RtfWord{RtfRole::character, 0x200D});
  table.emplace("zwnj", RtfWord{RtfRole::character, 0x200C});
  table.emplace("u", RtfWord{RtfRole::unicode});
  table.emplace("uc", RtfWord{RtfRole::unicode_skip});
}

void add_encodings(Table& table) {
  table.emplace("ansi", RtfWord{RtfRole::code_page, 1252});
  table.emplace("mac", RtfWord{RtfRole::code_page, 10000});
  table.emplace("pc", RtfWord{RtfRole::code_page, 437});
  table.emplace("pca", RtfWord{RtfRole::code_page, 850});
  table.emplace("ansicpg", RtfWord{RtfRole::stated_code_page});
  table.emplace("deff", RtfWord{RtfRole::default_font});
  table.emplace("f", RtfWord{RtfRole::font});
  table.emplace("fcharset", RtfWord{RtfRole::font_charset});
  table.emplace("cpg", RtfWord{RtfRole::font_code_page});
  table.emplace("af", RtfWord{RtfRole::associated_font});
  table.emplace("dbch", RtfWord{RtfRole::far_east, 1});
  add_all(table, {RtfRole::far_east, 0}, {"loch", "hich"});
  table.emplace("plain", RtfWord{RtfRole::plain});
  add_all(table, {RtfRole::deleted}, {"deleted", "mvf"});
}

Table make_table() {
  Table table;
  add_destinations(table);
  add_properties(table);
  add_text(table);
  add_encodings(table);
  return table;
}

/// The properties of formulas, of which there are dozens.
bool is_formula_property(std::string_view name) {
  return name.starts_with('m') && name.ends_with("Pr");
}

}  // namespace

RtfWord find_rtf_word(std::string_view name) {
  static auto const table = make_table();
  if (auto const found = table.find(name); found != table.end()) {
    return found->second;
  }
  return is_formula_property(name) ? RtfWord{RtfRole::left_out} : RtfWord{};
}

}  // namespace morvakit
