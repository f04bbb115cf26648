#include "watched_calls.h"

#include <set>
#include <string>

#include "host_process.h"
#include "hostkit/morvakit/archive_writer.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "morvaai.h"

using test::HostProcess;

using Calls = std::set<std::string>;

TEST_F(HostProcess, is_asked_for_nothing_that_is_the_hosts) {
  {
    test::WatchedCalls const watch;
    work();
  }
  give_back_streams();
  EXPECT_EQ(test::WatchedCalls::made(), Calls{});
}

TEST_F(HostProcess, keeps_copies_of_large_members_from_programs_that_the_host_starts) {
  std::string const large(std::size_t{17} << 20, 'x');
  auto const archive = test::pack(large, ARCHIVE_FILTER_GZIP);
  {
    test::WatchedCalls const watch;
    test::parse_bytes(archive, "large.gz");
  }
  give_back_streams();
  EXPECT_EQ(test::WatchedCalls::made(), Calls{});
}

TEST_F(HostProcess, keeps_its_log_file_from_programs_that_the_host_starts) {
  HFileLog::ins()->set_sink({});
  setenv("MORVA_LOG_FILE", "log", 1);
  {
    test::WatchedCalls const watch;
    auto& record = HFileLog::ins()->get(1, L"test", 1);
    record << L"text";
    HFileLog::ins()->log(record);
  }
  unsetenv("MORVA_LOG_FILE");
  give_back_streams();
  EXPECT_EQ(test::WatchedCalls::made(), Calls{});
}
