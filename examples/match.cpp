// Decides about documents as they come, as an agent does.
//
//     match BOX_ID < LIST
//
// LIST has one path a line; each is answered with the class of the box that the document belongs
// to. A document may have been written by an attacker, so it is read in a worker process that can
// reach nothing but that file: one that crashes its reader, hangs in it or takes it over costs its
// own answer.
#include <cstdio>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <morvaai.h>

namespace {

char const* const no_class = "(no class)";
char const* const unreadable = "(cannot be read)";

bool read_words(HString const& path, HFeatureNode& words) {
  Orlec::IFile file(path, false);
  Orlec::TextLineCallback text;
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&file, false));
  if (parser == nullptr) {
    return false;
  }
  parser->SetMask(1);
  parser->SetCallBack(&text, false);
  return parser->InitFile() && HFileFeature::get_file_feature(parser.get(), words);
}

// The answer for one document, in a worker.
std::string decide(HString const& path, HClusterBoxLocalNode const& box) {
  HFeatureNode words;
  if (!read_words(path, words)) {
    return unreadable;
  }
  HString name;
  bool const is_member =
      HFileMatchClassifyMgr::pins()->match(words, box.vt_class_id, box.str_box_id, name);
  return is_member ? morvabs::to_utf8(name.get_ws()) : no_class;
}

// All that a worker can rightly answer. It may be the document's by then: nothing else is believed.
std::set<std::string> possible_answers(QXPPolicyMorvaClustBox const& box) {
  std::set<std::string> answers = {no_class, unreadable};
  for (QXPKMeansNode const& node : box.vt_kmeans_node) {
    answers.insert(morvabs::to_utf8(node.str_class_name.get_ws()));
  }
  for (QXPDBScanNode const& node : box.vt_dbscan_node) {
    answers.insert(morvabs::to_utf8(node.str_class_name.get_ws()));
  }
  return answers;
}

}  // namespace

int main(int argc, char** argv) {
  HClusterBoxLocalNode box;
  box.str_box_id = argc == 2 ? morvabs::from_path(argv[1]) : HString();
  HFileClusterBoxIni::read_local_box_node(box.str_box_id, box);
  QXPPolicyMorvaClustBox const* const content =
      HFileClusterBoxMgr::pins()->find_box(box.str_box_id);
  if (content == nullptr || HJieba::pins()->Init() != 0) {
    std::cerr << "usage: match BOX_ID < LIST, with an installed box and dictionary\n";
    return 2;
  }
  std::set<std::string> const answers = possible_answers(*content);

  // What all workers need is loaded here, once, and theirs from the fork on: the dictionary above,
  // and the box, which being asked about an empty document makes ready.
  HString nothing;
  HFileMatchClassifyMgr::pins()->match(HFeatureNode(), box.vt_class_id, box.str_box_id, nothing);
  morvabs::WorkerPool pool;
  pool.readable_folders = {Orlec::LocateMgr::pins()->get_dict_path(false)};

  // One document at a time, as they come; who has many at once hands them over together, with
  // `jobs`. Names of files are shown as they are here: on a terminal they are to be made harmless
  // first.
  for (std::string line; std::getline(std::cin, line);) {
    std::vector<HString> const file = {morvabs::from_path(line)};
    bool const is_asked = pool.run(
        file, [&](std::size_t i) { return decide(file[i], box); },
        [&](std::size_t, morvabs::WorkerPool::Outcome const& outcome) {
          bool const is_answer = outcome.result && answers.contains(*outcome.result);
          std::cout << line << ": " << (is_answer ? *outcome.result : unreadable) << std::endl;
        });
    if (!is_asked) {
      std::perror("no worker can be started");
      return 2;
    }
  }
}
