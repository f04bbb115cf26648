#include "command_line/command_line.h"

#include <algorithm>
#include <cstddef>
#include <thread>

#include "command_line/help.h"
#include "documents/run_on_files.h"
#include "terminal/terminal.h"
#include "version_number.h"

namespace tool {

namespace {

// For all commands, before or behind their names.
void add_color_option(CLI::App& app) {
  app.fallthrough();
  auto const choose = [](std::string const& when) {
    choose_colors(when == "always"  ? ColorChoice::always
                  : when == "never" ? ColorChoice::never
                                    : ColorChoice::automatic);
  };
  app.add_option_function<std::string>("--color", choose, "Colours")
      ->option_text("WHEN")
      ->default_str("auto")
      ->check(CLI::IsMember({"auto", "always", "never"}))
      ->group(common_group);
}

}  // namespace

void add_commands(CLI::App& app, Commands& all) {
  app.description("Words, fingerprints, likeness and classes of documents");
  app.formatter(make_help_formatter());
  app.set_help_flag("-h,--help", "Show this help; man morvaai tells more");
  app.set_version_flag("-V,--version", &version_number, "Show the version")->group(common_group);
  app.require_subcommand(1);
  add_color_option(app);
  add_document_commands(app, all);
  add_corpus_commands(app, all);
  add_box_commands(app, all);
  add_program_commands(app, all);
  set_examples(app, {"morvaai learn samples/corpus/learn --by-folder --box demo"});
}

CLI::Option& take_any_number(CLI::Option& argument) {
  constexpr int most = CLI::detail::expected_max_vector_size - 1;
  // What may have extra values has them in the form of a list too, and what is expected to be more
  // takes arguments until then. That it was less is seen only where not all are taken.
  argument.expected(most)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false);
  return argument;
}

void add_run_options(CLI::App& command, RunOptions& options, char const* json_help) {
  options.jobs = std::max(1U, std::thread::hardware_concurrency());
  take_any_number(*command.add_option("FILE", options.inputs,
                                      "Files, folders, or - for paths listed on standard input"))
      .required();
  command.add_option("-j,--jobs", options.jobs, "Worker processes")
      ->option_text("N")
      ->default_str("one for each processor")
      ->check(CLI::Range(std::size_t{1}, std::size_t{256}))
      ->group(common_group);
  add_json_option(command, options.json, json_help);
}

void add_json_option(CLI::App& command, bool& is_wanted, char const* about) {
  command.add_flag("--json", is_wanted, about)->group(common_group);
}

}  // namespace tool
