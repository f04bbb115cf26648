#include "command_line.h"

namespace tool {

namespace {

// CLI11's own checks let infinities and what is no number pass.
std::string check_positive(std::string const& text) {
  return HString(text.c_str()).to_double() > 0.0 ? std::string() : "not a number above 0: " + text;
}

CLI::Option* add_method_option(CLI::App& command, MethodOptions& options,
                               std::vector<std::string> const& names) {
  return command.add_option("-m,--method", options.method, "How to cluster")
      ->check(CLI::IsMember(names));
}

// The parameters of the methods that learning has too.
void add_parameter_options(CLI::App& command, MethodOptions& options) {
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
                      std::to_string(default_minpts) + " if not given")
      ->check(CLI::Range(1, most));
}

void add_cluster_options(CLI::App& command, ClusterOptions& options) {
  add_run_options(command, options, "Print one JSON object");
  add_method_option(command, options.how, cluster_method_names())->required();
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

void add_learn_options(CLI::App& command, LearnOptions& options) {
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

void add_match_options(CLI::App& command, MatchOptions& options) {
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

}  // namespace

void add_corpus_commands(CLI::App& app, Commands& all) {
  CLI::App* command = app.add_subcommand("cluster", "The classes that files fall into");
  add_cluster_options(*command, all.cluster);
  command->callback([&all] { all.status = run_cluster(all.cluster); });

  command = app.add_subcommand("learn", "Learns classes from files, into a box");
  add_learn_options(*command, all.learn);
  command->callback([&all] { all.status = run_learn(all.learn); });

  command = app.add_subcommand("match", "The class that each file belongs to");
  add_match_options(*command, all.match);
  command->callback([&all] { all.status = run_match(all.match); });

  command = app.add_subcommand("console", "Clusters a folder, asking for what it needs to know");
  command->add_option("METHOD", all.console_method, "canopy, kmeans or dbscan")
      ->required()
      ->check(CLI::IsMember({"canopy", "kmeans", "dbscan"}));
  command->callback([&all] { all.status = run_console(all.console_method); });
}

}  // namespace tool
