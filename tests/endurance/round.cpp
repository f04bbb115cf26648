#include "round.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

namespace endurance {

namespace {

namespace fs = std::filesystem;

constexpr int narrow_length = 32;
constexpr int wide_length = 1024;
constexpr int everything = 1 << 30;
constexpr int means = 0;
constexpr int medians = 1;
constexpr int kmeans_type = 0;
constexpr int dbscan_type = 1;
constexpr int minpts = 4;
constexpr wchar_t const* steady_id = L"steady";

std::vector<fs::path> entries_of(fs::path const& folder) {
  std::vector<fs::path> entries(fs::directory_iterator(folder), {});
  std::sort(entries.begin(), entries.end());
  return entries;
}

std::vector<HString> documents_in(fs::path const& folder) {
  std::vector<HString> documents;
  for (fs::path const& entry : entries_of(folder)) {
    if (fs::is_directory(entry)) {
      std::vector<HString> const inner = documents_in(entry);
      documents.insert(documents.end(), inner.begin(), inner.end());
    } else if (entry.extension() != ".py") {
      documents.push_back(morvabs::from_path(entry.native()));
    }
  }
  return documents;
}

HString box_file(HString const& id) {
  return HFileClusterBoxMgr::pins()->get_box_path(false) + id + L".box";
}

}  // namespace

Samples Samples::in(fs::path const& folder) {
  Samples samples;
  samples.documents = documents_in(folder);
  samples.undecided = documents_in(folder / "corpus" / "decide");
  for (fs::path const& entry : entries_of(folder / "corpus" / "learn")) {
    samples.classes[morvabs::from_path(entry.filename().native())] = documents_in(entry);
  }
  return samples;
}

void settle_in(fs::path const& directory) {
  fs::create_directories(directory / "run");
  fs::create_directories(directory / "boxes");
  fs::current_path(directory / "run");
  setenv("MORVA_RUN_PATH", (directory / "run").c_str(), 1);
  setenv("MORVA_BOX_PATH", (directory / "boxes").c_str(), 1);
  HString const boxes = Orlec::LocateMgr::pins()->get_box_path(true);
  HFileClusterBoxIni::mstr_box_ini = boxes + L"box.ini";
  HFileClusterBoxMgr* const manager = HFileClusterBoxMgr::pins();
  manager->str_box_path = boxes;
  manager->vt_local_box.clear();
  manager->map_box.clear();
}

Round::Round(Samples const& samples, std::uint64_t number)
    : samples_(samples), own_id_(HString(L"round-") + HString(number)) {}

std::uint64_t Round::run() {
  for (std::size_t i = 0; i < samples_.documents.size(); ++i) {
    HString const& path = samples_.documents[i];
    read(path);
    // Every other road takes its share of the documents.
    if (i % 4 == 0) {
      read_by_path(path);
    } else if (i % 4 == 1) {
      read_through_files({path, samples_.documents[i - 1]});
    }
  }
  compare_fingerprints();
  gather_samples();
  cluster_dense();
  cluster_sparse();
  describe(classes_);
  build_center_box(steady_id);
  build_member_box(own_id_);
  for (HString const& id : {HString(steady_id), own_id_}) {
    install(id);
    ask(id);
    remove(id);
  }
  return digest_.value();
}

void Round::read(HString const& path) {
  Orlec::IFile file(path, false);
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&file, false));
  if (parser == nullptr) {
    digest_.add(-1);
    return;
  }
  Orlec::TextLineCallback callback;
  parser->SetFilePath(path.get_path(true));
  parser->SetFileName(path.get_short_name());
  parser->SetFileSize(file.GetLength());
  parser->SetMask(1);
  parser->SetCallBack(&callback, false);
  digest_.add(parser->InitFile() ? 1 : 0);
  digest_.add(static_cast<int>(parser->GetOutcome()));
  for (int type = Orlec::ParseTextType_main; type <= Orlec::ParseTextType_other; ++type) {
    if (auto* const text = callback.GetTextByType(static_cast<Orlec::ParseTextType>(type))) {
      wchar_t* buffer = nullptr;
      int length = 0;
      text->GetTextBuff(&buffer, length, everything);
      digest_.add(HString(buffer, length));
    }
  }
  HFeatureNode& record = records_[path];
  digest_.add(HFileFeature::get_file_feature(parser.get(), record) ? 1 : 0);
  digest_.add(record.vt_words);
  digest_.add(record.vt_counts);
  digest_.add(record.vt_weight);
  int covered = 0;
  HFileDNA::get_file_dna(parser.get(), record.str_dna, &covered, wide_length);
  digest_.add(record.str_dna);
  digest_.add(covered);
}

