#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <sstream>
#include <thread>

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <unistd.h>

#include "commands.h"

namespace {

// CLI11's own checks let infinities and what is no number pass.
std::string check_positive(std::string const& text) {
  return HString(text.c_str()).to_double() > 0.0 ? std::string() : "not a number above 0: " + text;
}

void add_run_options(CLI::App& command, tool::RunOptions& options,
                     char const* json_help = "Print one JSON object a line for each file") {
  options.jobs = std::max(1U, std::thread::hardware_concurrency());
  command
      .add_option("FILE", options.inputs,
                  "Files, folders, or - for a list of paths on standard input")
      ->required();
  command.add_flag("--json", options.json, json_help);
  command
      .add_option("-j,--jobs", options.jobs,
                  "Worker processes; the number of processors if not given")
      ->check(CLI::Range(std::size_t{1}, std::size_t{256}));
}

CLI::Option* add_method_option(CLI::App& command, tool::MethodOptions& options,
                               std::vector<std::string> const& names) {
  return command.add_option("-m,--method", options.method, "How to cluster")
      ->check(CLI::IsMember(names));
}

// The parameters of the methods that learning has too.
void add_parameter_options(CLI::App& command, tool::MethodOptions& options) {
  CLI::Validator const positive(&check_positive, "NUMBER", "positive");
  int constexpr most = 1000000;
  command.add_option("-k", options.k, "kmeans, kmedians: number of classes")
      ->check(CLI::Range(1, most));
  command.add_flag("--canopy-seeds", options.canopy_seeds,
                   "kmeans, kmedians: begin with canopies, not with the files farthest from each "
                   "other; without -k, their number is the number of classes");
  command
      .add_option("--eps", options.eps,
                  "dbscan: radius of a neighbourhood; auto, estimated from the files, if not given")
      ->check(positive | CLI::IsMember({"auto"}));
  command
      .add_option("--minpts", options.minpts,
                  "dbscan: files in a neighbourhood, its center included, that make a class; " +
                      std::to_string(tool::default_minpts) + " if not given")
      ->check(CLI::Range(1, most));
}

void add_cluster_options(CLI::App& command, tool::ClusterOptions& options) {
  add_run_options(command, options, "Print one JSON object");
  add_method_option(command, options.how, tool::cluster_method_names())->required();
  add_parameter_options(command, options.how);
  CLI::Validator const positive(&check_positive, "NUMBER", "positive");
  command
      .add_option("--t2", options.how.t2,
                  "canopy: radius of a class; the mean distance of all pairs if not given")
      ->check(positive);
  command
      .add_option("--t1", options.how.t1,
                  "canopy: not below T2, and without effect otherwise; as T2 if not given")
      ->check(positive);
  command.add_flag("--dna", options.dna,
                   "By the fingerprints of the files instead of their 100 strongest words");
  command.add_option("-o,--output", options.output_folder,
                     "Folder for a list of the files of each class; made if missing. Lists that "
                     "an earlier run left there are no input");
}

void add_learn_options(CLI::App& command, tool::LearnOptions& options) {
  add_run_options(command, options, "Print one JSON object");
  command
      .add_option("--box", options.box_id,
                  "Name of the new box, without slashes and dots; its file has this name too")
      ->required();
  command.add_flag("--force", options.force, "Replace a box of that name");
  command.add_flag("--by-folder", options.by_folder,
                   "Each sub-folder is a class and gives it its name, instead of clustering");
  options.how.method = "kmeans";
  add_method_option(command, options.how, {"kmeans", "dbscan"})
      ->description(
          "Kind of classes, and how they are found: kmeans, which is taken if not given, "
          "keeps center and radius of a class, dbscan its files");
  add_parameter_options(command, options.how);
  command.footer(
      "The box is installed in the directory of boxes and entered in its index.\n"
      "Examples:\n"
      "  morvaai learn samples/ --box company --by-folder\n"
      "  morvaai learn samples/ --box company --by-folder -m dbscan --eps 1.5 --minpts 1\n"
      "  morvaai learn inbox/ --box found -k 8");
}

void add_match_options(CLI::App& command, tool::MatchOptions& options) {
  add_run_options(command, options);
  command
      .add_option("--box", options.boxes, "A box to ask; all boxes of this machine if not given")
      ->allow_extra_args(false);
  command
      .add_option("--class", options.classes,
                  "Id of a class to ask about, or its name; all classes of the boxes if not given")
      ->allow_extra_args(false);
  command.footer(
      "Exit status: 0 some file has a class, 1 none has, 2 trouble.\n"
      "Examples:\n"
      "  morvaai match inbox/\n"
      "  morvaai match --box company --class contracts --class offers *.docx\n"
      "  morvaai match --json - < list.txt");
}

// The options of all commands, of which one runs, and the status that it leaves.
struct Commands {
  tool::FeaturesOptions features;
  tool::DnaOptions dna;
  tool::CompareOptions compare;
  tool::TextOptions text;
  tool::RunOptions collect;
  tool::ClusterOptions cluster;
  std::string console_method;
  tool::LearnOptions learn;
  tool::MatchOptions match;
  tool::BoxOptions box;
  tool::BoxAddOptions box_add;
  tool::BoxDumpOptions box_dump;
  bool version_json = false;
  int status = tool::all_done;
};

void add_document_commands(CLI::App& app, Commands& all) {
  CLI::App* command = app.add_subcommand("features", "The words that characterise each file");
  add_run_options(*command, all.features);
  command->add_option("-n,--words", all.features.words, "Number of words, 20 if not given")
      ->check(CLI::Range(1, 100000));
  command->callback([&all] { all.status = tool::run_features(all.features); });

  command = app.add_subcommand("dna", "The fingerprint of each file");
  add_run_options(*command, all.dna);
  command->add_flag("--wide", all.dna.wide, "The wide form, which holds the sum of each bit");
  command->add_flag("--count", all.dna.count, "Also the number of characters that the words cover");
  command->callback([&all] { all.status = tool::run_dna(all.dna); });

  command = app.add_subcommand("compare", "How like two files are, and which words they share");
  command->add_option("FILE1", all.compare.first, "A file")->required();
  command->add_option("FILE2", all.compare.second, "Another file")->required();
  command
      ->add_option("-n,--words", all.compare.words,
                   "Number of shared words to show, 20 if not given")
      ->check(CLI::Range(0, 100000));
  command->add_flag("--json", all.compare.json, "Print one JSON object");
  command->callback([&all] { all.status = tool::run_compare(all.compare); });

  command = app.add_subcommand("text", "The text of each file");
  add_run_options(*command, all.text);
  command->add_option("--kind", all.text.kind, "Kind of text, main if not given")
      ->check(CLI::IsMember(tool::text_kind_names()));
  command->callback([&all] { all.status = tool::run_text(all.text); });

  command = app.add_subcommand("collect", "The records that the agent has of each file");
  add_run_options(*command, all.collect);
  command->callback([&all] { all.status = tool::run_collect(all.collect); });
}

void add_corpus_commands(CLI::App& app, Commands& all) {
  CLI::App* command = app.add_subcommand("cluster", "The classes that files fall into");
  add_cluster_options(*command, all.cluster);
  command->callback([&all] { all.status = tool::run_cluster(all.cluster); });

  command = app.add_subcommand("learn", "Learns classes from files, into a box");
  add_learn_options(*command, all.learn);
  command->callback([&all] { all.status = tool::run_learn(all.learn); });

  command = app.add_subcommand("match", "The class that each file belongs to");
  add_match_options(*command, all.match);
  command->callback([&all] { all.status = tool::run_match(all.match); });

  command = app.add_subcommand("console", "Clusters a folder, asking for what it needs to know");
  command->add_option("METHOD", all.console_method, "canopy, kmeans or dbscan")
      ->required()
      ->check(CLI::IsMember({"canopy", "kmeans", "dbscan"}));
  command->callback([&all] { all.status = tool::run_console(all.console_method); });
}

void add_box_commands(CLI::App& app, Commands& all) {
  CLI::App* const box = app.add_subcommand("box", "Cluster boxes")->require_subcommand(1);
  box->footer(
      "Examples:\n"
      "  morvaai box add company.box\n"
      "  morvaai box verify\n"
      "  morvaai box dump company.box --json");
  auto const add_json = [](CLI::App& command, bool& json) {
    command.add_flag("--json", json, "Print one JSON object a line for each box");
  };
  CLI::App* command = box->add_subcommand("list", "The boxes of this machine");
  add_json(*command, all.box.json);
  command->callback([&all] { all.status = tool::run_box_list(all.box.json); });

  command = box->add_subcommand("show", "A box of this machine, its classes and their words");
  command->add_option("ID", all.box.ids, "Name of the box")->required()->expected(1);
  add_json(*command, all.box.json);
  command->callback([&all] { all.status = tool::run_box_show(all.box); });

  command = box->add_subcommand("add", "Installs a box file");
  command->add_option("FILE", all.box_add.file, "A box file")->required();
  command->add_option("--id", all.box_add.id,
                      "Name of the box, without slashes and dots; that of the file if not given");
  command->add_flag("--force", all.box_add.force, "Replace a box of that name");
  add_json(*command, all.box_add.json);
  command->callback([&all] { all.status = tool::run_box_add(all.box_add); });

  command = box->add_subcommand("remove", "Removes a box and its file");
  command->add_option("ID", all.box.ids, "Name of the box")->required()->expected(1);
  add_json(*command, all.box.json);
  command->callback([&all] { all.status = tool::run_box_remove(all.box); });

  command = box->add_subcommand("verify", "Compares boxes with the index of them");
  command->add_option("ID", all.box.ids, "Names of boxes; all that there are if not given");
  add_json(*command, all.box.json);
  command->callback([&all] { all.status = tool::run_box_verify(all.box); });

  command = box->add_subcommand("dump", "What a box file holds");
  command->add_option("FILE", all.box_dump.file, "A box file")->required();
  command->add_flag("--json", all.box_dump.json, "Print one JSON object, which tells everything");
  command->callback([&all] { all.status = tool::run_box_dump(all.box_dump); });
}

// `failure` is the status after an exception.
int run(int argc, char** argv, int& failure) {
  CLI::App app{"Words, fingerprints, likeness and classes of documents.", "morvaai"};
  app.require_subcommand(1);
  app.failure_message(CLI::FailureMessage::help);
  app.footer(
      "Exit status: 0 all files done, 1 some failed, 2 wrong use; of match as grep has it.\n"
      "Examples:\n"
      "  morvaai features report.docx -n 10\n"
      "  morvaai dna --json folder/ > dna.jsonl\n"
      "  morvaai compare old.docx new.pdf\n"
      "  morvaai cluster folder/ --method kmeans -k 8 -o classes/\n"
      "  morvaai learn samples/ --box company --by-folder\n"
      "  morvaai match inbox/ --box company\n"
      "  find . -name '*.pdf' | morvaai text -");
  Commands all;
  add_document_commands(app, all);
  add_corpus_commands(app, all);
  add_box_commands(app, all);
  CLI::App* const command = app.add_subcommand("version", "Versions, and where data is looked for");
  command->add_flag("--json", all.version_json, "Print one JSON object");
  command->callback([&all] { all.status = tool::run_version(all.version_json); });
  try {
    app.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    std::ostringstream help;
    bool const is_wanted = app.exit(error, help) == 0;
    if (!tool::write_output(help.str())) {
      return tool::some_failed;
    }
    return is_wanted ? tool::all_done : tool::wrong_use;
  } catch (...) {
    // There, 1 says that no file has a class.
    failure = app.got_subcommand("match") ? tool::wrong_use : failure;
    throw;
  }
  return all.status;
}

// Where standard input, output or error is closed, the next file that is opened would take its
// place, and what is printed would go into that file. What stands there instead can be neither read
// nor written, as a closed one.
void keep_standard_places() {
  for (int const place : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(place, F_GETFD) < 0) {
      open("/dev/null", place == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  keep_standard_places();
  // Every problem has its own line on standard error; the library's log is for those who ask for
  // it.
  if (std::getenv("MORVA_LOG_LEVEL") == nullptr) {
    HFileLog::ins()->mi_level = 0;
  }
  int failure = tool::some_failed;
  try {
    return run(argc, argv, failure);
  } catch (std::exception const& error) {
    std::fprintf(stderr, "morvaai: %s\n", error.what());
    return failure;
  }
}
