// Learns classes of documents from samples, and installs them on this machine as a box.
//
//     learn FOLDER BOX_ID
//
// Each sub-folder of FOLDER is a class and gives it its name. The box is a file in the directory of
// boxes (MORVA_BOX_PATH, else ~/.local/share/morvaai/box); match.cpp and `morvaai match` find it
// there.
#include <cstring>
#include <iostream>
#include <map>
#include <vector>

#include <morvaai.h>

namespace {

// What the samples hold: the words of all files, and for each class which of the files are its own.
struct Samples {
  HSparseFileData words;
  std::map<HString, std::vector<int>> classes;
};

std::vector<HString> files_below(HString const& folder) {
  HClusterDirSnapCallback gather;
  HDirSnap walk;
  walk.mb_recursive = true;
  walk.set_callback(&gather, true);
  walk.set_file(folder);
  walk.snap();
  return gather.vt_files;
}

Samples read_samples(HString folder) {
  Samples samples;
  folder.dir_fit(true);
  for (HString const& path : files_below(folder)) {
    std::vector<HString> steps;  // from the folder to the file: the class comes first
    path.substr(folder.length(), path.length()).get_vt_str_by_sep(steps, L"/");
    HFeatureNode record;
    HFileFeature::get_file_feature(path, record, true);
    if (steps.size() < 2 || record.vt_words.empty()) {
      *HStdOutStream::ins() << L"left out: " << path << L"\n";
      continue;
    }
    samples.classes[steps.front()].push_back(static_cast<int>(samples.words.size()));
    samples.words.add(record);
  }
  return samples;
}

// A file is a point, its weights over the words of all files. A class is the center of its points,
// and its radius the distance of the farthest. Where nobody has sorted the samples,
// `HSparseClusterMgr::kmeans` finds classes in the same points.
QXPPolicyMorvaClustBox make_box(Samples const& samples) {
  QXPPolicyMorvaClustBox box;
  HSparsePoints points;
  samples.words.format_data(box.vt_words, points);
  for (auto const& [name, members] : samples.classes) {
    QXPKMeansNode& node = box.vt_kmeans_node.emplace_back();
    node.str_class_id = HString::generateUUID();
    node.str_class_name = name;
    node.vt_weight = points.get_center_point(members).vt_data;
    node.d_radius = points.get_max_radius(members);
    *HStdOutStream::ins() << name << L": " << HString(members.size()) << L" files, radius "
                          << HString(node.d_radius) << L"\n";
  }
  return box;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: learn FOLDER BOX_ID\n";
    return 2;
  }
  QXPPolicyMorvaClustBox const box = make_box(read_samples(morvabs::from_path(argv[1])));

  // The file first, then its entry in the index beside it: each is replaced as a whole. At the
  // first box of a machine the log says that there is no index yet.
  HString const boxes = Orlec::LocateMgr::pins()->get_box_path(true);
  HString const file = boxes + morvabs::from_path(argv[2]) + L".box";
  HFile::make_dir(boxes);
  if (int const result = box.to_file(file); result != 0) {
    std::cerr << "the box cannot be written: " << std::strerror(-result) << '\n';
    return 1;
  }
  HFileClusterBoxIni::add_box_file(file);
  return 0;
}
