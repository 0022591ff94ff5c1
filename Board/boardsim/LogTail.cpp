#include "LogTail.h"

#include <cstddef>
#include <deque>
#include <filesystem>
#include <fstream>
#include <utility>

namespace boardsim {
namespace {

constexpr std::size_t kMostLines = 8;

std::uintmax_t SizeOf(const std::string& path) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  return error ? 0 : size;
}

}  // namespace

LogTail::LogTail(std::string path) : m_path(std::move(path)), m_begin(SizeOf(m_path)) {}

std::string LogTail::Lines() const {
  std::ifstream file(m_path);
  file.seekg(static_cast<std::streamoff>(m_begin));
  std::deque<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    if (lines.size() == kMostLines) lines.pop_front();
    lines.push_back("  " + line + "\n");
  }
  std::string text;
  for (const std::string& line : lines) text += line;
  return text;
}

}  // namespace boardsim
