#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "morvaai.h"

#include "failing_allocator.h"
#include "made_samples.h"
#include "support/log_capture.h"
#include "support/process_usage.h"

namespace {

namespace fs = std::filesystem;

using test::FailingAllocator;
/// What a host does, with its result in words.
using Operation = std::function<std::string()>;

/// What an operation may say, short of throwing, when memory runs out on its way.
constexpr char const* told = "failed";

long long files_below(fs::path const& directory) {
  long long count = 0;
  for (fs::directory_entry const& entry : fs::recursive_directory_iterator(directory)) {
    count += entry.is_regular_file() ? 1 : 0;
  }
  return count;
}

/// Which allocations fail. With MORVA_EXHAUSTIVE all of them everywhere: what writes files takes
/// long, and the tests of all days take samples of it.
enum class Places { all, samples };

long long step_from(long long n, Places places) {
  constexpr long long first = 24;
  bool const is_next =
      places == Places::all || n < first || std::getenv("MORVA_EXHAUSTIVE") != nullptr;
  return is_next ? 1 : n / 6;
}

class Exhaustion : public testing::Test {
 protected:
  Exhaustion() { endurance::settle_in(directory_.path()); }
  ~Exhaustion() override { RecordProperty("faults", std::to_string(count_)); }

  /// Has the operation run out of memory at one place after the other, and looks after each time
  /// whether it said so and left nothing behind.
  void run_out(std::string const& name, Operation const& operation,
               Places places = Places::samples) {
    std::string const expected = operation();
    files_ = files_below(directory_.path());
    descriptors_ = test::ProcessUsage::open_descriptors();
    for (auto const which :
         {FailingAllocator::Which::one, FailingAllocator::Which::all_from_it_on}) {
      long long n = 1;
      while (run_out_at(n, which, name, operation, expected)) {
        n += step_from(n, places);
        ++count_;
      }
      EXPECT_EQ(operation(), expected) << name << " afterwards";
    }
  }

  test::TemporaryDirectory const directory_;
  endurance::Samples const samples_ = test::made_samples(directory_);

 private:
  /// False where there is no n-th allocation.
  bool run_out_at(long long n, FailingAllocator::Which which, std::string const& name,
                  Operation const& operation, std::string const& expected) {
    std::string result;
    bool is_thrown = false;
    bool has_failed = false;
    {
      FailingAllocator const failing(n, which);
      try {
        result = operation();
      } catch (std::bad_alloc const&) {
        is_thrown = true;
      }
      has_failed = FailingAllocator::has_failed();
    }
    EXPECT_TRUE(is_thrown || result == expected || (has_failed && result == told))
        << name << " at allocation " << n << " gave: " << result;
    EXPECT_EQ(files_below(directory_.path()), files_) << name << " at allocation " << n;
    EXPECT_EQ(test::ProcessUsage::open_descriptors(), descriptors_) << name << " at " << n;
    return has_failed;
  }

  long long count_ = 0;
  long long files_ = 0;
  long long descriptors_ = 0;
};

std::string in_words(HString const& text) {
  return morvabs::to_utf8(text.get_ws());
}

std::string main_text_of(HString const& path) {
  Orlec::IFile file(path, false);
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&file, false));
  if (parser == nullptr) {
    return told;
  }
  Orlec::TextLineCallback callback;
  parser->SetMask(1);
  parser->SetCallBack(&callback, false);
  if (!parser->InitFile()) {
    return parser->GetOutcome() == Orlec::ParseOutcome::failed
               ? told
               : in_words(Orlec::GetOutcomeName(parser->GetOutcome()) + L": " +
                          parser->GetReason());
  }
  wchar_t* buffer = nullptr;
  int length = 0;
  callback.GetTextByType(Orlec::ParseTextType_main)->GetTextBuff(&buffer, length, 1000);
  return in_words(Orlec::GetOutcomeName(parser->GetOutcome()) + L": " + HString(buffer, length));
}

/// The libraries for PDF and archives end the process when they get no memory.
bool is_read_by_others(HString const& path) {
  std::string const name = in_words(path.get_short_name());
  return name.ends_with(".pdf") || name.ends_with(".tar") || name.ends_with(".gz") ||
         name.ends_with(".xz");
}

std::string words_of(HFeatureNode const& record) {
  return in_words(HString(record.vt_words)) + std::to_string(record.map_word_weight.size());
}

}  // namespace

TEST_F(Exhaustion, of_a_parse_is_told) {
  for (HString const& path : samples_.documents) {
    if (is_read_by_others(path)) {
      continue;
    }
    run_out(
        in_words(path.get_short_name()), [&] { return main_text_of(path); }, Places::all);
  }
}

