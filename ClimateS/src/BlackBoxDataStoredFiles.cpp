/// Stored files: the newest copies of what others hand over.
#include "AaTrbl.h"
#include "BlackBoxData.h"
#include "BlackBoxFile.h"
#include "LifedataDirectory.h"
#include "Log.h"
#include "TechlogFile.h"
#include "UtcText.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string_view>

namespace ps::hwapi::common::climate {
namespace {

constexpr u32 kMaxOlderCopies = 2;
constexpr std::string_view kStoredFilePrefix = "blackbox_";

std::string_view TextOrEmpty(const char* text) { return text != nullptr ? text : ""; }

/// @return what stands behind the time in the name of a stored file; nothing when it is none
std::optional<std::string> KeyOf(const std::string& name) {
  if (!name.starts_with(kStoredFilePrefix)) return std::nullopt;
  const std::size_t separator = name.find('_', kStoredFilePrefix.size());
  if (separator == std::string::npos) return std::nullopt;
  return name.substr(separator + 1);
}

bool HasDigit(const std::string& name) {
  return std::any_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

void Insert(Published<storedFileMap>& files, const std::string& key, const std::string& path) {
  files.Update([&](storedFileMap& map) {
    map.emplace(key, path);
    return true;
  });
}

/// @return the oldest entry with that key; the end when there is none
storedFileMap::const_iterator FirstWith(const storedFileMap& map, const std::string& key) {
  const auto found = map.lower_bound(key);  // find may give any of several
  return found != map.end() && found->first == key ? found : map.end();
}

/// @return path of the oldest copy with that key; there is one
std::string OldestWith(const Published<storedFileMap>& files, const std::string& key) {
  return FirstWith(*files.Read(), key)->second;
}

/// There is one: nobody but the thread that asks changes the map.
void EraseOldestWith(Published<storedFileMap>& files, const std::string& key) {
  files.Update([&](storedFileMap& map) {
    map.erase(FirstWith(map, key));
    return true;
  });
}

/// The names in the lifedata directory.
struct Listing {
  Listing() : found(AaFileListDir(kLifedataDirectory, &names, &count) == 0) {}
  Listing(const Listing&) = delete;
  Listing& operator=(const Listing&) = delete;
  ~Listing() {
    if (found) AaFileFreeListDirArray(names, count);
  }

  char** names = nullptr;
  u32 count = 0;
  bool found;
};

/// @return keys by full path
storedFileMap StoredFilesOf(const Listing& listing) {
  storedFileMap keysByPath;
  for (u32 i = 0; i < listing.count; ++i) {
    const std::string name = listing.names[i];
    if (!HasDigit(name)) continue;
    if (const auto key = KeyOf(name)) keysByPath.emplace(kLifedataDirectory + name, *key);
  }
  return keysByPath;
}

}  // namespace

u32 BlackBoxData::copyFile(u32 maxFiles, const char* sourceFile, const char* targetFile) try {
  std::string fileToSave;
  if (CheckFilesExist(fileToSave, sourceFile, targetFile) == 0) return 0;
  CLM_LOG(Debug, "BlackBoxData::copyFile() fileToSave '%s", fileToSave.c_str());
  calculateAndRemovePreviousFiles(std::min(maxFiles, kMaxOlderCopies), fileToSave);
  return addStoredFile(fileToSave, sourceFile, createTimeStamp());
} catch (const std::bad_alloc&) {
  LogOutOfMemory("copyFile");
  return 0;
}

u32 BlackBoxData::CheckFilesExist(std::string& fileToSave, const char* sourceFile, const char* targetFile) {
  const std::string source(TextOrEmpty(sourceFile));
  const std::string target(TextOrEmpty(targetFile));
  CLM_LOG(Debug, "BlackBoxData::CheckFilesExist() sourceFile='%s' targetFile='%s' fileToSave='%s'", source.c_str(),
          target.c_str(), fileToSave.c_str());
  if (source.empty()) {
    CLM_LOG(Error, "BlackBoxData::CheckFilesExist() sourceFile not given");
    return 0;
  }
  if (AaFileExists(source.c_str()) == GLO_FALSE) {
    CLM_LOG(Error, "BlackBoxData::CheckFilesExist() sourceFile not found: '%s'", source.c_str());
    return 0;
  }
  if (!target.empty()) {
    fileToSave = target;
    return 1;
  }
  fileToSave = basename(source);
  if (fileToSave == source) {
    CLM_LOG(Error, "BlackBoxData::CheckFilesExist() no target given, source does not contain a path.");
    return 0;
  }
  CLM_LOG(Debug, "BlackBoxData::CheckFilesExist() targetFile not given, using '%s'", fileToSave.c_str());
  return 1;
}

void BlackBoxData::calculateAndRemovePreviousFiles(u32 maxFiles, std::string key) {
  auto count = static_cast<u32>(storedFiles.Read()->count(key));
  CLM_LOG(Debug, "BlackboxData::calculateAndRemovePreviousFiles(): There are %d files with key '%s'",
          static_cast<int>(count), key.c_str());
  for (; count > maxFiles; --count) {
    const std::string path = OldestWith(storedFiles, key);
    CLM_LOG(Debug, "BlackboxData::calculateAndRemovePreviousFiles(): The file will be removed '%s'", path.c_str());
    removeStoredFile(path);
    EraseOldestWith(storedFiles, key);
  }
  CLM_LOG(Debug, "BlackboxData::calculateAndRemovePreviousFiles(): There are %d files with key %s after remove",
          static_cast<int>(count), key.c_str());
}

u32 BlackBoxData::addStoredFile(std::string key, std::string sourceFile, std::string timeStamp) {
  const std::string name = std::string(kStoredFilePrefix) + timeStamp + "_" + key;
  const std::string path = kLifedataDirectory + name;
  if (AaFileCopy(sourceFile.c_str(), path.c_str()) != 0) {
    CLM_LOG(Error, "BlackboxData::addStoredFile(): failed to copy '%s' to '%s'", sourceFile.c_str(), path.c_str());
    return 0;
  }
  CLM_LOG(Info, "BlackboxData::addStoredFile(): file copying from '%s' to '%s' done!", sourceFile.c_str(),
          path.c_str());
  if (const i32 ret = RegisterTechlogFile(basename(path), path); ret != EAaTrblRet_Ok) {
    CLM_LOG(Error, "BlackBoxData::addStoredFile(): Failed to register file '%s' to AaTrbl, ret=%d", name.c_str(), ret);
    return 0;
  }
  CLM_LOG(Info, "BlackboxData::addStoredFile(): file '%s' registered", name.c_str());
  Insert(storedFiles, key, path);
  return 1;
}

void BlackBoxData::removeStoredFile(std::string path) {
  const std::string name = basename(path);
  if (const i32 ret = AaTrblFileUnregister(name.c_str()); ret != EAaTrblRet_Ok) {
    CLM_LOG(Error, "BlackBoxData::removeStoredFile(): Failed to unregister file '%s' from AaTrbl, ret=%d", name.c_str(),
            ret);
    return;
  }
  if (AaFileExists(path.c_str()) == GLO_FALSE) {
    CLM_LOG(Info, "BlackboxData::removeStoredFile(): file not exists '%s'", path.c_str());
    return;
  }
  if (const i32 ret = AaFileRemove(path.c_str()); ret != 0) {
    CLM_LOG(Info, "BlackboxData::removeStoredFile(): failed to remove '%s' ret=%d", path.c_str(), ret);
  } else {
    CLM_LOG(Info, "BlackboxData::removeStoredFile(): file: '%s' removed!", path.c_str());
  }
}

std::string BlackBoxData::createTimeStamp() { return UtcDigits(UtcNow()); }

void BlackBoxData::registerSelfTestFiles() try {
  const Listing listing;
  if (!listing.found) return;
  const storedFileMap found = StoredFilesOf(listing);
  // All in one version: each is a copy of the one before.
  storedFiles.Update([&found](storedFileMap& map) {
    for (const auto& [path, key] : found) map.emplace(key, path);
    return !found.empty();
  });
  for (const auto& [path, key] : found) {
    CLM_LOG(Debug, "BlackboxData::registerSelfTestFiles(): file '%s' stored with key '%s'", path.c_str(), key.c_str());
    const std::string name = basename(path);
    if (const i32 ret = RegisterTechlogFile(name, path); ret != EAaTrblRet_Ok) {
      CLM_LOG(Error, "BlackBoxData::registerSelfTestFiles(): Failed to register file '%s' to AaTrbl, ret=%d",
              name.c_str(), ret);
    } else {
      CLM_LOG(Info, "BlackboxData::registerSelfTestFiles(): file '%s' registered with path '%s'", name.c_str(),
              path.c_str());
    }
  }
} catch (const std::bad_alloc&) {
  LogOutOfMemory("registerSelfTestFiles");
}

bool BlackBoxData::isStoredFile(const std::string& fileName) const {
  const auto key = KeyOf(fileName);
  if (!key) return false;
  const auto files = storedFiles.Read();
  const auto first = FirstWith(*files, *key);
  return std::any_of(first, files->end(), [&](const auto& entry) { return basename(entry.second) == fileName; });
}

std::string BlackBoxData::basename(const std::string& path) { return path.substr(path.rfind('/') + 1); }

}  // namespace ps::hwapi::common::climate
