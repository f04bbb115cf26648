#include "morvabs/component.h"

#include <algorithm>
#include <atomic>
#include <string_view>

#include <dlfcn.h>

namespace morvabs {

namespace {

/// What is known of a component; it changes once.
struct State {
  std::atomic<bool> is_settled = false;
  std::atomic<void*> library = nullptr;
  std::atomic<char const*> folder = nullptr;
};

std::array<State, component_files.size()> states;
std::atomic<void (*)(std::size_t)> ask_for = nullptr;

/// Where the components are: beside this library. Never a bare name, which the system would look
/// for in directories that others may write to.
std::string component_path(char const* file) {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&component_function), &info) == 0 ||
      info.dli_fname == nullptr) {
    return {};
  }
  std::string const own = info.dli_fname;
  auto const slash = own.rfind('/');
  return slash == std::string::npos ? std::string{} : own.substr(0, slash + 1) + file;
}

void* open_component(char const* file) {
  auto const path = component_path(file);
  // Never closed: what it links keeps state of its own until the process ends.
  return path.empty() ? nullptr : dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
}

char const* prepare(void* component) {
  auto const prepare_it =
      component == nullptr
          ? nullptr
          : reinterpret_cast<PrepareComponentFunction>(dlsym(component, prepare_component_symbol));
  return prepare_it == nullptr ? nullptr : prepare_it();
}

}  // namespace

void load_component(std::size_t position) {
  State& state = states[position];
  if (state.is_settled) {
    return;
  }
  // Two threads that come here together get the same library.
  void* const component = open_component(component_files[position]);
  state.folder = prepare(component);
  state.library = component;
  state.is_settled = true;
}

bool is_component_settled(std::size_t position) {
  return states[position].is_settled;
}

std::vector<std::string> component_folders() {
  std::vector<std::string> folders;
  for (State const& state : states) {
    if (char const* const folder = state.folder) {
      folders.emplace_back(folder);
    }
  }
  return folders;
}

void wait_for_components(void (*ask)(std::size_t position)) {
  ask_for = ask;
}

void* component_function(char const* file, char const* symbol) {
  auto const* const known =
      std::find(component_files.begin(), component_files.end(), std::string_view(file));
  if (known == component_files.end()) {
    return nullptr;
  }
  auto const position = static_cast<std::size_t>(known - component_files.begin());
  if (auto* const ask = ask_for.load(); ask != nullptr && !is_component_settled(position)) {
    ask(position);
  }
  load_component(position);
  void* const component = states[position].library;
  return component == nullptr ? nullptr : dlsym(component, symbol);
}

}  // namespace morvabs
