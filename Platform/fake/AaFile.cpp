#include "AaFile.h"

#include "FileSystem.h"
#include "Internal.h"
#include "fake/Files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string_view>

struct TAaFile {
  std::string path;
  bool writing = false;
  bool failed = false;
  std::string content;  ///< what is read: as it was when the file was opened; what is written: so far
  std::size_t position = 0;
};

namespace fake {
namespace {

using namespace internal;

struct Files {
  FileSystem system;
  std::map<const TAaFile*, std::unique_ptr<TAaFile>> open;
};

Files& TheFiles() {
  static auto& files = *new Files;
  return files;
}

/// @return the open file; null for null, and, as a violation, for one that is closed
TAaFile* FindOpen(TAaFile* file, const char* function) {
  if (file == nullptr) return nullptr;
  const auto found = TheFiles().open.find(file);
  if (found != TheFiles().open.end()) return found->second.get();
  AddViolation(std::string(function) + " with a file that is not open");
  return nullptr;
}

Value PathOf(const TAaFile* file) { return file != nullptr ? Value(file->path) : Value(nullptr); }

std::unique_ptr<TAaFile> Open(const std::string& path, std::string_view mode) {
  const FileSystem& system = TheFiles().system;
  auto file = std::make_unique<TAaFile>();
  file->path = path;
  if (mode == "w") {
    file->writing = true;
    return system.CheckWritable(path) == 0 ? std::move(file) : nullptr;
  }
  if (mode != "r" || !system.IsFile(path)) return nullptr;
  file->content = system.files.at(path);
  return file;
}

}  // namespace

void SetFile(const std::string& path, const std::string& content) {
  const Lock lock;
  const std::string normal = NormalPath(path);
  MakeDir(ParentOf(normal));
  TheFiles().system.files[normal] = content;
}

std::optional<std::string> FileContent(const std::string& path) {
  const Lock lock;
  const auto& files = TheFiles().system.files;
  const auto found = files.find(NormalPath(path));
  return found == files.end() ? std::nullopt : std::optional(found->second);
}

void MakeDir(const std::string& path) {
  const Lock lock;
  if (TheFiles().system.CreateDirectory(NormalPath(path)) != 0) {
    throw std::invalid_argument(path + " cannot be a directory");
  }
}

void RemoveAll(const std::string& path) {
  const Lock lock;
  const std::string normal = NormalPath(path);
  const auto inside = [&](const std::string& one) { return one == normal || one.starts_with(normal + "/"); };
  std::erase_if(TheFiles().system.files, [&](const auto& entry) { return inside(entry.first); });
  std::erase_if(TheFiles().system.directories, inside);
}

std::vector<std::string> FilePaths() {
  const Lock lock;
  std::vector<std::string> paths;
  for (const auto& [path, content] : TheFiles().system.files) paths.push_back(path);
  return paths;
}

void SetReadOnly(const std::string& directory, bool readOnly) {
  const Lock lock;
  auto& directories = TheFiles().system.readOnly;
  if (readOnly) {
    directories.insert(NormalPath(directory));
  } else {
    directories.erase(NormalPath(directory));
  }
}

std::size_t OpenFiles() {
  const Lock lock;
  return TheFiles().open.size();
}

void internal::ResetFiles() { TheFiles() = Files(); }

}  // namespace fake

using namespace fake;
using namespace fake::internal;