void Round::read_by_path(HString const& path) {
  HString narrow;
  HFileDNA::get_file_dna(path, narrow, nullptr, narrow_length);
  digest_.add(narrow);
  HFileCollectDNANode record;
  HFileCollectMgr::pins()->get_file_dna(path, record);
  digest_.add(record.str_md5);
  digest_.add(record.str_dna);
  HTessarineResult whole;
  HTessarine::read(path, whole);
  digest_.add(whole.str_suffix);
  digest_.add(whole.str_property);
}

void Round::read_through_files(std::vector<HString> const& paths) {
  HFeatureNode record;
  digest_.add(HFileFeature::get_file_feature(paths, record, true) ? 1 : 0);
  digest_.add(record.vt_words);
  HString wide;
  int covered = 0;
  HFileDNA::get_file_dna(paths, wide, true, &covered);
  digest_.add(wide);
  digest_.add(covered);
}

void Round::compare_fingerprints() {
  HFileDNAList list;
  for (auto const& [path, record] : records_) {
    list.append(record.str_dna);
  }
  HString const* last = nullptr;
  for (auto const& [path, record] : records_) {
    for (HFileDNAFound const& found : list.get_most_similar(record.str_dna, 3)) {
      digest_.add(found.index);
      digest_.add(found.similarity);
    }
    digest_.add(last == nullptr ? 0.0 : HFileMatchDNA::get_dna_similarity(*last, record.str_dna));
    last = &record.str_dna;
  }
}

void Round::gather_samples() {
  HSparseFileData gathered;
  for (auto const& [name, paths] : samples_.classes) {
    names_.push_back(name);
    std::vector<int>& members = classes_.emplace_back();
    for (HString const& path : paths) {
      members.push_back(static_cast<int>(learnt_.size()));
      learnt_.push_back(records_[path]);
      gathered.add(learnt_.back());
    }
  }
  HClusterFileData::format_data(learnt_, words_, points_, false);
  std::vector<HString> same_words;
  gathered.format_data(same_words, sparse_);
  digest_.add(words_);
  digest_.add(same_words.size());
  for (HPointN const& point : points_) {
    digest_.add(point.vt_data);
  }
}

void Round::cluster_dense() {
  HClusterMgr* const manager = HClusterMgr::pins();
  auto const k = static_cast<int>(classes_.size());
  std::vector<std::vector<int>> clusters;
  double const mean = HClusterDistance::get_avg_distance(points_);
  manager->canopy(points_, 3 * mean, mean, clusters);
  digest_.add(clusters);
  for (int const type : {means, medians}) {
    gi_K_ClusterType = type;
    manager->kmeans(points_, k, clusters, false);
    digest_.add(clusters);
    describe(clusters);
    manager->kmeans(points_, 0, clusters, true);
    digest_.add(clusters);
  }
  double const eps = HParaPrefer::get_eps(points_, minpts, true);
  digest_.add(eps);
  manager->dbscan(points_, eps, minpts, false, clusters);
  digest_.add(clusters);
  describe(clusters);
}

