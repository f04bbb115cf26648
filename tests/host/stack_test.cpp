#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"

#include "made_samples.h"
#include "painted_stack.h"
#include "support/log_capture.h"

namespace {

/// The stack that the library's documentation asks for.
constexpr std::size_t promised = std::size_t{256} << 10;
constexpr std::size_t plenty = std::size_t{8} << 20;

/// With MORVA_SHOW_STACK, each figure is printed.
std::size_t measured(std::string const& name, std::function<void()> const& work) {
  std::size_t const used = test::stack_used(plenty, work);
  if (std::getenv("MORVA_SHOW_STACK") != nullptr) {
    std::printf("%8zu  %s\n", used, name.c_str());
  }
  return used;
}

}  // namespace

TEST(Stack, documents_nested_as_deep_as_can_be_take_less_than_is_promised) {
  for (test::MadeDocument const& document : test::deep_documents()) {
    auto const read = [&] { test::parse_bytes(document.bytes, document.name.c_str()); };
    EXPECT_LE(measured(document.name, read), promised) << document.name;
  }
}

TEST(Stack, all_kinds_of_work_take_less_than_is_promised) {
  test::LogCapture const log;
  test::TemporaryDirectory const directory;
  endurance::settle_in(directory.path());
  auto const samples = test::made_samples(directory);
  EXPECT_LE(measured("all work", [&] { endurance::Round(samples, 1).run(); }), promised);
}
