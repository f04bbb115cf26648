#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "boxes/box_store.h"

#include "classes/corpus.h"
#include "classes/decision.h"
#include "command_line/commands.h"
#include "documents/failure.h"
#include "documents/inputs.h"
#include "exit_status.h"
#include "report/report_match.h"
#include "report/report_page.h"
#include "terminal/output.h"
#include "terminal/progress.h"
#include "terminal/style.h"

namespace tool {

namespace {

// As grep has it.
enum Outcome : int { some_matched = 0, none_matched = 1, trouble = 2 };

// A box that is asked, and the classes of it that are.
struct Question {
  HString box_id;
  std::vector<HString> class_ids;
  QXPPolicyMorvaClustBox const* box;
  Explainer explainer;
};

// What is to be asked; `problem` tells why it cannot be.
struct Questions {
  std::vector<Question> all;
  std::string problem;
  // A box that cannot be asked, where others can.
  bool is_partial = false;
};

std::vector<HString> from_arguments(std::vector<std::string> const& arguments) {
  std::vector<HString> texts;
  texts.reserve(arguments.size());
  for (std::string const& argument : arguments) {
    texts.push_back(morvabs::from_path(argument));
  }
  return texts;
}

bool contains(std::vector<HString> const& list, HString const& text) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

// The box, out of the cache that the classifiers use too; nothing, with a line that says why, where
// it cannot be read.
QXPPolicyMorvaClustBox const* load(HString const& box_id) {
  if (auto const refused = BoxStore::refuse_name(box_id)) {
    complain(*refused);
    return nullptr;
  }
  auto const file = BoxStore::file_of(box_id);
  if (!file || !HFile::IsFileExist(*file)) {
    complain("box " + printable(box_id) +
             ": its file is missing; morvaai box add installs it again, box remove strikes it out");
    return nullptr;
  }
  QXPPolicyMorvaClustBox const* const box = HFileClusterBoxMgr::pins()->find_box(box_id);
  // What cannot be read is in the cache as an empty box.
  QXPPolicyMorvaClustBox again;
  if (box == nullptr || !box->vt_words.empty()) {
    return box;
  }
  if (auto const problem = BoxStore::read(*file, again)) {
    complain(*problem);
    return nullptr;
  }
  return box;
}

Questions ask_boxes(std::vector<HString> const& box_ids) {
  Questions questions;
  if (auto const unread = BoxStore::refuse_index()) {
    questions.problem = *unread;
    return questions;
  }
  std::vector<HClusterBoxLocalNode> entries;
  HFileClusterBoxMgr::pins()->get_local_box(entries);
  for (HString const& id : box_ids) {
    if (auto const refused = BoxStore::refuse_name(id)) {
      questions.problem = *refused;
      return questions;
    }
    if (std::none_of(entries.begin(), entries.end(),
                     [&](HClusterBoxLocalNode const& entry) { return entry.str_box_id == id; })) {
      questions.problem = BoxStore::no_such_box(id);
      return questions;
    }
  }
  for (HClusterBoxLocalNode const& entry : entries) {
    if (!box_ids.empty() && !contains(box_ids, entry.str_box_id)) {
      continue;
    }
    if (QXPPolicyMorvaClustBox const* const box = load(entry.str_box_id)) {
      questions.all.push_back(
          {entry.str_box_id, entry.vt_class_id, box, Explainer(entry.str_box_id, *box)});
    } else {
      questions.is_partial = true;
    }
  }
  if (questions.all.empty()) {
    questions.problem = questions.is_partial
                            ? "none of the boxes can be asked"
                            : "there are no boxes to ask; morvaai learn makes one, morvaai box add "
                              "installs one";
  }
  return questions;
}

std::vector<HString> ids_by_name(Question const& question, HString const& name) {
  std::vector<HString> ids;
  auto const add = [&](auto const& classes) {
    for (auto const& node : classes) {
      if (node.str_class_name == name && contains(question.class_ids, node.str_class_id)) {
        ids.push_back(node.str_class_id);
      }
    }
  };
  if (question.box->i_cluster_type == 0) {
    add(question.box->vt_kmeans_node);
  } else {
    add(question.box->vt_dbscan_node);
  }
  return ids;
}

// Adds the classes that an argument names, to `wanted`: those with that id, in whichever boxes,
// else the only one with that name. The result says why there is none.
std::string choose_class(std::vector<Question> const& asked, HString const& text,
                         std::vector<std::vector<HString>>& wanted) {
  bool is_id = false;
  std::vector<std::pair<std::size_t, HString>> named;
  for (std::size_t i = 0; i < asked.size(); ++i) {
    if (contains(asked[i].class_ids, text)) {
      wanted[i].push_back(text);
      is_id = true;
    }
    for (HString const& id : ids_by_name(asked[i], text)) {
      named.emplace_back(i, id);
    }
  }
  if (is_id) {
    return {};
  }
  if (named.empty()) {
    return "there is no class " + printable(text) +
           " in the boxes that are asked; morvaai box show lists those of a box";
  }
  if (named.size() > 1) {
    std::string problem = "there are several classes " + printable(text) + ":";
    for (auto const& [at, id] : named) {
      problem += " " + printable(id) + " in box " + printable(asked[at].box_id) + ",";
    }
    problem.back() = ';';
    return problem + " name one by its id";
  }
  wanted[named.front().first].push_back(named.front().second);
  return {};
}

void keep_classes(std::vector<HString> const& classes, Questions& questions) {
  if (classes.empty()) {
    return;
  }
  std::vector<std::vector<HString>> wanted(questions.all.size());
  for (HString const& text : classes) {
    questions.problem = choose_class(questions.all, text, wanted);
    if (!questions.problem.empty()) {
      return;
    }
  }
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    questions.all[i].class_ids = std::move(wanted[i]);
  }
}

std::optional<Decision> decide(HFeatureNode const& document, std::vector<Question>& asked) {
  for (Question& question : asked) {
    if (auto const id = class_that_takes(document, question.class_ids, question.box_id)) {
      return question.explainer.explain(document, *id);
    }
  }
  return std::nullopt;
}

std::optional<MatchReport> report_on(MatchOptions const& options,
                                     std::vector<Question> const& asked) {
  if (!options.report) {
    return std::nullopt;
  }
  std::vector<MatchReport::Asked> boxes;
  boxes.reserve(asked.size());
  for (Question const& question : asked) {
    boxes.push_back({question.box_id, question.class_ids, question.box});
  }
  return MatchReport(boxes);
}

// Whether the report that is wanted could be written.
bool write_report_of(MatchOptions const& options, std::optional<MatchReport> const& report) {
  Progress const progress("writing the report");
  auto const problem =
      report ? write_report(morvabs::from_path(*options.report), report->as_json()) : std::nullopt;
  if (problem) {
    complain(*problem);
  }
  return !problem;
}

std::string shown(HString const& path, std::optional<Decision> const& decision, bool json) {
  if (decision) {
    return json ? decision->as_json(path) : decision->as_text(path);
  }
  if (!json) {
    return printable(path) + ": " + styled(Role::faint, "none") + "\n";
  }
  return nlohmann::ordered_json{{"file", utf8(path)}, {"class", nullptr}}.dump() + "\n";
}

}  // namespace

