#include "DescriptionReader.h"

#include "ddal_board.h"

#include <charconv>
#include <cstring>

namespace hwapi::board {
namespace {

using Kind = TomlValue::Kind;

constexpr std::pair<std::string_view, EUnitType> kUnitTypes[] = {
    {"Kel", EUnitType_Kel}, {"Pivo", EUnitType_Pivo}, {"Vyd", EUnitType_Vyd},
    {"Vyg", EUnitType_Vyg}, {"Zun", EUnitType_Zun},   {"Unknown", EUnitType_Unknown},
};

constexpr std::pair<std::string_view, EUnitVersion> kUnitVersions[] = {
    {"Kela", EUnitVersion_Kela},
    {"Kelb", EUnitVersion_Kelb},
    {"Kelbn", EUnitVersion_Kelbn},
    {"Kelc", EUnitVersion_Kelc},
    {"Keld", EUnitVersion_Keld},
    {"Kele", EUnitVersion_Kele},
    {"Kelf", EUnitVersion_Kelf},
    {"Kelg", EUnitVersion_Kelg},
    {"Kelh", EUnitVersion_Kelh},
    {"Pivoa", EUnitVersion_Pivoa},
    {"Pivob", EUnitVersion_Pivob},
    {"Pivoc", EUnitVersion_Pivoc},
    {"Pivod", EUnitVersion_Pivod},
    {"Vyda", EUnitVersion_Vyda},
    {"Vydj", EUnitVersion_Vydj},
    {"Vyea", EUnitVersion_Vyea},
    {"Vyga", EUnitVersion_Vyga},
    {"Zun", EUnitVersion_Zun},
    {"Unallocated", EUnitVersion_Unallocated},
};

constexpr std::pair<std::string_view, u32> kMountStates[] = {
    {"unmounted", DDAL_FFS_UNMOUNTED},
    {"read-only", DDAL_FFS_READ_ONLY},
    {"writable", DDAL_FFS_WRITABLE},
};

/// Sets a member where the description has a value, and leaves its default otherwise.
template <typename Value, typename Read>
void Take(Value& member, const std::optional<Read>& value) {
  if (value) member = *value;
}

void ReadUnit(TableReader& root, Unit& unit, Problems& problems) {
  TableReader table(root.Table("unit"), "[unit]", problems);
  Take(unit.type, table.Choice("type", kUnitTypes));
  Take(unit.version, table.Choice("version", kUnitVersions));
  Take(unit.productCode, table.Text("product_code"));
  Take(unit.serialNumber, table.Text("serial_number"));
}

void ReadNodeAndClock(TableReader& root, BoardDescription& description, Problems& problems) {
  TableReader node(root.Table("node"), "[node]", problems);
  Take(description.node.board, node.Integer<u8>("board"));
  Take(description.node.cpu, node.Integer<u8>("cpu"));
  TableReader clock(root.Table("clock"), "[clock]", problems);
  Take(description.clock.speed, clock.Integer<unsigned>("speed", 0, 86400));
  description.clock.startMs = clock.DateTime("start");
  if (description.clock.startMs.value_or(0) < 0)
    clock.Reject("start", "is before 1970; the board's clock begins there");
}

void ReadAccess(TableReader& root, Access& access, Problems& problems) {
  constexpr std::string_view kGroup = "group:";
  TableReader table(root.Table("access"), "[access]", problems);
  for (const TomlValue* entry : table.List("send", Kind::Text)) {
    const std::string& name = entry->text;
    const bool group = name.starts_with(kGroup);
    if (name.empty() || name.size() == (group ? kGroup.size() : 0) || (!group && name.find(':') != name.npos)) {
      problems.Add(entry->line, "\"send\" in [access] has \"" + name + "\"; write \"USER\" or \"group:GROUP\"");
    }
    access.send.push_back(name);
  }
  for (const TomlValue* entry : table.List("store", Kind::Text)) {
    if (!entry->text.starts_with('/')) {
      problems.Add(entry->line, "\"store\" in [access] has \"" + entry->text +
                                    "\"; write a folder's whole path, such as \"/var/log\"");
    }
    access.store.push_back(entry->text);
  }
}

std::string Bytes(u32 value) {
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

void ReadTags(TableReader& root, BoardDescription& description, Problems& problems) {
  const TomlValue* table = root.Table("tags");
  if (table == nullptr) return;
  for (const TomlValue& tag : table->members) {
    if (tag.key.empty() || tag.key.find('/') != std::string::npos) {
      problems.Add(tag.line, "\"" + tag.key + "\" is no name of a tag; it must not be empty nor hold a '/'");
    } else if (tag.kind == Kind::Text) {
      description.tags[tag.key] = tag.text;
    } else if (tag.kind == Kind::Integer && tag.integer >= INT32_MIN && tag.integer <= UINT32_MAX) {
      description.tags[tag.key] = Bytes(static_cast<u32>(tag.integer));
    } else {
      problems.Add(tag.line, "tag \"" + tag.key + "\" is " + std::string(KindName(tag.kind)) +
                                 (tag.kind == Kind::Integer ? " beyond 32 bits" : "") +
                                 "; write \"whole.tag.name\" = \"text\" or = a number of 32 bits");
    }
  }
}

/// @return the number that a text like "0x200B5" or "131253" is
std::optional<u32> Number(std::string_view text) {
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (hexadecimal) text.remove_prefix(2);
  u32 number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, hexadecimal ? 16 : 10);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

void ReadRad(TableReader& root, BoardDescription& description, Problems& problems) {
  const TomlValue* table = root.Table("rad");
  if (table == nullptr) return;
  for (const TomlValue& entry : table->members) {
    const auto id = Number(entry.key);
    const bool fits = entry.kind == Kind::Integer && entry.integer >= 0 && entry.integer <= UINT32_MAX;
    if (!id || !fits) {
      problems.Add(entry.line, "\"" + entry.key + "\" in [rad] is wrong; write for example \"0x200B5\" = 24");
    } else if (!description.rad.emplace(*id, static_cast<u32>(entry.integer)).second) {
      problems.Add(entry.line, "\"" + entry.key + "\" in [rad] is there twice, in two spellings; keep one of them");
    }
  }
}

/// Reads a build, which is part of a file name.
std::optional<std::string> Build(TableReader& boot, std::string_view key) {
  constexpr std::size_t kLongest = 200;
  constexpr std::string_view kAllowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._+-";
  const auto build = boot.Text(key);
  if (!build || (!build->empty() && build->size() <= kLongest && build->find_first_not_of(kAllowed) == build->npos)) {
    return build;
  }
  boot.Reject(key, "is no build: write at most 200 letters, digits and . _ + -, such as \"R2_4.1\"");
  return std::nullopt;
}

void ReadBoot(TableReader& root, BoardDescription& description, Problems& problems) {
  TableReader backplane(root.Table("backplane"), "[backplane]", problems);
  description.backplaneType = backplane.Integer<i32>("type");
  TableReader boot(root.Table("boot"), "[boot]", problems);
  description.boot.active = boot.Integer<u32>("active", DDAL_FFS_FS1, DDAL_FFS_FS2);
  description.boot.image = boot.Integer<u32>("image", 0, 1);
  description.boot.resetLoopCount = boot.Integer<i32>("reset_loop_count");
  description.boot.resetType = boot.Integer<u32>("reset_type");
  description.boot.fs1Build = Build(boot, "fs1_build");
  description.boot.fs2Build = Build(boot, "fs2_build");
  TableReader mounts(root.Table("mounts"), "[mounts]", problems);
  description.mounts.fs1 = mounts.Choice("fs1", kMountStates);
  description.mounts.fs2 = mounts.Choice("fs2", kMountStates);
  TableReader tree(root.Table("devicetree"), "[devicetree]", problems);
  description.deviceTree.isti = tree.Integer<i32>("isti");
  description.deviceTree.eccSingle = tree.Integer<i32>("ecc_single");
  description.deviceTree.eccDouble = tree.Integer<i32>("ecc_double");
}

void ReadProductData(TableReader& root, BoardDescription& description, Problems& problems) {
  TableReader psu(root.Table("psu"), "[psu]", problems);
  description.psu.serialNumber = psu.Text("serial_number");
  description.psu.hwswid = psu.Text("hwswid");
  description.psu.productCode = psu.Text("product_code");
  description.psu.vendor = psu.Text("vendor");
  TableReader filter(root.Table("filter"), "[filter]", problems);
  description.filter.productCode = filter.Text("product_code");
  description.filter.serialNumber = filter.Text("serial_number");
  description.filter.vendor = filter.Text("vendor");
  description.filter.hwVersion = filter.Text("hw_version");
  description.filter.hwswid = filter.Integer<i32>("hwswid");
}

}  // namespace

BoardDescription ReadDescription(const TomlValue& document, Problems& problems) {
  BoardDescription description;
  TableReader root(&document, "the description", problems);
  ReadUnit(root, description.unit, problems);
  ReadNodeAndClock(root, description, problems);
  ReadAccess(root, description.access, problems);
  ReadTags(root, description, problems);
  ReadRad(root, description, problems);
  ReadDevices(root, description, problems);
  ReadBoot(root, description, problems);
  ReadProductData(root, description, problems);
  return description;
}

}  // namespace hwapi::board
