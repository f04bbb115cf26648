#include <string>
#include <string_view>
#include <vector>

#include "morvakit/formats.h"
#include "morvakit/office/open_package.h"
#include "morvakit/office/shared_strings.h"
#include "morvakit/office/sheet_parts.h"
#include "morvakit/office/xlsb_records.h"
#include "morvakit/sheet/cell_styles.h"
#include "morvakit/sheet/sheet_text.h"
#include "morvakit/text_flow.h"

namespace morvakit {

namespace {

/// The records that are read.
enum class Record : std::uint32_t {
  row = 0,
  // Cells, each with its column.
  packed_number = 2,
  error = 3,
  logical = 4,
  number = 5,
  text = 6,
  shared_text = 7,
  formula_text = 8,
  formula_number = 9,
  formula_logical = 10,
  formula_error = 11,
  rich_text = 62,
  // Cells that stand in the column behind the last one.
  next_packed_number = 13,
  next_error = 14,
  next_logical = 15,
  next_number = 16,
  next_text = 17,
  next_shared_text = 18,
  shared_string = 19,
  format = 44,
  style = 47,
  workbook_properties = 153,
  sheet = 156,
  headers = 479,
  begin_cell_styles = 617,
  end_cell_styles = 618,
  comment_text = 637,
};

/// Reads a part that was not read before, record by record.
template <typename Handler>
void read_part(OpenPackage& package, std::string const& part, Handler handler) {
  if (!package.is_unread(part)) {
    return;
  }
  XlsbRecords records(package.context(), [&handler](std::uint32_t type, std::string_view body) {
    handler(static_cast<Record>(type), XlsbFields(body));
  });
  package.read_once(part, [&records](std::string_view bytes) { return records.feed(bytes); });
  if (!package.context().ended()) {
    records.finish();
  }
}

struct Sheet {
  std::string name;
  std::string relation;
};

class WorkbookReader {
 public:
  WorkbookReader(OpenPackage& package, TextFlow& flow)
      : package_(package), flow_(flow), styles_(flow.context()), strings_(flow.context()) {}

  void read(std::string const& part) {
    read_part(package_, part,
              [this](Record record, XlsbFields fields) { take_workbook_record(record, fields); });
    auto const relationships = package_.relationships(part);
    for (auto const& relationship : relationships) {
      if (relationship.type == "styles") {
        read_styles(relationship.target);
      } else if (relationship.type == "sharedStrings") {
        read_strings(relationship.target);
      }
    }
    RelationshipsById const by_id(relationships);
    for (auto const& sheet : sheets_) {
      flow_.context().count_pages(1);
      flow_.line(Orlec::ParseTextType_main, sheet.name);
      auto const* const target = by_id.find(sheet.relation);
      if (target == nullptr) {
        flow_.context().note(Orlec::ParseOutcome::damaged, "a sheet is missing");
      } else if (!target->external && package_.expect(target->target)) {
        read_sheet(target->target);
      }
      if (!flow_.context().keep_going()) {
        return;
      }
    }
  }

 private:
  void take_workbook_record(Record record, XlsbFields& fields);
  void read_styles(std::string const& part);
  void read_strings(std::string const& part);
  void read_sheet(std::string const& part);
  void read_comments(std::string const& sheet_part);

  void take_sheet_record(Record record, XlsbFields& fields);
  std::string cell_text(Record record, XlsbFields& fields, std::uint32_t style);
  void take_cell(Record record, XlsbFields& fields);

