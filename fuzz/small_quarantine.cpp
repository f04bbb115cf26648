// Plain forms allocate millions of small pieces. The address sanitizer keeps what was freed for a
// while, which would look like an input that takes too much memory.

extern "C" char const* __asan_default_options();

extern "C" char const* __asan_default_options() {
  return "quarantine_size_mb=32";
}