extern "C" {

TAaFile* AaFileOpen(const char* path, const char* mode) {
  const Lock lock;
  if (Record({"AaFileOpen", path, mode}) || path == nullptr || mode == nullptr) return nullptr;
  std::unique_ptr<TAaFile> file = Open(NormalPath(path), mode);
  TAaFile* handle = file.get();
  if (handle != nullptr) TheFiles().open.emplace(handle, std::move(file));
  return handle;
}

i32 AaFileClose(TAaFile* file) {
  const Lock lock;
  TAaFile* open = FindOpen(file, "AaFileClose");
  const auto failure = Record({"AaFileClose", PathOf(open)});
  if (open == nullptr) return EINVAL;
  const auto node = TheFiles().open.extract(open);
  if (failure) return *failure;
  if (!open->writing) return 0;
  if (open->failed) return EIO;
  const int problem = TheFiles().system.CheckWritable(open->path);
  if (problem == 0) TheFiles().system.files[open->path] = open->content;
  return problem;
}

char* AaFileReadLine(char* buffer, u32 size, TAaFile* file) {
  const Lock lock;
  TAaFile* open = FindOpen(file, "AaFileReadLine");
  const auto failure = Record({"AaFileReadLine", size, PathOf(open)});
  if (buffer == nullptr || size == 0) return nullptr;
  *buffer = '\0';
  if (failure || open == nullptr || open->writing || open->position == open->content.size()) return nullptr;
  const std::size_t lineEnd = open->content.find('\n', open->position);
  const std::size_t end = lineEnd == std::string::npos ? open->content.size() : lineEnd + 1;
  const std::size_t length = std::min<std::size_t>(end - open->position, size - 1);
  std::memcpy(buffer, open->content.data() + open->position, length);
  buffer[length] = '\0';
  open->position += length;
  return buffer;
}

u32 AaFileWrite(const void* data, u32 size, u32 count, TAaFile* file) {
  const Lock lock;
  TAaFile* open = FindOpen(file, "AaFileWrite");
  const auto* bytes = static_cast<const char*>(data);
  const std::size_t length = bytes != nullptr ? std::size_t{size} * count : 0;
  const Value copy = bytes != nullptr ? Value(Bytes(bytes, bytes + length)) : Value(nullptr);
  const auto failure = Record({"AaFileWrite", copy, PathOf(open), size, count});
  if (open == nullptr || !open->writing || bytes == nullptr) return 0;
  if (failure) {
    open->failed = true;
    return static_cast<u32>(*failure);
  }
  open->content.append(bytes, length);
  return count;
}

i32 AaFileCopy(const char* source, const char* target) {
  const Lock lock;
  if (const auto failure = Record({"AaFileCopy", source, target})) return *failure;
  if (source == nullptr || target == nullptr) return EINVAL;
  FileSystem& system = TheFiles().system;
  const std::string from = NormalPath(source);
  const std::string to = NormalPath(target);
  if (system.IsDirectory(from)) return EISDIR;
  if (!system.IsFile(from)) return ENOENT;
  const int problem = system.CheckWritable(to);
  if (problem == 0) system.files[to] = std::string(system.files.at(from));
  return problem;
}

i32 AaFileRemove(const char* path) {
  const Lock lock;
  if (const auto failure = Record({"AaFileRemove", path})) return *failure;
  return path != nullptr ? TheFiles().system.Remove(NormalPath(path)) : EINVAL;
}

TBoolean AaFileExists(const char* path) {
  const Lock lock;
  if (const auto failure = Record({"AaFileExists", path})) return static_cast<TBoolean>(*failure);
  return path != nullptr && TheFiles().system.IsFile(NormalPath(path)) ? GLO_TRUE : GLO_FALSE;
}

TBoolean AaFileDirExists(const char* path) {
  const Lock lock;
  if (const auto failure = Record({"AaFileDirExists", path})) return static_cast<TBoolean>(*failure);
  return path != nullptr && TheFiles().system.IsDirectory(NormalPath(path)) ? GLO_TRUE : GLO_FALSE;
}

i32 AaFileCreateDir(const char* path) {
  const Lock lock;
  if (const auto failure = Record({"AaFileCreateDir", path})) return *failure;
  return path != nullptr ? TheFiles().system.CreateDirectory(NormalPath(path)) : EINVAL;
}

i32 AaFileListDir(const char* path, char*** names, u32* count) {
  const Lock lock;
  if (const auto failure = Record({"AaFileListDir", path})) return *failure;
  if (path == nullptr || names == nullptr || count == nullptr) return EINVAL;
  *names = nullptr;
  *count = 0;
  const std::string directory = NormalPath(path);
  if (TheFiles().system.IsFile(directory)) return ENOTDIR;
  if (!TheFiles().system.IsDirectory(directory)) return ENOENT;
  const std::vector<std::string> found = TheFiles().system.Names(directory);
  if (found.empty()) return 0;
  *names = new char*[found.size()];
  for (const std::string& name : found) {
    char* copy = new char[name.size() + 1];
    std::memcpy(copy, name.c_str(), name.size() + 1);
    (*names)[(*count)++] = copy;
  }
  return 0;
}

void AaFileFreeListDirArray(char** names, u32 count) {
  Record({"AaFileFreeListDirArray", count});
  if (names == nullptr) return;
  for (u32 i = 0; i < count; ++i) delete[] names[i];
  delete[] names;
}

}  // extern "C"
