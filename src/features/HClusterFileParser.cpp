#include "features/HClusterFileParser.h"

#include <array>
#include <memory>

#include "host/HClusterEnvironment.h"
#include "host/HEnvironment.h"
#include "host/HFile.h"
#include "host/HInsLocateMgr.h"
#include "host/Orlec/IFile.h"
#include "host/Orlec/TextCallback.h"
#include "host/internal/log_line.h"

namespace {

constexpr wchar_t const* tag = L"../HClusterFileParser";

// Main text, headers and footers, comments, remarks, footnotes, endnotes, control text, properties,
// all other text; leftovers are removed in this order.
std::array<HString, 9> const gstr_part_suffix = {L".main",    L".hf",       L".comment",
                                                 L".remark",  L".fn",       L".en",
                                                 L".control", L".property", L".other"};

HString working_root() {
  HString const root = HClusterEnvironment::IsAgentInstalled()
                           ? HInsLocateMgr::pins()->get_agent_path_public(true)
                           : HEnvironment::GetMyExeFullFilePath(true);
  return root + L"Tessarine";
}

bool ensure_directory(HString const& directory) {
  if (HFile::IsFileExistDir(directory)) {
    return true;
  }
  HFile::make_dir(directory);
  if (HFile::IsFileExistDir(directory)) {
    return true;
  }
  morva::log_noise_line(1, tag, __LINE__, L"faild, make dir: ", directory);
  return false;
}

// The working directory of a document, both levels made where they are missing; empty on failure.
HString make_working_directory(HString const& document_name) {
  HString const root = working_root();
  if (!ensure_directory(root)) {
    return {};
  }
  HString const directory = root + L"/" + document_name;
  return ensure_directory(directory) ? directory : HString();
}

void remove_leftovers(HString const& directory, HString const& path) {
  HString const base = directory + L"/" + path.get_short_name_no_suffix();
  for (HString const& suffix : gstr_part_suffix) {
    HString const leftover = base + suffix;
    if (HFile::IsFileExistFile(leftover)) {
      HFile::delete_file(leftover);
    }
  }
}

// Parses into a new text file in the directory, which ends in "/". Where memory runs out, neither
// the file nor its place in the list stays.
void parse_into(HString const& directory, Orlec::ParseFile& parser,
                std::vector<HString>& text_files) {
  text_files.push_back(directory + HString::generateUUID2());
  try {
    Orlec::TextLineCallback callback;
    callback.mb_in_memory = false;
    callback.SetOutputFile(text_files.back());
    parser.SetMask(1);
    parser.SetCallBack(&callback, false);
    parser.InitFile();
    parser.GetTextCallback();
  } catch (...) {
    HFile::delete_file(text_files.back());
    HFile::del_empty_dir(directory);
    text_files.pop_back();
    throw;
  }
}

}  // namespace

HClusterFileParser::HClusterFileParser() = default;
HClusterFileParser::~HClusterFileParser() = default;

HString HClusterFileParser::parse_to_txt(Orlec::ParseFile* parser,
                                         std::vector<HString>& text_files) {
  if (parser == nullptr) {
    morva::log_assertion(tag, L"parse_to_txt", __LINE__, L"ASSERT_NULL");
    return {};
  }
  HString directory = make_working_directory(parser->GetFileFolderName());
  if (directory.empty()) {
    return {};
  }
  morva::log_line(3, tag, __LINE__, L"parse file : ", parser->GetFileFullPath());
  parse_into(directory.dir_fit(true), *parser, text_files);
  return directory;
}

HString HClusterFileParser::parse_to_txt(HString const& path, std::vector<HString>& text_files) {
  HString directory = make_working_directory(path.get_md5_std_format(HString()));
  if (directory.empty()) {
    return {};
  }
  remove_leftovers(directory, path);
  morva::log_noise_line(3, tag, __LINE__, L"parse file : ", path);
  Orlec::IFile file(path, false);
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&file, false));
  if (parser == nullptr) {
    morva::log_assertion(tag, L"parse_to_txt", __LINE__, L"ASSERT_NULL");
    return {};
  }
  parser->SetFilePath(path.get_path(true));
  parser->SetFileName(path.get_short_name());
  parser->SetFileSize(file.GetLength());
  parse_into(directory.dir_fit(true), *parser, text_files);
  return directory;
}

HString HClusterFileParser::parse_to_txt(HString const& path, HTessarineResult& /*result*/,
                                         std::vector<HString>& text_files) {
  return parse_to_txt(path, text_files);
}

void HClusterFileParser::del_parse_out_file(std::vector<HString> const& files,
                                            std::vector<HString> const& directories) {
  for (HString const& file : files) {
    HFile::delete_file(file);
  }
  for (HString const& directory : directories) {
    HFile::del_empty_dir(directory);
  }
}

void HClusterFileParser::del_parse_out_file(std::vector<HString> const& files,
                                            HString const& directory) {
  del_parse_out_file(files, std::vector<HString>{directory});
}
