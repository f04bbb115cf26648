#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "support/process_usage.h"

namespace {

/// Loads the plugin, has it count the words of a document, and unloads it.
int load_count_unload(char const* document) {
  void* const plugin = dlopen(PLUGIN, RTLD_NOW | RTLD_LOCAL);
  if (plugin == nullptr) {
    throw std::runtime_error(dlerror());
  }
  auto* const count_words = reinterpret_cast<int (*)(char const*)>(dlsym(plugin, "count_words"));
  int const words = count_words == nullptr ? -1 : count_words(document);
  return dlclose(plugin) == 0 ? words : -1;
}

constexpr char const* document = SAMPLES_DIR "/travel-policy.odt";
constexpr char const* page = SAMPLES_DIR "/travel-policy.html";

}  // namespace

TEST(Unloading, a_host_may_load_and_unload_the_library_again_and_again) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_GT(load_count_unload(document), 0);
    EXPECT_GT(load_count_unload(page), 0);
  }
}

TEST(Unloading, takes_no_more_with_each_time) {
#ifdef MORVA_SANITIZED
  GTEST_SKIP() << "the sanitizer maps memory of its own";
#endif
  load_count_unload(page);
  load_count_unload(page);
  auto const before = test::ProcessUsage::now();
  for (int i = 0; i < 5; ++i) {
    load_count_unload(page);
  }
  auto const after = test::ProcessUsage::now();
  EXPECT_LE(after.mappings, before.mappings + 2);
  EXPECT_EQ(after.descriptors, before.descriptors);
}

TEST(Unloading, a_thread_that_used_the_library_may_end_after_it) {
  int words = 0;
  std::thread([&words] { words = load_count_unload(page); }).join();
  EXPECT_GT(words, 0);
}

TEST(UnloadingDeathTest, the_process_ends_in_order_afterwards) {
  EXPECT_EXIT(
      {
        load_count_unload(page);
        std::exit(0);
      },
      testing::ExitedWithCode(0), "^$");
}