int run_match(MatchOptions const& options) {
  Questions questions = ask_boxes(from_arguments(options.boxes));
  if (questions.problem.empty()) {
    keep_classes(from_arguments(options.classes), questions);
  }
  if (questions.problem.empty() && options.report) {
    questions.problem = refuse_report(morvabs::from_path(*options.report)).value_or("");
  }
  if (!questions.problem.empty()) {
    complain(questions.problem);
    return trouble;
  }
  bool const with_dna =
      std::any_of(questions.all.begin(), questions.all.end(),
                  [](Question const& question) { return is_by_fingerprint(*question.box); });
  std::vector<HString> const files = expand_inputs(options.inputs);
  std::optional<MatchReport> report = report_on(options, questions.all);
  bool is_matched = false;
  int const status = read_records(
      files, options.jobs, with_dna, [&](std::size_t index, Extracted const& extracted) {
        HString const& path = files[index];
        if (!extracted.record) {
          if (report) {
            report->add_failure(path, extracted.reason);
          }
          auto const [outcome, reason] = failure_of(extracted.reason);
          return !options.json || write_output(json_failure(path, outcome, reason));
        }
        std::optional<Decision> const decision = decide(*extracted.record, questions.all);
        is_matched = is_matched || decision;
        if (report) {
          report->add(path, *extracted.record, decision);
        }
        std::string const text = shown(path, decision, options.json);
        return options.json ? write_output(text) : show(text);
      });
  bool const is_reported = write_report_of(options, report);
  if (status != all_done || questions.is_partial || !is_reported) {
    return trouble;
  }
  return is_matched ? some_matched : none_matched;
}

}  // namespace tool
