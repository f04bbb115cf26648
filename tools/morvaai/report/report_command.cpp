#include <optional>
#include <string>

#include "boxes/box_store.h"

#include "command_line/commands.h"
#include "exit_status.h"
#include "report/report_classes.h"
#include "report/report_page.h"
#include "terminal/output.h"
#include "terminal/progress.h"

namespace tool {

namespace {

// The box of that id, or else the box file of that name; the result says why there is none.
BoxStore::Problem find(HString const& name, ClassReport::Box& where) {
  if (!BoxStore::refuse_name(name) && BoxStore::has(name)) {
    where = {name, BoxStore::file_of(name).value_or(HString())};
    return std::nullopt;
  }
  if (HFile::IsFileExistFile(name)) {
    where = {name.get_short_name_no_suffix(), name};
    return std::nullopt;
  }
  return "there is no box " + printable(name) +
         ", and no such file: morvaai box list shows the boxes";
}

}  // namespace

int run_report(ReportOptions const& options) {
  ClassReport::Box where;
  if (auto const problem = find(morvabs::from_path(options.box), where)) {
    complain(*problem);
    return some_failed;
  }
  HString const output =
      options.output ? morvabs::from_path(*options.output) : where.id + HString(L".html");
  bool const is_printed = output == L"-";
  if (auto const refused = is_printed ? refuse_any_report() : refuse_report(output)) {
    complain(*refused);
    return some_failed;
  }
  Progress const progress("making the report");
  QXPPolicyMorvaClustBox box;
  if (auto const problem = BoxStore::read(where.file, box)) {
    complain(*problem);
    return some_failed;
  }
  nlohmann::ordered_json const data = report_of_box(where, box).as_json();
  if (is_printed) {
    return print_report(data) ? all_done : some_failed;
  }
  if (auto const problem = write_report(output, data)) {
    complain(*problem);
    return some_failed;
  }
  return write_output("report: " + printable(output) + "\n") ? all_done : some_failed;
}

}  // namespace tool