  OpenPackage& package_;
  TextFlow& flow_;
  CellStyles styles_;
  SharedStrings strings_;
  std::vector<Sheet> sheets_;
};

void WorkbookReader::take_workbook_record(Record record, XlsbFields& fields) {
  constexpr std::uint32_t flag_from_1904 = 1;
  if (record == Record::workbook_properties) {
    styles_.count_from_1904((fields.double_word() & flag_from_1904) != 0);
  } else if (record == Record::sheet) {
    fields.skip(8);
    Sheet sheet;
    sheet.relation = fields.string();
    sheet.name = fields.string();
    if (flow_.context().charge_memory(sizeof sheet + sheet.name.size() + sheet.relation.size())) {
      sheets_.push_back(std::move(sheet));
    }
  }
}

void WorkbookReader::read_styles(std::string const& part) {
  bool in_cell_styles = false;
  read_part(package_, part, [&](Record record, XlsbFields fields) {
    if (record == Record::begin_cell_styles || record == Record::end_cell_styles) {
      in_cell_styles = record == Record::begin_cell_styles;
    } else if (record == Record::format) {
      int const number = fields.word();
      styles_.add_format(number, fields.string());
    } else if (record == Record::style && in_cell_styles) {
      fields.skip(2);
      styles_.add_style(fields.word());
    }
  });
}

void WorkbookReader::read_strings(std::string const& part) {
  if (auto const index = package_.container().find(part)) {
    strings_.expect(package_.container().stated_size(*index));
  }
  read_part(package_, part, [this](Record record, XlsbFields fields) {
    if (record == Record::shared_string) {
      strings_.next();
      strings_.append(fields.rich_string());
    }
  });
}

void WorkbookReader::read_sheet(std::string const& part) {
  if (!package_.is_unread(part)) {
    return;
  }
  read_part(package_, part,
            [this](Record record, XlsbFields fields) { take_sheet_record(record, fields); });
  flow_.separate(Orlec::ParseTextType_main, '\n');
  read_comments(part);
  read_beside_sheet(package_, part, flow_);
}

// They are no XML here, as all else beside a sheet is.
void WorkbookReader::read_comments(std::string const& sheet_part) {
  for (auto const& relationship : package_.relationships(sheet_part)) {
    if (relationship.type == "comments" && !relationship.external) {
      read_part(package_, relationship.target, [this](Record record, XlsbFields fields) {
        if (record == Record::comment_text) {
          flow_.line(Orlec::ParseTextType_comment, fields.rich_string());
        }
      });
    }
  }
}

void WorkbookReader::take_sheet_record(Record record, XlsbFields& fields) {
  if (record == Record::row) {
    flow_.separate(Orlec::ParseTextType_main, '\n');
  } else if (record == Record::headers) {
    fields.skip(2);
    while (!fields.at_end()) {
      flow_.line(Orlec::ParseTextType_hf, header_text(fields.string()));
    }
  } else {
    take_cell(record, fields);
  }
}

void WorkbookReader::take_cell(Record record, XlsbFields& fields) {
  constexpr std::uint32_t style_mask = 0xffffff;
  bool const has_column = (record >= Record::packed_number && record <= Record::formula_error) ||
                          record == Record::rich_text;
  bool const is_next = record >= Record::next_packed_number && record <= Record::next_shared_text;
  if (!has_column && !is_next) {
    return;
  }
  fields.skip(has_column ? 4 : 0);
  auto const style = fields.double_word() & style_mask;
  flow_.text(Orlec::ParseTextType_main, cell_text(record, fields, style));
  flow_.separate(Orlec::ParseTextType_main, '\t');
}

std::string WorkbookReader::cell_text(Record record, XlsbFields& fields, std::uint32_t style) {
  switch (record) {
    case Record::packed_number:
    case Record::next_packed_number:
      return styles_.text(unpack_number(fields.double_word()), style);
    case Record::number:
    case Record::next_number:
    case Record::formula_number:
      return styles_.text(fields.floating(), style);
    case Record::error:
    case Record::next_error:
    case Record::formula_error:
      return std::string(error_text(fields.byte()));
    case Record::logical:
    case Record::next_logical:
    case Record::formula_logical:
      return fields.byte() != 0 ? "TRUE" : "FALSE";
    case Record::shared_text:
    case Record::next_shared_text:
      return std::string(strings_.get(fields.double_word()));
    case Record::rich_text:
      return fields.rich_string();
    default:
      return fields.string();
  }
}

}  // namespace

void read_xlsb(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
               ReadContext& context) {
  OpenPackage package(reader, context);
  if (!package.container().is_open()) {
    return;
  }
  auto const part = package.main_part();
  if (context.ended()) {
    return;
  }
  TextFlow flow(context);
  WorkbookReader(package, flow).read(part);
  read_package_properties(package, flow);
  package.read_embedded_parts();
}

}  // namespace morvakit