TEST_F(Exhaustion, of_recognition_is_told) {
  run_out("recognize", [&] {
    HTessarineResult result;
    return HTessarine::read(samples_.documents[7], result) ? in_words(result.str_main) : told;
  });
}

TEST_F(Exhaustion, of_words_and_fingerprints_is_told_and_leaves_no_text_on_disk) {
  std::vector<HString> const two = {samples_.documents[0], samples_.documents[7]};
  run_out("words through files", [&] {
    HFeatureNode record;
    return HFileFeature::get_file_feature(two, record, true) ? words_of(record) : told;
  });
  run_out("words by path", [&] {
    HFeatureNode record;
    return HFileFeature::get_file_feature(two[1], record, true) ? words_of(record) : told;
  });
  run_out("fingerprint by path", [&] {
    HString dna;
    return HFileDNA::get_file_dna(two[1], dna, nullptr, 32) ? in_words(dna) : told;
  });
  run_out("fingerprint through a file", [&] {
    HString dna;
    HTessarineResult result;
    return HFileDNA::get_file_dna(two[1], dna, result, true) ? in_words(dna) : told;
  });
  run_out("fingerprint of files", [&] {
    HString dna;
    return HFileDNA::get_file_dna(two, dna, true, nullptr) ? in_words(dna) : told;
  });
}

TEST_F(Exhaustion, of_clustering_is_told) {
  std::vector<HPointN> points;
  for (int i = 0; i < 12; ++i) {
    points.emplace_back(std::vector<double>{i % 3 * 5.0 + i * 0.01, i % 2 * 1.0, 1.0});
  }
  HSparsePoints const sparse(points);
  auto const shown = [](std::vector<std::vector<int>> const& clusters) {
    std::string text;
    for (auto const& cluster : clusters) {
      for (int const member : cluster) {
        text += std::to_string(member) + " ";
      }
      text += "| ";
    }
    return text;
  };
  std::vector<std::vector<int>> clusters;
  run_out("canopy", [&] {
    HClusterMgr::pins()->canopy(points, 3.0, 1.0, clusters);
    return shown(clusters);
  });
  run_out("kmeans", [&] {
    HClusterMgr::pins()->kmeans(points, 3, clusters, false);
    return shown(clusters);
  });
  run_out("dbscan", [&] {
    HClusterMgr::pins()->dbscan(points, 1.5, 2, false, clusters);
    return shown(clusters);
  });
  run_out("sparse kmeans", [&] {
    HSparseClusterMgr::kmeans(sparse, 3, clusters, true);
    return shown(clusters);
  });
  run_out("eps", [&] { return std::to_string(HSparseClusterMgr::get_eps(sparse, 3, true)); });
}

TEST_F(Exhaustion, of_a_box_is_told_and_leaves_the_old_file) {
  QXPPolicyMorvaClustBox box;
  HFeatureNode record;
  ASSERT_TRUE(HFileFeature::get_file_feature(samples_.documents[7], record, true));
  box.vt_words = record.vt_words;
  box.vt_kmeans_node.resize(1);
  box.vt_kmeans_node[0].str_class_id = L"1";
  box.vt_kmeans_node[0].str_class_name = L"one";
  box.vt_kmeans_node[0].vt_weight = record.vt_weight;
  box.vt_kmeans_node[0].d_radius = 100.0;
  HString const file = HFileClusterBoxMgr::pins()->get_box_path(false) + L"box.box";
  auto const saved = [&](int result) { return result == 0 ? "saved" : told; };
  run_out("box saved", [&] { return saved(box.to_file(file)); });
  run_out("box loaded", [&] {
    QXPPolicyMorvaClustBox loaded;
    return saved(loaded.from_file(file));
  });
  HString const copy = HFileClusterBoxMgr::pins()->get_box_path(false) + L"copy.box";
  run_out("box copied", [&] { return saved(morvabs::copy_box_file(file, copy)); });
  run_out("index", [&] {
    HFileClusterBoxIni::add_box_file(file);
    HClusterBoxLocalNode node;
    HFileClusterBoxIni::read_local_box_node(L"box", node);
    return node.vt_class_id.empty() ? told : in_words(node.vt_class_id[0]);
  });
  run_out("match", [&] {
    HFileClusterBoxMgr::pins()->map_box.clear();
    HFileClusterBoxMgr::pins()->update_box_ini();
    HString name;
    HFileMatchClassifyMgr::pins()->match(record, std::vector<HString>{L"1"}, L"box", name);
    return in_words(name);
  });
}
