#include "command_line/command_line.h"
#include "command_line/help.h"

namespace tool {

namespace {

constexpr char const* parameter_group = "Parameters of the methods";

CLI::App* add_command(CLI::App& app, char const* name, char const* about) {
  CLI::App* const command = app.add_subcommand(name, about);
  command->group(class_group);
  return command;
}

// CLI11's own checks let infinities and what is no number pass.
std::string check_positive(std::string const& text) {
  return HString(text.c_str()).to_double() > 0.0 ? std::string() : "not a number above 0: " + text;
}

CLI::Validator positive() {
  return {&check_positive, "NUMBER", "positive"};
}

CLI::Option* add_method_option(CLI::App& command, MethodOptions& options, char const* about,
                               std::vector<std::string> const& names) {
  return command.add_option("-m,--method", options.method, about)
      ->option_text("METHOD")
      ->check(CLI::IsMember(names));
}

// The parameters of the methods that learning has too.
void add_parameter_options(CLI::App& command, MethodOptions& options, std::string const& by_k) {
  int constexpr most = 1000000;
  command.add_option("-k", options.k, by_k + ": number of classes")
      ->option_text("N")
      ->check(CLI::Range(1, most))
      ->group(parameter_group);
  command
      .add_flag("--canopy-seeds", options.canopy_seeds,
                by_k + ": begin with canopies; sets -k if not given")
      ->group(parameter_group);
  command.add_option("--eps", options.eps, "dbscan: neighbourhood's radius or auto")
      ->option_text("RADIUS")
      ->default_str("auto")
      ->check(positive() | CLI::IsMember({"auto"}))
      ->group(parameter_group);
  command.add_option("--minpts", options.minpts, "dbscan: files that make a neighbourhood")
      ->option_text("N")
      ->default_str(std::to_string(default_minpts))
      ->check(CLI::Range(1, most))
      ->group(parameter_group);
}

void add_canopy_options(CLI::App& command, MethodOptions& options) {
  command.add_option("--t2", options.t2, "canopy: radius of a class")
      ->option_text("RADIUS")
      ->default_str("mean distance")
      ->check(positive())
      ->group(parameter_group);
  command.add_option("--t1", options.t1, "canopy: no effect, but not below T2")
      ->option_text("RADIUS")
      ->default_str("T2")
      ->check(positive())
      ->group(parameter_group);
}

std::string check_threshold(std::string const& text) {
  double const percent = HString(text.c_str()).to_double();
  return percent > 0.0 && percent <= 100.0 ? std::string()
                                           : "not a number above 0 and up to 100: " + text;
}

void add_similar(CLI::App& app, Commands& all) {
  CLI::App& command = *add_command(
      app, "similar", "Groups of files that are nearly the same, by their fingerprints");
  add_run_options(command, all.similar, "Print one JSON object; with --pairs one a line");
  command.get_option("FILE")->required(false);
  command
      .add_option("-t,--threshold", all.similar.threshold,
                  "Percentage of the bits in which fingerprints agree, at least")
      ->option_text("PERCENT")
      ->default_str("90")
      ->check(CLI::Validator(&check_threshold, "NUMBER", "percentage"));
  command.add_flag("--pairs", all.similar.pairs, "Print each pair instead of groups");
  command
      .add_option("--from", all.similar.lists,
                  "Also compare the fingerprints of a shard, behind which more may follow, or of a "
                  "file that `morvaai dna --json` has written; - for standard input")
      ->option_text("SHARD|LIST")
      ->allow_extra_args(false);
  set_examples(command,
               {"morvaai similar samples/", "morvaai dna samples/ --json > samples.jsonl",
                "morvaai similar --from samples.jsonl --threshold 80 --pairs"},
               "Unrelated texts agree in about 50 % of the bits.");
  command.callback([&all] { all.status = run_similar(all.similar); });
}

void add_cluster(CLI::App& app, Commands& all) {
  CLI::App& command = *add_command(app, "cluster", "The classes that files fall into");
  add_run_options(command, all.cluster, "Print one JSON object");
  add_method_option(command, all.cluster.how, "How to cluster", cluster_method_names())->required();
  command.add_flag("--dna", all.cluster.dna, "Compare fingerprints, not the 100 strongest words");
  command
      .add_option("-o,--output", all.cluster.output_folder,
                  "Folder for a list of files of each class")
      ->option_text("FOLDER");
  add_parameter_options(command, all.cluster.how, "kmeans, kmedians");
  add_canopy_options(command, all.cluster.how);
  set_examples(command, {"morvaai cluster samples/corpus/learn -m dbscan --eps 1.8",
                         "morvaai cluster samples/corpus/learn -m kmeans -k 9 -o classes/"});
  command.callback([&all] { all.status = run_cluster(all.cluster); });
}

void add_report_option(CLI::App& command, std::optional<std::string>& file, char const* about) {
  command.add_option("--report", file, about)->option_text("FILE");
}

void add_suggest(CLI::App& app, Commands& all) {
  CLI::App& command =
      *add_command(app, "suggest", "Parameters for learn and cluster, chosen by the files");
  add_run_options(command, all.suggest, "Print one JSON object");
  command.add_flag("--by-folder", all.suggest.by_folder,
                   "Each sub-folder is a class; boxes are judged by files held out of them");
  command
      .add_option("--sample", all.suggest.sample, "Files to look at, of more evenly spaced ones")
      ->option_text("N")
      ->default_str(std::to_string(all.suggest.sample))
      ->check(CLI::Range(4, 5000));
  set_examples(command, {"morvaai suggest samples/corpus/learn --by-folder",
                         "morvaai suggest samples/corpus/learn"});
  command.callback([&all] { all.status = run_suggest(all.suggest); });
}

CLI::Option& add_output_option(CLI::App& command, std::string& file) {
  return *command.add_option("-o,--output", file, "The shard to write")
              ->option_text("SHARD")
              ->required();
}

void add_extract(CLI::App& app, Commands& all) {
  CLI::App& command =
      *add_command(app, "extract", "Words and fingerprints of files, into a shard for learn");
  add_run_options(command, all.extract, "Print one JSON object");
  add_output_option(command, all.extract.output);
  command
      .add_option("--part", all.extract.part,
                  "Read only the I-th of N parts of the files, for N runs that share the work")
      ->option_text("I/N")
      ->default_str("1/1");
  set_examples(command,
               {"morvaai extract samples/ -o samples.shard",
                "morvaai extract samples/ --part 1/4 -o part1.shard"},
               "An interrupted run leaves SHARD.part: the same command goes on from there.");
  command.callback([&all] { all.status = run_extract(all.extract); });
}

void add_merge(CLI::App& app, Commands& all) {
  CLI::App& command = *add_command(app, "merge", "One shard from several");
  take_any_number(*command.add_option("SHARD", all.merge.shards, "Shards")).required();
  add_output_option(command, all.merge.output);
  add_json_option(command, all.merge.json);
  set_examples(command, {"morvaai merge part1.shard part2.shard -o all.shard"});
  command.callback([&all] { all.status = run_merge(all.merge); });
}

void add_learn(CLI::App& app, Commands& all) {
  CLI::App& command = *add_command(app, "learn", "Learns classes from sample files, into a box");
  add_run_options(command, all.learn, "Print one JSON object");
  command.get_option("FILE")->required(false);
  command
      .add_option("--from", all.learn.shards, "Shards that morvaai extract made; more may follow")
      ->option_text("SHARD")
      ->allow_extra_args(false);
  command.add_flag("--mpi", all.learn.mpi, "Share the work: mpirun starts several of this command");
  command.add_option("--box", all.learn.box_id, "Name of the new box, without slashes and dots")
      ->option_text("BOX")
      ->required();
  command.add_flag("--force", all.learn.force, "Replace a box of that name");
  command.add_flag("--by-folder", all.learn.by_folder, "Each sub-folder is a class of that name");
  all.learn.how.method = "kmeans";
  add_method_option(command, all.learn.how, "Method of the box", {"kmeans", "dbscan"})
      ->default_str("kmeans");
  add_parameter_options(command, all.learn.how, "kmeans");
  add_report_option(command, all.learn.report, "Also write a page for the browser");
  set_examples(command, {"morvaai learn samples/corpus/learn --by-folder --box demo",
                         "morvaai learn samples/corpus/learn --box found -m dbscan --eps 1.8"});
  command.callback([&all] { all.status = run_learn(all.learn); });
}

void add_match(CLI::App& app, Commands& all) {
  CLI::App& command = *add_command(app, "match", "The class that each file belongs to, and why");
  add_run_options(command, all.match);
  command.add_option("--box", all.match.boxes, "A box to ask; may be repeated")
      ->option_text("BOX")
      ->default_str("all boxes")
      ->allow_extra_args(false);
  command
      .add_option("--class", all.match.classes,
                  "Name or id of a class to ask about; may be repeated")
      ->option_text("CLASS")
      ->default_str("all classes")
      ->allow_extra_args(false);
  add_report_option(command, all.match.report, "Also write a page for the browser");
  set_examples(command,
               {"morvaai match samples/corpus/decide --box demo --report match.html",
                "morvaai match samples/corpus/decide --box demo --class invoices --json"},
               "Exit status: 0 some file has a class, 1 none has, 2 trouble.");
  command.callback([&all] { all.status = run_match(all.match); });
}

void add_report(CLI::App& app, Commands& all) {
  CLI::App& command =
      *add_command(app, "report", "Writes a page for the browser about the classes of a box");
  command.add_option("BOX|FILE", all.report.box, "Name of a box, or a box file")->required();
  command.add_option("-o,--output", all.report.output, "File for the page; - for standard output")
      ->option_text("FILE")
      ->default_str("BOX.html");
  set_examples(command, {"morvaai report demo -o demo.html"});
  command.callback([&all] { all.status = run_report(all.report); });
}

void add_console(CLI::App& app, Commands& all) {
  CLI::App& command =
      *add_command(app, "console", "Clusters a folder, asking for what it needs to know");
  command.add_option("METHOD", all.console_method, "How to cluster")
      ->required()
      ->check(CLI::IsMember({"canopy", "kmeans", "dbscan"}));
  set_examples(command, {"morvaai console kmeans"});
  command.callback([&all] { all.status = run_console(all.console_method); });
}

}  // namespace

void add_corpus_commands(CLI::App& app, Commands& all) {
  add_similar(app, all);
  add_cluster(app, all);
  add_suggest(app, all);
  add_extract(app, all);
  add_merge(app, all);
  add_learn(app, all);
  add_match(app, all);
  add_report(app, all);
  add_console(app, all);
}

}  // namespace tool