void Round::cluster_sparse() {
  auto const k = static_cast<int>(classes_.size());
  std::vector<std::vector<int>> clusters;
  double const mean = sparse_.get_avg_distance();
  HSparseClusterMgr::canopy(sparse_, 3 * mean, mean, clusters);
  digest_.add(clusters);
  for (int const type : {means, medians}) {
    gi_K_ClusterType = type;
    HSparseClusterMgr::kmeans(sparse_, k, clusters, false);
    digest_.add(clusters);
  }
  double const eps = HSparseClusterMgr::get_eps(sparse_, minpts, true);
  HSparseClusterMgr::dbscan(sparse_, eps, minpts, false, clusters);
  digest_.add(clusters);
}

void Round::describe(std::vector<std::vector<int>> const& clusters) {
  HClusterResultNode result;
  HClusterResultMgr::get_kmeans_cluster_result_node(learnt_, clusters, result);
  for (HClusterResultKMeansNode const& node : result.vt_kmeans_node) {
    digest_.add(node.str_class_desc);
    digest_.add(node.str_class_feature);
    digest_.add(node.vt_center);
    digest_.add(node.d_radius);
  }
}

void Round::build_center_box(HString const& id) {
  std::vector<HClusterOut> classes;
  for (std::size_t i = 0; i < classes_.size(); ++i) {
    HClusterOut& out = classes.emplace_back();
    out.str_class_id = id + HString(i);
    out.str_class_name = names_[i];
    out.vt_center = sparse_.get_center_point(classes_[i]).vt_data;
    out.d_radius = sparse_.get_max_radius(classes_[i]);
  }
  HClusterBox::pins()->to_box(1, words_, classes, id, kmeans_type);
}

void Round::build_member_box(HString const& id) {
  std::vector<HClusterOut> classes;
  double const eps = HSparseClusterMgr::get_eps(sparse_, minpts, true);
  for (std::size_t i = 0; i < classes_.size(); ++i) {
    HClusterOut& out = classes.emplace_back();
    out.str_class_id = id + HString(i);
    out.str_class_name = names_[i];
    out.d_eps = eps;
    out.i_minpts = minpts;
    for (int const member : classes_[i]) {
      QXPFeatureNode& node = out.vt_file_node.emplace_back();
      node.str_file_id = learnt_[static_cast<std::size_t>(member)].str_file_name;
      node.vt_weight = sparse_.at(member).vt_data;
    }
  }
  HClusterBox::pins()->to_box(1, words_, classes, id, dbscan_type);
}

void Round::install(HString const& id) {
  HString const built = HClusterBox::pins()->get_box_path(true) + id + L".box";
  if (morvabs::copy_box_file(built, box_file(id)) != 0) {
    throw std::runtime_error("a box could not be installed");
  }
  HFile::delete_file(built);
  HFileClusterBoxIni::add_box_file(box_file(id));
  HFileClusterBoxMgr::pins()->update_box_ini();
}

void Round::ask(HString const& id) {
  std::vector<HString> class_ids;
  QXPPolicyMorvaClustBox box;
  HFileClusterBoxMgr::pins()->get_box(id, box);
  HFileClusterBoxMgr::pins()->get_vt_class_id(box, class_ids);
  digest_.add(class_ids.size());
  for (HString const& path : samples_.undecided) {
    HString name;
    bool const is_found = HFileMatchClassifyMgr::pins()->match(records_[path], class_ids, id, name);
    digest_.add(is_found ? name : HString());
    digest_.add(HFileMatchClassifyMgr::pins()->match(records_[path], class_ids, name) ? 1 : 0);
  }
}

void Round::remove(HString const& id) {
  HFileClusterBoxIni::del_box_file(box_file(id));
  HFile::delete_file(box_file(id));
  HFileClusterBoxMgr* const manager = HFileClusterBoxMgr::pins();
  manager->map_box.erase(id);
  manager->update_box_ini();
}

}  // namespace endurance
