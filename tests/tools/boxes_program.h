#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/HString.h"
#include "host/utf8.h"

#include "support/temporary_directory.h"
#include "tools/program.h"

namespace test {

inline std::string utf8_of(HString const& text) {
  return morvabs::to_utf8(text.get_ws());
}

/// Tests that run the program with boxes and working files of their own.
class BoxesProgram : public Program {
 protected:
  static constexpr char const* harbour =
      "Cranes lift containers from ships. Pilots steer ships into the harbour. Cranes of the "
      "harbour lift containers onto trains. Ships leave the harbour with containers, and pilots "
      "leave ships. ";
  static constexpr char const* kitchen =
      "Onions fry in butter. Flour thickens the sauce. Butter and flour make dough, and onions "
      "with butter make sauce. Dough rests in the kitchen, sauce simmers in the kitchen with "
      "onions. ";
  static constexpr char const* orbit =
      "Satellites circle planets. Telescopes watch planets and galaxies. Galaxies drift while "
      "satellites send pictures, and telescopes send pictures of planets. ";

  /// A folder with two texts about a harbour in one sub-folder, and two about a kitchen in another.
  std::string samples() const {
    for (char const* folder : {"samples/harbour", "samples/kitchen"}) {
      std::filesystem::create_directories(path(folder));
    }
    write("samples/harbour/a.txt", std::string(harbour) + "Storms delay ships.");
    write("samples/harbour/b.txt", std::string(harbour) + "Trains carry containers.");
    write("samples/kitchen/c.txt", std::string(kitchen) + "Garlic burns quickly.");
    write("samples/kitchen/d.txt", std::string(kitchen) + "Dough needs butter.");
    return path("samples");
  }
  /// Learns the two folders.
  void learn(std::string const& id, std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"learn", samples(), "--by-folder", "--box", id});
    Finished const finished = run(more);
    EXPECT_EQ(finished.status, 0) << finished.errors;
  }

  nlohmann::json json_of(std::vector<std::string> arguments) const {
    arguments.emplace_back("--json");
    return nlohmann::json::parse(run(arguments).output);
  }
  std::string box_file(char const* name) const { return (boxes.path() / name).string(); }
  std::string index() const { return boxes.read("box.ini"); }
  static std::vector<std::string> names_in(TemporaryDirectory const& directory) {
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::recursive_directory_iterator(directory.path())) {
      names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  TemporaryDirectory boxes;
  TemporaryDirectory work;

 private:
  EnvironmentVariable box_path_{"MORVA_BOX_PATH", boxes.path().string()};
  EnvironmentVariable run_path_{"MORVA_RUN_PATH", work.path().string()};
};

}  // namespace test
